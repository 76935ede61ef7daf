// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "stage/view.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr SIZE kPicture = {100, 50};
constexpr RECT kArea = {10, 20, 410, 320};

int WidthOf(const RECT& place) { return static_cast<int>(place.right - place.left); }

TEST(View, A_small_picture_grows_by_a_whole_factor_and_stands_in_the_middle) {
    const RECT place = PlaceOf(View(), kPicture, {0, 0, 350, 200});
    EXPECT_EQ(WidthOf(place), 300);
    EXPECT_EQ(place.left, 25);
    EXPECT_EQ(place.top, 25);
}

TEST(View, A_large_picture_fits_without_losing_its_shape) {
    const RECT place = PlaceOf(View(), {1600, 400}, kArea);
    EXPECT_EQ(WidthOf(place), 400);
    EXPECT_EQ(place.bottom - place.top, 100);
}

TEST(View, Zooming_keeps_the_point_under_the_pointer) {
    View view;
    view.zoom = 8;
    const POINT pointer = {300, 100};
    for (const double factor : {1.25, 1.5, 0.8}) {
        const RECT before = PlaceOf(view, kPicture, kArea);
        const double x = static_cast<double>(pointer.x - before.left) / WidthOf(before);
        ZoomAt(&view, kPicture, kArea, factor, pointer);
        const RECT after = PlaceOf(view, kPicture, kArea);
        EXPECT_NEAR(static_cast<double>(pointer.x - after.left) / WidthOf(after), x, 1.0 / WidthOf(after));
    }
}

TEST(View, A_picture_larger_than_the_area_always_covers_it) {
    View view;
    view.zoom = 8;
    EXPECT_TRUE(CanPan(view, kPicture, kArea));
    PanBy(&view, kPicture, kArea, 10000, -10000);
    const RECT place = PlaceOf(view, kPicture, kArea);
    EXPECT_EQ(place.left, kArea.left);
    EXPECT_EQ(place.bottom, kArea.bottom);
    PanBy(&view, kPicture, kArea, -7, 5);
    EXPECT_EQ(PlaceOf(view, kPicture, kArea).left, kArea.left - 7) << "the edge has not stored the rest";
}

TEST(View, The_dividing_line_stays_in_the_picture) {
    View view;
    const RECT place = PlaceOf(view, kPicture, kArea);
    MoveWipeTo(&view, place, place.left + 40);
    EXPECT_EQ(WipeLineAt(view, place), place.left + 40);
    MoveWipeTo(&view, place, -500);
    EXPECT_EQ(WipeLineAt(view, place), place.left);
    MoveWipeTo(&view, place, 5000);
    EXPECT_EQ(WipeLineAt(view, place), place.right);
}

}  // namespace
}  // namespace kfx::test
