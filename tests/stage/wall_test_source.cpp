// SPDX-License-Identifier: MIT
#include "tests/stage/wall_test_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "media/sample_animation.h"

namespace kfx::test {

std::shared_ptr<const Animation> WallTestSource(int frames, int width, int height, bool holes) {
    auto source = std::make_shared<Animation>();
    source->width = width;
    source->height = height;
    source->loopCount = kLoopForever;
    for (int f = 0; f < frames; ++f) {
        Frame frame;
        frame.transparent = holes;
        frame.delay = 10 * (f + 1);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const int dx = 2 * x - width - 3 * f, dy = 2 * y - height;
                const int alpha =
                    holes ? std::clamp((width * height / 2 - dx * dx - dy * dy) / 4, 0, 255) : 255;
                frame.pixels.push_back(static_cast<uint8_t>(x * 255 / width));
                frame.pixels.push_back(static_cast<uint8_t>(y * 255 / height));
                frame.pixels.push_back(static_cast<uint8_t>((x * y + 40 * f) % 256));
                frame.pixels.push_back(static_cast<uint8_t>(alpha));
            }
        }
        source->frames.push_back(std::move(frame));
    }
    return source;
}

void ExpectSameFrames(const Animation& expected, const Animation& actual, const char* what) {
    ASSERT_EQ(expected.width, actual.width) << what;
    ASSERT_EQ(expected.height, actual.height) << what;
    ASSERT_EQ(expected.frames.size(), actual.frames.size()) << what;
    for (size_t i = 0; i < expected.frames.size(); ++i) {
        EXPECT_EQ(MillisecondsOf(expected.frames[i]), MillisecondsOf(actual.frames[i])) << what << ", " << i;
        EXPECT_TRUE(expected.frames[i].pixels == actual.frames[i].pixels) << what << ", frame " << i;
    }
}

std::shared_ptr<const Animation> SampleSource(int frames) {
    auto source = std::make_shared<Animation>();
    source->loopCount = kLoopForever;
    for (int i = 0; i < frames; ++i) {
        Picture picture = DrawSampleFrame(i * kSampleFrameCount / frames);
        source->width = picture.width;
        source->height = picture.height;
        Frame frame;
        frame.pixels = std::move(picture.pixels);
        frame.delay = kSampleDelay;
        source->frames.push_back(std::move(frame));
    }
    return source;
}

}  // namespace kfx::test
