// SPDX-License-Identifier: MIT
#include "builder/color_index.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"

namespace kfx {
namespace {

// A quarter of all cubes: more than a photographic animation uses. When they are full, all are forgotten.
constexpr uint32_t kSlots = 1u << 16;
constexpr int32_t kCubeSide = 4;
constexpr int32_t kVector = 8;  // entries that are compared at once

// The cube's lowest red, green and blue.
struct Corner {
    int32_t red;
    int32_t green;
    int32_t blue;
};

Corner CornerOf(uint32_t cube) {
    return {static_cast<int32_t>(cube >> 12 & 63) * kCubeSide,
            static_cast<int32_t>(cube >> 6 & 63) * kCubeSide, static_cast<int32_t>(cube & 63) * kCubeSide};
}

int32_t Distance(int32_t red, int32_t green, int32_t blue) {
    return 3 * red * red + 4 * green * green + 2 * blue * blue;
}

// The palette entries that can be the nearest one to some colour of the cube, in index order: those whose
// least distance to the cube is no more than the smallest greatest distance. Returns how many.
#if defined(__GNUC__)
__attribute__((always_inline))
#endif
inline int32_t
FindCandidates(const ColorIndex& index, const Corner& corner, uint8_t candidates[256]) {
    int32_t least[256];
    int32_t bound = INT32_MAX;
    for (int32_t i = 0; i < index.paddedCount; ++i) {
        const int32_t red = index.red[i] - corner.red;
        const int32_t green = index.green[i] - corner.green;
        const int32_t blue = index.blue[i] - corner.blue;
        constexpr int32_t kLast = kCubeSide - 1;
        least[i] =
            Distance(red - std::min(std::max(red, 0), kLast), green - std::min(std::max(green, 0), kLast),
                     blue - std::min(std::max(blue, 0), kLast));
        const int32_t greatest = Distance(std::max(red, kLast - red), std::max(green, kLast - green),
                                          std::max(blue, kLast - blue));
        bound = std::min(bound, greatest);
    }
    int32_t found = 0;
    for (int32_t i = 0; i < index.count; ++i) {
        candidates[found] = static_cast<uint8_t>(i);
        found += least[i] <= bound;
    }
    return found;
}

// Every colour of the cube becomes its nearest entry. Distance and index share one key, so that the smallest
// key is the lowest index of the least distance.
#if defined(__GNUC__)
__attribute__((always_inline))
#endif
inline void
AnswerNearest(const ColorIndex& index, const Corner& corner, uint8_t answers[kCubeColors]) {
    uint8_t candidates[256];
    const int32_t found = FindCandidates(index, corner, candidates);
    if (found == 1) {
        std::memset(answers, candidates[0], kCubeColors);
        return;
    }
    int32_t best[kCubeColors];
    std::fill(best, best + kCubeColors, INT32_MAX);
    for (int32_t k = 0; k < found; ++k) {
        const int32_t entry = candidates[k];
        int32_t plane[16];  // green and blue
        for (int32_t i = 0; i < 16; ++i) {
            const int32_t green = corner.green + (i >> 2) - index.green[entry];
            const int32_t blue = corner.blue + (i & 3) - index.blue[entry];
            plane[i] = (4 * green * green + 2 * blue * blue) * 256 + entry;
        }
        for (int32_t r = 0; r < kCubeSide; ++r) {
            const int32_t red = corner.red + r - index.red[entry];
            const int32_t line = 3 * red * red * 256;
            for (int32_t i = 0; i < 16; ++i) best[16 * r + i] = std::min(best[16 * r + i], plane[i] + line);
        }
    }
    for (size_t i = 0; i < kCubeColors; ++i) answers[i] = static_cast<uint8_t>(best[i]);
}

void AnswerNearestPlain(const ColorIndex& index, const Corner& corner, uint8_t answers[kCubeColors]) {
    AnswerNearest(index, corner, answers);
}

#if KFX_HAS_AVX2
KFX_AVX2 void AnswerNearestAvx2(const ColorIndex& index, const Corner& corner, uint8_t answers[kCubeColors]) {
    AnswerNearest(index, corner, answers);
}
#endif

int32_t NearestTo(const ColorIndex& index, int32_t red, int32_t green, int32_t blue) {
    int32_t best = INT32_MAX;
    for (int32_t i = 0; i < index.count; ++i) {
        const int32_t distance = Distance(red - index.red[i], green - index.green[i], blue - index.blue[i]);
        best = std::min(best, distance * 256 + i);
    }
    return best & 255;
}

// Every colour becomes the entry nearest to its 15-bit rounding, and the palette's own colours the first
// entry that is exactly theirs.
void AnswerFast(const ColorIndex& index, const Corner& corner, uint8_t answers[kCubeColors]) {
    std::memset(answers, NearestTo(index, corner.red & ~7, corner.green & ~7, corner.blue & ~7), kCubeColors);
    for (int32_t i = index.count - 1; i >= 0; --i) {
        const int32_t red = index.red[i] - corner.red;
        const int32_t green = index.green[i] - corner.green;
        const int32_t blue = index.blue[i] - corner.blue;
        if (((red | green | blue) & ~(kCubeSide - 1)) == 0)
            answers[red * 16 + green * 4 + blue] = static_cast<uint8_t>(i);
    }
}

bool MakeTables(ColorIndex* index) {
    constexpr size_t kSlotBytes = kColorCubes * sizeof(uint16_t);
    if (!index->memory) index->memory = AllocateMemory(kSlotBytes + size_t{kSlots} * kCubeColors);
    auto* tables = static_cast<uint8_t*>(LockMemory(index->memory));
    if (!tables) return false;
    index->slots = reinterpret_cast<uint16_t*>(tables);
    index->answers = tables + kSlotBytes;
    return true;
}

void ForgetAnswers(ColorIndex* index) {
    std::memset(index->slots, 0, kColorCubes * sizeof(uint16_t));
    index->usedSlots = 0;
}

bool SamePalette(const ColorIndex& index, const uint8_t* palette, int32_t count) {
    if (index.count != count) return false;
    for (int32_t i = 0; i < count; ++i, palette += 3)
        if (index.red[i] != palette[0] || index.green[i] != palette[1] || index.blue[i] != palette[2])
            return false;
    return true;
}

}  // namespace

ColorIndex::~ColorIndex() {
    if (slots) UnlockMemory(memory);
    FreeMemory(memory);
}

bool PrepareColorIndex(ColorIndex* index, const uint8_t* palette, int32_t count, bool fast) {
    // An empty palette answers 0: as if its only entry were black.
    const uint8_t black[3] = {0, 0, 0};
    if (count < 1) {
        palette = black;
        count = 1;
    }
    if (!index->slots && !MakeTables(index)) return false;
    if (index->fast == fast && SamePalette(*index, palette, count)) return true;
    index->count = count;
    index->paddedCount = (count + kVector - 1) / kVector * kVector;
    for (int32_t i = 0; i < index->paddedCount; ++i) {
        const uint8_t* entry = palette + (i < count ? 3 * i : 0);
        index->red[i] = entry[0];
        index->green[i] = entry[1];
        index->blue[i] = entry[2];
    }
    index->fast = fast;
    ForgetAnswers(index);
    return true;
}

uint32_t FillCube(ColorIndex* index, uint32_t cube) {
    if (index->usedSlots + 1 == kSlots) ForgetAnswers(index);
    const uint32_t slot = ++index->usedSlots;  // slot 0 means unknown
    index->slots[cube] = static_cast<uint16_t>(slot);
    uint8_t* answers = index->answers + slot * kCubeColors;
    if (index->fast) AnswerFast(*index, CornerOf(cube), answers);
#if KFX_HAS_AVX2
    else if (UseAvx2())
        AnswerNearestAvx2(*index, CornerOf(cube), answers);
#endif
    else
        AnswerNearestPlain(*index, CornerOf(cube), answers);
    return slot;
}

}  // namespace kfx
