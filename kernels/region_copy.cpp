// SPDX-License-Identifier: MIT
#include "kernels/region_copy.h"

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"

namespace kfx {
namespace {

// Copies the source to (left, top) of the destination, cut off at both pictures' edges.
void CopyTo(WorkingImage* destination, const WorkingImage* source, int64_t left, int64_t top, int64_t width,
            int64_t height) {
    const int64_t firstX = std::max<int64_t>(0, -left);
    const int64_t firstY = std::max<int64_t>(0, -top);
    const int64_t endX = std::min({width, int64_t{source->width}, destination->width - left});
    const int64_t endY = std::min({height, int64_t{source->height}, destination->height - top});
    if (firstX >= endX) return;
    const bool wholeBytes = source->bitCount == destination->bitCount && source->bitCount >= 8;
    const size_t bytesPerPixel = source->bitCount / 8u;
    for (int64_t sourceY = firstY; sourceY < endY; ++sourceY) {
        const auto y = static_cast<int32_t>(sourceY);
        const auto toY = static_cast<int32_t>(top + sourceY);
        if (wholeBytes) {
            std::memcpy(PictureRow(destination, toY) + static_cast<size_t>(left + firstX) * bytesPerPixel,
                        PictureRow(source, y) + static_cast<size_t>(firstX) * bytesPerPixel,
                        static_cast<size_t>(endX - firstX) * bytesPerPixel);
            continue;
        }
        for (int64_t sourceX = firstX; sourceX < endX; ++sourceX)
            SetDibPixel(destination, static_cast<int32_t>(left + sourceX), toY,
                        GetDibPixel(source, static_cast<int32_t>(sourceX), y));
    }
}

// A new zeroed image with the source's depth and colour table. Null: memory ran out.
ImageHandle CreateWithSize(const WorkingImage* source, int32_t width, int32_t height) {
    uint8_t palette[kPaletteBytes];
    ReadColorTable(source, palette);
    return CreateDib(width, height, palette, source->bitCount);
}

}  // namespace

void CopyPixels(WorkingImage* destination, const WorkingImage* source, int32_t width, int32_t height) {
    CopyTo(destination, source, 0, 0, width, height);
}

void FillImage(WorkingImage* image, uint32_t value) {
    uint8_t* first = StoredRow(image, 0);
    for (int32_t x = 0; x < image->width; ++x) SetDibPixel(image, x, image->height - 1, value);
    const size_t stride = StrideOf(image);
    for (int32_t r = 1; r < image->height; ++r) std::memcpy(StoredRow(image, r), first, stride);
}

ImageHandle FrameImage(ImageHandle source, int32_t newWidth, int32_t newHeight, int32_t left, int32_t top,
                       uint32_t fill) {
    const ImageLock from(source);
    if (!from) return nullptr;
    NewImage to(CreateWithSize(from.image, newWidth, newHeight));
    if (!to) return nullptr;
    FillImage(to.image, fill);
    CopyTo(to.image, from.image, left, top, from->width, from->height);
    return to.Release();
}

}  // namespace kfx
