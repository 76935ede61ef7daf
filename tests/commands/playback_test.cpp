// SPDX-License-Identifier: MIT
// Two animations on the axis of time, and how much their pictures differ.
#include "commands/playback.h"

#include <gtest/gtest.h>

#include <cmath>

#include "commands/color_profile.h"
#include "commands/difference_sheet.h"
#include "commands/times.h"

namespace kfx::commands {
namespace {

constexpr int kWidth = 6;
constexpr int kHeight = 4;

// A frame in one grey, shown for so many milliseconds.
Frame GreyFrame(uint8_t grey, int milliseconds) {
    Frame frame;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const uint8_t pixel[4] = {grey, grey, grey, 255};
        frame.pixels.insert(frame.pixels.end(), pixel, pixel + 4);
    }
    frame.milliseconds = milliseconds;
    return frame;
}

Animation Movie(const std::vector<Frame>& frames) {
    Animation animation;
    animation.width = kWidth;
    animation.height = kHeight;
    animation.loopCount = kLoopForever;
    animation.frames = frames;
    return animation;
}

bool LookEqual(const Animation& a, const Animation& b, int tolerance = 0) {
    const Comparison result = CompareAnimations(a, b, {tolerance});
    bool isEqual = result.sameSize && result.samePlays && result.sameDuration;
    for (const Moment& moment : result.moments) isEqual = isEqual && moment.differentPixels == 0;
    return isEqual;
}

TEST(DifferenceSheet, A_pixel_that_differs_by_one_level_is_as_red_as_any) {
    for (const int level : {99, 0}) {
        Animation changed = Movie({GreyFrame(100, 40)});
        changed.frames[0].pixels[4 * 7] = static_cast<uint8_t>(level);
        const Animation whole = Movie({GreyFrame(100, 40)});
        const Picture sheet =
            DrawDifferences("A and B", whole, changed, CompareAnimations(whole, changed, {}));
        int red = 0;
        for (size_t i = 0; i + 3 < sheet.pixels.size(); i += 4)
            red += sheet.pixels[i] == 220 && sheet.pixels[i + 1] == 0 && sheet.pixels[i + 2] == 0;
        EXPECT_EQ(red, 1) << level;
    }
}

TEST(Playback, A_frame_split_in_two_is_equal_and_other_times_are_not) {
    const Animation whole = Movie({GreyFrame(10, 40), GreyFrame(20, 80)});
    EXPECT_TRUE(LookEqual(whole, Movie({GreyFrame(10, 40), GreyFrame(20, 30), GreyFrame(20, 50)})));
    EXPECT_FALSE(LookEqual(whole, Movie({GreyFrame(10, 41), GreyFrame(20, 79)})));
    EXPECT_FALSE(LookEqual(whole, Movie({GreyFrame(10, 40), GreyFrame(20, 90)})));
    EXPECT_FALSE(LookEqual(whole, Movie({GreyFrame(10, 40), GreyFrame(21, 80)})));
}

TEST(Playback, Rounded_times_are_equal_within_the_tolerance_only) {
    const Animation exact = Movie({GreyFrame(10, 33), GreyFrame(20, 33), GreyFrame(30, 34)});
    EXPECT_TRUE(LookEqual(exact, Movie({GreyFrame(10, 30), GreyFrame(20, 30), GreyFrame(30, 40)}), 10));
    EXPECT_FALSE(LookEqual(exact, Movie({GreyFrame(10, 30), GreyFrame(20, 30), GreyFrame(30, 40)})));
    EXPECT_FALSE(LookEqual(exact, Movie({GreyFrame(10, 30), GreyFrame(20, 15), GreyFrame(30, 55)}), 10));
    // Every frame is compared with at least one, also where all are short.
    const Animation early =
        Movie({GreyFrame(10, 10), GreyFrame(20, 20), GreyFrame(30, 20), GreyFrame(40, 20)});
    const Animation late =
        Movie({GreyFrame(10, 20), GreyFrame(20, 20), GreyFrame(30, 20), GreyFrame(40, 10)});
    EXPECT_FALSE(LookEqual(early, late, 10));
}

TEST(Playback, Repetitions_count_unless_both_show_one_picture) {
    Animation once = Movie({GreyFrame(10, 40), GreyFrame(20, 40)});
    once.loopCount = kLoopNone;
    EXPECT_FALSE(LookEqual(once, Movie({GreyFrame(10, 40), GreyFrame(20, 40)})));
    Animation still = Movie({GreyFrame(10, 0)});
    still.loopCount = kLoopNone;
    EXPECT_TRUE(LookEqual(still, Movie({GreyFrame(10, 40), GreyFrame(10, 40)})));
    EXPECT_FALSE(LookEqual(still, Movie({GreyFrame(11, 40), GreyFrame(11, 40)})));
}

TEST(Playback, A_frame_without_a_time_is_shown_for_a_tenth_of_a_second) {
    EXPECT_TRUE(LookEqual(Movie({GreyFrame(10, 0), GreyFrame(20, 50)}),
                          Movie({GreyFrame(10, 100), GreyFrame(20, 50)})));
    EXPECT_FALSE(
        LookEqual(Movie({GreyFrame(10, 0), GreyFrame(20, 0)}), Movie({GreyFrame(10, 0), GreyFrame(21, 0)})));
}

TEST(Playback, Hidden_colors_do_not_count_and_alpha_does) {
    Animation a = Movie({GreyFrame(10, 40)}), b = a;
    for (Animation* animation : {&a, &b}) animation->frames[0].transparent = true;
    a.frames[0].pixels[3] = b.frames[0].pixels[3] = 0;
    b.frames[0].pixels[0] = 200;
    EXPECT_TRUE(LookEqual(a, b));
    b.frames[0].pixels[3] = 1;
    EXPECT_FALSE(LookEqual(a, b));
}

TEST(Playback, The_first_difference_is_found_in_time_and_place) {
    const Animation a = Movie({GreyFrame(10, 40), GreyFrame(20, 40), GreyFrame(30, 40)});
    Animation b = a;
    b.frames[1].pixels[4 * (2 * kWidth + 5) + 1] = 21;
    b.frames[1].pixels[4 * (3 * kWidth + 0) + 1] = 22;
    b.frames[2].pixels[0] = 0;
    const Comparison result = CompareAnimations(a, b, {});
    ASSERT_EQ(result.moments.size(), 3u);
    EXPECT_EQ(result.moments[0].differentPixels, 0u);
    EXPECT_TRUE(std::isinf(result.moments[0].quality.psnr));
    const Moment& moment = result.moments[1];
    EXPECT_EQ(moment.milliseconds, 40);
    EXPECT_EQ(moment.differentPixels, 2u);
    EXPECT_EQ(moment.x, 5);
    EXPECT_EQ(moment.y, 2);
    // The squared differences are 1 and 4, in 3 x 24 values.
    EXPECT_NEAR(moment.quality.psnr, 10 * std::log10(255.0 * 255.0 * 72 / 5), 1e-9);
}

TEST(Playback, Animations_of_two_sizes_are_not_compared) {
    Animation other = Movie({GreyFrame(10, 40)});
    std::swap(other.width, other.height);
    const Comparison result = CompareAnimations(Movie({GreyFrame(10, 40)}), other, {});
    EXPECT_FALSE(result.sameSize);
    EXPECT_TRUE(result.moments.empty());
}

// The figures were computed by a script of a few lines from the definitions alone. For a frame of the sample
// and its lossy WebP file, where this gives 31.85 dB and 0.9693, ffmpeg's filters give 31.83 dB and 0.9687.
TEST(PictureQuality, Figures_are_those_of_the_definitions) {
    constexpr int kSide = 21, kRows = 18;
    Frame a, b;
    for (int y = 0; y < kRows; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const int red = (12 * x + 3 * y) % 256, green = (13 * y + x) % 256, blue = x * y % 256;
            for (const int level : {red, green, blue, 255}) a.pixels.push_back(static_cast<uint8_t>(level));
            for (const int level :
                 {std::min(255, red + 4 * (x % 3)), green, std::max(0, blue - 3 * (y % 5)), 255})
                b.pixels.push_back(static_cast<uint8_t>(level));
        }
    }
    const PictureQuality quality = ComparePictures(a, b, kSide, kRows);
    EXPECT_NEAR(quality.psnr, 34.48150690724518, 1e-9);
    EXPECT_NEAR(quality.ssim, 0.9990775340892555, 1e-9);
}

TEST(PictureQuality, Of_two_grounds_under_transparent_pixels_the_worse_counts) {
    Frame a = GreyFrame(0, 40), b = a;
    a.transparent = b.transparent = true;
    // Black that is half seen differs from full black over white only.
    b.pixels[3] = 127;
    EXPECT_NEAR(ComparePictures(a, b, kWidth, kHeight).psnr,
                10 * std::log10(255.0 * 255.0 * 24 / (128.0 * 128.0)), 1e-9);
}

TEST(Times, Equal_ones_in_a_row_are_told_together) {
    std::vector<Frame> frames(24, GreyFrame(1, 80));
    EXPECT_EQ(TimesText(Movie(frames)), "24 x 80 ms");
    frames.resize(3);
    frames[1].milliseconds = 45;
    EXPECT_EQ(TimesText(Movie(frames)), "80 ms, 45 ms, 80 ms");
    frames.clear();
    for (int i = 0; i < 9; ++i) frames.push_back(GreyFrame(1, 10 * i + 20));
    EXPECT_EQ(TimesText(Movie(frames)), "20 to 100 ms");
    EXPECT_EQ(SecondsText(1920), "1.92 s");
    EXPECT_EQ(SecondsText(33), "0.033 s");
    EXPECT_EQ(PlaysText(kLoopForever), "forever");
    EXPECT_EQ(PlaysText(kLoopNone), "once");
    EXPECT_EQ(PlaysText(2), "3 times");
}

// A profile with one tag.
std::vector<uint8_t> Profile(const std::vector<uint8_t>& description) {
    std::vector<uint8_t> profile(128);
    const std::vector<uint8_t> table = {
        0, 0, 0, 1, 'd', 'e', 's', 'c', 0, 0, 0, 144, 0, 0, 0, static_cast<uint8_t>(description.size())};
    profile.insert(profile.end(), table.begin(), table.end());
    profile.insert(profile.end(), description.begin(), description.end());
    return profile;
}

TEST(ColorProfile, Names_of_both_versions_are_read_and_damage_gives_none) {
    const auto old = Profile({'d', 'e', 's', 'c', 0, 0, 0, 0, 0, 0, 0, 5, 's', 'R', 'G', 'B', 0});
    EXPECT_EQ(ProfileName(old), "sRGB");
    const auto recent =
        Profile({'m', 'l', 'u', 'c', 0, 0, 0, 0, 0, 0,  0, 1,   0, 0,    0,    12,   'e',  'n',
                 'U', 'S', 0,   0,   0, 8, 0, 0, 0, 28, 0, 'P', 0, 0xE9, 0xD8, 0x3D, 0xDE, 0x00});
    EXPECT_EQ(ProfileName(recent), "P\xC3\xA9\xF0\x9F\x98\x80");
    for (const auto& profile : {old, recent}) {
        for (size_t size = 0; size < profile.size() - 1; ++size) {
            const std::vector<uint8_t> cut(profile.begin(), profile.begin() + static_cast<ptrdiff_t>(size));
            EXPECT_EQ(ProfileName(cut), "") << size;
        }
    }
}

}  // namespace
}  // namespace kfx::commands
