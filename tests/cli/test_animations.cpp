// SPDX-License-Identifier: MIT
#include "tests/cli/test_animations.h"

#include <gtest/gtest.h>

#include "media/animation_writer.h"

namespace kfx::test {
namespace {

constexpr int kColors = 20;
constexpr uint8_t kHole = kColors;

}  // namespace

void WriteTestGif(const std::string& path, int frames, bool holes, int scale) {
    GifAnimation gif;
    gif.width = kTestWidth * scale;
    gif.height = kTestHeight * scale;
    gif.loopCount = 3;
    gif.comment = "a test";
    for (int i = 0; i < kColors; ++i) {
        gif.globalPalette.push_back({static_cast<uint8_t>(13 * i), static_cast<uint8_t>(255 - 11 * i),
                                     static_cast<uint8_t>(i * i % 251)});
    }
    // White is what the builder paints its reserved index with.
    gif.globalPalette.back() = {255, 255, 255};
    if (holes) gif.globalPalette.push_back({});
    for (int f = 0; f < frames; ++f) {
        GifFrame frame;
        for (int y = 0; y < gif.height; ++y) {
            for (int x = 0; x < gif.width; ++x) {
                // Stripes that stand still with a block that moves over them.
                const bool block =
                    x / scale >= f % 20 && x / scale < f % 20 + 12 && y / scale >= 8 && y / scale < 20;
                const int stripe = (x / scale + y / scale) / 3 % 12;
                const bool hole = holes && (x / scale + f) % 9 == 0;
                frame.indices.push_back(hole ? kHole
                                             : static_cast<uint8_t>(block ? 12 + (x + y) % 8 : stripe));
            }
        }
        if (holes) {
            frame.transparentIndex = kHole;
            frame.disposal = kDisposalBackground;
        }
        frame.delay = 5 + f % 100;
        gif.frames.push_back(frame);
    }
    std::string error;
    ASSERT_TRUE(WriteGif(path, gif, &error)) << error;
}

void WriteTwoColors(const std::string& path) {
    GifAnimation gif;
    gif.width = 4;
    gif.height = 2;
    gif.globalPalette = {{90, 0, 0}, {0, 0, 140}};
    gif.frames.push_back({.indices = {0, 1, 0, 1, 1, 1, 0, 0}, .palette = {}});
    std::string error;
    ASSERT_TRUE(WriteGif(path, gif, &error)) << error;
}

Animation ReadBack(const std::string& path) {
    Animation animation;
    std::string error;
    EXPECT_TRUE(ReadAnimation(path, &animation, &error)) << error;
    EXPECT_EQ(animation.warning, "");
    // The caller looks at the first frame: without one its test would crash, and not only fail.
    if (animation.frames.empty()) {
        animation.width = animation.height = 1;
        animation.frames.emplace_back().pixels.assign(4, 0);
    }
    return animation;
}

void ExpectSamePictures(const Animation& expected, const Animation& actual) {
    ASSERT_EQ(expected.frames.size(), actual.frames.size());
    ASSERT_EQ(expected.width, actual.width);
    ASSERT_EQ(expected.height, actual.height);
    const auto width = static_cast<size_t>(expected.width);
    for (size_t f = 0; f < expected.frames.size(); ++f) {
        const auto& a = expected.frames[f].pixels;
        const auto& b = actual.frames[f].pixels;
        ASSERT_EQ(a.size(), b.size());
        for (size_t i = 0; i < a.size(); i += 4) {
            // A fully transparent pixel has no visible colour.
            const bool hidden = a[i + 3] == 0 && b[i + 3] == 0;
            const bool same =
                a[i] == b[i] && a[i + 1] == b[i + 1] && a[i + 2] == b[i + 2] && a[i + 3] == b[i + 3];
            ASSERT_TRUE(hidden || same)
                << "frame " << f << " at " << i / 4 % width << ", " << i / 4 / width << ": " << int{a[i]}
                << " " << int{a[i + 1]} << " " << int{a[i + 2]} << " " << int{a[i + 3]} << " against "
                << int{b[i]} << " " << int{b[i + 1]} << " " << int{b[i + 2]} << " " << int{b[i + 3]};
        }
    }
}

std::vector<std::string> UnchangedPictures() {
    return {"--effect", "HSB and Channels", "--set", "Enable HSB=off"};
}

}  // namespace kfx::test
