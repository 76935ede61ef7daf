// SPDX-License-Identifier: MIT
#include "builder/quantizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>

#include "builder/color_cube.h"
#include "tests/reference/quantizer_reference.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

// Frames of a test; they and their list are freed with it.
struct Frames {
    ~Frames() { FreeFrames(&list); }
    void Add(Picture picture) {
        FrameEntry entry = {};
        entry.image = picture.handle;
        handles.push_back(picture.handle);
        ASSERT_TRUE(AppendFrame(&list, entry));
        picture.handle = nullptr;
    }

    FrameList list = {};
    std::vector<ImageHandle> handles;
};

struct Found {
    bool ok;
    uint32_t colors;
    std::array<uint8_t, kPaletteBytes> bytes;
};

Found RunQuantize(uint32_t limit, const FrameList& list) {
    Found found = {};
    found.bytes.fill(0xCC);
    found.colors = limit;
    found.ok = Quantize(&found.colors, found.bytes.data(), list);
    return found;
}

uint32_t ExpectReference(uint32_t limit, const Frames& frames, const std::string& name) {
    const ReferencePalette expected = ReferenceQuantize(limit, frames.handles);
    const Found found = RunQuantize(limit, frames.list);
    EXPECT_TRUE(found.ok) << name;
    EXPECT_EQ(found.colors, expected.colors) << name << ", limit " << limit;
    for (size_t i = 0; i < 256; ++i) {
        const bool same = std::memcmp(&found.bytes[3 * i], &expected.bytes[3 * i], 3) == 0;
        EXPECT_TRUE(same) << name << ", limit " << limit << ", entry " << i;
        if (!same) break;
    }
    return expected.passes;
}

// A picture of exactly these colours in this order, the last one repeated to fill it.
Picture PictureOf(const std::vector<uint32_t>& colors, int32_t width, int32_t height) {
    Picture picture(CreateDib(width, height, nullptr, 24));
    const ImageLock lock(picture.handle);
    for (int32_t i = 0; i < width * height; ++i)
        SetDibPixel(lock.image, i % width, i / width,
                    colors[std::min(static_cast<size_t>(i), colors.size() - 1)]);
    return picture;
}

std::vector<uint32_t> DifferentColors(size_t count, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint32_t> colors;
    while (colors.size() < count) {
        const auto color = static_cast<uint32_t>(random() & 0xFFFFFF);
        if (std::find(colors.begin(), colors.end(), color) == colors.end()) colors.push_back(color);
    }
    return colors;
}

TEST(Quantizer, Few_colours_are_listed_exactly_in_order_of_first_appearance) {
    const std::vector<uint32_t> colors = DifferentColors(200, 1);
    Frames frames;
    frames.Add(PictureOf(colors, 25, 9));
    const Found found = RunQuantize(255, frames.list);
    ASSERT_TRUE(found.ok);
    ASSERT_EQ(found.colors, 200u);
    for (size_t i = 0; i < 200; ++i) {
        const uint32_t entry = Rgb(found.bytes[3 * i], found.bytes[3 * i + 1], found.bytes[3 * i + 2]);
        EXPECT_EQ(entry, colors[i]) << i;
    }
    EXPECT_TRUE(std::all_of(&found.bytes[600], &found.bytes[767], [](uint8_t byte) { return byte == 0; }));
}

TEST(Quantizer, Every_count_of_colours_from_1_to_300_gives_the_reference) {
    for (size_t colors = 1; colors <= 300; colors += colors > 250 && colors < 260 ? 1 : 7) {
        Frames frames;
        frames.Add(PictureOf(DifferentColors(colors, static_cast<uint32_t>(colors)), 20, 16));
        for (const uint32_t limit : {0u, 255u, 256u, 1000u})
            ExpectReference(limit, frames, std::to_string(colors) + " colours");
    }
}

// Equal steps that the table of colours puts together, and steps that lie well apart in it.
TEST(Quantizer, Colours_in_equal_steps_are_listed_in_order_of_first_appearance) {
    for (const uint32_t step : {46368u, 28657u, 17711u, 1u, 256u, 65536u / 250, 0x10107u}) {
        std::vector<uint32_t> colors;
        for (uint32_t i = 0; i < 250; ++i) colors.push_back(i * step & 0xFFFFFF);
        std::vector<uint32_t> twice = colors;
        twice.insert(twice.end(), colors.rbegin(), colors.rend());
        Frames frames;
        frames.Add(PictureOf(twice, 25, 20));
        const Found found = RunQuantize(256, frames.list);
        ASSERT_TRUE(found.ok);
        ASSERT_EQ(found.colors, 250u) << "step " << step;
        for (size_t i = 0; i < colors.size(); ++i)
            ASSERT_EQ(Rgb(found.bytes[3 * i], found.bytes[3 * i + 1], found.bytes[3 * i + 2]), colors[i])
                << "step " << step << ", colour " << i;
    }
}

TEST(Quantizer, Exactly_256_colours_are_listed_only_when_the_last_one_is_the_last_pixel) {
    const std::vector<uint32_t> colors = DifferentColors(256, 9);
    Frames exact, longer;
    exact.Add(PictureOf(colors, 16, 16));
    longer.Add(PictureOf(colors, 257, 1));
    const Found listed = RunQuantize(256, exact.list);
    EXPECT_EQ(listed.colors, 256u);
    EXPECT_EQ(Rgb(listed.bytes[0], listed.bytes[1], listed.bytes[2]), colors[0]);
    ExpectReference(256, exact, "256 colours, 256 pixels");
    ExpectReference(256, longer, "256 colours, 257 pixels");
    ExpectReference(255, exact, "256 colours for 255");
    const Found reduced = RunQuantize(256, longer.list);
    EXPECT_NE(listed.bytes, reduced.bytes);
}

TEST(Quantizer, Every_limit_gives_the_reference) {
    Frames frames;
    frames.Add(ShadedPicture(64, 48, 1));
    frames.Add(RandomPicture(31, 17, 2));
    for (uint32_t limit = 1; limit <= 256; limit += limit < 20 ? 1 : 13)
        ExpectReference(limit, frames, "shades and noise");
    ExpectReference(255, frames, "shades and noise");
}

TEST(Quantizer, Pictures_of_every_kind_give_the_reference) {
    uint32_t seed = 0;
    for (const Size size : TrickySizes()) {
        Frames frames;
        frames.Add(ShadedPicture(size.width, size.height, ++seed));
        frames.Add(RandomPicture(size.width, size.height, ++seed));
        frames.Add(FlatPicture(size.height, size.width, seed * 0x10305));
        const std::string name = std::to_string(size.width) + "x" + std::to_string(size.height);
        ExpectReference(256, frames, name);
        ExpectReference(255, frames, name);
    }
}

TEST(Quantizer, Many_merging_passes_give_the_reference) {
    // Clusters of different weight make errors of every size, and parents that are merged before their
    // children.
    std::mt19937 generator(5);
    const auto random = [&generator] { return static_cast<uint32_t>(generator()); };
    uint32_t passes = 0;
    for (uint32_t round = 0; round < 12; ++round) {
        Frames frames;
        for (int frame = 0; frame < 3; ++frame) {
            Picture picture = FlatPicture(90, 60, 0);
            const ImageLock lock(picture.handle);
            uint32_t center = random();
            for (int32_t i = 0; i < 90 * 60; ++i) {
                if (random() % 40 == 0) center = random() % 3 ? random() : 0x7F7F7F + (random() & 0x10101);
                const uint32_t spread = round % 4 == 0 ? 0x010101 : round % 4 == 1 ? 0x0F0F0F : 0x3F3F3F;
                SetDibPixel(lock.image, i % 90, i / 90, (center ^ (random() & spread)) & 0xFFFFFF);
            }
            frames.Add(std::move(picture));
        }
        const std::string name = "round " + std::to_string(round);
        passes += ExpectReference(256, frames, name);
        passes += ExpectReference(255, frames, name);
        passes += ExpectReference(1 + random() % 250, frames, name);
    }
    EXPECT_GT(passes, 1000u) << "the pictures are too easy";
}

// Two levels of the tree: cells of 128 and, within them, of 64 levels a channel.
constexpr uint32_t kLimitOfTwoLevels = 8;

// A colour of each of the first `count` deepest cells of bright reds, `pixels` times and once more in each
// further cell; either amid its cell (a small error) or in its outermost corner (a large one).
std::vector<uint32_t> BrightReds(uint32_t count, uint32_t pixels, bool amid) {
    std::vector<uint32_t> colors;
    for (uint32_t cell = 0; cell < count; ++cell) {
        const auto level = [cell, amid](uint32_t bit, uint32_t base) {
            return base + (cell & bit ? (amid ? 95 : 127) : (amid ? 31 : 0));
        };
        colors.insert(colors.end(), pixels + cell, Rgb(level(4, 128), level(2, 0), level(1, 0)));
    }
    return colors;
}

// The eight dark colours around a midpoint: a small error for the cell of 128, large ones for its eight cells
// of 64, so that the parent is merged first, with its children.
std::vector<uint32_t> ColorsAroundMidpoint() {
    std::vector<uint32_t> colors;
    for (uint32_t corner = 0; corner < 8; ++corner)
        colors.push_back(Rgb(63 + (corner >> 2 & 1), 63 + (corner >> 1 & 1), 63 + (corner & 1)));
    return colors;
}

Found ExpectReferenceOf(uint32_t limit, std::vector<uint32_t> colors, const std::vector<uint32_t>& more,
                        const std::string& name) {
    colors.insert(colors.end(), more.begin(), more.end());
    Frames frames;
    frames.Add(PictureOf(colors, static_cast<int32_t>(colors.size()), 1));
    ExpectReference(limit, frames, name);
    return RunQuantize(limit, frames.list);
}

bool Holds(const Found& found, uint32_t color) {
    for (size_t i = 0; i < found.colors; ++i)
        if (Rgb(found.bytes[3 * i], found.bytes[3 * i + 1], found.bytes[3 * i + 2]) == color) return true;
    return false;
}

TEST(Quantizer, Cells_that_a_merged_parent_takes_along_count_once_more_and_propose_their_errors) {
    // Merging the parent would leave 6 colours; counted with its children, there are 14, and a next pass
    // comes. It merges the bright red of least error, or, where all of theirs are larger than those of the
    // children that are gone, nothing.
    const Found small = ExpectReferenceOf(kLimitOfTwoLevels, ColorsAroundMidpoint(), BrightReds(5, 20, true),
                                          "errors below the children's");
    EXPECT_EQ(small.colors, 6u);
    const Found large = ExpectReferenceOf(kLimitOfTwoLevels, ColorsAroundMidpoint(), BrightReds(5, 2, false),
                                          "errors above the children's");
    EXPECT_EQ(large.colors, 6u);
    for (const uint32_t color : BrightReds(5, 1, false)) EXPECT_TRUE(Holds(large, color));
    EXPECT_TRUE(Holds(large, Rgb(64, 64, 64)));
}

TEST(Quantizer, A_cell_whose_error_equals_its_parent_s_is_merged_before_it_counts) {
    // Two such pairs, merged in one pass, leave the root and five bright reds.
    const std::vector<uint32_t> pairs = {0xCFCFCF, 0xD0D0D0, 0x2F2F2F, 0x303030};
    const Found found = ExpectReferenceOf(6, pairs, BrightReds(5, 2, false), "pairs of equal errors");
    EXPECT_EQ(found.colors, 6u);
    for (const uint32_t color : BrightReds(5, 1, false)) EXPECT_TRUE(Holds(found, color));
}

TEST(Quantizer, A_limit_of_255_makes_the_tree_one_level_shallower) {
    EXPECT_EQ(CubeDepthFor(256), 5u);
    EXPECT_EQ(CubeDepthFor(255), 4u);
    EXPECT_EQ(CubeDepthFor(64), 4u);
    EXPECT_EQ(CubeDepthFor(63), 3u);
    EXPECT_EQ(CubeDepthFor(16), 3u);
    EXPECT_EQ(CubeDepthFor(15), 2u);
    EXPECT_EQ(CubeDepthFor(1), 2u);
}

TEST(Quantizer, Entries_stand_in_the_tree_s_order_and_not_by_frequency) {
    // More colours than the limit, spread so that dark ones are rare and come first nevertheless.
    std::vector<uint32_t> colors = DifferentColors(300, 3);
    std::fill(colors.begin() + 200, colors.end(), 0xFFFFFFu);
    std::vector<uint32_t> all = DifferentColors(290, 4);
    all.insert(all.end(), 500, 0xFFFFFFu);
    Frames frames;
    frames.Add(PictureOf(all, 79, 10));
    const Found found = RunQuantize(255, frames.list);
    ASSERT_GT(found.colors, 2u);
    const size_t last = found.colors - 1;
    EXPECT_GT(found.bytes[3 * last] + found.bytes[3 * last + 1] + found.bytes[3 * last + 2], 600);
    ExpectReference(255, frames, "frequent white");
}

TEST(Quantizer, Cells_are_emptied_before_their_sums_overflow) {
    // More pixels of one cell than its packed sums hold, all with the highest low bits, in rows longer than
    // that.
    Frames frames;
    Picture wide = FlatPicture(400000, 2, 0xFFFFFF);
    {
        const ImageLock lock(wide.handle);
        std::mt19937 random(1);
        for (int32_t x = 0; x < 3000; ++x)
            SetDibPixel(lock.image, x * 7, x & 1, static_cast<uint32_t>(random() & 0xFFFFFF));
    }
    frames.Add(std::move(wide));
    ExpectReference(256, frames, "wide");
    ExpectReference(255, frames, "wide");
}

TEST(Quantizer, A_list_without_a_handle_fails_and_one_without_frames_finds_no_colours) {
    EXPECT_FALSE(RunQuantize(256, FrameList{}).ok);
    FrameList empty = {};
    empty.entries = AllocateMemory(1);
    const Found found = RunQuantize(256, empty);
    EXPECT_TRUE(found.ok);
    EXPECT_EQ(found.colors, 0u);
    EXPECT_TRUE(std::all_of(found.bytes.begin(), found.bytes.end(), [](uint8_t byte) { return byte == 0; }));
    FreeFrames(&empty);
}

TEST(Quantizer, A_frame_that_is_not_full_colour_fails) {
    Frames frames;
    frames.Add(ShadedPicture(8, 8, 1));
    frames.Add(RandomPicture(8, 8, 1, 8));
    EXPECT_FALSE(RunQuantize(256, frames.list).ok);
}

}  // namespace
}  // namespace kfx::test
