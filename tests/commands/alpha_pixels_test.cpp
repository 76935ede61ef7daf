// SPDX-License-Identifier: MIT
#include "commands/alpha_pixels.h"

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

TEST(AlphaPixels, Over_black_and_over_white_give_colour_and_alpha_back) {
    Pixels source;
    for (int alpha = 0; alpha < 256; ++alpha) source.insert(source.end(), {255, 128, 0, uint8_t(alpha)});
    Pixels black = source, white = source;
    PutOver(0, &black);
    PutOver(255, &white);
    SolveAlpha(white, &black);
    for (size_t i = 0; i < source.size(); i += 4) {
        const int alpha = source[i + 3];
        ASSERT_EQ(black[i + 3], alpha <= 1 ? 0 : alpha);
        if (alpha <= 1) continue;
        ASSERT_EQ(black[i], 255);
        const int tolerance = 127 / alpha + 1;
        ASSERT_NEAR(black[i + 1], 128, tolerance) << alpha;
        ASSERT_EQ(black[i + 2], 0);
    }
}

TEST(AlphaPixels, The_largest_of_the_channels_alphas_counts) {
    Pixels black = {100, 0, 0, 255, 200, 0, 0, 255};
    const Pixels white = {155, 255, 255, 255, 190, 255, 255, 255};
    SolveAlpha(white, &black);
    EXPECT_EQ(black, (Pixels{128, 0, 0, 200, 200, 0, 0, 255})) << "and never more than all";
}

TEST(AlphaPixels, A_cut_out_keeps_its_alpha_unless_light_shines_farther) {
    const std::vector<uint8_t> alpha = {0, 100, 255};
    const Pixels drawn = {80, 40, 0, 255, 50, 200, 0, 255, 9, 8, 7, 255};
    Pixels outline = drawn, light = drawn;
    CutOut(alpha, false, &outline);
    CutOut(alpha, true, &light);
    EXPECT_EQ(outline, (Pixels{0, 0, 0, 0, 128, 255, 0, 100, 9, 8, 7, 255}));
    EXPECT_EQ(light, (Pixels{255, 128, 0, 80, 64, 255, 0, 200, 9, 8, 7, 255}));
}

TEST(AlphaPixels, Places_are_found_across_the_bounds_of_their_bits) {
    constexpr int kWidth = 4100, kHeight = 3;
    const Pixels places = DrawPlaces(kWidth, kHeight);
    Pixels source(places.size());
    for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i % 251);
    EXPECT_EQ(FetchPlaces(places, source, kWidth, kHeight), source);
    // Everything comes from 60 pixels to the right, or from its own place where that is outside.
    Pixels shifted = places;
    for (size_t y = 0; y < kHeight; ++y) {
        for (size_t x = 0; x + 60 < kWidth; ++x)
            std::copy_n(&places[4 * (y * kWidth + x + 60)], 4, &shifted[4 * (y * kWidth + x)]);
    }
    const Pixels fetched = FetchPlaces(shifted, source, kWidth, kHeight);
    for (const size_t x : {size_t{0}, size_t{4030}, size_t{4039}}) {
        EXPECT_EQ(fetched[4 * (kWidth + x) + 3], source[4 * (kWidth + x + 60) + 3]) << x;
    }
    EXPECT_EQ(fetched[4 * (2 * kWidth - 1)], source[4 * (2 * kWidth - 1)]);
    Pixels wild = places;
    std::fill(wild.begin(), wild.end(), uint8_t{0x88});
    EXPECT_EQ(FetchPlaces(wild, source, kWidth, kHeight).size(), source.size())
        << "no place is followed blindly";
}

TEST(AlphaPixels, Hidden_pixels_take_the_nearest_colour) {
    constexpr int kWidth = 9, kHeight = 7;
    Pixels pixels(4 * kWidth * kHeight);
    const auto place = [](int x, int y) {
        return 4 * (static_cast<size_t>(y) * static_cast<size_t>(kWidth) + static_cast<size_t>(x));
    };
    const auto set = [&](int x, int y, uint8_t red) {
        pixels[place(x, y)] = red;
        pixels[place(x, y) + 3] = 9;
    };
    set(1, 1, 10);
    set(7, 5, 70);
    FillFromNearest(kWidth, kHeight, &pixels);
    const auto at = [&](int x, int y) { return pixels[place(x, y)]; };
    EXPECT_EQ(at(0, 0), 10);
    EXPECT_EQ(at(2, 4), 10);
    EXPECT_EQ(at(8, 6), 70);
    EXPECT_EQ(at(8, 3), 70);
    EXPECT_EQ(pixels[3], 0) << "alpha stays";
    Pixels empty(16);
    FillFromNearest(2, 2, &empty);
    EXPECT_EQ(empty[0], 127);
}

TEST(AlphaPixels, Hidden_pixels_take_colours_in_their_shares) {
    Pixels pixels(4 * 40);
    for (size_t i = 0; i < 4; ++i) {
        pixels[4 * (9 * i)] = i == 0 ? 50 : 200;
        pixels[4 * (9 * i) + 3] = 255;
    }
    FillInProportion(&pixels);
    size_t dark = 0;
    for (size_t i = 0; i < pixels.size(); i += 4) dark += pixels[i] == 50;
    EXPECT_EQ(dark, 10u);
}

TEST(AlphaPixels, Hidden_pixels_take_a_frequent_colour_of_all_frames) {
    std::vector<Frame> frames(2);
    frames[0].pixels = {1, 2, 3, 255, 0, 0, 0, 0};
    frames[1].pixels = {99, 2, 3, 255, 99, 2, 3, 255, 0, 0, 0, 0};
    const RgbColor frequent = FrequentColor(frames);
    for (Frame& frame : frames) FillWith(frequent, &frame.pixels);
    EXPECT_EQ(frames[0].pixels, (Pixels{1, 2, 3, 255, 99, 2, 3, 0}));
    EXPECT_EQ(frames[1].pixels[8], 99);
}

TEST(AlphaPixels, Half_transparent_pixels_are_mixed_or_decided) {
    Pixels pixels = {200, 100, 0, 0, 200, 100, 0, 51, 200, 100, 0, 255, 1, 2, 3, 127, 1, 2, 3, 128};
    Pixels decided = pixels;
    EXPECT_TRUE(ApplyThreshold(&decided));
    EXPECT_EQ(decided[7], 0);
    EXPECT_EQ(decided[15], 0);
    EXPECT_EQ(decided[19], 255);
    EXPECT_FALSE(ApplyThreshold(&decided));
    MixOnto({0, 0, 255}, &pixels);
    EXPECT_EQ(Pixels(pixels.begin(), pixels.begin() + 12),
              (Pixels{200, 100, 0, 0, 40, 20, 204, 255, 200, 100, 0, 255}));
}

}  // namespace
}  // namespace kfx::commands
