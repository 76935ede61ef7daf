// SPDX-License-Identifier: MIT
#include "host/animation_block.h"

#include <gtest/gtest.h>

#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

std::vector<uint8_t> TwoFrames() {
    const Picture first = RandomPicture(5, 3, 1);
    const Picture second = RandomPicture(4, 2, 2, 8);
    BlockOptions options;
    options.globalPalette = {1, 2, 3, 4, 5, 6};
    return MakeAnimationBlock({{BytesOf(first.handle), {1, 2, 3, 4}}, {BytesOf(second.handle), {5, 6, 7, 8}}},
                              options);
}

bool Accepted(const std::vector<uint8_t>& block) { return IsAnimation(block.data(), block.size()); }

// A walk over a damaged block must stay inside it whatever it answers; the address sanitizer watches.
void WalkAll(const std::vector<uint8_t>& block) {
    const std::vector<uint8_t> exact(block);  // no slack behind the last byte
    AnimationHeader header;
    if (!ReadAnimationHeader(exact.data(), exact.size(), &header)) return;
    uint32_t sum = 0;
    for (uint32_t i = 0; i < 3 * header.globalColors; ++i) sum += header.globalPalette[i];
    size_t offset = header.firstBlock;
    AnimationFrame frame;
    for (int i = 0; i < 8 && ReadAnimationFrame(header, &offset, &frame) == FrameStep::Frame; ++i) {
        if (frame.colorTable) sum += frame.colorTable[(size_t{4} << frame.bitCount) - 1];
        sum += frame.rows[0];
        sum += frame.rows[RowStride(frame.width, frame.bitCount) * static_cast<size_t>(frame.height) - 1];
    }
    EXPECT_GE(sum, 0u);
}

TEST(AnimationBlock, A_sound_block_is_accepted_and_its_fields_are_read) {
    const std::vector<uint8_t> block = TwoFrames();
    ASSERT_TRUE(Accepted(block));
    AnimationHeader header;
    ASSERT_TRUE(ReadAnimationHeader(block.data(), block.size(), &header));
    EXPECT_EQ(header.frameCount, 2u);
    EXPECT_EQ(header.width, 5u);
    EXPECT_EQ(header.height, 3u);
    EXPECT_EQ(header.globalColors, 2u);
    EXPECT_EQ(header.globalPalette[5], 6);
    size_t offset = header.firstBlock;
    AnimationFrame frame;
    ASSERT_EQ(ReadAnimationFrame(header, &offset, &frame), FrameStep::Frame);
    EXPECT_EQ(frame.bitCount, 24);
    EXPECT_EQ(frame.fields[3], 4);
    ASSERT_EQ(ReadAnimationFrame(header, &offset, &frame), FrameStep::Frame);
    EXPECT_EQ(frame.bitCount, 8);
    EXPECT_EQ(frame.fields[0], 5);
    EXPECT_EQ(ReadAnimationFrame(header, &offset, &frame), FrameStep::End);
}

TEST(AnimationBlock, No_image_is_accepted_when_the_closing_tag_follows_the_header) {
    EXPECT_TRUE(Accepted(MakeAnimationBlock({})));
}

TEST(AnimationBlock, An_early_closing_tag_ends_the_check) {
    std::vector<uint8_t> block = TwoFrames();
    block[16] = 5;
    EXPECT_TRUE(Accepted(block));
}

TEST(AnimationBlock, A_third_frame_where_two_are_announced_is_rejected) {
    std::vector<uint8_t> block = TwoFrames();
    block[16] = 1;
    EXPECT_FALSE(Accepted(block));
}

TEST(AnimationBlock, A_bitmap_header_of_another_size_is_rejected) {
    std::vector<uint8_t> block = TwoFrames();
    block[808 + 40] = 108;
    EXPECT_FALSE(Accepted(block));
}

TEST(AnimationBlock, More_than_256_colours_count_as_256) {
    BlockOptions options;
    options.globalPalette.assign(3 * 300, 9);
    const std::vector<uint8_t> block = MakeAnimationBlock({}, options);
    AnimationHeader header;
    ASSERT_TRUE(ReadAnimationHeader(block.data(), block.size(), &header));
    EXPECT_EQ(header.globalColors, 256u);
}

TEST(AnimationBlock, Cut_at_any_byte_it_is_rejected) {
    const std::vector<uint8_t> block = TwoFrames();
    for (size_t size = 0; size < block.size(); ++size) {
        const std::vector<uint8_t> cut(block.begin(), block.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_FALSE(Accepted(cut)) << "cut at byte " << size;
        WalkAll(cut);
    }
}

TEST(AnimationBlock, Any_byte_of_its_headers_may_be_damaged_without_a_step_outside) {
    const std::vector<uint8_t> block = TwoFrames();
    for (size_t i = 0; i < block.size(); ++i) {
        for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            std::vector<uint8_t> damaged = block;
            damaged[i] = static_cast<uint8_t>(value);
            IsAnimation(damaged.data(), damaged.size());
            WalkAll(damaged);
        }
    }
}

TEST(AnimationBlock, Absurd_sizes_are_rejected) {
    const std::vector<uint8_t> block = TwoFrames();
    for (const size_t field :
         {size_t{808 + 4}, size_t{808 + 16}, size_t{848 + 4}, size_t{848 + 8}, size_t{4}}) {
        for (const uint32_t value : {0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu, 0x40000000u}) {
            std::vector<uint8_t> damaged = block;
            for (size_t b = 0; b < 4; ++b) damaged[field + b] = static_cast<uint8_t>(value >> 8 * b);
            EXPECT_FALSE(Accepted(damaged)) << "field at " << field << " = " << value;
        }
    }
}

}  // namespace
}  // namespace kfx::test
