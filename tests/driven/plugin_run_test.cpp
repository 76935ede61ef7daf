// SPDX-License-Identifier: MIT
// How long a plug-in is waited for.
#include "driven/plugin_run.h"

#include <gtest/gtest.h>

namespace kfx::test {
namespace {

using commands::HostSession;
using driven::ClosePluginWindow;
using driven::OpenPluginWindow;
using driven::PluginLibrary;
using driven::PluginRun;

HANDLE letGo = nullptr;
int waits = 0;

uint64_t WINAPI HangUntilLetGo(HWND, const HostContext*) {
    WaitForSingleObject(letGo, INFINITE);
    return 1;
}

struct HangingPlugin : ::testing::Test {
    PluginLibrary library;
    HostSession session;
    PluginRun run;

    void SetUp() override {
        letGo = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        waits = 0;
        library.doBuild = HangUntilLetGo;
        run.library = &library;
        run.session = &session;
        run.timeoutSeconds = 1;
        run.onWait = [](const HostSession&) { ++waits; };
    }

    void TearDown() override {
        SetEvent(letGo);
        EXPECT_EQ(WaitForSingleObject(run.thread, 60000), WAIT_OBJECT_0);
        CloseHandle(run.thread);
        CloseHandle(letGo);
    }
};

TEST_F(HangingPlugin, Is_not_waited_for_once_more_when_it_is_closed) {
    EXPECT_FALSE(OpenPluginWindow(&run));
    EXPECT_EQ(run.failure.exitCode, commands::kExitTimeout);
    EXPECT_GT(waits, 0);
    EXPECT_LT(waits, 30) << "it is looked at when it tells of a change, or ten times in a second";
    waits = 0;
    EXPECT_FALSE(ClosePluginWindow(&run));
    EXPECT_EQ(waits, 0);
    EXPECT_EQ(run.failure.exitCode, commands::kExitTimeout);
}

}  // namespace
}  // namespace kfx::test
