// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "media/animation_writer.h"
#include "media/sample_animation.h"
#include "tests/media/gif_builder.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::RandomAnimation;
using test::ReadOrFail;

Animation ReadWhole(const Bytes& file) {
    Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.warning, "");
    return animation;
}

Bytes WebpOrFail(const Animation& animation) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeWebp(animation, &file, &error)) << error;
    return file;
}

TEST(WebpWriter, Opaque_frames_are_read_back_exactly) {
    const Animation source = RandomAnimation(37, 23, 4, 11, false);
    const Animation animation = ReadWhole(WebpOrFail(source));
    ASSERT_EQ(animation.frames.size(), 4u);
    EXPECT_EQ(animation.width, 37);
    EXPECT_EQ(animation.height, 23);
    EXPECT_EQ(animation.loopCount, kLoopForever);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(animation.frames[i].pixels == source.frames[i].pixels) << i;
        EXPECT_FALSE(animation.frames[i].transparent);
    }
}

TEST(WebpWriter, Transparency_is_read_back_exactly) {
    const Animation source = RandomAnimation(19, 40, 3, 12, true);
    const Animation animation = ReadWhole(WebpOrFail(source));
    ASSERT_EQ(animation.frames.size(), 3u);
    for (size_t frame = 0; frame < 3; ++frame) {
        EXPECT_TRUE(animation.frames[frame].transparent);
        for (size_t i = 0; i < source.frames[frame].pixels.size(); i += 4) {
            const uint8_t* expected = source.frames[frame].pixels.data() + i;
            const uint8_t* actual = animation.frames[frame].pixels.data() + i;
            ASSERT_EQ(actual[3], expected[3]) << i / 4;
            // Colours under full transparency need not survive.
            ASSERT_TRUE(expected[3] == 0 || std::memcmp(actual, expected, 3) == 0) << i / 4;
        }
    }
}

TEST(WebpWriter, Frame_times_survive_from_the_first_to_the_last) {
    Animation source = RandomAnimation(8, 8, 4, 13, false);
    const int delays[] = {1, 7, 100, 1234};
    for (size_t i = 0; i < 4; ++i) source.frames[i].delay = delays[i];
    const Animation animation = ReadWhole(WebpOrFail(source));
    ASSERT_EQ(animation.frames.size(), 4u);
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(animation.frames[i].delay, delays[i]);
}

TEST(WebpWriter, A_frame_without_time_is_no_error) {
    Animation source = RandomAnimation(8, 8, 3, 14, false);
    source.frames[1].delay = 0;
    const Animation animation = ReadWhole(WebpOrFail(source));
    ASSERT_EQ(animation.frames.size(), 3u);
    EXPECT_EQ(animation.frames[1].delay, 0);
    EXPECT_TRUE(animation.frames[2].pixels == source.frames[2].pixels);
}

TEST(WebpWriter, An_unchanged_frame_becomes_a_longer_delay) {
    Animation source = RandomAnimation(8, 8, 2, 15, false);
    source.frames.insert(source.frames.begin() + 1, source.frames[0]);
    const Animation animation = ReadWhole(WebpOrFail(source));
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(animation.frames[0].delay, 2 * source.frames[0].delay);
}

TEST(WebpWriter, Loop_counts_survive) {
    for (const int loopCount : {kLoopNone, kLoopForever, 1, 65534}) {
        Animation source = RandomAnimation(4, 4, 2, 16, false);
        source.loopCount = loopCount;
        EXPECT_EQ(ReadWhole(WebpOrFail(source)).loopCount, loopCount);
    }
}

TEST(WebpWriter, Milliseconds_survive) {
    Animation source = RandomAnimation(8, 8, 4, 13, false);
    const int times[] = {33, 33, 17, 250};
    for (size_t i = 0; i < 4; ++i) source.frames[i].milliseconds = times[i];
    const Animation animation = ReadWhole(WebpOrFail(source));
    ASSERT_EQ(animation.frames.size(), 4u);
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(animation.frames[i].milliseconds, times[i]);
    const Animation again = ReadWhole(WebpOrFail(animation));
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(again.frames[i].milliseconds, times[i]);
    EXPECT_NE(ShortDelayNote(again).find("1 frame is"), std::string::npos);
    source.frames[2].milliseconds = 20;
    EXPECT_EQ(ShortDelayNote(source), "");
}

TEST(WebpWriter, Metadata_and_background_survive) {
    Animation source = RandomAnimation(8, 8, 2, 13, false);
    source.hasBackground = true;
    source.background = {10, 20, 30};
    source.metadata = {.colorProfile = Bytes(333, 5), .exif = {1, 2, 3}, .xmp = {'<', 'x', '>'}};
    for (const size_t frames : {2u, 1u}) {
        source.frames.resize(frames);
        const Animation animation = ReadWhole(WebpOrFail(source));
        EXPECT_EQ(animation.metadata.colorProfile, source.metadata.colorProfile);
        EXPECT_EQ(animation.metadata.exif, source.metadata.exif);
        EXPECT_EQ(animation.metadata.xmp, source.metadata.xmp);
        EXPECT_TRUE(animation.frames[0].pixels == source.frames[0].pixels);
        EXPECT_EQ(animation.hasBackground, frames == 2);
        EXPECT_EQ(animation.background, frames == 2 ? source.background : RgbColor());
    }
}

// Squared differences of colours, a pixel.
double ErrorOf(const Animation& a, const Animation& b) {
    double sum = 0;
    for (size_t i = 0; i < a.frames[0].pixels.size(); ++i) {
        const double difference = a.frames[0].pixels[i] - b.frames[0].pixels[i];
        sum += difference * difference;
    }
    return 4 * sum / static_cast<double>(a.frames[0].pixels.size());
}

TEST(WebpWriter, Kinds_quality_and_effort_trade_size_for_exactness) {
    Animation source;
    source.width = kSampleWidth;
    source.height = kSampleHeight;
    source.frames.resize(1);
    source.frames[0].pixels = DrawSampleFrame(0).pixels;
    const auto encode = [&source](const WebpOptions& options) {
        Bytes file;
        std::string error;
        EXPECT_TRUE(EncodeWebp(source, &file, &error, options)) << error;
        return file;
    };
    const Bytes exact = encode({});
    const Bytes quick = encode({.effort = 0});
    const Bytes near = encode({.kind = WebpKind::NearLossless, .quality = 20});
    const Bytes good = encode({.kind = WebpKind::Lossy, .quality = 90});
    const Bytes small = encode({.kind = WebpKind::Lossy, .quality = 30});
    EXPECT_LT(exact.size(), quick.size());
    EXPECT_LT(near.size(), exact.size());
    EXPECT_LT(good.size(), near.size());
    EXPECT_LT(small.size(), good.size());
    EXPECT_EQ(ErrorOf(source, ReadWhole(exact)), 0);
    EXPECT_EQ(ErrorOf(source, ReadWhole(quick)), 0);
    EXPECT_GT(ErrorOf(source, ReadWhole(near)), 0);
    EXPECT_LT(ErrorOf(source, ReadWhole(near)), 200);
    EXPECT_LT(ErrorOf(source, ReadWhole(good)), ErrorOf(source, ReadWhole(small)));
    // Numbers beyond the range are the nearest ones in it.
    EXPECT_EQ(encode({.effort = -1}), quick);
    EXPECT_EQ(encode({.kind = WebpKind::Lossy, .quality = 1000}),
              encode({.kind = WebpKind::Lossy, .quality = 100}));
}

TEST(WebpWriter, What_the_format_cannot_hold_is_refused_with_a_reason) {
    Animation source = RandomAnimation(4, 4, 1, 17, false);
    Bytes file;
    std::string error;
    source.width = 16384;
    EXPECT_FALSE(EncodeWebp(source, &file, &error));
    EXPECT_EQ(error, "a WebP animation may have 1 to 16383 pixels a side");
    source.width = 5;
    EXPECT_FALSE(EncodeWebp(source, &file, &error));
    EXPECT_EQ(error, "a WebP frame must cover the whole animation");
    source.frames.clear();
    EXPECT_FALSE(EncodeWebp(source, &file, &error));
    EXPECT_EQ(error, "a WebP animation needs at least one frame");
}

TEST(PngWriter, Pictures_are_read_back_exactly) {
    for (const bool transparent : {false, true}) {
        const Animation source = RandomAnimation(33, 21, 1, 18, transparent);
        Bytes file;
        std::string error;
        ASSERT_TRUE(EncodePng(33, 21, source.frames[0].pixels.data(), &file, &error)) << error;
        const Animation animation = ReadWhole(file);
        EXPECT_TRUE(animation.frames[0].pixels == source.frames[0].pixels);
        EXPECT_EQ(animation.frames[0].transparent, transparent);
        EXPECT_EQ(animation.loopCount, kLoopNone);
    }
}

// `encode(effort, file)` writes something of the sample.
template <typename Encode>
void ExpectEffortToTrade(const Encode& encode) {
    constexpr int kMostEffort = 9;
    std::vector<size_t> bytes;
    Bytes file;
    encode(kMostEffort, &file);
    const Animation expected = ReadWhole(file);
    for (int effort = 0; effort <= kMostEffort; ++effort) {
        encode(effort, &file);
        bytes.push_back(file.size());
        const Animation found = ReadWhole(file);
        ASSERT_EQ(found.frames.size(), expected.frames.size());
        for (size_t i = 0; i < found.frames.size(); ++i)
            EXPECT_TRUE(found.frames[i].pixels == expected.frames[i].pixels) << effort;
    }
    EXPECT_LT(bytes[kMostEffort], bytes[kMostEffort / 2]);
    EXPECT_LT(bytes[kMostEffort / 2], bytes[0]);
    // Numbers beyond the range are the nearest ones in it.
    encode(-1, &file);
    EXPECT_EQ(file.size(), bytes[0]);
    encode(kMostEffort + 1, &file);
    EXPECT_EQ(file.size(), bytes[kMostEffort]);
}

TEST(PngWriter, Effort_trades_time_for_size) {
    const Picture picture = DrawSampleFrame(0);
    ExpectEffortToTrade([&](int effort, Bytes* file) {
        std::string error;
        ASSERT_TRUE(EncodePng(picture.width, picture.height, picture.pixels.data(), file, &error, Animation(),
                              {.effort = effort}))
            << error;
    });
}

TEST(ApngWriter, Effort_trades_time_for_size) {
    Animation source;
    source.width = kSampleWidth;
    source.height = kSampleHeight;
    source.frames.resize(2);
    for (int i = 0; i < 2; ++i) source.frames[static_cast<size_t>(i)].pixels = DrawSampleFrame(i).pixels;
    ExpectEffortToTrade([&](int effort, Bytes* file) {
        std::string error;
        ASSERT_TRUE(EncodeApng(source, file, &error, {.effort = effort})) << error;
    });
}

TEST(PngWriter, Frames_are_numbered_beside_the_name) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(PngFramePaths("out/wave.png", 1), Names{"out/wave.png"});
    EXPECT_EQ(PngFramePaths("out/wave.png", 2), (Names{"out/wave-000.png", "out/wave-001.png"}));
    EXPECT_EQ(PngFramePaths("a.b/wave", 2), (Names{"a.b/wave-000.png", "a.b/wave-001.png"}));
    EXPECT_EQ(PngFramePaths("C:\\x.y\\Wave.PNG", 2)[1], "C:\\x.y\\Wave-001.PNG");
    EXPECT_EQ(PngFramePaths("w.png", 1000).back(), "w-999.png");
    EXPECT_EQ(PngFramePaths("w.png", 1001).front(), "w-0000.png");
    EXPECT_EQ(PngFramePaths("w.png", 1001).back(), "w-1000.png");
    EXPECT_EQ(PngFramePaths("out/%02d-wave.png", 2), (Names{"out/00-wave.png", "out/01-wave.png"}));
    EXPECT_EQ(PngFramePaths("wave%d.png", 11).back(), "wave10.png");
    EXPECT_EQ(PngFramePaths("wave-%03d.png", 1), Names{"wave-000.png"});
    EXPECT_EQ(PngFramePaths("%d/100%.png", 2)[1], "%d/100%-001.png");
}

}  // namespace
}  // namespace kfx
