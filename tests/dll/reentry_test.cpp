// SPDX-License-Identifier: MIT
// The plug-in is run once more while its window is open, or inside a request.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <thread>

#include "resources/resource_ids.h"
#include "tests/dll/support/own_dialog.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/import_patch.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

uint64_t RunAgain(const HostContext& context) {
    return EntryOf(GetModuleHandleA("kfxplug1.dll"))(nullptr, &context);
}

TEST(RunTwiceInOwnWindow, Inside_a_request_it_is_refused_and_the_window_goes_on) {
    FakeHost host;
    host.Serve(ShadedFrames(3));
    uint64_t second = 77;
    PluginSession session(host, WithConfiguration("MainEffect = 3\n"));
    session.Click(IDC_DITHER);
    const HWND window = session.Window();
    for (const HostRequest request :
         {HostRequest::OpenAnimation, HostRequest::ShowHelp, HostRequest::ChooseColor, HostRequest::Progress,
          HostRequest::NewTestTask, HostRequest::CloseTask}) {
        host.Act(request, [&] { second = RunAgain(host.context); });
        const bool builds = request == HostRequest::Progress || request == HostRequest::NewTestTask ||
                            request == HostRequest::CloseTask;
        const int button = request == HostRequest::OpenAnimation ? IDC_SELECT
                           : request == HostRequest::ShowHelp    ? IDC_HELP_BUTTON
                           : builds                              ? IDC_TEST
                                                                 : IDC_BACKGROUND_COLOR;
        second = 77;
        session.Click(button);
        EXPECT_EQ(second, 0u) << static_cast<int>(request);
        ASSERT_EQ(session.Window(), window);
    }
    EXPECT_THAT(session.Messages(), IsEmpty());
    EXPECT_EQ(host.Frames().size(), 9u);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 3);
    EXPECT_EQ(session.Close(), 1u);
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainDither = 1\r\n"));
    ExpectNothingLeft();
}

TEST(RunTwiceInOwnWindow, While_the_window_opens_it_is_refused) {
    FakeHost host;
    uint64_t second = 77;
    host.Act(HostRequest::GetWindowSize, [&] { second = RunAgain(host.context); });
    PluginSession session(host);
    EXPECT_EQ(second, 0u);
    EXPECT_TRUE(session.IsOpen());
    EXPECT_EQ(session.Close(), 1u);
}

std::atomic<HWND> broughtToFront;

BOOL WINAPI TakeForeground(HWND window) {
    broughtToFront = window;
    return SetForegroundWindow(window);
}

// The DLL's calls for the foreground, which other programs on the screen may have taken since.
struct ForegroundCalls {
    ForegroundCalls()
        : patch(GetModuleHandleA("kfxplug1.dll"), "SetForegroundWindow", AddressOfFunction(TakeForeground)) {
        broughtToFront = nullptr;
    }
    const ImportPatch patch;
};

class RunTwice : public WindowTest {};

TEST_F(RunTwice, On_another_thread_it_is_refused_and_the_window_comes_to_the_front) {
    const ForegroundCalls calls;
    HostContext tooOld = host.context;
    tooOld.version = 0;
    for (const HostContext& context : {host.context, tooOld}) {
        broughtToFront = nullptr;
        std::thread([&] { EXPECT_EQ(RunAgain(context), 0u); }).join();
        EXPECT_TRUE(WaitFor([&] { return broughtToFront == session.Window(); }));
    }
    EXPECT_THAT(session.Messages(), IsEmpty());
    EXPECT_EQ(session.Close(), 1u);
}

TEST(RunTwiceInOwnWindow, Inside_a_request_the_window_comes_to_the_front_at_once) {
    FakeHost host;
    PluginSession session(host);
    const ForegroundCalls calls;
    HWND front = nullptr;
    host.Act(HostRequest::ShowHelp, [&] {
        RunAgain(host.context);
        front = broughtToFront;
    });
    session.Click(IDC_HELP_BUTTON);
    EXPECT_EQ(front, session.Window());
}

TEST_F(RunTwice, A_box_over_the_window_comes_to_the_front_with_it) {
    session.Press(IDC_ABOUT);
    const HWND about = session.WaitForBox("About");
    ASSERT_TRUE(about);
    const ForegroundCalls calls;
    std::thread([&] { EXPECT_EQ(RunAgain(host.context), 0u); }).join();
    EXPECT_TRUE(WaitFor([&] { return broughtToFront == about; }));
    SendMessageA(about, WM_COMMAND, IDC_ABOUT_CLOSE, 0);
    EXPECT_TRUE(session.WaitUntilGone(about));
}

TEST(RunTwiceInOwnWindow, After_the_window_has_closed_it_opens_again) {
    FakeHost host;
    PluginSession session(host);
    session.Close();
    std::atomic<HWND> opened{nullptr};
    host.Act(HostRequest::GetWindowSize, [&] { opened = OwnDialog(); });
    std::thread runner([&] { EXPECT_EQ(RunAgain(host.context), 1u); });
    if (!WaitFor([&] { return opened && IsWindowVisible(opened); })) {
        runner.detach();
        FAIL() << "the window does not open again";
    }
    PostMessageA(opened, WM_COMMAND, IDCANCEL, 0);
    runner.join();
}

}  // namespace
}  // namespace kfx::test
