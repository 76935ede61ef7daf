// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "tests/media/gif_builder.h"

namespace kfx {
namespace {

using test::Bytes;
using test::RandomAnimation;

Bytes WebpOf(const Animation& animation) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeWebp(animation, &file, &error)) << error;
    return file;
}

bool Read(const Bytes& file, Animation* animation, std::string* error,
          const ReadLimits& limits = ReadLimits()) {
    return ReadAnimationFromMemory(file.data(), file.size(), animation, error, limits);
}

// Where the frames' chunks begin in the file.
std::vector<size_t> FrameChunks(const Bytes& file) {
    std::vector<size_t> chunks;
    size_t at = 12;
    while (at + 8 <= file.size()) {
        size_t size = 0;
        for (size_t i = 4; i-- > 0;) size = size << 8 | file[at + 4 + i];
        if (std::memcmp(file.data() + at, "ANMF", 4) == 0) chunks.push_back(at);
        at += 8 + size + size % 2;
    }
    return chunks;
}

// A frame's duration in milliseconds: 24 bits behind its place and size.
uint8_t* DurationOf(Bytes* file, size_t chunk) { return file->data() + chunk + 8 + 12; }

TEST(WebpReader, Durations_are_those_of_the_file) {
    Animation source = RandomAnimation(6, 6, 3, 31, false);
    source.frames[0].delay = 4;
    source.frames[1].delay = 9;
    source.frames[2].delay = 25;
    Bytes file = WebpOf(source);
    const std::vector<size_t> chunks = FrameChunks(file);
    ASSERT_EQ(chunks.size(), 3u);
    const int expected[] = {40, 90, 250};
    for (size_t i = 0; i < 3; ++i) {
        const uint8_t* duration = DurationOf(&file, chunks[i]);
        EXPECT_EQ(duration[0] | duration[1] << 8 | duration[2] << 16, expected[i]);
    }
}

std::vector<int> DelaysWithDuration(uint8_t milliseconds) {
    Bytes file = WebpOf(RandomAnimation(6, 6, 6, 32, false));
    for (const size_t chunk : FrameChunks(file)) {
        DurationOf(&file, chunk)[0] = milliseconds;
        DurationOf(&file, chunk)[1] = 0;
    }
    Animation animation;
    std::string error;
    EXPECT_TRUE(Read(file, &animation, &error)) << error;
    std::vector<int> delays;
    for (const Frame& frame : animation.frames) delays.push_back(frame.delay);
    return delays;
}

TEST(WebpReader, Milliseconds_become_hundredths_that_keep_the_pace) {
    EXPECT_EQ(DelaysWithDuration(40), (std::vector<int>{4, 4, 4, 4, 4, 4}));
    EXPECT_EQ(DelaysWithDuration(33), (std::vector<int>{3, 4, 3, 3, 4, 3}));
    EXPECT_EQ(DelaysWithDuration(16), (std::vector<int>{2, 2, 2, 2, 2, 2}))
        << "one hundredth would play slowly";
    EXPECT_EQ(DelaysWithDuration(0), (std::vector<int>{0, 0, 0, 0, 0, 0}));
}

TEST(WebpReader, A_still_picture_is_one_frame_that_does_not_repeat) {
    const Animation source = RandomAnimation(17, 5, 1, 33, true);
    Animation animation;
    std::string error;
    ASSERT_TRUE(Read(WebpOf(source), &animation, &error)) << error;
    ASSERT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.width, 17);
    EXPECT_EQ(animation.height, 5);
    EXPECT_EQ(animation.loopCount, kLoopNone);
    EXPECT_EQ(animation.frames[0].delay, 0);
    EXPECT_TRUE(animation.frames[0].transparent);
}

TEST(WebpReader, A_cut_file_gives_its_complete_frames_and_a_warning) {
    const Animation source = RandomAnimation(6, 6, 3, 34, false);
    const Bytes file = WebpOf(source);
    const std::vector<size_t> chunks = FrameChunks(file);
    ASSERT_EQ(chunks.size(), 3u);
    for (size_t length = 0; length < file.size(); ++length) {
        const Bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(length));
        const auto begun =
            std::count_if(chunks.begin(), chunks.end(), [&](size_t at) { return at <= length; });
        const size_t complete = static_cast<size_t>(std::max<ptrdiff_t>(begun, 1) - 1);
        Animation animation;
        std::string error;
        const bool success = Read(cut, &animation, &error);
        ASSERT_EQ(success, complete > 0) << length;
        ASSERT_EQ(animation.frames.size(), complete) << length;
        if (success) {
            ASSERT_NE(animation.warning, "") << length;
            ASSERT_TRUE(animation.frames[complete - 1].pixels == source.frames[complete - 1].pixels)
                << length;
        } else {
            ASSERT_NE(error, "") << length;
        }
    }
}

// Sizes of one, two and three bytes, even and odd.
TEST(WebpReader, A_cut_file_gives_its_complete_frames_whatever_their_sizes_are) {
    for (const int side : {6, 9, 40, 41, 160}) {
        const Animation source = RandomAnimation(side, side, 2, 36, false);
        const Bytes file = WebpOf(source);
        const std::vector<size_t> chunks = FrameChunks(file);
        ASSERT_EQ(chunks.size(), 2u);
        for (const size_t length :
             {chunks[1] - 1, chunks[1], chunks[1] + 1, chunks[1] + 9, file.size() - 3}) {
            const Bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(length));
            Animation animation;
            std::string error;
            ASSERT_EQ(Read(cut, &animation, &error), length >= chunks[1]) << side << ", cut at " << length;
            if (length < chunks[1]) continue;
            ASSERT_EQ(animation.frames.size(), 1u) << side << ", cut at " << length;
            EXPECT_TRUE(animation.frames[0].pixels == source.frames[0].pixels) << side;
        }
    }
}

TEST(WebpReader, The_budget_counts_all_frames_together) {
    const Bytes file = WebpOf(RandomAnimation(10, 10, 3, 35, false));
    ReadLimits limits;
    limits.maxPixels = 299;
    Animation animation;
    std::string error;
    EXPECT_FALSE(Read(file, &animation, &error, limits));
    EXPECT_EQ(error, "the 3 frames of 10 x 10 together have 300 pixels; the limit is 299");
    limits.maxPixels = 300;
    EXPECT_TRUE(Read(file, &animation, &error, limits)) << error;
    limits.maxSide = 9;
    EXPECT_FALSE(Read(file, &animation, &error, limits));
    EXPECT_EQ(error, "the picture of 10 x 10 pixels is too large: a side may have 9");
}

Bytes EncodePicture(const Bytes& rgba, int width, int height) {
    uint8_t* output = nullptr;
    const size_t size = WebPEncodeLosslessRGBA(rgba.data(), width, height, 4 * width, &output);
    Bytes file(output, output + size);
    WebPFree(output);
    return file;
}

// Frames of any place, blending and disposal, with alphas of all kinds.
Bytes RandomFile(int width, int height, int frames, std::mt19937* random) {
    const std::unique_ptr<WebPMux, void (*)(WebPMux*)> mux(WebPMuxNew(), WebPMuxDelete);
    const auto upTo = [&](int most) {
        return static_cast<int>((*random)() % static_cast<unsigned>(most + 1));
    };
    for (int i = 0; i < frames; ++i) {
        const bool whole = upTo(3) == 0;
        const int left = whole ? 0 : 2 * upTo((width - 1) / 2);
        const int top = whole ? 0 : 2 * upTo((height - 1) / 2);
        const int partWidth = whole ? width : 1 + upTo(width - left - 1);
        const int partHeight = whole ? height : 1 + upTo(height - top - 1);
        const bool opaque = upTo(3) == 0;
        Bytes pixels(4 * static_cast<size_t>(partWidth) * static_cast<size_t>(partHeight));
        for (size_t at = 0; at < pixels.size(); ++at) {
            pixels[at] = static_cast<uint8_t>((*random)());
            if (at % 4 == 3 && opaque) pixels[at] = 255;
            if (at % 4 == 3 && !opaque && upTo(2) == 0) pixels[at] = upTo(1) == 0 ? 0 : 255;
        }
        const Bytes picture = EncodePicture(pixels, partWidth, partHeight);
        WebPMuxFrameInfo info = {};
        info.bitstream = {picture.data(), picture.size()};
        info.x_offset = left;
        info.y_offset = top;
        info.duration = 40;
        info.id = WEBP_CHUNK_ANMF;
        info.dispose_method = upTo(1) == 0 ? WEBP_MUX_DISPOSE_NONE : WEBP_MUX_DISPOSE_BACKGROUND;
        info.blend_method = upTo(2) == 0 ? WEBP_MUX_NO_BLEND : WEBP_MUX_BLEND;
        EXPECT_EQ(WebPMuxPushFrame(mux.get(), &info, 1), WEBP_MUX_OK);
    }
    const WebPMuxAnimParams parameters = {.bgcolor = 0xFFFFFFFF, .loop_count = 0};
    EXPECT_EQ(WebPMuxSetAnimationParams(mux.get(), &parameters), WEBP_MUX_OK);
    EXPECT_EQ(WebPMuxSetCanvasSize(mux.get(), width, height), WEBP_MUX_OK);
    WebPData assembled = {};
    EXPECT_EQ(WebPMuxAssemble(mux.get(), &assembled), WEBP_MUX_OK);
    Bytes file(assembled.bytes, assembled.bytes + assembled.size);
    WebPDataClear(&assembled);
    return file;
}

TEST(WebpReader, Frames_show_the_same_as_in_the_library_s_own_reader) {
    std::mt19937 random(36);
    for (int round = 0; round < 60; ++round) {
        const int width = 1 + static_cast<int>(random() % 12);
        const int height = 1 + static_cast<int>(random() % 12);
        const Bytes file = RandomFile(width, height, 6, &random);
        Animation animation;
        std::string error;
        ASSERT_TRUE(Read(file, &animation, &error)) << error;
        const WebPData data = {file.data(), file.size()};
        WebPAnimDecoderOptions options;
        ASSERT_TRUE(WebPAnimDecoderOptionsInit(&options));
        const std::unique_ptr<WebPAnimDecoder, void (*)(WebPAnimDecoder*)> decoder(
            WebPAnimDecoderNew(&data, &options), WebPAnimDecoderDelete);
        ASSERT_TRUE(decoder);
        ASSERT_EQ(animation.frames.size(), 6u);
        for (const Frame& frame : animation.frames) {
            uint8_t* canvas = nullptr;
            int time = 0;
            ASSERT_TRUE(WebPAnimDecoderGetNext(decoder.get(), &canvas, &time));
            ASSERT_TRUE(std::equal(frame.pixels.begin(), frame.pixels.end(), canvas)) << "round " << round;
        }
    }
}

TEST(WebpReader, A_flat_picture_in_a_few_bytes_is_read) {
    Animation source;
    source.width = 3000;
    source.height = 2000;
    source.frames.resize(1);
    for (int i = 0; i < 3000 * 2000; ++i)
        source.frames[0].pixels.insert(source.frames[0].pixels.end(), {9, 8, 7, 255});
    const Bytes file = WebpOf(source);
    ASSERT_LT(file.size(), 5000u) << "small enough to be looked at twice";
    Animation animation;
    std::string error;
    ASSERT_TRUE(Read(file, &animation, &error)) << error;
    EXPECT_TRUE(animation.frames[0].pixels == source.frames[0].pixels);
    // Behind the size begin the codes.
    Bytes damaged = file;
    std::fill(damaged.begin() + 25, damaged.begin() + 40, uint8_t{0xFF});
    EXPECT_FALSE(Read(damaged, &animation, &error));
    EXPECT_EQ(error, "the WebP file is damaged");
}

}  // namespace
}  // namespace kfx
