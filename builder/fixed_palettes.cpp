// SPDX-License-Identifier: MIT
#include "builder/fixed_palettes.h"

#include <cstring>

namespace kfx {
namespace {

constexpr uint8_t kTwoLevels[] = {0, 255};
constexpr uint8_t kFourLevels[] = {0, 85, 170, 255};
constexpr uint8_t kSixLevels[] = {0, 51, 102, 153, 204, 255};
constexpr uint8_t kEightLevels[] = {0, 36, 72, 108, 144, 180, 216, 255};
// Sixths and sevenths of 255, rounded to nearest. The eight levels above are rounded down: choice 7 has
// these, the orthogonal cubes have those.
constexpr uint8_t kSevenRoundedLevels[] = {0, 43, 85, 128, 170, 213, 255};
constexpr uint8_t kEightRoundedLevels[] = {0, 36, 73, 109, 146, 182, 219, 255};

constexpr uint8_t kSixteenColors[16][3] = {{0, 0, 0},       {128, 0, 0},   {0, 128, 0},   {128, 128, 0},
                                           {0, 0, 128},     {128, 0, 128}, {0, 128, 128}, {128, 128, 128},
                                           {192, 192, 192}, {255, 0, 0},   {0, 255, 0},   {255, 255, 0},
                                           {0, 0, 255},     {255, 0, 255}, {0, 255, 255}, {255, 255, 255}};

constexpr void PutColor(uint8_t* entry, uint8_t red, uint8_t green, uint8_t blue) {
    entry[0] = red;
    entry[1] = green;
    entry[2] = blue;
}

// Green varies slowest, then red, then blue; the last 40 entries stay black.
constexpr PaletteTable MakeSafePalette() {
    PaletteTable table = {};
    uint8_t* entry = table.data();
    for (const uint8_t green : kSixLevels)
        for (const uint8_t red : kSixLevels)
            for (const uint8_t blue : kSixLevels) {
                PutColor(entry, red, green, blue);
                entry += 3;
            }
    return table;
}

// 224 colours with 32 grays between the two halves of the cube. The grays begin at 1 and end at 254: black
// and white stand in the cube already.
constexpr PaletteTable MakeCubeAndGrays() {
    constexpr int kHalfCube = 112;
    constexpr int kGrays = 32;
    PaletteTable table = {};
    uint8_t* entry = table.data();
    int position = 0;
    for (const uint8_t red : kSevenRoundedLevels)
        for (const uint8_t green : kEightRoundedLevels)
            for (const uint8_t blue : kFourLevels) {
                if (position++ == kHalfCube) {
                    for (int j = 0; j < kGrays; ++j, entry += 3) {
                        const int gray = j == 0 ? 1 : j == kGrays - 1 ? 254 : 255 * j / (kGrays - 1);
                        const auto level = static_cast<uint8_t>(gray);
                        PutColor(entry, level, level, level);
                    }
                }
                PutColor(entry, red, green, blue);
                entry += 3;
            }
    return table;
}

template <size_t kReds, size_t kGreens, size_t kBlues>
void FillCube(uint8_t* entry, const uint8_t (&reds)[kReds], const uint8_t (&greens)[kGreens],
              const uint8_t (&blues)[kBlues]) {
    for (const uint8_t red : reds)
        for (const uint8_t green : greens)
            for (const uint8_t blue : blues) {
                PutColor(entry, red, green, blue);
                entry += 3;
            }
}

void FillCorners(uint8_t* entry) {
    for (unsigned i = 0; i < 8; ++i, entry += 3)
        PutColor(entry, kTwoLevels[i & 1], kTwoLevels[i >> 1 & 1], kTwoLevels[i >> 2]);
}

void FillGrays(uint8_t* entry) {
    for (unsigned i = 0; i < 256; ++i, entry += 3) {
        const auto level = static_cast<uint8_t>(i);
        PutColor(entry, level, level, level);
    }
}

struct PaletteSize {
    int32_t colors;
    int32_t bitsPerPixel;
};

constexpr PaletteSize kSizes[] = {
    {.colors = 2, .bitsPerPixel = 1},   {.colors = 16, .bitsPerPixel = 4},
    {.colors = 32, .bitsPerPixel = 5},  {.colors = 64, .bitsPerPixel = 6},
    {.colors = 128, .bitsPerPixel = 7}, {.colors = 216, .bitsPerPixel = 8},
    {.colors = 256, .bitsPerPixel = 8}, {.colors = 256, .bitsPerPixel = 8},
    {.colors = 256, .bitsPerPixel = 8}, {.colors = 8, .bitsPerPixel = 3},
};
constexpr int32_t kDefaultChoice = kOrthogonal256;

void Fill(uint8_t* palette, int32_t choice) {
    std::memset(palette, 0, kPaletteBytes);
    switch (choice) {
        case 0:
            PutColor(palette + 3, 255, 255, 255);
            break;
        case 1:
            std::memcpy(palette, kSixteenColors, sizeof kSixteenColors);
            break;
        case 2:
            FillCube(palette, kFourLevels, kFourLevels, kTwoLevels);
            break;
        case 3:
            FillCube(palette, kFourLevels, kFourLevels, kFourLevels);
            break;
        case 4:
            FillCube(palette, kFourLevels, kEightLevels, kFourLevels);
            break;
        case 5:
            std::memcpy(palette, kSafePalette.data(), kPaletteBytes);
            break;
        case 7:
            std::memcpy(palette, kCubeAndGrays.data(), kPaletteBytes);
            break;
        case 8:
            FillGrays(palette);
            break;
        case 9:
            FillCorners(palette);
            break;
        default:
            FillCube(palette, kEightLevels, kEightLevels, kFourLevels);
            break;
    }
}

}  // namespace

const PaletteTable kSafePalette = MakeSafePalette();
const PaletteTable kCubeAndGrays = MakeCubeAndGrays();

int32_t BuildFixedPalette(uint8_t* palette, int32_t choice, int32_t* bitsPerPixel) {
    constexpr auto kChoices = static_cast<int32_t>(std::size(kSizes));
    const PaletteSize& size = kSizes[choice >= 0 && choice < kChoices ? choice : kDefaultChoice];
    if (palette) Fill(palette, choice);
    if (bitsPerPixel) *bitsPerPixel = size.bitsPerPixel;
    return size.colors;
}

}  // namespace kfx
