// SPDX-License-Identifier: MIT
// Opening a source animation in the plug-in's window, and refusing what is none.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "host/animation_block.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/hostile_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kNotOpened[] = "The animation you have selected could not be opened.";

std::vector<uint8_t> MakeSource(int32_t width, int32_t height, size_t colors = 0) {
    const BlockFrame frame = {BytesOf(RandomPicture(width, height, 1).handle), {}};
    BlockOptions options;
    options.globalPalette.assign(3 * colors, 7);
    return MakeAnimationBlock({frame, frame}, options);
}

// The same kind of block without the room that the helper leaves for a palette: mostly header bytes.
std::vector<uint8_t> MakeSmallSource() {
    std::vector<uint8_t> block = MakeSource(1, 1);
    block.erase(block.begin() + 40, block.begin() + 808);
    const uint32_t headerSize = 40;
    std::memcpy(block.data() + 4, &headerSize, sizeof headerSize);
    return block;
}

TEST(SourceAnimationInOwnWindow, Select_asks_the_host_and_shows_what_it_opened) {
    FakeHost host;
    host.Serve(MakeSource(61, 33), "C:\\pictures\\two frames.gif");
    PluginSession session(host);
    host.ClearTranscript();
    session.ClearEvents();
    session.Click(IDC_SELECT);
    EXPECT_THAT(host.Transcript(),
                ElementsAre("REQ code=16 target=0 value=0 magic=\"pMNA\" size=352 version=4096 "
                            "flags=1 owner=window path=\"\" rest=zero answer=1"));
    EXPECT_EQ(session.TextOf(IDC_SOURCE_PATH), "C:\\pictures\\two frames.gif");
    EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), "61 x 33");
    EXPECT_TRUE(session.IsEnabled(IDC_BUILD));
    EXPECT_TRUE(session.IsEnabled(IDC_TEST));
    EXPECT_THAT(session.Events(), Contains("preview"));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("FileNamePath = C:\\pictures\\two frames.gif\r\n"));
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

TEST(SourceAnimationInOwnWindow, Select_never_names_a_file_even_when_one_is_remembered) {
    FakeHost host;
    host.Serve(MakeSource(5, 3), PluginPath());
    PluginSession session(host);
    session.Click(IDC_SELECT);
    session.Click(IDC_SELECT);
    EXPECT_EQ(host.Requests(HostRequest::OpenAnimation).size(), 2u);
    EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), Each(HasSubstr("path=\"\"")));
}

TEST(SourceAnimationInOwnWindow, Reopening_names_the_remembered_file_only_while_it_exists) {
    FakeHost host;
    host.Serve(MakeSource(5, 3), PluginPath());
    PluginSession session(host);
    session.Click(IDC_SELECT);
    host.ClearTranscript();
    session.Command(IDM_REOPEN_SOURCE);
    EXPECT_THAT(host.Transcript(), ElementsAre(HasSubstr("path=\"" + PluginPath() + "\"")));
    host.Serve(MakeSource(5, 3), "C:\\gone.gif");
    session.Click(IDC_SELECT);
    host.ClearTranscript();
    session.Command(IDM_REOPEN_SOURCE);
    EXPECT_THAT(host.Transcript(), ElementsAre(HasSubstr("path=\"\"")));
}

TEST(SourceAnimationInOwnWindow, A_path_that_fills_its_field_is_kept_to_the_last_character) {
    FakeHost host;
    const std::string path = "C:\\" + std::string(300, 'p');
    host.Serve(MakeSource(5, 3), path);
    PluginSession session(host);
    session.Click(IDC_SELECT);
    EXPECT_EQ(session.TextOf(IDC_SOURCE_PATH), path.substr(0, 260));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("FileNamePath = " + path.substr(0, 260) + "\r\n"));
}

TEST(SourceAnimationInOwnWindow, A_cancelled_choice_changes_nothing_and_says_nothing) {
    FakeHost host;
    host.Serve(MakeSource(61, 33));
    PluginSession session(host);
    host.Refuse(HostRequest::OpenAnimation, 1);
    session.Click(IDC_SELECT);
    EXPECT_FALSE(session.IsEnabled(IDC_BUILD));
    session.Click(IDC_SELECT);
    EXPECT_TRUE(session.IsEnabled(IDC_BUILD));
    session.ClearEvents();
    host.Refuse(HostRequest::OpenAnimation, 1);
    session.Click(IDC_SELECT);
    EXPECT_TRUE(session.IsEnabled(IDC_BUILD));
    EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), "61 x 33");
    EXPECT_THAT(session.Events(), Not(Contains("preview")));
    EXPECT_THAT(session.Messages(), IsEmpty());
    EXPECT_EQ(CountLedger().liveBlocks, 1u);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("FileNamePath = \r\n"))
        << "asking forgets the path first";
}

class SourceAnimation : public SourceWindowTest {
protected:
    SourceAnimation() : SourceWindowTest(MakeSource(61, 33)) {}
};

TEST_F(SourceAnimation, A_new_one_replaces_the_old_one) {
    host.Serve(MakeSource(7, 9));
    session.Click(IDC_SELECT);
    EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), "7 x 9");
    EXPECT_EQ(CountLedger().liveBlocks, 1u);
    session.Close();
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    EXPECT_EQ(CountLedger().strangeFrees, 0u);
}

TEST(SourceAnimationInOwnWindow, No_images_are_accepted_when_the_closing_tag_follows_the_header) {
    FakeHost host;
    BlockOptions options;
    options.width = 20;
    options.height = 10;
    host.Serve(MakeAnimationBlock({}, options));
    PluginSession session(host);
    session.Click(IDC_SELECT);
    EXPECT_TRUE(session.IsEnabled(IDC_BUILD));
    EXPECT_TRUE(session.IsEnabled(IDC_TEST));
    EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), "20 x 10");
    EXPECT_THAT(session.Messages(), IsEmpty());
}

TEST(SourceAnimationInOwnWindow, Match_original_is_offered_exactly_with_a_palette_of_its_own) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "MainPalette = 9\n";
    PluginSession session(host, options);
    EXPECT_EQ(session.ItemsOf(IDC_PALETTE).size(), 9u);
    host.Serve(MakeSource(5, 3, 16));
    session.Click(IDC_SELECT);
    ASSERT_EQ(session.ItemsOf(IDC_PALETTE).size(), 10u);
    EXPECT_EQ(session.ItemsOf(IDC_PALETTE)[9], "Match original");
    EXPECT_EQ(session.SelectionOf(IDC_PALETTE), 9);
    std::vector<uint8_t> emptyPalette = MakeSource(5, 3, 16);
    emptyPalette[36] = 0;
    host.Serve(emptyPalette);
    session.Click(IDC_SELECT);
    EXPECT_EQ(session.ItemsOf(IDC_PALETTE).size(), 9u) << "the flag is there, the colours are not";
    host.Serve(MakeSource(5, 3));
    session.Click(IDC_SELECT);
    EXPECT_EQ(session.ItemsOf(IDC_PALETTE).size(), 9u);
}

// Serves a block to a window that has a sound source of another size. A sound block replaces it; any other is
// refused with a message.
void ExpectDeserved(FakeHost& host, PluginSession& session, const std::vector<uint8_t>& block,
                    const std::string& what) {
    const bool sound = IsAnimation(block.data(), block.size());
    const size_t messages = session.Messages().size();
    const std::string sizeBefore = session.TextOf(IDC_SOURCE_SIZE);
    host.Serve(block);
    session.Click(IDC_SELECT);
    if (sound) {
        ASSERT_EQ(session.Messages().size(), messages) << what;
    } else {
        ASSERT_EQ(session.Messages().size(), messages + 1) << what;
        ASSERT_EQ(session.Messages().back(), kNotOpened) << what;
        ASSERT_EQ(session.TextOf(IDC_SOURCE_SIZE), sizeBefore) << what;
    }
    ASSERT_TRUE(session.IsEnabled(IDC_BUILD)) << what;
    ASSERT_EQ(CountLedger().liveBlocks, 1u) << what;
    ASSERT_EQ(CountLedger().lockedBlocks, 0u) << what;
}

TEST_F(SourceAnimation, Cut_anywhere_it_is_refused_and_the_previous_one_stays) {
    const std::vector<uint8_t> block = MakeSmallSource();
    ASSERT_TRUE(IsAnimation(block.data(), block.size()));
    for (size_t size = 1; size < block.size(); ++size) {
        const std::vector<uint8_t> cut(block.begin(), block.begin() + static_cast<ptrdiff_t>(size));
        ASSERT_NO_FATAL_FAILURE(ExpectDeserved(host, session, cut, "cut at byte " + std::to_string(size)));
    }
    EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), "61 x 33");
}

TEST_F(SourceAnimation, With_any_byte_of_its_headers_flipped_it_is_refused_or_does_no_harm) {
    const std::vector<uint8_t> block = MakeSmallSource();
    for (size_t i = 0; i < block.size(); ++i) {
        std::vector<uint8_t> flipped = block;
        flipped[i] ^= 0xFF;
        ASSERT_NO_FATAL_FAILURE(
            ExpectDeserved(host, session, flipped, "flipped at byte " + std::to_string(i)));
    }
    session.Close();
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

// Every field at the values that have broken readers; what is accepted is drawn and built.
TEST_F(SourceAnimation, With_hostile_fields_it_is_refused_or_built) {
    int effect = 0;
    for (const HostileBlock& block : MutatedBlocks()) {
        if (++effect % 16 == 0) session.Choose(IDC_EFFECT, effect / 16 % 20);
        ASSERT_NO_FATAL_FAILURE(ExpectDeserved(host, session, block.bytes, block.name));
        if (IsAnimation(block.bytes.data(), block.bytes.size())) {
            const size_t messages = session.Messages().size();
            host.ClearTranscript();
            session.Click(IDC_TEST);
            // An end that comes first leaves no frames to build.
            ASSERT_EQ(session.Messages().size() - messages, host.Frames().empty() ? 1u : 0u) << block.name;
        }
        ASSERT_EQ(CountLedger().liveBlocks, 1u) << block.name;
        AddTried("hostile blocks");
    }
    session.Close();
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    EXPECT_EQ(CountLedger().strangeFrees, 0u);
}

}  // namespace
}  // namespace kfx::test
