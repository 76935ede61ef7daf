// SPDX-License-Identifier: MIT
#include "builder/supercompression.h"

#include <algorithm>
#include <cstring>

#include "kernels/equal_pixels.h"

namespace kfx {
namespace {

// One row of 24-bit pixels: mask bits first, then the copy, which changes nothing where they are equal.
void CompareRow(uint8_t* shown, const uint8_t* row, int32_t width, uint8_t* mask) {
    MarkEqualPixels(shown, row, width, mask);
    std::memcpy(shown, row, 3 * static_cast<size_t>(width));
}

void Compare24Bits(WorkingImage* composite, const WorkingImage* frame, WorkingImage* mask) {
    const int32_t width = std::min(composite->width, frame->width);
    for (int32_t y = 0; y < composite->height; ++y) {
        uint8_t* shown = PictureRow(composite, y);
        const int32_t covered = y < frame->height ? width : 0;
        if (covered) CompareRow(shown, PictureRow(frame, y), covered, PictureRow(mask, y));
        // Reading outside a frame gives -1, which no pixel equals and which is white when written.
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
    if (!shown || !next) return nullptr;
    NewImage mask(CreateDib(shown->width, shown->height, kBlackAndWhite, 1));
    if (!mask) return nullptr;
    if (shown->bitCount == 24 && next->bitCount == 24)
        Compare24Bits(shown.image, next.image, mask.image);
    else
        CompareAnyDepth(shown.image, next.image, mask.image);
    return mask.Release();
}

}  // namespace kfx
