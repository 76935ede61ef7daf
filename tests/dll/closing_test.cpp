// SPDX-License-Identifier: MIT
// The window is closed inside a request or under a dialog: nothing is built, shown or kept after that.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <cderr.h>
#include <commdlg.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "resources/resource_ids.h"
#include "tests/dll/support/own_dialog.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr void (*kClosings[])() = {DestroyOwnDialog, EndOwnDialog};

TEST(ClosedInARequest, A_source_that_comes_too_late_is_freed) {
    for (void (*const close)() : kClosings) {
        FakeHost host;
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
    FakeHost host;
    host.Serve(ShadedFrames(3));
    PluginSession session(host);
    session.Click(IDC_SELECT);
    host.Act(HostRequest::OpenAnimation, DestroyOwnDialog);
    session.Press(IDC_SELECT);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    ExpectNothingLeft();
}

TEST(ClosedInARequest, A_restored_source_that_comes_too_late_is_freed) {
    FakeHost host;
    host.Serve(ShadedFrames(3));
    host.Act(HostRequest::OpenAnimation, DestroyOwnDialog);
    PluginSession session(host, WithConfiguration("FileNamePath = " + PluginPath() + "\n"));
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), SizeIs(1));
    ExpectNothingLeft();
}

TEST(ClosedInARequest, What_is_no_animation_is_freed_without_a_word) {
    FakeHost host;
    host.Serve({1, 2, 3});
    PluginSession session(host);
    host.Act(HostRequest::OpenAnimation, DestroyOwnDialog);
    session.Press(IDC_SELECT);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(session.Messages(), IsEmpty());
    ExpectNothingLeft();
}

TEST(ClosedInARequest, Help_that_cannot_be_shown_is_not_told) {
    FakeHost host;
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
    FakeHost host;
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
        FakeHost host;
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
    FakeHost host;
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

}  // namespace
}  // namespace kfx::test
