// SPDX-License-Identifier: MIT
// Hosts that refuse, answer nonsense, or let messages through while they are asked, at every request of a
// build.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/own_dialog.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kNoTask[] = "Error creating new task.";
constexpr char kNoImage[] = "There has been an error adding an image to the current file object.";

// What a host does while it is asked something, on the window's thread.
FakeHost* askingHost = nullptr;

void SendTimers() {
    for (const WPARAM timer : {WPARAM{15}, WPARAM{99}, WPARAM{0}, WPARAM{16}, WPARAM{0xFFFFFFFF}})
        SendMessageA(OwnDialog(), WM_TIMER, timer, 0);
}

// While the logo runs, each message whose word is its timer's number is one of its ticks.
void SendWordsOf99() {
    for (UINT message = 1; message < WM_USER + 400; ++message) {
        // What carries pointers or handles is not for a host to make up; the rest ends at the window.
        if (message == WM_TIMER || message == WM_COMMAND || message == WM_HSCROLL || message == WM_VSCROLL ||
            message == WM_CONTEXTMENU || message == WM_MOUSEWHEEL || message >= WM_USER)
            SendMessageA(OwnDialog(), message, 99, 0);
    }
}

void SendScrolling() {
    const HWND window = OwnDialog();
    for (const int slider : {IDC_EMBOSS_RADIUS, IDC_EMBOSS_DEPTH, IDC_SWIRL_ANGLE})
        for (const int code : {SB_LINERIGHT, SB_PAGERIGHT, SB_THUMBTRACK, SB_THUMBPOSITION, SB_LINELEFT, 77})
            SendMessageA(window, WM_HSCROLL, MAKEWPARAM(code, 0x7FFF),
                         reinterpret_cast<LPARAM>(GetDlgItem(window, slider)));
}

void SendChoices() {
    const HWND window = OwnDialog();
    for (const int effect : {7, 25, -1, 1}) {
        SendDlgItemMessageA(window, IDC_EFFECT, CB_SETCURSEL, static_cast<WPARAM>(effect), 0);
        SendMessageA(window, WM_COMMAND, MAKEWPARAM(IDC_EFFECT, CBN_CLOSEUP),
                     reinterpret_cast<LPARAM>(GetDlgItem(window, IDC_EFFECT)));
    }
    for (const int box : {IDC_LOCAL_BACKGROUND, IDC_LOCAL_BACKGROUND})
        SendDlgItemMessageA(window, box, BM_CLICK, 0, 0);
}

void Paint() {
    RedrawWindow(OwnDialog(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

void SendClicks() {
    for (const WPARAM id :
         {IDC_BUILD, IDC_TEST, IDC_SELECT, IDC_HELP_BUTTON, IDM_BUILD_PLAIN, IDM_REOPEN_SOURCE})
        SendMessageA(OwnDialog(), WM_COMMAND, id, 0);
}

void AskForTheEndOfTheSession() {
    SendMessageA(OwnDialog(), WM_QUERYENDSESSION, 0, 0);
    SendMessageA(OwnDialog(), WM_ENDSESSION, TRUE, 0);
}

void RunAgainAndMoveAway() {
    EXPECT_EQ(EntryOf(GetModuleHandleA("kfxplug1.dll"))(nullptr, &askingHost->context), 0u);
    EXPECT_EQ(EntryOf(GetModuleHandleA("kfxplug1.dll"))(nullptr, nullptr), 0u);
    SetCurrentDirectoryA("C:\\windows");
}

struct Behaviour {
    const char* name;
    void (*act)();
    bool changesEffect = false;
};
const Behaviour kBehaviours[] = {
    {.name = "Timers", .act = SendTimers},
    {.name = "WordsOf99", .act = SendWordsOf99},
    {.name = "Scrolling", .act = SendScrolling, .changesEffect = true},
    {.name = "Choices", .act = SendChoices, .changesEffect = true},
    {.name = "Painting", .act = Paint},
    {.name = "Clicks", .act = SendClicks},
    {.name = "EndOfSession", .act = AskForTheEndOfTheSession},
    {.name = "SecondRunAndOtherFolder", .act = RunAgainAndMoveAway},
};

const char* const kConfigurations[] = {
    "MainEffect = 1\nTruecolour = 1\n",
    "MainEffect = 1\nTruecolour = 0\nMainSupercompress = 1\nMainDither = 1\n",
};

// The current folder as it was, at the end.
struct KeptFolder {
    KeptFolder() { GetCurrentDirectoryA(sizeof path, path); }
    ~KeptFolder() { SetCurrentDirectoryA(path); }
    char path[MAX_PATH];
};

class PumpingHosts : public testing::TestWithParam<Behaviour> {};

TEST_P(PumpingHosts, Get_every_frame_whatever_comes_in_between) {
    const Behaviour& behaviour = GetParam();
    const KeptFolder folder;
    for (const char* configuration : kConfigurations) {
        FakeHost host;
        askingHost = &host;
        host.Serve(ShadedFrames(3));
        PluginSession session(host, WithConfiguration(configuration));
        session.Click(IDC_SELECT);
        session.Click(IDC_CUSTOM_PALETTE);
        host.ClearTranscript();
        session.Click(IDC_TEST);
        const std::vector<std::string> undisturbed = host.Transcript();
        const std::vector<std::vector<uint8_t>> whole = host.Frames();
        ASSERT_EQ(whole.size(), 3u);
        for (size_t number = 1; number <= undisturbed.size(); ++number) {
            const std::string name = std::string(behaviour.name) + " at request " + std::to_string(number);
            host.ClearTranscript();
            host.ActAtRequest(static_cast<int>(number), behaviour.act);
            session.Click(IDC_TEST);
            ASSERT_TRUE(session.IsOpen()) << name;
            ASSERT_THAT(host.Requests(HostRequest::CloseTask), ElementsAre(HasSubstr("value=1 "))) << name;
            ASSERT_THAT(host.Frames(), SizeIs(3)) << name;
            if (!behaviour.changesEffect) {
                EXPECT_EQ(host.Frames(), whole) << name;
                if (behaviour.act != SendClicks) {
                    EXPECT_EQ(host.Transcript(), undisturbed) << name;
                }
            }
            ASSERT_EQ(CountLedger().liveBlocks, 1u) << name;
            ASSERT_EQ(CountLedger().lockedBlocks, 0u) << name;
            AddTried("disturbed requests");
        }
        EXPECT_THAT(session.Messages(), IsEmpty());
        EXPECT_EQ(session.Close(), 1u);
        ExpectNothingLeft();
    }
}

INSTANTIATE_TEST_SUITE_P(Behaviours, PumpingHosts, testing::ValuesIn(kBehaviours),
                         [](const auto& behaviour) { return behaviour.param.name; });

// A host that answers one request with this.
HostCallback answeringHost = nullptr;
size_t requestsUntil;  // the one that is answered so; 0: none
uint64_t givenAnswer;

uint64_t AnswerNonsense(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    const uint64_t answer = answeringHost(target, request, word, pointer);
    return requestsUntil && --requestsUntil == 0 ? givenAnswer : answer;
}

TEST(AbsurdHosts, Every_answer_to_each_request_of_a_build_is_yes_or_no) {
    for (const char* configuration : kConfigurations) {
        FakeHost host;
        host.Serve(ShadedFrames(3));
        answeringHost = host.context.callback;
        host.context.callback = AnswerNonsense;
        requestsUntil = 0;
        PluginSession session(host, WithConfiguration(configuration));
        session.Click(IDC_SELECT);
        host.ClearTranscript();
        session.Click(IDC_TEST);
        const size_t requests = host.Transcript().size();
        const std::vector<std::vector<uint8_t>> whole = host.Frames();
        for (size_t number = 1; number <= requests; ++number) {
            for (const uint64_t answer : {uint64_t{0}, uint64_t{0xFFFFFFFFFFFFFFFF}, uint64_t{1} << 32,
                                          uint64_t{0x8000000000000000}, uint64_t{99}}) {
                const std::string name =
                    "request " + std::to_string(number) + " answered " + std::to_string(answer);
                host.ClearTranscript();
                const size_t messages = session.Messages().size();
                givenAnswer = answer;
                requestsUntil = number;
                session.Click(IDC_TEST);
                ASSERT_EQ(requestsUntil, 0u) << name;
                const std::vector<std::string> closes = host.Requests(HostRequest::CloseTask);
                if (session.Messages().size() == messages) {
                    EXPECT_EQ(host.Frames(), whole) << name;
                    EXPECT_THAT(closes, ElementsAre(HasSubstr("value=1 "))) << name;
                } else {
                    EXPECT_EQ(answer, 0u) << name;
                    ASSERT_EQ(session.Messages().size(), messages + 1) << name;
                    EXPECT_THAT(session.Messages().back(),
                                AnyOf(std::string(kNoTask), std::string(kNoImage)));
                    if (session.Messages().back() == kNoTask)
                        EXPECT_THAT(closes, IsEmpty()) << name;
                    else
                        EXPECT_THAT(closes, ElementsAre(HasSubstr("value=0 "))) << name;
                }
                ASSERT_EQ(CountLedger().liveBlocks, 1u) << name;
                AddTried(answer ? "absurd answers" : "refused requests");
            }
        }
        session.Close();
        ExpectNothingLeft();
    }
}

TEST(AbsurdHosts, A_remembered_size_may_be_anything) {
    for (const uint32_t size : {0u, 1u, 127u, 128u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        FakeHost host;
        host.rememberedWidth = size;
        host.rememberedHeight = ~size;
        PluginSession session(host);
        session.Command(IDM_DOCUMENT_OPEN);
        EXPECT_THAT(session.AskedPaths(), SizeIs(1));
        EXPECT_EQ(session.Close(), 1u) << size;
        AddTried("absurd answers");
    }
}

TEST(AbsurdHosts, A_colour_is_kept_as_it_is_answered) {
    FakeHost host;
    host.Serve(ShadedFrames(1));
    PluginSession session(host);
    session.Click(IDC_SELECT);
    for (const uint32_t color : {0xFFFFFFFFu, 0x80000000u, 0u}) {
        host.chosenColor = color;
        session.Command(IDC_BACKGROUND_COLOR);
        EXPECT_EQ(session.TextOf(IDC_BACKGROUND_COLOR), std::to_string(color));
        host.ClearTranscript();
        session.Click(IDC_TEST);
        EXPECT_THAT(host.Frames(), SizeIs(1));
        AddTried("absurd answers");
    }
}

}  // namespace
}  // namespace kfx::test
