// SPDX-License-Identifier: MIT
#include "builder/fixed_palettes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/animation_blocks.h"
#include "tests/support/palette_resource.h"

namespace kfx::test {
namespace {

using Color = std::array<int, 3>;

struct Palette {
    explicit Palette(int32_t choice) {
        std::memset(bytes, 0xCC, sizeof bytes);
        colors = BuildFixedPalette(bytes, choice, &bitsPerPixel);
    }
    Color operator[](size_t i) const { return {bytes[3 * i], bytes[3 * i + 1], bytes[3 * i + 2]}; }

    uint8_t bytes[kPaletteBytes];
    int32_t bitsPerPixel = 0;
    int32_t colors;
};

TEST(FixedPalettes, Each_choice_has_its_colour_count_and_bits_and_black_beyond) {
    const int expected[][2] = {{2, 1},   {16, 4},  {32, 5},  {64, 6},  {128, 7},
                               {216, 8}, {256, 8}, {256, 8}, {256, 8}, {8, 3}};
    for (int32_t choice = 0; choice <= 9; ++choice) {
        const Palette palette(choice);
        EXPECT_EQ(palette.colors, expected[choice][0]) << choice;
        EXPECT_EQ(palette.bitsPerPixel, expected[choice][1]) << choice;
        for (size_t i = static_cast<size_t>(palette.colors); i < 256; ++i)
            EXPECT_EQ(palette[i], (Color{0, 0, 0})) << choice << ", entry " << i;
    }
}

TEST(FixedPalettes, Without_a_buffer_only_count_and_bits_are_reported) {
    int32_t bits = 0;
    EXPECT_EQ(BuildFixedPalette(nullptr, 4, &bits), 128);
    EXPECT_EQ(bits, 7);
    EXPECT_EQ(BuildFixedPalette(nullptr, 0, nullptr), 2);
}

TEST(FixedPalettes, Black_and_white_fills_two_entries) {
    const Palette palette(0);
    EXPECT_EQ(palette[0], (Color{0, 0, 0}));
    EXPECT_EQ(palette[1], (Color{255, 255, 255}));
}

TEST(FixedPalettes, The_sixteen_colours_stand_in_the_system_order) {
    const Palette palette(1);
    const Color expected[16] = {{0, 0, 0},       {128, 0, 0},   {0, 128, 0},   {128, 128, 0},
                                {0, 0, 128},     {128, 0, 128}, {0, 128, 128}, {128, 128, 128},
                                {192, 192, 192}, {255, 0, 0},   {0, 255, 0},   {255, 255, 0},
                                {0, 0, 255},     {255, 0, 255}, {0, 255, 255}, {255, 255, 255}};
    for (size_t i = 0; i < 16; ++i) EXPECT_EQ(palette[i], expected[i]) << i;
}

TEST(FixedPalettes, Orthogonal_cubes_have_red_slowest_and_blue_fastest) {
    const int four[] = {0, 85, 170, 255};
    const int eight[] = {0, 36, 72, 108, 144, 180, 216, 255};
    const Palette p32(2), p64(3), p128(4), p256(6);
    for (size_t r = 0; r < 8; ++r)
        for (size_t g = 0; g < 8; ++g)
            for (size_t b = 0; b < 4; ++b) {
                EXPECT_EQ(p256[(r * 8 + g) * 4 + b], (Color{eight[r], eight[g], four[b]}));
                if (r < 4) {
                    EXPECT_EQ(p128[(r * 8 + g) * 4 + b], (Color{four[r], eight[g], four[b]}));
                }
                if (r < 4 && g < 4) {
                    EXPECT_EQ(p64[(r * 4 + g) * 4 + b], (Color{four[r], four[g], four[b]}));
                }
                if (r < 4 && g < 4 && b < 2) {
                    EXPECT_EQ(p32[(r * 4 + g) * 2 + b], (Color{four[r], four[g], b ? 255 : 0}));
                }
            }
}

TEST(FixedPalettes, Safe_colours_have_green_slowest_then_red_then_blue) {
    const Palette palette(5);
    for (int g = 0; g < 6; ++g)
        for (int r = 0; r < 6; ++r)
            for (int b = 0; b < 6; ++b)
                EXPECT_EQ(palette[static_cast<size_t>(g * 36 + r * 6 + b)], (Color{51 * r, 51 * g, 51 * b}));
    EXPECT_EQ(std::memcmp(palette.bytes, kSafePalette.data(), kPaletteBytes), 0);
}

TEST(FixedPalettes, The_cube_with_grays_has_them_in_its_middle_without_a_second_black_or_white) {
    const Palette palette(7);
    for (int k = 0; k < 224; ++k) {
        const int r = k / 32, g = k / 4 % 8, b = k % 4;
        const Color expected = {static_cast<int>(255.0 * r / 6 + 0.5), static_cast<int>(255.0 * g / 7 + 0.5),
                                85 * b};
        EXPECT_EQ(palette[static_cast<size_t>(k < 112 ? k : k + 32)], expected) << k;
    }
    const int grays[] = {1, 8, 16, 24, 32, 41};
    for (size_t j = 0; j < 6; ++j) EXPECT_EQ(palette[112 + j], (Color{grays[j], grays[j], grays[j]}));
    EXPECT_EQ(palette[142], (Color{246, 246, 246}));
    EXPECT_EQ(palette[143], (Color{254, 254, 254}));
    for (size_t i = 1; i < 256; ++i) EXPECT_NE(palette[i], (Color{0, 0, 0})) << i;
    for (size_t i = 0; i < 255; ++i) EXPECT_NE(palette[i], (Color{255, 255, 255})) << i;
    EXPECT_EQ(palette[255], (Color{255, 255, 255}));
    EXPECT_EQ(std::memcmp(palette.bytes, kCubeAndGrays.data(), kPaletteBytes), 0);
}

TEST(FixedPalettes, Gray_levels_and_corner_colours_follow_their_index) {
    const Palette grays(8), corners(9);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(grays[static_cast<size_t>(i)], (Color{i, i, i}));
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(corners[static_cast<size_t>(i)],
                  (Color{i & 1 ? 255 : 0, i & 2 ? 255 : 0, i & 4 ? 255 : 0}));
}

TEST(FixedPalettes, A_choice_outside_the_list_is_the_256_colour_cube) {
    const Palette cube(6);
    for (const int32_t choice : {-1, 10, 1000, INT32_MIN, INT32_MAX}) {
        const Palette palette(choice);
        EXPECT_EQ(std::memcmp(palette.bytes, cube.bytes, kPaletteBytes), 0) << choice;
        EXPECT_EQ(palette.colors, 256);
        EXPECT_EQ(palette.bitsPerPixel, 8);
    }
}

// Holds a resource file to the table; KFX_WRITE_PALETTES=1 writes it anew.
void CheckResource(const std::string& path, const PaletteTable& table) {
    const auto expected = MakePaletteResource(table);
    if (std::getenv("KFX_WRITE_PALETTES")) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        ASSERT_NE(file, nullptr) << path;
        std::fwrite(expected.data(), 1, expected.size(), file);
        std::fclose(file);
    }
    EXPECT_EQ(ReadTestFile(path.c_str()), std::vector<uint8_t>(expected.begin(), expected.end())) << path;
}

TEST(PaletteResources, The_files_that_the_module_carries_hold_the_two_tables) {
    CheckResource("resources/palette_216.bin", kSafePalette);
    CheckResource("resources/palette_256_gray.bin", kCubeAndGrays);
}

TEST(PaletteResources, Each_field_stands_where_readers_look_for_it) {
    const auto bytes = MakePaletteResource(kCubeAndGrays);
    ASSERT_EQ(bytes.size(), 853u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "QRVNRSRC");
    const std::string description = std::string("256 colour palette") + std::string(46, '\0');
    EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 72), description);
    const uint8_t header[] = {0, 1, 0, 'C', 'M', 'A', 'P', 1, 0, 0, 0, 0x00, 0x03};
    EXPECT_EQ(std::memcmp(&bytes[72], header, sizeof header), 0);
    EXPECT_EQ(std::memcmp(&bytes[85], kCubeAndGrays.data(), kPaletteBytes), 0);
}

}  // namespace
}  // namespace kfx::test
