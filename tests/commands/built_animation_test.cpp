// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>

#include "commands/built_animation.h"

namespace kfx::commands {
namespace {

constexpr int kWidth = 3;
constexpr int kHeight = 2;

using Bytes = std::vector<uint8_t>;

FileObjectRecord Task(uint32_t bits) {
    FileObjectRecord task = {};
    task.size = sizeof task;
    task.bitsPerPixel = bits;
    task.width = kWidth;
    task.height = kHeight;
    for (size_t i = 0; i < sizeof task.palette; ++i) task.palette[i] = static_cast<uint8_t>(i);
    return task;
}

void Put(Bytes* bytes, size_t offset, uint32_t value, size_t width) {
    std::memcpy(bytes->data() + offset, &value, width);
}

// A bitmap of the task's size; entry i of its table is the task's palette entry i. Rows are given from the
// bottom.
Bytes Bitmap(uint32_t bitCount, const Bytes& rows) {
    Bytes bitmap(40);
    Put(&bitmap, 0, 40, 4);
    Put(&bitmap, 4, kWidth, 4);
    Put(&bitmap, 8, kHeight, 4);
    Put(&bitmap, 12, 1, 2);
    Put(&bitmap, 14, bitCount, 2);
    for (size_t i = 0; bitCount <= 8 && i < size_t{1} << bitCount; ++i) {
        const size_t first = 3 * i;
        bitmap.insert(bitmap.end(), {static_cast<uint8_t>(first + 2), static_cast<uint8_t>(first + 1),
                                     static_cast<uint8_t>(first), 0});
    }
    bitmap.insert(bitmap.end(), rows.begin(), rows.end());
    return bitmap;
}

bool Add(BuiltAnimation* built, const Bytes& bitmap, uint32_t index = 0, int transparent = -1) {
    AddImageRecord record = {};
    record.size = sizeof record;
    record.index = index;
    record.transparentIndex = transparent;
    return AddBuiltFrame(record, bitmap.data(), bitmap.size(), built);
}

BuiltAnimation Begin(uint32_t bits) {
    BuiltAnimation built;
    EXPECT_TRUE(BeginTask(Task(bits), &built));
    return built;
}

SourceRecord Source(size_t frames) {
    SourceRecord source;
    source.width = kWidth;
    source.height = kHeight;
    source.loopCount = 3;
    source.frames.resize(frames);
    for (size_t i = 0; i < frames; ++i) source.frames[i].delay = static_cast<int>(10 + i);
    return source;
}

TEST(BuiltAnimation, Rows_of_every_depth_are_turned_the_right_way_up) {
    BuiltAnimation built = Begin(8);
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 2, 3, 0, 4, 5, 6, 0})));
    ASSERT_TRUE(Add(&built, Bitmap(4, {0x12, 0x30, 0, 0, 0x45, 0x60, 0, 0})));
    ASSERT_TRUE(Add(&built, Bitmap(1, {0xA0, 0, 0, 0, 0x40, 0, 0, 0})));
    EXPECT_EQ(built.frames[0].pixels, (Bytes{4, 5, 6, 1, 2, 3}));
    EXPECT_EQ(built.frames[1].pixels, (Bytes{4, 5, 6, 1, 2, 3}));
    EXPECT_EQ(built.frames[2].pixels, (Bytes{0, 1, 0, 1, 0, 1}));
    EXPECT_EQ(built.frames[1].palette.size(), 16u);
    EXPECT_EQ(built.frames[0].palette[2], (RgbColor{6, 7, 8}));
}

TEST(BuiltAnimation, True_colour_rows_become_red_green_blue) {
    BuiltAnimation built = Begin(8);
    const Bytes rows = {1,  2,  3,  4,  5,  6,  7,  8,  9,  0, 0, 0,  //
                        11, 12, 13, 14, 15, 16, 17, 18, 19, 0, 0, 0};
    ASSERT_TRUE(Add(&built, Bitmap(24, rows)));
    EXPECT_EQ(built.frames[0].pixels, (Bytes{13, 12, 11, 16, 15, 14, 19, 18, 17, 3, 2, 1, 6, 5, 4, 9, 8, 7}));
}

TEST(BuiltAnimation, Damaged_bitmaps_and_other_sizes_are_refused) {
    BuiltAnimation built = Begin(8);
    const Bytes sound = Bitmap(8, {1, 2, 3, 0, 4, 5, 6, 0});
    for (size_t size = 0; size < sound.size(); ++size) {
        EXPECT_FALSE(Add(&built, Bytes(sound.begin(), sound.begin() + static_cast<ptrdiff_t>(size)))) << size;
    }
    Bytes wider = sound;
    Put(&wider, 4, kWidth + 1, 4);
    EXPECT_FALSE(Add(&built, wider));
    Bytes deeper = sound;
    Put(&deeper, 14, 16, 2);
    EXPECT_FALSE(Add(&built, deeper));
    EXPECT_TRUE(built.frames.empty());
}

TEST(BuiltAnimation, A_task_needs_a_pictures_size) {
    BuiltAnimation built;
    FileObjectRecord task = Task(8);
    task.width = 0;
    EXPECT_FALSE(BeginTask(task, &built));
    task.width = 0x80000000u;
    EXPECT_FALSE(BeginTask(task, &built));
    EXPECT_FALSE(Add(&built, Bitmap(8, {1, 2, 3, 0, 4, 5, 6, 0}))) << "no task is open";
}

TEST(BuiltAnimation, Transparent_pixels_show_the_frames_before_them) {
    BuiltAnimation built = Begin(8);
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 1, 1, 0, 1, 1, 1, 0}), 0));
    ASSERT_TRUE(Add(&built, Bitmap(8, {9, 2, 9, 0, 9, 9, 9, 0}), 1, 9));
    const Animation played = PlayBuilt(built, Source(2));
    const auto& second = played.frames[1].pixels;
    EXPECT_EQ(second[0], 3) << "still colour 1";
    EXPECT_EQ(second[4 * 4], 6) << "now colour 2";
    EXPECT_EQ(played.frames[1].delay, 11);
    EXPECT_EQ(played.loopCount, 3);
}

TEST(BuiltAnimation, The_sources_alpha_comes_back_by_frame_index) {
    BuiltAnimation built = Begin(8);
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 1, 1, 0, 1, 1, 1, 0}), 1));
    SourceRecord source = Source(2);
    source.transparent = true;
    source.frames[1].alpha = {0, 40, 255, 255, 255, 255};
    const Animation played = PlayBuilt(built, source);
    EXPECT_EQ(played.frames[0].pixels[3], 0);
    EXPECT_EQ(played.frames[0].pixels[7], 40);
    EXPECT_EQ(played.frames[0].pixels[11], 255);
}

TEST(BuiltAnimation, An_opaque_gif_stands_as_it_was_handed_over) {
    BuiltAnimation built = Begin(3);
    built.comment = "made here";
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 1, 1, 0, 1, 1, 1, 0}), 0));
    ASSERT_TRUE(Add(&built, Bitmap(8, {7, 2, 7, 0, 7, 7, 7, 0}), 1, 7));
    const GifAnimation gif = MakeGif(built, Source(2));
    EXPECT_EQ(gif.globalPalette.size(), 8u);
    EXPECT_EQ(gif.comment, "made here");
    EXPECT_EQ(gif.loopCount, 3);
    ASSERT_EQ(gif.frames.size(), 2u);
    EXPECT_EQ(gif.frames[0].transparentIndex, -1);
    EXPECT_EQ(gif.frames[1].transparentIndex, 7);
    EXPECT_EQ(gif.frames[1].indices, (Bytes{7, 7, 7, 7, 2, 7}));
    EXPECT_EQ(gif.frames[1].disposal, kDisposalKeep);
    EXPECT_EQ(gif.frames[1].delay, 11);
}

TEST(BuiltAnimation, Indices_beyond_the_announced_depth_get_black_entries) {
    BuiltAnimation built = Begin(2);
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 1, 1, 0, 1, 9, 1, 0})));
    const GifAnimation gif = MakeGif(built, Source(1));
    ASSERT_EQ(gif.globalPalette.size(), 10u);
    EXPECT_EQ(gif.globalPalette[9], RgbColor{});
}

TEST(BuiltAnimation, A_transparent_source_gives_whole_frames_with_a_spare_index) {
    BuiltAnimation built = Begin(3);
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 1, 1, 0, 1, 1, 1, 0}), 0));
    ASSERT_TRUE(Add(&built, Bitmap(8, {7, 2, 7, 0, 7, 7, 7, 0}), 1, 7));
    SourceRecord source = Source(2);
    source.transparent = true;
    source.frames[0].alpha = {0, 255, 255, 255, 255, 255};
    source.frames[1].alpha = {255, 127, 128, 255, 255, 255};
    const GifAnimation gif = MakeGif(built, source);
    EXPECT_EQ(gif.globalPalette.size(), 9u);
    EXPECT_EQ(gif.frames[0].indices, (Bytes{8, 1, 1, 1, 1, 1}));
    EXPECT_EQ(gif.frames[1].indices, (Bytes{1, 8, 1, 1, 2, 1})) << "what the mask left out is filled in";
    EXPECT_EQ(gif.frames[0].transparentIndex, 8);
    EXPECT_EQ(gif.frames[0].disposal, kDisposalBackground);
}

TEST(BuiltAnimation, A_full_palette_gives_up_its_rarest_entry_for_transparency) {
    BuiltAnimation built = Begin(8);
    ASSERT_TRUE(Add(&built, Bitmap(8, {1, 1, 1, 0, 1, 1, 1, 0})));
    SourceRecord source = Source(1);
    source.transparent = true;
    source.frames[0].alpha = {0, 255, 255, 255, 255, 255};
    const GifAnimation gif = MakeGif(built, source);
    EXPECT_EQ(gif.globalPalette.size(), 256u);
    EXPECT_NE(gif.frames[0].transparentIndex, 1);
    EXPECT_EQ(gif.frames[0].indices[0], gif.frames[0].transparentIndex);
    EXPECT_EQ(gif.frames[0].indices[1], 1);
}

TEST(BuiltAnimation, True_colour_frames_are_reduced_for_a_gif) {
    BuiltAnimation built = Begin(8);
    ASSERT_TRUE(Add(&built, Bitmap(24, Bytes(24, 200))));
    const GifAnimation gif = MakeGif(built, Source(1));
    ASSERT_EQ(gif.frames.size(), 1u);
    ASSERT_FALSE(gif.frames[0].palette.empty());
    EXPECT_EQ(gif.frames[0].palette[gif.frames[0].indices[0]], (RgbColor{200, 200, 200}));
}

}  // namespace
}  // namespace kfx::commands
