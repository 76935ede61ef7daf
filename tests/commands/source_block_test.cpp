// SPDX-License-Identifier: MIT
// The animation block that the commands make of a source, read as the plug-in reads it.
#include <gtest/gtest.h>

#include <cstring>

#include "commands/source_block.h"
#include "host/animation_block.h"
#include "host/animation_layout.h"

namespace kfx::commands {
namespace {

// Two frames of 3 x 2 pixels on a palette of four colours.
Animation IndexedAnimation() {
    Animation animation;
    animation.width = 3;
    animation.height = 2;
    animation.hasGlobalPalette = true;
    animation.globalPalette = {{10, 11, 12}, {20, 21, 22}, {30, 31, 32}, {40, 41, 42}};
    animation.loopCount = 5;
    for (int f = 0; f < 2; ++f) {
        Frame frame;
        frame.indexed = true;
        for (int i = 0; i < 6; ++i) {
            const auto index = static_cast<uint8_t>((i + f) % 4);
            const RgbColor color = animation.globalPalette[index];
            frame.indices.push_back(index);
            frame.pixels.insert(frame.pixels.end(), {color.red, color.green, color.blue, 255});
        }
        frame.left = 1;
        frame.top = 2;
        frame.delay = 7 + f;
        frame.disposal = kDisposalBackground;
        animation.frames.push_back(frame);
    }
    return animation;
}

std::vector<uint8_t> BlockOf(const Animation& animation) {
    std::vector<uint8_t> block(AnimationBlockBytes(animation));
    WriteAnimationBlock(animation, block.data());
    return block;
}

std::vector<AnimationFrame> FramesOf(const std::vector<uint8_t>& block, AnimationHeader* header) {
    std::vector<AnimationFrame> frames;
    EXPECT_TRUE(IsAnimation(block.data(), block.size()));
    EXPECT_TRUE(ReadAnimationHeader(block.data(), block.size(), header));
    size_t offset = header->firstBlock;
    AnimationFrame frame;
    while (ReadAnimationFrame(*header, &offset, &frame) == FrameStep::Frame) frames.push_back(frame);
    EXPECT_EQ(offset + 4, block.size()) << "nothing behind the closing tag";
    return frames;
}

TEST(SourceBlock, Opaque_frames_on_the_files_palette_are_handed_over_with_their_indices) {
    const auto block = BlockOf(IndexedAnimation());
    AnimationHeader header;
    const auto frames = FramesOf(block, &header);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(header.globalColors, 4u);
    EXPECT_EQ(header.globalPalette[4], 21);
    EXPECT_EQ(frames[1].bitCount, 8);
    // Rows are stored from the bottom, four bytes each: the top row is the second one.
    const uint8_t expected[8] = {0, 1, 2, 0, 1, 2, 3, 0};
    EXPECT_EQ(std::memcmp(frames[1].rows, expected, 8), 0);
    const uint8_t entry[4] = {32, 31, 30, 0};
    EXPECT_EQ(std::memcmp(frames[1].colorTable + 8, entry, 4), 0);
}

TEST(SourceBlock, Place_time_and_disposal_stand_in_the_frames_fields) {
    const auto block = BlockOf(IndexedAnimation());
    AnimationHeader header;
    const auto frames = FramesOf(block, &header);
    const int32_t expected[4] = {1, 2, 8, kDisposalBackground};
    EXPECT_EQ(std::memcmp(frames[1].fields, expected, sizeof expected), 0);
}

TEST(SourceBlock, One_frame_off_the_palette_makes_all_true_colour_and_keeps_the_palette) {
    Animation animation = IndexedAnimation();
    animation.frames[1].indexed = false;
    animation.frames[1].indices.clear();
    animation.frames[1].pixels[0] = 99;
    const auto block = BlockOf(animation);
    AnimationHeader header;
    const auto frames = FramesOf(block, &header);
    EXPECT_EQ(header.globalColors, 4u);
    EXPECT_EQ(frames[0].bitCount, 24);
    const uint8_t* top = frames[1].rows + 12;
    EXPECT_EQ(top[0], 22);
    EXPECT_EQ(top[2], 99);
}

TEST(SourceBlock, Transparent_pixels_are_white_and_the_background_stands_in_the_header) {
    Animation animation = IndexedAnimation();
    animation.frames[0].transparent = true;
    animation.frames[0].pixels[3] = 0;
    AnimationHeader header;
    auto block = BlockOf(animation);
    EXPECT_EQ(FramesOf(block, &header)[0].rows[12], 255);
    EXPECT_FALSE(header.hasBackground);

    animation.hasBackground = true;
    animation.background = {1, 2, 3};
    block = BlockOf(animation);
    EXPECT_EQ(FramesOf(block, &header)[0].rows[12], 255);
    EXPECT_EQ(header.background, 0x030201u);
}

TEST(SourceBlock, Half_transparent_pixels_keep_their_colour) {
    Animation animation = IndexedAnimation();
    animation.frames[0].transparent = true;
    animation.frames[0].pixels[3] = 1;
    const auto block = BlockOf(animation);
    AnimationHeader header;
    EXPECT_EQ(FramesOf(block, &header)[0].rows[12], 12);
}

TEST(SourceBlock, What_the_plugin_does_not_carry_stays_in_the_record) {
    Animation animation = IndexedAnimation();
    animation.frames[1].transparent = true;
    animation.frames[1].pixels[7] = 128;
    const SourceRecord record = MakeSourceRecord(animation);
    EXPECT_EQ(record.loopCount, 5);
    EXPECT_TRUE(record.transparent);
    EXPECT_TRUE(record.ownPalette);
    ASSERT_EQ(record.frames.size(), 2u);
    EXPECT_EQ(record.frames[1].delay, 8);
    EXPECT_TRUE(record.frames[0].alpha.empty());
    EXPECT_EQ(record.frames[1].alpha, (std::vector<uint8_t>{255, 128, 255, 255, 255, 255}));
}

TEST(SourceBlock, An_animation_without_frames_is_still_a_block) {
    Animation animation;
    animation.width = animation.height = 1;
    const auto block = BlockOf(animation);
    EXPECT_TRUE(IsAnimation(block.data(), block.size()));
}

// A palette of one or two entries would be remapped to by luminance.
TEST(SourceBlock, A_palette_is_handed_over_with_three_entries_at_least) {
    Animation animation = IndexedAnimation();
    animation.globalPalette.resize(2);
    for (Frame& frame : animation.frames) {
        for (uint8_t& index : frame.indices) index %= 2;
    }
    const auto block = BlockOf(animation);
    AnimationHeader header;
    EXPECT_EQ(FramesOf(block, &header).size(), 2u);
    const std::vector<uint8_t> palette(block.begin() + kAnimationHeaderBytes,
                                       block.begin() + kAnimationHeaderBytes + 9);
    EXPECT_EQ(block[36], 3);
    EXPECT_EQ(palette, (std::vector<uint8_t>{10, 11, 12, 20, 21, 22, 0, 0, 0}));
}

}  // namespace
}  // namespace kfx::commands
