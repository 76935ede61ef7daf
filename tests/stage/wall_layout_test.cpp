// SPDX-License-Identifier: MIT
#include "stage/wall_layout.h"

#include <gtest/gtest.h>

namespace kfx::stage {
namespace {

// Twenty tiles of 100 x 80, four in a row: five rows of 90 and 10 above.
const WallLayout kFour = LayOutWall(470, 20, 100, 80, 10);

TEST(WallLayout, As_many_columns_as_fit_stand_in_the_middle) {
    EXPECT_EQ(kFour.columns, 4u);
    EXPECT_EQ(kFour.left, 20);
    EXPECT_EQ(kFour.height, 460);
    EXPECT_EQ(TileLeft(kFour, 5), 130);
    EXPECT_EQ(TileTop(kFour, 5), 100);
    EXPECT_EQ(LayOutWall(449, 20, 100, 80, 10).columns, 3u);
    EXPECT_EQ(LayOutWall(450, 20, 100, 80, 10).columns, 4u);
}

TEST(WallLayout, A_narrow_window_has_one_column_and_a_wide_one_no_more_than_tiles) {
    EXPECT_EQ(LayOutWall(30, 20, 100, 80, 10).columns, 1u);
    EXPECT_EQ(LayOutWall(0, 20, 100, 80, 10).left, 0);
    EXPECT_EQ(LayOutWall(9999, 3, 100, 80, 10).columns, 3u);
    EXPECT_EQ(LayOutWall(500, 0, 100, 80, 10).height, 10);
}

TEST(WallLayout, Scrolling_to_a_tile_moves_no_further_than_needed) {
    EXPECT_EQ(LargestScroll(kFour, 200), 260);
    EXPECT_EQ(LargestScroll(kFour, 900), 0);
    EXPECT_EQ(ScrollToTile(kFour, 200, 0, 0), 0);
    EXPECT_EQ(ScrollToTile(kFour, 200, 0, 4), 0);
    EXPECT_EQ(ScrollToTile(kFour, 200, 0, 8), 80);
    EXPECT_EQ(ScrollToTile(kFour, 200, 260, 8), 180);
    EXPECT_EQ(ScrollToTile(kFour, 200, 0, 19), 260);
    EXPECT_EQ(ScrollToTile(kFour, 900, 0, 19), 0);
}

TEST(WallLayout, Visible_are_the_tiles_of_which_something_is_seen) {
    TileRange range = VisibleTiles(kFour, 200, 0);
    EXPECT_EQ(range.first, 0u);
    EXPECT_EQ(range.last, 11u);
    range = VisibleTiles(kFour, 100, 90);
    EXPECT_EQ(range.first, 4u);
    EXPECT_EQ(range.last, 7u);
    range = VisibleTiles(LayOutWall(100, 0, 10, 10, 1), 100, 0);
    EXPECT_GT(range.first, range.last);
}

TEST(WallLayout, The_focus_moves_over_the_grid_and_stays_at_its_edges) {
    const auto beside = [](size_t tile, WallStep step) { return TileBeside(kFour, 200, tile, step); };
    EXPECT_EQ(beside(0, WallStep::Left), 0u);
    EXPECT_EQ(beside(4, WallStep::Left), 3u);
    EXPECT_EQ(beside(3, WallStep::Right), 4u);
    EXPECT_EQ(beside(19, WallStep::Right), 19u);
    EXPECT_EQ(beside(2, WallStep::Up), 2u);
    EXPECT_EQ(beside(6, WallStep::Up), 2u);
    EXPECT_EQ(beside(6, WallStep::Down), 10u);
    EXPECT_EQ(beside(17, WallStep::Down), 17u);
    EXPECT_EQ(beside(1, WallStep::PageDown), 9u);
    EXPECT_EQ(beside(17, WallStep::PageDown), 19u);
    EXPECT_EQ(beside(9, WallStep::PageUp), 1u);
    EXPECT_EQ(beside(6, WallStep::PageUp), 2u);
    EXPECT_EQ(beside(6, WallStep::First), 0u);
    EXPECT_EQ(beside(6, WallStep::Last), 19u);
    const WallLayout three = LayOutWall(340, 20, 100, 80, 10);
    EXPECT_EQ(TileBeside(three, 200, 17, WallStep::Down), 19u);
}

}  // namespace
}  // namespace kfx::stage
