// SPDX-License-Identifier: MIT
// How long a plug-in is waited for.
#include "stage/plugin_run.h"

#include <gtest/gtest.h>

namespace kfx::test {
namespace {

using stage::ClosePluginWindow;
using stage::HostSession;
using stage::OpenPluginWindow;
using stage::PluginLibrary;
using stage::PluginRun;

HANDLE letGo = nullptr;
int waits = 0;

std::uint64_t WINAPI HangUntilLetGo(HWND, const HostContext*) {
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

TEST_F(HangingPlugin, IsNotWaitedForOnceMoreWhenItIsClosed) {
    EXPECT_FALSE(OpenPluginWindow(&run));
    EXPECT_EQ(run.exitCode, stage::kExitTimeout);
    EXPECT_GT(waits, 0);
    waits = 0;
    EXPECT_FALSE(ClosePluginWindow(&run));
    EXPECT_EQ(waits, 0);
    EXPECT_EQ(run.exitCode, stage::kExitTimeout);
}

}  // namespace
}  // namespace kfx::test
