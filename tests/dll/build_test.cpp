// SPDX-License-Identifier: MIT
// Builds as the window starts them: the order of requests, refusals at every point, refused memory. What the
// records hold is covered by the build transcripts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kMemoryError[] = "Memory error";
constexpr char kNoTask[] = "Error creating new task.";
constexpr char kNoImage[] = "There has been an error adding an image to the current file object.";
const char kEmboss[] = "MainEffect = 1\n";

// Request code with its word, or its text, or the message: "13 1/3", "10 Building", "2", "MSG ...".
std::vector<std::string> Outline(const std::vector<std::string>& transcript) {
    std::vector<std::string> outline;
    for (const std::string& line : transcript) {
        const auto field = [&line](const std::string& name) {
            const size_t start = line.find(" " + name + "=") + name.size() + 2;
            return line.substr(start, line.find(' ', start) - start);
        };
        if (line.find("REQ ") != 0) {
            outline.push_back(line);
            continue;
        }
        std::string entry = field("code");
        if (entry == "13") entry += " " + field("value") + "/" + field("pointer");
        if (entry == "10") entry += " " + field("text");
        if (entry == "4") entry += " " + field("value");
        outline.push_back(entry);
    }
    return outline;
}

class Build : public SourceWindowTest {
protected:
    Build() : SourceWindowTest(ShadedFrames(3), WithConfiguration(kEmboss)) {}
};

TEST_F(Build, Asks_the_host_in_order_and_closes_the_window) {
    host.ClearTranscript();
    session.Click(IDC_BUILD);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(Outline(host.Transcript()),
                ElementsAre("13 0/0", "10 \"Building\"", "10 \"Building\"", "13 0/3", "13 1/3", "13 2/3",
                            "13 0/0", "10 \"Remapping\"", "13 0/3", "13 1/3", "13 2/3", "13 0/0", "1", "2",
                            "2", "2", "3", "4 1"));
    EXPECT_THAT(host.Requests(HostRequest::AddImage), Each(HasSubstr("target=record")));
    EXPECT_THAT(session.Messages(), IsEmpty());
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainEffect = 1\r\n"));
}

TEST_F(Build, A_test_opens_a_test_task_and_keeps_the_window) {
    session.Click(IDC_TEST);
    ASSERT_TRUE(session.IsOpen());
    EXPECT_EQ(host.Requests(HostRequest::NewTask).size(), 0u);
    EXPECT_EQ(host.Requests(HostRequest::NewTestTask).size(), 1u);
    EXPECT_EQ(host.Frames().size(), 3u);
    session.Click(IDC_TEST);
    EXPECT_EQ(host.Frames().size(), 6u) << "and once more";
    EXPECT_EQ(CountLedger().liveBlocks, 1u);
}

TEST(BuildInOwnWindow, A_plain_build_is_reached_by_its_command_only) {
    FakeHost host;
    host.Serve(ShadedFrames(3));
    PluginSession session(host, WithConfiguration(std::string(kEmboss) + "Truecolour = 1\n"));
    session.Click(IDC_SELECT);
    session.Command(IDM_BUILD_PLAIN);
    EXPECT_TRUE(session.IsOpen());
    EXPECT_EQ(host.Requests(HostRequest::NewTask).size(), 1u);
    EXPECT_THAT(host.Requests(HostRequest::AddImage), Each(HasSubstr("image=24x20x8 ")))
        << "true colour is forced off";
    EXPECT_TRUE(session.IsChecked(IDC_TRUE_COLOR));
}

TEST_F(Build, True_colour_hands_over_24_bits_and_each_fixed_palette_its_own_depth) {
    session.Click(IDC_TEST);
    EXPECT_THAT(host.Requests(HostRequest::AddImage), Each(HasSubstr("image=24x20x24 ")));
    session.Click(IDC_TRUE_COLOR);
    const int bits[] = {1, 4, 5, 6, 7, 8, 8, 8, 8};
    for (int palette = 0; palette < 9; ++palette) {
        session.Choose(IDC_PALETTE, palette);
        host.ClearTranscript();
        session.Click(IDC_TEST);
        const int depth = bits[palette] == 1 ? 1 : bits[palette] == 4 ? 4 : 8;
        EXPECT_THAT(
            host.Requests(HostRequest::NewTestTask),
            ElementsAre(HasSubstr(" bits=" + std::to_string(bits[palette]) + " width=24 height=20 ")));
        EXPECT_THAT(host.Requests(HostRequest::AddImage),
                    Each(HasSubstr("image=24x20x" + std::to_string(depth) + " ")))
            << "palette " << palette;
    }
}

TEST_F(Build, The_comment_is_left_out_on_request) {
    session.Click(IDC_ADD_COMMENT);
    session.Click(IDC_TEST);
    EXPECT_THAT(host.Requests(HostRequest::AddComment), IsEmpty());
    EXPECT_EQ(host.Requests(HostRequest::CloseTask).size(), 1u);
}

TEST(BuildInOwnWindow, No_frames_are_a_memory_error) {
    FakeHost host;
    host.Serve(MakeAnimationBlock({}));
    PluginSession session(host, WithConfiguration(kEmboss));
    session.Click(IDC_SELECT);
    session.Click(IDC_BUILD);
    EXPECT_EQ(session.WaitUntilClosed(), 1u) << "the window closes whatever came of the build";
    EXPECT_THAT(session.Messages(), ElementsAre(kMemoryError));
    EXPECT_THAT(host.Requests(HostRequest::NewTask), IsEmpty());
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

TEST_F(Build, A_refused_task_is_told_and_nothing_more_is_asked) {
    host.ClearTranscript();
    host.Refuse(HostRequest::NewTask, 1);
    session.Click(IDC_BUILD);
    session.WaitUntilClosed();
    const std::vector<std::string> outline = Outline(host.Transcript());
    ASSERT_GE(outline.size(), 2u);
    EXPECT_EQ(outline[outline.size() - 2], "1");
    EXPECT_EQ(outline.back(), std::string("MSG \"") + kNoTask + "\"");
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

TEST_F(Build, A_refused_frame_is_told_and_the_task_closed_as_failed) {
    for (int occurrence = 1; occurrence <= 3; ++occurrence) {
        host.ClearTranscript();
        host.Refuse(HostRequest::AddImage, occurrence);
        session.Click(IDC_TEST);
        EXPECT_EQ(host.Requests(HostRequest::AddImage).size(), static_cast<size_t>(occurrence));
        EXPECT_THAT(host.Requests(HostRequest::AddComment), IsEmpty());
        EXPECT_THAT(host.Requests(HostRequest::CloseTask),
                    ElementsAre("REQ code=4 target=record value=0 pointer=0 answer=1"));
        EXPECT_THAT(host.Transcript(), Contains(std::string("MSG \"") + kNoImage + "\""));
        EXPECT_EQ(CountLedger().liveBlocks, 1u) << occurrence;
    }
}

// The other answers carry no meaning: a build goes on whatever they are.
TEST_F(Build, Refused_texts_progress_comment_and_close_change_nothing) {
    host.ClearTranscript();
    session.Click(IDC_TEST);
    const std::vector<std::string> expected = Outline(host.Transcript());
    for (const HostRequest request : {HostRequest::SetStatusText, HostRequest::Progress,
                                      HostRequest::AddComment, HostRequest::CloseTask}) {
        for (int occurrence = 1; occurrence <= 12; ++occurrence) {
            host.ClearTranscript();
            host.Refuse(request, occurrence);
            session.Click(IDC_TEST);
            ASSERT_EQ(Outline(host.Transcript()), expected)
                << static_cast<int>(request) << " at " << occurrence;
            if (host.Requests(request).size() < static_cast<size_t>(occurrence)) break;
        }
    }
    EXPECT_THAT(session.Messages(), IsEmpty());
    EXPECT_EQ(CountLedger().liveBlocks, 1u);
}

TEST(BuildInOwnWindow, Refused_memory_at_any_point_leaves_no_leak_and_the_window_usable) {
    for (const char* options :
         {"Truecolour = 1\n", "Truecolour = 0\nMainSupercompress = 1\nMainDither = 1\n"}) {
        FakeHost host;
        host.Serve(ShadedFrames(3));
        PluginSession session(host, WithConfiguration(std::string(kEmboss) + options));
        session.Click(IDC_SELECT);
        session.Click(IDC_CUSTOM_PALETTE);
        for (size_t number = 1; number < 300; ++number) {
            RefuseGlobalAllocations(number, number);
            session.Command(IDC_TEST);
            const bool refused = CountLedger().allocations >= number;
            RefuseGlobalAllocations(0, 0);
            ASSERT_EQ(CountLedger().liveBlocks, 1u) << options << number;
            ASSERT_EQ(CountLedger().lockedBlocks, 0u) << options << number;
            ASSERT_EQ(CountLedger().strangeFrees, 0u) << options << number;
            if (!refused) break;
            ASSERT_LT(number, 299u);
        }
        EXPECT_THAT(session.Messages(), Not(IsEmpty()));
        EXPECT_THAT(session.Messages(), Each(testing::StrEq(kMemoryError)));
        host.ClearTranscript();
        session.Click(IDC_TEST);
        EXPECT_EQ(host.Frames().size(), 3u) << "afterwards all is well";
    }
}

// A host that handles messages while it takes a frame: the user's clicks arrive in the middle of the build.
HWND clickedWindow = nullptr;
HostCallback answeringHost = nullptr;

uint64_t ClickThenAnswer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (request == static_cast<uint32_t>(HostRequest::AddImage)) {
        for (const WPARAM command : {IDC_TEST, IDC_SELECT, IDC_CANCEL, IDC_BUILD, IDM_BUILD_PLAIN}) {
            SendMessageA(clickedWindow, WM_COMMAND, command, 0);
        }
    }
    return answeringHost(target, request, word, pointer);
}

TEST(BuildInOwnWindow,
     Clicks_that_the_host_lets_through_neither_start_a_second_build_nor_exchange_the_source) {
    FakeHost host;
    host.Serve(ShadedFrames(3));
    answeringHost = host.context.callback;
    host.context.callback = ClickThenAnswer;
    PluginSession session(host, WithConfiguration(kEmboss));
    clickedWindow = session.Window();
    session.Click(IDC_SELECT);
    session.Click(IDC_TEST);
    EXPECT_TRUE(session.IsOpen());
    EXPECT_EQ(host.Requests(HostRequest::NewTestTask).size(), 1u);
    EXPECT_EQ(host.Requests(HostRequest::NewTask).size(), 0u);
    EXPECT_EQ(host.Requests(HostRequest::OpenAnimation).size(), 1u);
    EXPECT_EQ(host.Frames().size(), 3u);
}

TEST(BuildInOwnWindow, A_single_frame_is_never_supercompressed) {
    FakeHost host;
    host.Serve(MakeAnimationBlock({{BytesOf(ShadedPicture(24, 20, 1).handle), {}}}));
    PluginSession session(
        host, WithConfiguration(std::string(kEmboss) + "Truecolour = 0\nMainSupercompress = 1\n"));
    session.Click(IDC_SELECT);
    session.Click(IDC_TEST);
    EXPECT_THAT(host.Requests(HostRequest::SetStatusText), Not(Contains(HasSubstr("Supercompressing"))));
}

}  // namespace
}  // namespace kfx::test
