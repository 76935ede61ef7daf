// SPDX-License-Identifier: MIT
// Y4M streams put together byte by byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/animation.h"
#include "media/yuv.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using test::Bytes;
using test::ErrorOf;

Bytes Stream(const std::string& fields, const std::vector<Bytes>& frames,
             const std::string& frameLine = "FRAME\n") {
    const std::string line = "YUV4MPEG2 " + fields + "\n";
    Bytes stream(line.begin(), line.end());
    for (const Bytes& frame : frames) {
        stream.insert(stream.end(), frameLine.begin(), frameLine.end());
        stream.insert(stream.end(), frame.begin(), frame.end());
    }
    return stream;
}

Animation Read(const Bytes& stream) {
    Animation animation = test::ReadOrFail(stream);
    if (animation.frames.empty()) animation.frames.emplace_back().pixels.resize(4096);
    return animation;
}

void ExpectPixel(const Animation& animation, int x, int y, RgbColor expected) {
    const uint8_t* pixel =
        animation.frames[0].pixels.data() + 4 * static_cast<size_t>(y * animation.width + x);
    EXPECT_EQ(pixel[0], expected.red) << x << ", " << y;
    EXPECT_EQ(pixel[1], expected.green) << x << ", " << y;
    EXPECT_EQ(pixel[2], expected.blue) << x << ", " << y;
    EXPECT_EQ(pixel[3], 255);
}

TEST(Y4mReader, The_limited_range_is_the_usual_one) {
    // Black, white and the three pure colours of BT.601.
    const Bytes frame = {16, 235, 81, 145, 41, 128, 128, 90, 54, 240, 128, 128, 240, 34, 110};
    for (const char* fields : {"W5 H1 F25:1 C444", "W5 H1 C444 XCOLORRANGE=LIMITED"}) {
        const Animation animation = Read(Stream(fields, {frame}));
        ExpectPixel(animation, 0, 0, {0, 0, 0});
        ExpectPixel(animation, 1, 0, {255, 255, 255});
        EXPECT_GE(animation.frames[0].pixels[8], 253);
        EXPECT_GE(animation.frames[0].pixels[13], 253);
        EXPECT_GE(animation.frames[0].pixels[18], 253);
        EXPECT_LE(animation.frames[0].pixels[9], 2);
    }
}

TEST(Y4mReader, The_full_range_uses_every_value) {
    const Animation animation = Read(Stream("W4 H1 C444 XYSCSS=444 XCOLORRANGE=FULL",
                                            {{0, 255, 76, 100, 128, 128, 85, 128, 128, 128, 255, 128}}));
    ExpectPixel(animation, 0, 0, {0, 0, 0});
    ExpectPixel(animation, 1, 0, {255, 255, 255});
    ExpectPixel(animation, 2, 0, {254, 0, 0});
    ExpectPixel(animation, 3, 0, {100, 100, 100});
}

TEST(Y4mReader, A_grey_stream_has_no_colours) {
    const Animation animation = Read(Stream("W3 H2 Cmono", {{16, 126, 235, 16, 16, 16}}));
    ExpectPixel(animation, 1, 0, {128, 128, 128});
    ExpectPixel(animation, 2, 0, {255, 255, 255});
    EXPECT_EQ(animation.frames[0].pixels.size(), 24u);
}

// The colour at which the second difference is `cr`.
RgbColor WithCr(uint8_t cr) { return RgbOf({126, 128, cr}, kLimitedRange); }

// A row of four pixels with two samples, 100 and 140, of the second difference.
Animation SampledRow(const std::string& format) {
    return Read(Stream("W4 H1 C" + format, {{126, 126, 126, 126, 128, 128, 100, 140}}));
}

TEST(Y4mReader, Centred_samples_stand_between_their_pixels) {
    for (const char* format : {"420jpeg", "420"}) {
        const Animation animation = SampledRow(format);
        ExpectPixel(animation, 0, 0, WithCr(100));
        ExpectPixel(animation, 1, 0, WithCr(110));
        ExpectPixel(animation, 2, 0, WithCr(130));
        ExpectPixel(animation, 3, 0, WithCr(140));
    }
}

TEST(Y4mReader, Other_samples_stand_on_the_first_of_their_pixels) {
    for (const char* format : {"420mpeg2", "420paldv", "422"}) {
        const Animation animation = SampledRow(format);
        ExpectPixel(animation, 0, 0, WithCr(100));
        ExpectPixel(animation, 1, 0, WithCr(120));
        ExpectPixel(animation, 2, 0, WithCr(140));
        ExpectPixel(animation, 3, 0, WithCr(140));
    }
}

TEST(Y4mReader, Rows_share_samples_as_columns_do) {
    const Bytes column = {126, 126, 126, 126, 128, 128, 100, 140};
    for (const char* format : {"420jpeg", "420mpeg2"}) {
        const Animation animation = Read(Stream(std::string("W1 H4 C") + format, {column}));
        ExpectPixel(animation, 0, 1, WithCr(110));
        ExpectPixel(animation, 0, 2, WithCr(130));
    }
    const Animation animation = Read(Stream("W1 H4 C420paldv", {column}));
    ExpectPixel(animation, 0, 1, WithCr(120));
    ExpectPixel(animation, 0, 2, WithCr(140));
}

TEST(Y4mReader, Rows_that_share_no_samples_have_their_own) {
    const Animation animation = Read(Stream("W2 H2 C422", {{126, 126, 126, 126, 128, 128, 100, 140}}));
    ExpectPixel(animation, 0, 0, WithCr(100));
    ExpectPixel(animation, 1, 0, WithCr(100));
    ExpectPixel(animation, 0, 1, WithCr(140));
    ExpectPixel(animation, 1, 1, WithCr(140));
}

TEST(Y4mReader, Odd_sides_have_a_sample_of_their_own_at_the_end) {
    const Bytes samples = {126, 126, 126, 126, 126, 126, 126, 126, 126,
                           128, 128, 128, 128, 100, 100, 100, 140};
    const Animation animation = Read(Stream("W3 H3 C420mpeg2", {samples}));
    ExpectPixel(animation, 0, 0, WithCr(100));
    ExpectPixel(animation, 2, 2, WithCr(130));
}

TEST(Y4mReader, Times_come_from_the_rate_to_the_millisecond) {
    const std::vector<Bytes> frames(3, Bytes(1, 16));
    const auto times = [&frames](const std::string& fields) {
        const Animation animation = Read(Stream("W1 H1 Cmono " + fields, frames));
        std::vector<int> result;
        for (const Frame& frame : animation.frames) result.push_back(frame.milliseconds);
        return result;
    };
    EXPECT_THAT(times("F25:1"), ElementsAre(40, 40, 40));
    EXPECT_THAT(times("F30:1"), ElementsAre(33, 34, 33));
    EXPECT_THAT(times("F30000:1001"), ElementsAre(33, 34, 33));
    EXPECT_THAT(times("F1:2"), ElementsAre(2000, 2000, 2000));
    for (const char* none : {"", "F0:0", "F25", "F-1:1", "Fx:y", "F99999999999999999999:1"})
        EXPECT_THAT(times(none), ElementsAre(40, 40, 40)) << none;
    EXPECT_THAT(times("F1:999999999"), ElementsAre(655350, 655350, 655350));
}

TEST(Y4mReader, Lines_of_frames_may_say_more) {
    EXPECT_EQ(
        Read(Stream("W1 H1 Ip A1:1 Cmono Xsomething", {{16}, {16}}, "FRAME Ip Xcomment\n")).frames.size(),
        2u);
}

TEST(Y4mReader, A_cut_stream_gives_its_whole_frames_and_a_warning) {
    Bytes stream = Stream("W2 H2 C444", {Bytes(12, 100), Bytes(12, 100)});
    EXPECT_EQ(Read(stream).warning, "");
    stream.pop_back();
    const Animation animation = Read(stream);
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_THAT(animation.warning, StartsWith("the file is damaged or cut after its first frame"));
}

TEST(Y4mReader, What_cannot_be_read_is_said) {
    EXPECT_EQ(ErrorOf(Stream("W2 H2 C444", {})), "the video has no whole frame");
    EXPECT_EQ(ErrorOf(Stream("W2 H2 C444", {Bytes(11)})), "the video has no whole frame");
    for (const char* fields : {"", "W2", "W0 H2", "W2 Hx", "W-2 H2", "W2 H99999999999", "W H2", "W2x H2"})
        EXPECT_EQ(ErrorOf(Stream(fields, {Bytes(12)})), "the first line of the video is damaged") << fields;
    const std::string endless = "YUV4MPEG2 " + std::string(100000, 'X');
    EXPECT_EQ(ErrorOf(Bytes(endless.begin(), endless.end())), "the first line of the video is damaged");
    for (const char* format : {"420p10", "411", "444alpha", "mono16", ""}) {
        EXPECT_THAT(
            ErrorOf(Stream(std::string("W2 H2 C") + format, {Bytes(12)})),
            StartsWith(std::string("the video has the colour format C") + format + ", which is not read"));
    }
}

TEST(Y4mReader, Limits_are_counted_before_anything_is_decoded) {
    EXPECT_THAT(ErrorOf(Stream("W2147483647 H2147483647 C420jpeg", {Bytes(12)})), HasSubstr("is too large"));
    EXPECT_THAT(ErrorOf(Stream("W65536 H1 Cmono", {Bytes(65536)})), HasSubstr("a side may have 65535"));
    ReadLimits limits;
    limits.maxPixels = 11;
    EXPECT_THAT(ErrorOf(Stream("W2 H2 Cmono", {Bytes(4), Bytes(4), Bytes(4)}), limits),
                HasSubstr("the 3 frames of 2 x 2 together have 12 pixels; the limit is 11"));
}

}  // namespace
}  // namespace kfx
