// SPDX-License-Identifier: MIT
#include "framework/source_animation.h"

#include <gtest/gtest.h>

#include "framework/settings.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

// A source animation for one test.
struct Source {
    explicit Source(const std::vector<uint8_t>& block) : owner(MakeMemory(block)) {}
    operator MemoryHandle() const { return owner.memory; }

    const MemoryOwner owner;
};

struct Frames {
    ~Frames() { FreeFrames(&list); }
    FrameList list = {};
};

BlockFrame MakeFrame(const Picture& picture, uint32_t firstField) {
    return {BytesOf(picture.handle), {firstField, firstField + 1, firstField + 2, firstField + 3}};
}

TEST(FirstFrame, Comes_back_in_24_bits_at_every_depth) {
    for (const int32_t bitCount : {1, 4, 8, 24, 32}) {
        const Picture picture = RandomPicture(17, 5, 2, bitCount);
        const Source source(
            MakeAnimationBlock({MakeFrame(picture, 1), MakeFrame(RandomPicture(3, 3, 4), 5)}));
        const Picture expected(ConvertTo24Bits(picture.handle));
        const Picture frame(FetchFirstFrame(source));
        EXPECT_TRUE(SamePicture(expected.handle, frame.handle)) << bitCount;
    }
}

TEST(FirstFrame, A_one_bit_frame_with_a_white_and_black_palette_still_has_index_0_black) {
    const uint8_t whiteFirst[] = {255, 255, 255, 0, 0, 0};
    const Picture picture(CreateDib(2, 1, whiteFirst, 1));
    {
        const ImageLock lock(picture.handle);
        SetDibPixel(lock.image, 1, 0, 1);
    }
    const Source source(MakeAnimationBlock({MakeFrame(picture, 1)}));
    const Picture frame(FetchFirstFrame(source));
    EXPECT_EQ(PixelOf(frame.handle, 0, 0), 0x000000u);
    EXPECT_EQ(PixelOf(frame.handle, 1, 0), 0xFFFFFFu);
}

TEST(FirstFrame, Leaves_the_padding_of_the_hosts_rows_behind) {
    const Picture picture = RandomPicture(3, 2, 1);
    const Source source(MakeAnimationBlock({MakeFrame(picture, 1)}));
    const Picture frame(FetchFirstFrame(source));
    const ImageLock lock(frame.handle);
    for (int32_t r = 0; r < 2; ++r) {
        for (size_t i = 9; i < 12; ++i) EXPECT_EQ(StoredRow(lock.image, r)[i], 0) << "row " << r;
    }
}

TEST(FirstFrame, Is_none_without_a_source) { EXPECT_EQ(FetchFirstFrame(nullptr), nullptr); }

TEST(FirstFrame, Is_none_when_the_closing_tag_comes_first) {
    const Source source(MakeAnimationBlock({}));
    EXPECT_EQ(FetchFirstFrame(source), nullptr);
}

// The first block counts, not the header's number of frames.
TEST(FirstFrame, Is_there_even_when_the_header_announces_none) {
    std::vector<uint8_t> block = MakeAnimationBlock({MakeFrame(RandomPicture(3, 3, 4), 5)});
    block[16] = 0;
    const Source source(block);
    const Picture frame(FetchFirstFrame(source));
    EXPECT_NE(frame.handle, nullptr);
}

TEST(FirstFrame, Is_none_when_tag_or_bitmap_header_are_wrong) {
    const std::vector<uint8_t> sound = MakeAnimationBlock({MakeFrame(RandomPicture(3, 3, 4), 5)});
    for (const size_t at : {size_t{0}, size_t{808}, size_t{848}}) {
        std::vector<uint8_t> block = sound;
        ++block[at];
        const Source source(block);
        EXPECT_EQ(FetchFirstFrame(source), nullptr) << "damaged at " << at;
    }
}

TEST(AllFrames, Each_becomes_an_entry_with_its_four_fields) {
    const Picture first = RandomPicture(5, 3, 1, 8);
    const Picture second = RandomPicture(7, 2, 2);
    const Source source(MakeAnimationBlock({MakeFrame(first, 10), MakeFrame(second, 20)}));
    Frames frames;
    ASSERT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Whole);
    ASSERT_EQ(frames.list.count, 2);
    EXPECT_EQ(MemorySize(frames.list.entries), 112u);
    FrameEntry entry;
    ASSERT_TRUE(GetFrame(frames.list, 0, &entry));
    const Picture expected(ConvertTo24Bits(first.handle));
    EXPECT_TRUE(SamePicture(expected.handle, entry.image));
    EXPECT_EQ(entry.changeMask, nullptr);
    EXPECT_EQ(entry.field1, 10);
    EXPECT_EQ(entry.field2, 11);
    EXPECT_EQ(entry.field3, 12);
    EXPECT_EQ(entry.field4, 13);
    EXPECT_EQ(entry.transparentIndex, -1);
    for (const uint8_t byte : entry.zero36) EXPECT_EQ(byte, 0);
    ASSERT_TRUE(GetFrame(frames.list, 1, &entry));
    EXPECT_TRUE(SamePicture(second.handle, entry.image));
    EXPECT_EQ(entry.field3, 22);
}

TEST(AllFrames, Are_appended_to_what_the_list_holds) {
    const Source source(MakeAnimationBlock({MakeFrame(RandomPicture(3, 3, 4), 5)}));
    Frames frames;
    ASSERT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Whole);
    ASSERT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Whole);
    EXPECT_EQ(frames.list.count, 2);
}

TEST(AllFrames, An_early_closing_tag_gives_an_empty_list_and_success) {
    std::vector<uint8_t> block = MakeAnimationBlock({});
    block[16] = 3;
    const Source source(block);
    Frames frames;
    EXPECT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Whole);
    EXPECT_EQ(frames.list.count, 0);
}

TEST(AllFrames, No_announced_frames_give_an_empty_list_and_success_even_if_blocks_follow) {
    std::vector<uint8_t> block = MakeAnimationBlock({MakeFrame(RandomPicture(3, 3, 4), 5)});
    block[16] = 0;
    const Source source(block);
    Frames frames;
    EXPECT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Whole);
    EXPECT_EQ(frames.list.count, 0);
    EXPECT_EQ(frames.list.entries, nullptr);
}

TEST(AllFrames, Only_as_many_as_announced_are_read) {
    std::vector<uint8_t> block =
        MakeAnimationBlock({MakeFrame(RandomPicture(3, 3, 4), 5), MakeFrame(RandomPicture(3, 3, 5), 5)});
    block[16] = 1;
    const Source source(block);
    Frames frames;
    EXPECT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Whole);
    EXPECT_EQ(frames.list.count, 1);
}

TEST(AllFrames, Fail_without_a_source) {
    Frames frames;
    EXPECT_EQ(DecodeAllFrames(nullptr, &frames.list), DecodeResult::None);
    EXPECT_EQ(frames.list.count, 0);
}

TEST(AllFrames, A_damaged_second_frame_leaves_the_first_in_the_list) {
    const Picture first = RandomPicture(5, 3, 1);
    const std::vector<uint8_t> sound =
        MakeAnimationBlock({MakeFrame(first, 10), MakeFrame(RandomPicture(3, 3, 5), 20)});
    const size_t second = 808 + 40 + BytesOf(first.handle).size();
    for (const size_t at : {second, second + 40}) {  // the tag, the bitmap's header size
        std::vector<uint8_t> block = sound;
        ++block[at];
        const Source source(block);
        Frames frames;
        EXPECT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::Incomplete);
        EXPECT_EQ(frames.list.count, 1);
    }
}

TEST(AllFrames, A_damaged_header_or_first_frame_gives_an_empty_list) {
    const std::vector<uint8_t> sound =
        MakeAnimationBlock({MakeFrame(RandomPicture(5, 3, 1), 10), MakeFrame(RandomPicture(3, 3, 5), 20)});
    for (const size_t at : {size_t{0}, size_t{808}, size_t{848}}) {
        std::vector<uint8_t> block = sound;
        ++block[at];
        const Source source(block);
        Frames frames;
        EXPECT_EQ(DecodeAllFrames(source, &frames.list), DecodeResult::None) << "damaged at " << at;
        EXPECT_EQ(frames.list.count, 0);
    }
}

uint32_t Background(MemoryHandle source) {
    uint32_t color = 0;
    EXPECT_TRUE(ReadBackgroundColor(source, &color));
    return color;
}

TEST(Background, Is_the_users_choice_while_local_background_is_on) {
    BlockOptions options;
    options.hasBackground = true;
    options.background = 0x123456;
    const Source source(MakeAnimationBlock({}, options));
    const Settings saved = settings;
    settings.localBackgroundUse = 1;
    settings.localBackgroundColor = 0x20C0FF;
    EXPECT_EQ(Background(source), 0x20C0FFu);
    settings.localBackgroundUse = 0;
    EXPECT_EQ(Background(source), 0x123456u);
    settings = saved;
}

TEST(Background, Is_mid_grey_without_a_choice_a_source_or_a_background_of_its_own) {
    const Settings saved = settings;
    settings.localBackgroundUse = 0;
    EXPECT_EQ(Background(nullptr), 0x7F7F7Fu);
    BlockOptions options;
    options.background = 0x123456;
    {
        const Source source(MakeAnimationBlock({}, options));
        EXPECT_EQ(Background(source), 0x7F7F7Fu) << "the colour is there, its flag is not";
    }
    options.hasBackground = true;
    std::vector<uint8_t> other = MakeAnimationBlock({}, options);
    other[0] = 'p';
    {
        const Source source(other);
        EXPECT_EQ(Background(source), 0x7F7F7Fu) << "not an animation";
    }
    settings = saved;
}

}  // namespace
}  // namespace kfx::test
