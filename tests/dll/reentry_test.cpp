// SPDX-License-Identifier: MIT
// What a host does inside a request, or while the window is open: it closes the window, or runs the plug-in
// once more.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <cderr.h>
#include <commdlg.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>

#include "resources/resource_ids.h"
#include "tests/dll/support/import_patch.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

HostCallback answer = nullptr;            // the fake host's own service function
std::function<void(HostRequest)> before;  // runs before it, on the window's thread

uint64_t ActAndAnswer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (before) before(static_cast<HostRequest>(request));
    return answer(target, request, word, pointer);
}

class ActingHost : public FakeHost {
public:
    ActingHost() {
        answer = context.callback;
        context.callback = ActAndAnswer;
    }
    ~ActingHost() { before = nullptr; }

    // At the nth request (from 1) after now that is of this kind.
    void Act(HostRequest request, std::function<void()> action, int occurrence = 1) {
        before = [=](HostRequest asked) mutable {
            if (asked == request && --occurrence == 0) action();
        };
    }

    // At the nth request after now, whatever it is.
    void ActAtRequest(int number, std::function<void()> action) {
        before = [=](HostRequest) mutable {
            if (--number == 0) action();
        };
    }
};

// The dialog of the calling thread, even before it is shown.
HWND OwnDialog() {
    HWND found = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM data) -> BOOL {
            char className[20] = "";
            GetClassNameA(window, className, sizeof className);
            if (std::string(className) != "#32770") return TRUE;
            *reinterpret_cast<HWND*>(data) = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

void DestroyOwnDialog() { DestroyWindow(OwnDialog()); }
void EndOwnDialog() { SendMessageA(OwnDialog(), WM_COMMAND, IDCANCEL, 0); }

constexpr void (*kClosings[])() = {DestroyOwnDialog, EndOwnDialog};

void ExpectNothingLeft() {
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    EXPECT_EQ(CountLedger().strangeFrees, 0u);
}

TEST(ClosedInARequest, A_source_that_comes_too_late_is_freed) {
    for (void (*const close)() : kClosings) {
        ActingHost host;
        host.Serve(ShadedFrames(3));
        PluginSession session(host);
        host.Act(HostRequest::OpenAnimation, close);
        session.Press(IDC_SELECT);
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        EXPECT_THAT(session.Messages(), IsEmpty());
        ExpectNothingLeft();
    }
}

TEST(ClosedInARequest, A_source_that_comes_too_late_leaves_the_one_before_freed_once) {
    ActingHost host;
    host.Serve(ShadedFrames(3));
    PluginSession session(host);
    session.Click(IDC_SELECT);
    host.Act(HostRequest::OpenAnimation, DestroyOwnDialog);
    session.Press(IDC_SELECT);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    ExpectNothingLeft();
}

TEST(ClosedInARequest, A_restored_source_that_comes_too_late_is_freed) {
    ActingHost host;
    host.Serve(ShadedFrames(3));
    host.Act(HostRequest::OpenAnimation, DestroyOwnDialog);
    PluginSession session(host, WithConfiguration("FileNamePath = " + PluginPath() + "\n"));
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), SizeIs(1));
    ExpectNothingLeft();
}

TEST(ClosedInARequest, What_is_no_animation_is_freed_without_a_word) {
    ActingHost host;
    host.Serve({1, 2, 3});
    PluginSession session(host);
    host.Act(HostRequest::OpenAnimation, DestroyOwnDialog);
    session.Press(IDC_SELECT);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(session.Messages(), IsEmpty());
    ExpectNothingLeft();
}

TEST(ClosedInARequest, Help_that_cannot_be_shown_is_not_told) {
    ActingHost host;
    PluginSession session(host);
    host.Act(HostRequest::ShowHelp, DestroyOwnDialog);
    host.Refuse(HostRequest::ShowHelp, 1);
    session.Press(IDC_HELP_BUTTON);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(session.Messages(), IsEmpty());
}

std::atomic<int> screenRedraws;

BOOL WINAPI CountScreenRedraws(HWND window, const RECT* area, HRGN region, UINT flags) {
    if (!window) ++screenRedraws;
    return RedrawWindow(window, area, region, flags);
}

TEST(ClosedInARequest, A_colour_that_comes_too_late_repaints_nobodys_windows) {
    ActingHost host;
    PluginSession session(host);
    screenRedraws = 0;
    const ImportPatch patch(GetModuleHandleA("kfxplug1.dll"), "RedrawWindow",
                            AddressOfFunction(CountScreenRedraws));
    host.Act(HostRequest::ChooseColor, DestroyOwnDialog);
    session.Press(IDC_BACKGROUND_COLOR);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_EQ(screenRedraws, 0) << "without a window, the whole screen would be meant";
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("LocalBackgroundColor = 8355711\r\n"));
}

TEST(ClosedInARequest, A_window_closed_while_it_opens_starts_nothing_more) {
    for (void (*const close)() : kClosings) {
        ActingHost host;
        host.Act(HostRequest::GetWindowSize, close);
        PluginSession session(host);
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        // A window that was ended goes when its opening returns, a destroyed one at once.
        EXPECT_EQ(session.CreatedControls().size(), 0u) << "no panel is made any more";
        EXPECT_THAT(session.RunningTimers(), IsEmpty());
        if (close == DestroyOwnDialog) {
            EXPECT_THAT(session.Events(), Not(Contains("set 99 60")));
        }
        ExpectNothingLeft();
    }
}

int CodeOf(const std::string& line) { return std::atoi(line.c_str() + sizeof "REQ code"); }

// Builds with the window destroyed inside the nth request, and looks at what the host gets after it: the
// closing of its task and nothing else.
void ExpectAbandonedAt(const std::string& configuration, size_t number) {
    ActingHost host;
    host.Serve(ShadedFrames(3));
    PluginSession session(host, WithConfiguration(configuration));
    session.Click(IDC_SELECT);
    host.ClearTranscript();
    host.ActAtRequest(static_cast<int>(number), DestroyOwnDialog);
    session.Press(IDC_BUILD);
    ASSERT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(session.Messages(), IsEmpty());
    ExpectNothingLeft();
    const std::vector<std::string> lines = host.Transcript();
    ASSERT_GE(lines.size(), number);
    const auto last = lines.begin() + static_cast<ptrdiff_t>(number);
    const std::vector<std::string> after(last, lines.end());
    const bool taskOpen = std::any_of(lines.begin(), last, [](const std::string& line) {
        return CodeOf(line) == static_cast<int>(HostRequest::NewTask);
    });
    const auto lastRequest = static_cast<HostRequest>(CodeOf(*(last - 1)));
    if (!taskOpen || lastRequest == HostRequest::CloseTask) {
        EXPECT_THAT(after, IsEmpty());
    } else {
        // With the comment, everything has been handed over.
        const char* value = lastRequest == HostRequest::AddComment ? " value=1 " : " value=0 ";
        EXPECT_THAT(after, ElementsAre(AllOf(HasSubstr("code=4 "), HasSubstr(value))));
    }
}

size_t CountBuildRequests(const std::string& configuration) {
    FakeHost host;
    host.Serve(ShadedFrames(3));
    PluginSession session(host, WithConfiguration(configuration));
    session.Click(IDC_SELECT);
    host.ClearTranscript();
    session.Click(IDC_BUILD);
    return host.Transcript().size();
}

TEST(ClosedInARequest, A_build_is_abandoned_and_its_task_closed) {
    const char* const configuration = "MainEffect = 1\nTruecolour = 0\nMainSupercompress = 1\n";
    const size_t requests = CountBuildRequests(configuration);
    for (size_t number = 1; number <= requests; ++number) {
        SCOPED_TRACE("request " + std::to_string(number));
        ExpectAbandonedAt(configuration, number);
    }
}

TEST(ClosedInARequest, An_effect_in_two_passes_is_abandoned_in_either) {
    const char* const configuration = "MainEffect = 10\nStyle019Distributed = 1\n";
    ASSERT_EQ(CountBuildRequests(configuration), 21u) << "three progress requests more than in one pass";
    for (const size_t number : {4u, 6u, 7u, 9u}) {
        SCOPED_TRACE("request " + std::to_string(number));
        ExpectAbandonedAt(configuration, number);
    }
}

std::string chosenTooLate;

BOOL WINAPI ChooseTooLate(LPOPENFILENAMEA request) {
    DestroyOwnDialog();
    std::snprintf(request->lpstrFile, request->nMaxFile, "%s", chosenTooLate.c_str());
    return TRUE;
}

TEST(ClosedInADialog, A_document_that_is_chosen_too_late_is_neither_read_nor_written) {
    constexpr char kText[] = ";Kestrel FX #1 Plugin, Quorvane Labs\nSCROLL193=7\n";
    for (const auto& [function, command] :
         {std::pair<const char*, int>{"GetOpenFileNameA", IDM_DOCUMENT_OPEN},
          {"GetSaveFileNameA", IDM_DOCUMENT_SAVE_AS}}) {
        FakeHost host;
        PluginSession session(host);
        chosenTooLate = session.DocumentsFolder() + "mine.kx1";
        WriteTextFile(chosenTooLate, kText);
        const ImportPatch patch(GetModuleHandleA("kfxplug1.dll"), function, AddressOfFunction(ChooseTooLate));
        PostMessageA(session.Window(), WM_COMMAND, static_cast<WPARAM>(command), 0);
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        EXPECT_EQ(ReadTextFile(chosenTooLate), kText) << function;
        EXPECT_THAT(session.Messages(), IsEmpty());
    }
}

int timesAsked;

BOOL WINAPI FailAfterClosing(LPOPENFILENAMEA) {
    ++timesAsked;
    if (const HWND window = OwnDialog()) DestroyWindow(window);
    return FALSE;
}

DWORD WINAPI TellInvalidName() { return FNERR_INVALIDFILENAME; }

TEST(ClosedInADialog, A_name_that_the_dialog_does_not_take_is_not_asked_for_again) {
    for (const auto& [function, command] :
         {std::pair<const char*, int>{"GetOpenFileNameA", IDM_DOCUMENT_OPEN},
          {"GetSaveFileNameA", IDM_DOCUMENT_SAVE_AS}}) {
        FakeHost host;
        PluginSession session(host);
        timesAsked = 0;
        const HMODULE library = GetModuleHandleA("kfxplug1.dll");
        const ImportPatch ask(library, function, AddressOfFunction(FailAfterClosing));
        const ImportPatch error(library, "CommDlgExtendedError", AddressOfFunction(TellInvalidName));
        PostMessageA(session.Window(), WM_COMMAND, static_cast<WPARAM>(command), 0);
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        EXPECT_EQ(timesAsked, 1) << function;
    }
}

using DoBuild = uint64_t(WINAPI*)(HWND, const HostContext*);

uint64_t RunAgain(const HostContext& context) {
    const auto doBuild = reinterpret_cast<DoBuild>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kfxplug1.dll"), "PLUGIN16DoBuild")));
    return doBuild(nullptr, &context);
}

TEST(RunTwiceInOwnWindow, Inside_a_request_it_is_refused_and_the_window_goes_on) {
    ActingHost host;
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
    ActingHost host;
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

// A host that does something of its own inside requests, before it answers them. One at a time.
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
    ActingHost host;
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
    ActingHost host;
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
