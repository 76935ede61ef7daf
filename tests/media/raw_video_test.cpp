// SPDX-License-Identifier: MIT
// Streams of uncompressed frames, and the one rate that they have.
#include "media/raw_video.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "media/yuv.h"

namespace kfx {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::StartsWith;

Animation WithTimes(const std::vector<int>& milliseconds) {
    Animation animation;
    animation.width = 2;
    animation.height = 1;
    for (const int time : milliseconds) {
        Frame& frame = animation.frames.emplace_back();
        frame.pixels = {255, 0, 0, 255, 10, 20, 30, 0};
        frame.transparent = true;
        frame.milliseconds = time;
    }
    return animation;
}

// As GIF files have them.
Animation WithDelays(const std::vector<int>& hundredths) {
    Animation animation = WithTimes(hundredths);
    for (Frame& frame : animation.frames) {
        frame.delay = frame.milliseconds;
        frame.milliseconds = kNoMilliseconds;
    }
    return animation;
}

std::string RateOf(const ConstantRate& plan) {
    return std::to_string(plan.rate.numerator) + ":" + std::to_string(plan.rate.denominator);
}

TEST(ConstantRate, Equal_times_are_a_rate_without_rounding) {
    EXPECT_EQ(RateOf(PlanConstantRate(WithTimes({40, 40, 40}))), "25:1");
    EXPECT_EQ(RateOf(PlanConstantRate(WithTimes({70, 70}))), "100:7");
    EXPECT_EQ(RateOf(PlanConstantRate(WithDelays({3, 3, 3}))), "100:3");
    EXPECT_EQ(RateOf(PlanConstantRate(WithTimes({2000}))), "1:2");
    EXPECT_THAT(PlanConstantRate(WithTimes({40, 40, 40})).repeats, ElementsAre(1, 1, 1));
}

TEST(ConstantRate, A_time_of_nothing_is_a_tenth_of_a_second) {
    EXPECT_EQ(RateOf(PlanConstantRate(WithDelays({0, 0}))), "10:1");
}

TEST(ConstantRate, Rounded_times_of_one_rate_give_it_back) {
    for (const char* rate :
         {"24:1", "30:1", "60:1", "24000:1001", "30000:1001", "60000:1001", "12:1", "25:2", "50:1"}) {
        const double numerator = std::atof(rate);
        const double denominator =
            std::atof(std::string(rate).substr(std::string(rate).find(':') + 1).c_str());
        std::vector<int> times;
        int shown = 0;
        for (int i = 1; i <= 1000; ++i) {
            const int end = static_cast<int>(1000.0 * i * denominator / numerator + 0.5);
            times.push_back(end - shown);
            shown = end;
        }
        const ConstantRate plan = PlanConstantRate(WithTimes(times));
        EXPECT_EQ(RateOf(plan), rate);
        EXPECT_THAT(plan.repeats, Each(1u));
    }
    EXPECT_EQ(RateOf(PlanConstantRate(WithDelays({3, 3, 4, 3, 3, 4}))), "30:1");
}

TEST(ConstantRate, Of_two_rates_equally_near_to_the_mean_the_lower_is_taken) {
    EXPECT_EQ(RateOf(PlanConstantRate(WithDelays({3, 3, 2}))), "37:1")
        << "the mean is 37.5, and 38 fits as well";
}

TEST(ConstantRate, Different_times_repeat_frames) {
    const ConstantRate plan = PlanConstantRate(WithDelays({10, 40, 20, 100}));
    EXPECT_EQ(RateOf(plan), "10:1");
    EXPECT_THAT(plan.repeats, ElementsAre(1, 4, 2, 10));
}

TEST(ConstantRate, A_rate_never_passes_a_hundred_and_the_whole_time_stays) {
    const ConstantRate plan = PlanConstantRate(WithTimes({7, 333, 21, 1, 1, 1, 500}));
    EXPECT_EQ(RateOf(plan), "100:1");
    uint32_t steps = 0;
    for (const uint32_t repeat : plan.repeats) steps += repeat;
    EXPECT_EQ(steps, 86u) << "of 864 milliseconds";
}

TEST(ConstantRate, No_frames_are_no_trouble) { EXPECT_TRUE(PlanConstantRate(WithTimes({})).repeats.empty()); }

std::string Written(const Animation& animation, RawFormat format, RgbColor behind = {255, 255, 255}) {
    std::string stream;
    EXPECT_TRUE(WriteRawVideo(animation, PlanConstantRate(animation), format, behind,
                              [&stream](const uint8_t* data, size_t size) {
                                  stream.append(reinterpret_cast<const char*>(data), size);
                                  return true;
                              }));
    return stream;
}

std::string Text(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(RawVideo, A_stream_names_size_rate_format_and_range) {
    EXPECT_EQ(Written(WithTimes({100, 200}), RawFormat::Y4m),
              "YUV4MPEG2 W2 H1 F10:1 Ip A1:1 C444 XCOLORRANGE=LIMITED\n" + std::string("FRAME\n") +
                  Text({81, 235, 90, 128, 240, 128}) + "FRAME\n" + Text({81, 235, 90, 128, 240, 128}) +
                  "FRAME\n" + Text({81, 235, 90, 128, 240, 128}));
}

TEST(RawVideo, Plain_frames_have_no_headers_and_show_what_is_behind) {
    EXPECT_EQ(Written(WithTimes({100}), RawFormat::Rgb, {7, 8, 9}), Text({255, 0, 0, 7, 8, 9}));
    EXPECT_EQ(Written(WithTimes({100}), RawFormat::Rgba), Text({255, 0, 0, 255, 10, 20, 30, 0}));
}

TEST(RawVideo, A_refused_piece_ends_the_stream) {
    const Animation animation = WithTimes({100, 100, 100});
    for (int allowed = 0; allowed < 7; ++allowed) {
        int calls = 0;
        EXPECT_FALSE(WriteRawVideo(animation, PlanConstantRate(animation), RawFormat::Y4m, {},
                                   [&](const uint8_t*, size_t) { return ++calls <= allowed; }));
        EXPECT_EQ(calls, allowed + 1);
    }
}

TEST(RawVideo, Factors_are_those_of_the_matrix_to_the_nearest_65536th) {
    struct Range {
        YuvRange given;
        double brightness;   // steps of a byte for each step of brightness
        double differences;  // and for each step of a colour difference
    };
    for (const Range& range : {Range{kLimitedRange, 255.0 / 219, 255.0 / 224}, Range{kFullRange, 1, 1}}) {
        // The shares of red, green and blue in the brightness are 0.299, 0.587 and 0.114.
        const double red = 2 * (1 - 0.299) * range.differences, blue = 2 * (1 - 0.114) * range.differences;
        EXPECT_EQ(range.given.brightness, std::lround(65536 * range.brightness));
        EXPECT_EQ(range.given.redFromCr, std::lround(65536 * red));
        EXPECT_EQ(range.given.greenFromCb, std::lround(-65536 * blue * 0.114 / 0.587));
        EXPECT_EQ(range.given.greenFromCr, std::lround(-65536 * red * 0.299 / 0.587));
        EXPECT_EQ(range.given.blueFromCb, std::lround(65536 * blue));
    }
}

TEST(RawVideo, A_colour_comes_back_within_1_of_red_and_green_and_2_of_blue) {
    for (int red = 0; red < 256; red += 3) {
        for (int green = 0; green < 256; green += 3) {
            for (int blue = 0; blue < 256; ++blue) {
                const RgbColor color = {static_cast<uint8_t>(red), static_cast<uint8_t>(green),
                                        static_cast<uint8_t>(blue)};
                const RgbColor back = RgbOf(YuvOf(color), kLimitedRange);
                const bool close = std::abs(back.red - red) <= 1 && std::abs(back.green - green) <= 1 &&
                                   std::abs(back.blue - blue) <= 2;
                ASSERT_TRUE(close) << red << " " << green << " " << blue << " became " << int{back.red} << " "
                                   << int{back.green} << " " << int{back.blue};
            }
        }
    }
}

TEST(RawVideo, A_written_stream_is_read_with_its_frames_and_times) {
    Animation animation = WithTimes({33, 34, 33});
    for (Frame& frame : animation.frames) frame.pixels[7] = 255;
    const std::string stream = Written(animation, RawFormat::Y4m);
    Animation back;
    std::string error;
    ASSERT_TRUE(ReadAnimationFromMemory(reinterpret_cast<const uint8_t*>(stream.data()), stream.size(), &back,
                                        &error))
        << error;
    ASSERT_EQ(back.frames.size(), 3u);
    EXPECT_EQ(back.warning, "");
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back.frames[i].milliseconds, animation.frames[i].milliseconds);
        for (size_t b = 0; b < 8; ++b)
            EXPECT_NEAR(back.frames[i].pixels[b], animation.frames[i].pixels[b], 2);
    }
}

}  // namespace
}  // namespace kfx
