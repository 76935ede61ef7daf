// SPDX-License-Identifier: MIT
#include "builder/remap.h"

#include <algorithm>

#include "builder/palette_order.h"
#include "framework/memory_guards.h"

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
            PutIndex<kBits>(
                to, x, LookUpColor(index, from[0] | from[1] << 8u | static_cast<uint32_t>(from[2]) << 16));
    }
}

template <int kBytes>
void RemapColors(const WorkingImage* from, ColorIndex* index, WorkingImage* to) {
    const auto remapRow = to->bitCount == 8   ? RemapColorRow<kBytes, 8>
                          : to->bitCount == 4 ? RemapColorRow<kBytes, 4>
                                              : RemapColorRow<kBytes, 1>;
    for (int32_t r = 0; r < from->height; ++r)
        remapRow(StoredRow(from, r), from->width, index, StoredRow(to, r));
}

// What each index of a source with a colour table becomes.
void MapEntries(const WorkingImage* from, const RemapTarget& target, ColorIndex* index, uint8_t map[256]) {
    if (from->bitCount == 1) {
        // Two-colour pictures are black and white whatever their colour table says.
        map[0] = LookUpColor(index, 0);
        map[1] = LookUpColor(index, 0xFFFFFF);
        return;
    }
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);
    const int32_t searched = 1 << target.bitsPerPixel;
    for (int32_t i = 0; i < 1 << from->bitCount; ++i) {
        const uint8_t* color = colors + 3 * i;
        map[i] = static_cast<uint8_t>(
            target.bitsPerPixel == 1 ? static_cast<int32_t>(IsBright(color[0], color[1], color[2]))
                                     : NearestEntry(target.palette, searched, color[0], color[1], color[2]));
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

}  // namespace

ColorIndex* IndexFor(RemapTarget* target, int32_t imageBitCount) {
    const int32_t searched = std::min(target->colorCount, 1 << imageBitCount);
    return PrepareColorIndex(&target->index, target->palette, searched, target->fastRemap) ? &target->index
                                                                                           : nullptr;
}

ImageHandle PlainRemap(ImageHandle source, RemapTarget* target) {
    const ImageLock from(source);
    if (!from.image) return nullptr;
    MemoryOwner owner(
        CreateDib(from.image->width, from.image->height, target->palette, target->bitsPerPixel));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    ColorIndex* index = IndexFor(target, to.image->bitCount);
    if (!index) return nullptr;

    if (from.image->bitCount == 24) {
        RemapColors<3>(from.image, index, to.image);
    } else if (from.image->bitCount == 32) {
        RemapColors<4>(from.image, index, to.image);
    } else {
        uint8_t map[256];
        MapEntries(from.image, *target, index, map);
        RemapIndices(from.image, map, to.image);
    }
    return owner.Release();
}

}  // namespace kfx
