// SPDX-License-Identifier: MIT
// Sizes, colours and files in words, and what users write.
#include <gtest/gtest.h>

#include "stage/choice_text.h"
#include "stage/color_box.h"
#include "stage/palette_search.h"
#include "stage/size_box.h"

namespace kfx::test {
namespace {

using namespace stage;

TEST(WantedSizes, Are_read_as_they_are_written) {
    const struct {
        WantedSize size;
        uint64_t bytes;
    } sizes[] = {{{"2", 1}, 2000000},    {{"1.5", 1}, 1500000},   {{"1,5", 1}, 1500000},
                 {{" 300 ", 0}, 300000}, {{"500 KB", 1}, 500000}, {{"2MiB", 0}, 2097152}};
    for (const auto& row : sizes) {
        uint64_t bytes = 0;
        EXPECT_TRUE(BytesOfSize(row.size, &bytes)) << row.size.number;
        EXPECT_EQ(bytes, row.bytes) << row.size.number;
    }
    uint64_t bytes = 0;
    for (const char* text : {"", "0", "-2", "two", "1.2.3", "2 XB"})
        EXPECT_FALSE(BytesOfSize({text, 1}, &bytes));
    EXPECT_EQ(TextOfSize({"2", 1}), "2 MB");
    EXPECT_EQ(TextOfSize({"500 KB", 1}), "500 KB");
}

TEST(FileSizes, Are_never_told_smaller_than_they_are) {
    EXPECT_EQ(SizeText(640), "640 bytes");
    EXPECT_EQ(SizeText(1000), "1.00 KB");
    EXPECT_EQ(SizeText(1001), "1.01 KB");
    EXPECT_EQ(SizeText(1930112), "1.94 MB");
    EXPECT_EQ(SizeText(123456789), "124 MB");
    EXPECT_EQ(ByteCountText(999), "999 bytes");
    EXPECT_EQ(ByteCountText(1930112), "1,930,112 bytes");
}

TEST(Changes, Are_told_in_words) {
    commands::FitSettings settings;
    EXPECT_EQ(ChangesText(settings), "Nothing was changed");
    settings.palette = "custom";
    settings.colors = 64;
    settings.dither = true;
    settings.edits.shrink = 70;
    settings.edits.every = 2;
    settings.lossy = 40;
    EXPECT_EQ(ChangesText(settings),
              "70 % of the width, every 2nd frame, one palette of 64 colours, dithered, "
              "pixels differ by a little (loss 40)");
}

TEST(OfferedPalette, Every_colour_has_words_and_is_found_again) {
    uint8_t palette[3 * kOfferedColors];
    for (size_t row = 0; row < kOfferedColors; ++row) {
        palette[3 * row] = static_cast<uint8_t>(row);
        palette[3 * row + 1] = static_cast<uint8_t>(255 - row);
        palette[3 * row + 2] = 7;
    }
    for (size_t row = 0; row < kOfferedColors; ++row)
        EXPECT_EQ(NearestColor(palette, RGB(palette[3 * row], palette[3 * row + 1], 9)), row);
    EXPECT_EQ(ColorText(palette, 17), "Colour 18 of 256: red 17, green 238, blue 7 (#11EE07)");
}

TEST(PaletteSearches, Are_read_by_the_plugins_rules) {
    PaletteSearch search;
    for (const char* line :
         {"[PlugIn]", ";FastRemap = 1", "DitherBrightness = 90", "DitherC=100", "MainDither = 1", ""})
        TakeSearchLine(line, &search);
    EXPECT_FALSE(search.fast);
    EXPECT_EQ(search.ditherBrightness, 90);
    EXPECT_EQ(search.ditherContrast, 100);
    TakeSearchLine("FastRemap 1", &search);
    EXPECT_TRUE(search.fast);
    TakeSearchLine("FastRemap =", &search);
    EXPECT_FALSE(search.fast);
}

}  // namespace
}  // namespace kfx::test
