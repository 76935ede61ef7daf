// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

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

TEST(WebpReader, The_budget_counts_all_frames_together) {
    const Bytes file = WebpOf(RandomAnimation(10, 10, 3, 35, false));
    ReadLimits limits;
    limits.maxPixels = 299;
    Animation animation;
    std::string error;
    EXPECT_FALSE(Read(file, &animation, &error, limits));
    EXPECT_EQ(error, "the frames together have more than 299 pixels, which is too much to hold");
    limits.maxPixels = 300;
    EXPECT_TRUE(Read(file, &animation, &error, limits)) << error;
    limits.maxSide = 9;
    EXPECT_FALSE(Read(file, &animation, &error, limits));
    EXPECT_EQ(error, "the picture of 10 x 10 pixels is too large: a side may have 9");
}

}  // namespace
}  // namespace kfx
