// SPDX-License-Identifier: MIT
// Scrolling the effects' sliders in the plug-in's window.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(SlidersInOwnWindow, Move_by_one_and_by_an_eighth_of_their_maximum) {
    FakeHost host;
    PluginSession session(
        host, WithConfiguration("Style014Radius = 100\nStyle011Size = 4\nStyle011Density = 100\n"));
    struct Step {
        int slider, code, position;
    };
    const Step steps[] = {
        {IDC_MOTION_BLUR_RADIUS, SB_LINERIGHT, 101}, {IDC_MOTION_BLUR_RADIUS, SB_LINELEFT, 100},
        {IDC_MOTION_BLUR_RADIUS, SB_PAGERIGHT, 137},  // 5 to 300: the maximum counts, not the range
        {IDC_MOTION_BLUR_RADIUS, SB_PAGELEFT, 100},  {IDC_RASTER_SIZE, SB_PAGERIGHT, 5},
        {IDC_RASTER_SIZE, SB_PAGELEFT, 4},           {IDC_RASTER_DENSITY, SB_PAGERIGHT, 131},
        {IDC_SWIRL_ANGLE, SB_PAGERIGHT, 1845},       {IDC_SWIRL_ANGLE, SB_PAGELEFT, 1485},
    };
    for (const Step& step : steps) {
        session.Scroll(step.slider, step.code);
        EXPECT_EQ(session.PositionOf(step.slider), step.position) << step.slider << " code " << step.code;
        const int shown = step.slider == IDC_SWIRL_ANGLE ? step.position - 1440 : step.position;
        EXPECT_EQ(session.TextOf(step.slider + 1), std::to_string(shown)) << step.slider;
    }
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Style011Density = 131\r\n"));
}

TEST(SlidersInOwnWindow, A_page_beyond_the_end_lands_on_it) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("Style014Radius = 290\n"));
    session.Scroll(IDC_MOTION_BLUR_RADIUS, SB_PAGERIGHT);
    EXPECT_EQ(session.PositionOf(IDC_MOTION_BLUR_RADIUS), 300);
    session.ClearEvents();
    session.Scroll(IDC_MOTION_BLUR_RADIUS, SB_PAGERIGHT);
    session.Scroll(IDC_MOTION_BLUR_RADIUS, SB_LINERIGHT);
    EXPECT_THAT(session.Events(), IsEmpty()) << "at the end nothing moves and nothing follows";
}

// The lower bound is 0 and not the range's minimum: 0 is asked for, the scroll bar keeps 1, and the command
// follows because 0 differed from the position before.
TEST(SlidersInOwnWindow, Line_left_at_the_minimum_stays_there_but_is_stored_again) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("Style017Radius = 1\n"));
    session.Choose(IDC_EFFECT, 6);
    SetWindowTextA(session.Control(IDC_IMPLODE_RADIUS + 1), "?");
    session.ClearEvents();
    session.Scroll(IDC_IMPLODE_RADIUS, SB_LINELEFT);
    EXPECT_EQ(session.PositionOf(IDC_IMPLODE_RADIUS), 1);
    EXPECT_EQ(session.TextOf(IDC_IMPLODE_RADIUS + 1), "1");
    EXPECT_THAT(session.Events(), Contains("preview"));
}

TEST(SlidersInOwnWindow, At_0_nothing_goes_lower) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("Style014Angle = 3\n"));
    session.Scroll(IDC_MOTION_BLUR_ANGLE, SB_PAGELEFT);
    EXPECT_EQ(session.PositionOf(IDC_MOTION_BLUR_ANGLE), 0);
    session.ClearEvents();
    session.Scroll(IDC_MOTION_BLUR_ANGLE, SB_LINELEFT);
    EXPECT_THAT(session.Events(), IsEmpty());
}

class Sliders : public WindowTest {};

TEST_F(Sliders, Dragging_shows_the_position_and_changes_nothing_else) {
    session.Choose(IDC_EFFECT, 17);
    session.ClearEvents();
    session.Scroll(IDC_SWIRL_ANGLE, SB_THUMBTRACK, 0);
    EXPECT_EQ(session.TextOf(IDC_SWIRL_ANGLE + 1), "-1440");
    session.Scroll(IDC_SWIRL_ANGLE, SB_THUMBTRACK, 1500);
    EXPECT_EQ(session.TextOf(IDC_SWIRL_ANGLE + 1), "60");
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1485);
    EXPECT_THAT(session.Events(), IsEmpty());
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Style015Angle = 1485\r\n"));
}

TEST_F(Sliders, Letting_go_moves_stores_and_repaints) {
    session.Choose(IDC_EFFECT, 17);
    session.ClearEvents();
    session.Scroll(IDC_SWIRL_ANGLE, SB_THUMBPOSITION, 2000);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 2000);
    EXPECT_EQ(session.TextOf(IDC_SWIRL_ANGLE + 1), "560");
    EXPECT_THAT(session.Events(), testing::ElementsAre("preview"));
    session.Scroll(IDC_SWIRL_ANGLE, SB_THUMBPOSITION, 60000);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 2880);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Style015Angle = 2880\r\n"));
}

TEST_F(Sliders, Other_scroll_codes_leave_the_position) {
    session.ClearEvents();
    for (const int code : {SB_LEFT, SB_RIGHT, SB_ENDSCROLL, 99}) {
        session.Scroll(IDC_SWIRL_ANGLE, code, 7);
        EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1485) << code;
    }
    EXPECT_THAT(session.Events(), IsEmpty());
}

TEST_F(Sliders, Vertical_scroll_messages_count_alike) {
    SendMessageA(session.Window(), WM_VSCROLL, SB_LINEDOWN,
                 reinterpret_cast<LPARAM>(session.Control(IDC_SWIRL_ANGLE)));
    session.Settle();
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1486);
}

TEST_F(Sliders, A_scroll_message_without_a_scroll_bar_is_ignored) {
    SendMessageA(session.Window(), WM_HSCROLL, SB_LINERIGHT, 0);
    EXPECT_TRUE(session.Settle());
}

// What an effect does with a position, seen in a frame that it builds.
std::vector<uint8_t> SwirledFrame(const std::string& angle, bool rangesFail) {
    FakeHost host;
    host.Serve(MakeAnimationBlock({{BytesOf(ShadedPicture(40, 40, 1).handle), {}}}));
    SessionOptions options = WithConfiguration("MainEffect = 17\nStyle015Angle = " + angle + "\n");
    options.scrollRangesFail = rangesFail;
    PluginSession session(host, options);
    session.Click(IDC_SELECT);
    session.Click(IDC_TEST);
    return host.Frames().empty() ? std::vector<uint8_t>() : host.Frames()[0];
}

TEST(SlidersInOwnWindow, A_position_without_a_range_is_read_as_0_to_100) {
    const std::vector<uint8_t> expected = SwirledFrame("100", false);
    ASSERT_FALSE(expected.empty());
    EXPECT_NE(SwirledFrame("1485", false), expected);
    EXPECT_EQ(SwirledFrame("1485", true), expected);
}

}  // namespace
}  // namespace kfx::test
