// SPDX-License-Identifier: MIT
#include "commands/plain_build.h"

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

// One opaque row of `colors` different colours.
Animation ColorRow(int colors) {
    Animation animation;
    animation.width = colors;
    animation.height = 1;
    animation.frames.resize(1);
    for (int i = 0; i < colors; ++i) {
        animation.frames[0].pixels.insert(animation.frames[0].pixels.end(),
                                          {static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), 9, 255});
    }
    return animation;
}

TEST(PlainBuild, Frames_with_indices_keep_palette_and_indices) {
    Animation source = ColorRow(3);
    source.hasGlobalPalette = true;
    source.globalPalette = {{1, 0, 9}, {0, 0, 9}, {2, 0, 9}, {7, 7, 7}};
    source.frames[0].indexed = true;
    source.frames[0].indices = {1, 0, 2};
    source.frames[0].delay = 12;
    const SourceRecord record = MakeSourceRecord(source);
    const GifAnimation gif = MakeGif(PlainBuild(&source), record);
    EXPECT_TRUE(source.frames.empty());
    ASSERT_EQ(gif.frames.size(), 1u);
    EXPECT_EQ(gif.frames[0].indices, (std::vector<uint8_t>{1, 0, 2}));
    EXPECT_EQ(gif.globalPalette.size(), 4u);
    EXPECT_EQ(gif.frames[0].delay, 12);
}

TEST(PlainBuild, True_colour_frames_keep_every_value_and_their_alpha) {
    Animation source = ColorRow(300);
    source.frames[0].pixels[4 * 7 + 3] = 100;
    source.frames[0].transparent = true;
    const std::vector<uint8_t> pixels = source.frames[0].pixels;
    const SourceRecord record = MakeSourceRecord(source);
    const Animation played = PlayBuilt(PlainBuild(&source), record);
    ASSERT_EQ(played.frames.size(), 1u);
    EXPECT_EQ(played.frames[0].pixels, pixels);
}

TEST(PlainBuild, A_frame_fits_a_palette_with_256_colours_one_of_them_for_transparency) {
    EXPECT_TRUE(FitsGifPalettes(ColorRow(256)));
    EXPECT_FALSE(FitsGifPalettes(ColorRow(257)));
    Animation clear = ColorRow(257);
    clear.frames[0].pixels[3] = 0;
    EXPECT_FALSE(FitsGifPalettes(clear));
    clear.frames[0].pixels[7] = 127;
    EXPECT_TRUE(FitsGifPalettes(clear));
    clear.frames.push_back(ColorRow(257).frames[0]);
    EXPECT_FALSE(FitsGifPalettes(clear));
}

}  // namespace
}  // namespace kfx::commands
