// SPDX-License-Identifier: MIT
// Which palette a build hands over, and in how many bits.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "builder/palette_order.h"
#include "tests/builder/build_scene.h"

namespace kfx::test {
namespace {

TEST(Build, The_black_entries_beyond_a_small_palette_compete) {
    BlockOptions block;
    for (uint8_t i = 0; i < 20; ++i) block.globalPalette.insert(block.globalPalette.end(), {255, 200, i});
    BuildOptions options = BuiltInOptions();
    options.paletteChoice = kSourcePalette;
    std::vector<Picture> black;
    black.push_back(FlatPicture(5, 5, Rgb(1, 2, 3)));
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(black, block), options), 1);
    EXPECT_EQ(run.task.bitsPerPixel, 5u);
    EXPECT_EQ(PixelOf(ImageOf(run.frames[0]).handle, 2, 2), 20u);
}

TEST(Build, A_custom_palette_gains_the_background_colour_and_is_sorted_by_luminance) {
    std::vector<Picture> pictures;
    pictures.push_back(FlatPicture(3, 1, Rgb(200, 100, 50)));
    {
        const ImageLock lock(pictures[0].handle);
        SetDibPixel(lock.image, 1, 0, Rgb(0, 0, 9));
    }
    BuildOptions options = BuiltInOptions();
    options.customPalette = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
    EXPECT_EQ(run.task.bitsPerPixel, 2u) << "two colours and white";
    EXPECT_EQ(EntryOf(run.task.palette, 0), Rgb(0, 0, 9));
    EXPECT_EQ(EntryOf(run.task.palette, 1), Rgb(200, 100, 50));
    EXPECT_EQ(EntryOf(run.task.palette, 2), 0xFFFFFFu);
    EXPECT_EQ(EntryOf(run.task.palette, 3), 0u);
}

// A picture of that many grays and other colours, none white; the nearest to white is (250, 250, 250).
Picture PictureOfColors(uint32_t colors) {
    Picture picture = FlatPicture(16, 16, Rgb(250, 250, 250));
    const ImageLock lock(picture.handle);
    for (uint32_t i = 1; i < colors; ++i)
        SetDibPixel(lock.image, static_cast<int32_t>(i % 16), static_cast<int32_t>(i / 16),
                    Rgb(i % 200, i / 2, 100 - i % 100));
    return picture;
}

TEST(Build, Up_to_253_colours_gain_an_entry_and_more_give_up_the_one_nearest_to_the_background) {
    for (const uint32_t colors : {252u, 253u, 254u, 255u}) {
        std::vector<Picture> pictures;
        pictures.push_back(PictureOfColors(colors));
        BuildOptions options = BuiltInOptions();
        options.customPalette = true;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
        const uint32_t used = colors < 254 ? colors + 1 : colors;
        EXPECT_EQ(EntryOf(run.task.palette, used - 1), 0xFFFFFFu) << colors;
        const bool keptNearest = EntryOf(run.task.palette, used - 2) == Rgb(250, 250, 250);
        EXPECT_EQ(keptNearest, colors < 254) << colors;
    }
}

// Entries up to the last one that is not black.
int32_t EntriesOf(const BuildRun& run) {
    size_t count = 256;
    while (count > 0 && EntryOf(run.task.palette, count - 1) == 0) --count;
    return static_cast<int32_t>(count);
}

TEST(Build, A_limited_palette_never_has_more_entries_than_asked_for) {
    for (const int32_t limit : {3, 4, 5, 16, 17, 64, 100, 253, 254, 255}) {
        for (const bool supercompress : {false, true}) {
            std::vector<Picture> pictures;
            pictures.push_back(PictureOfColors(255));
            pictures.push_back(PictureOfColors(255));
            BuildOptions options = BuiltInOptions();
            options.customPalette = true;
            options.supercompress = supercompress;
            options.mostColors = limit;
            BuildRun run;
            EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
            EXPECT_LE(EntriesOf(run), limit) << "with supercompression: " << supercompress;
            EXPECT_LE(run.task.bitsPerPixel, static_cast<uint32_t>(BitsForColors(limit)));
            EXPECT_LT(run.frames[1].record.transparentIndex, limit);
        }
    }
}

TEST(Build, A_limited_palette_gives_up_no_colour_for_white) {
    for (const uint32_t colors : {2u, 3u, 16u, 100u, 255u}) {
        std::vector<Picture> pictures;
        pictures.push_back(PictureOfColors(colors));
        BuildOptions options = BuiltInOptions();
        options.customPalette = true;
        options.mostColors = static_cast<int32_t>(colors);
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
        EXPECT_EQ(EntryOf(run.task.palette, colors - 1), Rgb(250, 250, 250)) << colors;
        if (colors == 255) continue;
        options.mostColors = static_cast<int32_t>(colors) + 1;
        BuildRun larger;
        EXPECT_EQ(BuildWith(&larger, BlockOf(pictures), options), 1);
        EXPECT_EQ(EntryOf(larger.task.palette, colors), colors < 254 ? 0xFFFFFFu : 0u) << colors;
    }
}

TEST(Build, The_reserved_entry_counts_among_the_bits) {
    for (const uint32_t colors : {1u, 2u, 3u, 6u, 7u, 14u, 15u, 16u, 127u, 253u, 255u}) {
        std::vector<Picture> pictures;
        pictures.push_back(PictureOfColors(colors));
        pictures.push_back(PictureOfColors(colors));
        BuildOptions options = BuiltInOptions();
        options.customPalette = true;
        for (const bool supercompress : {false, true}) {
            options.supercompress = supercompress;
            BuildRun run;
            EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
            // White is one more colour, or takes another one's entry.
            const auto used = static_cast<int32_t>(colors < 254 ? colors + 1 : colors);
            EXPECT_EQ(run.task.bitsPerPixel, static_cast<uint32_t>(BitsForColors(used + supercompress)));
            EXPECT_EQ(run.frames[1].record.transparentIndex, supercompress ? used : -1) << colors;
            if (supercompress) {
                EXPECT_EQ(PixelOf(ImageOf(run.frames[1]).handle, 5, 5), static_cast<uint32_t>(used));
            }
        }
    }
}

TEST(Build, Match_original_takes_the_source_palette_and_its_bits) {
    for (const size_t colors : {1u, 2u, 3u, 16u, 17u, 200u, 256u}) {
        BlockOptions block;
        std::mt19937 random(1);
        for (size_t i = 0; i < 3 * colors; ++i) block.globalPalette.push_back(static_cast<uint8_t>(random()));
        BuildOptions options = BuiltInOptions();
        options.paletteChoice = kSourcePalette;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2), block), options), 1);
        EXPECT_FALSE(HasStatus(run, "Quantizing"));
        EXPECT_EQ(run.task.bitsPerPixel, static_cast<uint32_t>(BitsForColors(static_cast<int32_t>(colors))));
        block.globalPalette.resize(kPaletteBytes);
        EXPECT_EQ(std::memcmp(run.task.palette, block.globalPalette.data(), kPaletteBytes), 0) << colors;
    }
}

TEST(Build, A_source_palette_of_more_than_256_colours_is_cut) {
    BlockOptions block;
    for (size_t i = 0; i < 3 * 300; ++i) block.globalPalette.push_back(static_cast<uint8_t>(i * 7));
    BuildOptions options = BuiltInOptions();
    options.paletteChoice = kSourcePalette;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2), block), options), 1);
    EXPECT_EQ(run.task.bitsPerPixel, 8u);
    EXPECT_EQ(std::memcmp(run.task.palette, block.globalPalette.data(), kPaletteBytes), 0);
}

TEST(Build, Match_original_without_a_source_palette_or_with_an_empty_one_quantizes) {
    BuildOptions options = BuiltInOptions();
    options.paletteChoice = kSourcePalette;
    std::vector<uint8_t> none = BlockOf(MovingBar(2));
    std::vector<uint8_t> empty = none;
    empty[12] = 4;  // a palette is announced, of 0 colours
    for (const std::vector<uint8_t>& block : {none, empty}) {
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, block, options), 1);
        EXPECT_TRUE(HasStatus(run, "Quantizing"));
    }
}

}  // namespace
}  // namespace kfx::test
