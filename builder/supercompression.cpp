// SPDX-License-Identifier: MIT
#include "builder/supercompression.h"

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"

namespace kfx {
namespace {

// One row of 24-bit pixels: mask bits first, then the copy; equal pixels may be copied as well.
void CompareRow(uint8_t* shown, const uint8_t* row, int32_t width, uint8_t* mask) {
    for (int32_t x = 0; x < width; ++x)
        if (std::memcmp(shown + 3 * x, row + 3 * x, 3) == 0)
            mask[x >> 3] |= static_cast<uint8_t>(128 >> (x & 7));
    std::memcpy(shown, row, 3 * static_cast<size_t>(width));
}

void Compare24Bits(WorkingImage* composite, const WorkingImage* frame, WorkingImage* mask) {
    const int32_t width = std::min(composite->width, frame->width);
    for (int32_t y = 0; y < composite->height; ++y) {
        uint8_t* shown = PictureRow(composite, y);
        const int32_t covered = y < frame->height ? width : 0;
        if (covered) CompareRow(shown, PictureRow(frame, y), covered, PictureRow(mask, y));
        // Reading outside a frame answers -1, which no pixel equals and which is white when written.
        std::memset(shown + 3 * covered, 0xFF, 3 * static_cast<size_t>(composite->width - covered));
    }
}

void CompareAnyDepth(WorkingImage* composite, const WorkingImage* frame, WorkingImage* mask) {
    for (int32_t y = 0; y < composite->height; ++y) {
        for (int32_t x = 0; x < composite->width; ++x) {
            const uint32_t pixel = GetDibPixel(frame, x, y);
            const bool same = GetDibPixel(composite, x, y) == pixel;
            if (!same) SetDibPixel(composite, x, y, pixel);
            SetDibPixel(mask, x, y, same);
        }
    }
}

}  // namespace

ImageHandle UpdateComposite(ImageHandle composite, ImageHandle frame) {
    constexpr uint8_t kBlackAndWhite[] = {0, 0, 0, 255, 255, 255};
    const ImageLock shown(composite);
    const ImageLock next(frame);
    if (!shown.image || !next.image) return nullptr;
    MemoryOwner owner(CreateDib(shown.image->width, shown.image->height, kBlackAndWhite, 1));
    const ImageLock mask(owner.memory);
    if (!mask.image) return nullptr;
    if (shown.image->bitCount == 24 && next.image->bitCount == 24)
        Compare24Bits(shown.image, next.image, mask.image);
    else
        CompareAnyDepth(shown.image, next.image, mask.image);
    return owner.Release();
}

}  // namespace kfx
