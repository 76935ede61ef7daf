// SPDX-License-Identifier: MIT
#include "builder/remap.h"

#include <algorithm>

#include "builder/palette_order.h"
#include "kernels/palette_indices.h"
#include "kernels/remap_row.h"

namespace kfx {
namespace {

constexpr int32_t kWhiteFrom = 129;  // luminance

uint32_t IsBright(int32_t red, int32_t green, int32_t blue) {
    return LuminanceOf(red, green, blue) >= kWhiteFrom;
}

// Full colour to indices. `kBytes` a source pixel: 3, or 4 with the last ignored.
template <int kBytes, int kBits>
void RemapColorRow(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, from += kBytes) {
        if constexpr (kBits == 1)
            PutIndex<1>(to, x, IsBright(from[2], from[1], from[0]));
        else
            PutIndex<kBits>(to, x, LookUpColor(index, from[2], from[1], from[0]));
    }
}

template <int kBytes>
void RemapColors(const WorkingImage* from, ColorIndex* index, WorkingImage* to) {
    auto remapRow = to->bitCount == 8   ? (kBytes == 3 ? RemapRow : RemapColorRow<kBytes, 8>)
                    : to->bitCount == 4 ? RemapColorRow<kBytes, 4>
                                        : RemapColorRow<kBytes, 1>;
    for (int32_t r = 0; r < from->height; ++r)
        remapRow(StoredRow(from, r), from->width, index, StoredRow(to, r));
}

// What the colour index answers for one level of gray: two look-ups are cheaper without the table.
uint8_t GrayEntry(const RemapTarget& target, int32_t searched, int32_t level) {
    const int32_t nearest = NearestEntry(target.palette, searched, level, level, level);
    const int32_t rounded = level & 0xF8;
    return static_cast<uint8_t>(target.fastRemap &&
                                        ColorDistance(target.palette + 3 * nearest, level, level, level) != 0
                                    ? NearestEntry(target.palette, searched, rounded, rounded, rounded)
                                    : nearest);
}

// What each index of a source with a colour table becomes; `searched` entries for a two-colour source.
void MapEntries(const WorkingImage* from, const RemapTarget& target, int32_t searched, uint8_t map[256]) {
    if (from->bitCount == 1) {
        // Two-colour pictures are black and white whatever their colour table says.
        map[0] = GrayEntry(target, searched, 0);
        map[1] = GrayEntry(target, searched, 255);
        return;
    }
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);
    const int32_t entries = 1 << target.bitsPerPixel;
    for (int32_t i = 0; i < 1 << from->bitCount; ++i) {
        const uint8_t* color = colors + 3 * i;
        map[i] = static_cast<uint8_t>(
            target.bitsPerPixel == 1 ? static_cast<int32_t>(IsBright(color[0], color[1], color[2]))
                                     : NearestEntry(target.palette, entries, color[0], color[1], color[2]));
    }
}

template <int kBits>
void RemapIndexRow(const uint8_t* from, int32_t bitCount, int32_t width, const uint8_t map[256],
                   uint8_t* to) {
    for (int32_t x = 0; x < width; ++x) {
        const uint8_t value = GetIndex(from, bitCount, x);
        PutIndex<kBits>(to, x, map[value]);
    }
}

void RemapIndices(const WorkingImage* from, const uint8_t map[256], WorkingImage* to) {
    const auto remapRow = to->bitCount == 8   ? RemapIndexRow<8>
                          : to->bitCount == 4 ? RemapIndexRow<4>
                                              : RemapIndexRow<1>;
    for (int32_t r = 0; r < from->height; ++r)
        remapRow(StoredRow(from, r), from->bitCount, from->width, map, StoredRow(to, r));
}

// How many palette entries are searched for an image of that bit count: indices always fit its pixels.
int32_t SearchedEntries(const RemapTarget& target, int32_t imageBitCount) {
    return std::min(target.colorCount, 1 << imageBitCount);
}

}  // namespace

ColorIndex* IndexFor(RemapTarget* target, int32_t imageBitCount) {
    const int32_t searched = SearchedEntries(*target, imageBitCount);
    return PrepareColorIndex(&target->index, target->palette, searched, target->fastRemap) ? &target->index
                                                                                           : nullptr;
}

bool PrepareTarget(RemapTarget* target) {
    // Two-colour results are made without a table of colours.
    return target->bitsPerPixel == 1 || IndexFor(target, target->bitsPerPixel <= 4 ? 4 : 8);
}

ImageHandle PlainRemap(ImageHandle source, RemapTarget* target) {
    const ImageLock from(source);
    if (!from) return nullptr;
    NewImage to(CreateDib(from->width, from->height, target->palette, target->bitsPerPixel));
    if (!to) return nullptr;
    if (from->bitCount <= 8) {
        uint8_t map[256];
        MapEntries(from.image, *target, SearchedEntries(*target, to->bitCount), map);
        RemapIndices(from.image, map, to.image);
        return to.Release();
    }

    // Two colours are told apart by luminance alone, without a table of colours.
    ColorIndex* index = to->bitCount == 1 ? nullptr : IndexFor(target, to->bitCount);
    if (!index && to->bitCount != 1) return nullptr;
    if (from->bitCount == 24)
        RemapColors<3>(from.image, index, to.image);
    else
        RemapColors<4>(from.image, index, to.image);
    return to.Release();
}

}  // namespace kfx
