// SPDX-License-Identifier: MIT
// The look of pictures whose order everybody agrees on.
#include "commands/fit_look.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "commands/resize_frame.h"

namespace kfx::commands {
namespace {

constexpr int kWidth = 96;
constexpr int kHeight = 64;

using MakePixel = RgbColor (*)(int x, int y);

Frame Draw(MakePixel make) {
    Frame frame;
    frame.delay = 10;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const RgbColor color = make(x, y);
            frame.pixels.insert(frame.pixels.end(), {color.red, color.green, color.blue, 255});
        }
    }
    return frame;
}

RgbColor Gradient(int x, int y) {
    return {static_cast<uint8_t>(2 * x + 20), static_cast<uint8_t>(3 * y + 30),
            static_cast<uint8_t>(x + y + 40)};
}
RgbColor Texture(int x, int y) {
    const auto level = static_cast<uint8_t>((x * 37 + y * 61 + x * y) % 64 + 90);
    return {level, level, level};
}
RgbColor Flat(int, int) { return {100, 100, 100}; }

// Each channel in so many levels, with the error spread over neighbours or not.
Frame Reduced(const Frame& frame, int levels, bool dither) {
    Frame reduced = frame;
    std::vector<double> left(frame.pixels.begin(), frame.pixels.end());
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            for (int c = 0; c < 3; ++c) {
                const int at = 4 * (y * kWidth + x) + c;
                const double step = 255.0 / (levels - 1);
                const double level =
                    std::min(255.0, std::max(0.0, std::round(left[static_cast<size_t>(at)] / step) * step));
                reduced.pixels[static_cast<size_t>(at)] = static_cast<uint8_t>(std::lround(level));
                const double error = dither ? left[static_cast<size_t>(at)] - level : 0;
                const auto give = [&](int dx, int dy, double share) {
                    if (x + dx < 0 || x + dx >= kWidth || y + dy >= kHeight) return;
                    const int place = at + 4 * (dy * kWidth + dx);
                    left[static_cast<size_t>(place)] += error * share / 16;
                };
                give(1, 0, 7);
                give(-1, 1, 3);
                give(0, 1, 5);
                give(1, 1, 1);
            }
        }
    }
    return reduced;
}

Frame ScaledDownAndUp(Frame frame, int percent) {
    const int width = kWidth * percent / 100, height = kHeight * percent / 100;
    EXPECT_TRUE(ResizeFrame(kWidth, kHeight, width, height, &frame));
    EXPECT_TRUE(ResizeFrame(width, height, kWidth, kHeight, &frame));
    return frame;
}

double Look(const Frame& wanted, const Frame& shown) {
    return LookOf(PictureError(wanted.pixels, shown.pixels, kWidth, kHeight));
}

TEST(FitLook, Equal_pictures_are_exact) {
    for (const MakePixel make : {Gradient, Texture, Flat}) {
        const Frame frame = Draw(make);
        EXPECT_EQ(Look(frame, frame), kExactLook);
    }
}

TEST(FitLook, Evenly_brighter_pictures_have_the_decibels_of_their_difference) {
    Frame brighter = Draw(Flat);
    for (size_t i = 0; i < brighter.pixels.size(); ++i) brighter.pixels[i] = i % 4 < 3 ? 105 : 255;
    EXPECT_NEAR(Look(Draw(Flat), brighter), 20 * std::log10(255.0 / 5), 0.01);
}

TEST(FitLook, Dithering_helps_a_gradient) {
    const Frame gradient = Draw(Gradient);
    for (const int levels : {4, 6, 8}) {
        EXPECT_GT(Look(gradient, Reduced(gradient, levels, true)),
                  Look(gradient, Reduced(gradient, levels, false)) + 1)
            << levels;
    }
}

TEST(FitLook, Many_dithered_colours_look_better_than_few_flat_ones) {
    const Frame gradient = Draw(Gradient);
    EXPECT_GT(Look(gradient, Reduced(gradient, 16, true)), Look(gradient, Reduced(gradient, 3, false)) + 6);
    EXPECT_GT(Look(gradient, Reduced(gradient, 16, true)), Look(gradient, Reduced(gradient, 8, true)));
}

TEST(FitLook, Grain_on_a_flat_picture_is_no_gain) {
    const Frame flat = Draw(Flat);
    Frame grainy = flat;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const int shift = (i + i / kWidth) % 2 ? 12 : -12;
        uint8_t* pixel = grainy.pixels.data() + 4 * static_cast<size_t>(i);
        for (int c = 0; c < 3; ++c) pixel[c] = static_cast<uint8_t>(100 + shift);
    }
    EXPECT_LT(Look(flat, grainy), 45);
}

TEST(FitLook, Smaller_scales_look_worse) {
    for (const MakePixel make : {Gradient, Texture}) {
        const Frame frame = Draw(make);
        double before = kExactLook;
        for (const int percent : {75, 50, 25}) {
            const double look = Look(frame, ScaledDownAndUp(frame, percent));
            EXPECT_LT(look, before) << percent;
            before = look;
        }
    }
    // Lost detail counts although neighbours have the same mean.
    EXPECT_LT(Look(Draw(Texture), ScaledDownAndUp(Draw(Texture), 50)), 34);
}

// Two coloured areas with a coarse black pattern.
RgbColor ColoredPattern(int x, int y) {
    if ((x * 37 + y * 61 + x * y) / 8 % 2 == 0) return {0, 0, 0};
    return x < kWidth / 2 ? RgbColor{255, 220, 40} : RgbColor{30, 40, 200};
}

TEST(FitLook, The_colours_of_wide_areas_count_more_than_sharp_detail) {
    const Frame wanted = Draw(ColoredPattern);
    Frame gray = wanted;
    for (size_t i = 0; i < gray.pixels.size(); i += 4) {
        uint8_t* const pixel = &gray.pixels[i];
        const int level = (299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2]) / 1000;
        pixel[0] = pixel[1] = pixel[2] = static_cast<uint8_t>(level);
    }
    EXPECT_GT(Look(wanted, ScaledDownAndUp(wanted, 50)), Look(wanted, gray) + 3);
}

TEST(FitLook, Wrong_colours_count_at_equal_luma) {
    Frame red = Draw(Flat);
    for (size_t i = 0; i < red.pixels.size(); i += 4) {
        red.pixels[i] = 140;
        red.pixels[i + 1] = 80;
    }
    EXPECT_LT(Look(Draw(Flat), red), 25);
}

TEST(FitLook, What_transparency_hides_does_not_count_and_its_outline_does) {
    Frame wanted = Draw(Texture);
    for (size_t i = 3; i < wanted.pixels.size() / 2; i += 4) wanted.pixels[i] = 0;
    Frame other = wanted;
    for (size_t i = 0; i < other.pixels.size() / 2; i += 4) other.pixels[i] = 200;
    EXPECT_EQ(Look(wanted, other), kExactLook);
    EXPECT_LT(Look(wanted, Draw(Texture)), 15);
}

TEST(FitLook, Pictures_smaller_than_the_window_are_compared) {
    const std::vector<uint8_t> black = {0, 0, 0, 255, 0, 0, 0, 255}, white(8, 255);
    EXPECT_EQ(LookOf(PictureError(black, black, 2, 1)), kExactLook);
    EXPECT_NEAR(LookOf(PictureError(black, white, 1, 2)), 0, 0.01);
}

Animation AnimationOf(const std::vector<Frame>& frames) {
    Animation animation;
    animation.width = kWidth;
    animation.height = kHeight;
    animation.frames = frames;
    return animation;
}

TEST(FitLook, A_frame_counts_as_long_as_it_is_shown) {
    Frame flat = Draw(Flat), wrong = Draw(Texture);
    const Animation shown = AnimationOf({flat, flat});
    Frame shortly = wrong, long_ = wrong;
    shortly.delay = 2;
    long_.delay = 50;
    EXPECT_GT(CompareLooks(AnimationOf({flat, shortly}), shown, {0, 1}),
              CompareLooks(AnimationOf({flat, long_}), shown, {0, 1}) + 3);
}

TEST(FitLook, An_earlier_frame_that_stays_longer_is_compared_with_both) {
    const Animation wanted = AnimationOf({Draw(Flat), Draw(Texture)});
    EXPECT_EQ(CompareLooks(wanted, wanted, {0, 1}), kExactLook);
    EXPECT_LT(CompareLooks(wanted, AnimationOf({Draw(Flat)}), {0, 0}), 40);
}

TEST(FitLook, A_smaller_animation_is_scaled_up) {
    const Animation wanted = AnimationOf({Draw(Texture)});
    Animation half = wanted;
    half.width = kWidth / 2;
    half.height = kHeight / 2;
    ASSERT_TRUE(ResizeFrame(kWidth, kHeight, half.width, half.height, &half.frames[0]));
    EXPECT_DOUBLE_EQ(CompareLooks(wanted, half, {0}),
                     Look(wanted.frames[0], ScaledDownAndUp(wanted.frames[0], 50)));
}

Animation WithTimes(const std::vector<int>& milliseconds) {
    Animation animation;
    for (const int time : milliseconds) animation.frames.emplace_back().milliseconds = time;
    return animation;
}

TEST(FitLook, Frames_that_a_writer_has_joined_are_found) {
    using Numbers = std::vector<size_t>;
    EXPECT_EQ(MatchFrames(WithTimes({10, 20, 30}), WithTimes({10, 20, 30})), (Numbers{0, 1, 2}));
    EXPECT_EQ(MatchFrames(WithTimes({10, 20, 30, 5}), WithTimes({30, 35})), (Numbers{0, 0, 1, 1}));
    EXPECT_EQ(MatchFrames(WithTimes({0, 0, 0}), WithTimes({0, 0, 0})), (Numbers{0, 1, 2}));
    EXPECT_EQ(MatchFrames(WithTimes({10, 10}), WithTimes({20})), (Numbers{0, 0}));
}

}  // namespace
}  // namespace kfx::commands
