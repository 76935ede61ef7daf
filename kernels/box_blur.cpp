// SPDX-License-Identifier: MIT
// The box blur that takes Gaussian Blur's place on pictures too narrow for its taps: one running sum along
// each row, then one along each column, truncating after both.
#include "kernels/box_blur.h"

#include <algorithm>

#include "framework/memory_guards.h"

namespace kfx {
namespace {

// Averages one channel of a line of `length` samples over 2 * reach + 1 of them.
void AverageLine(const uint8_t* from, size_t fromStep, int32_t length, int64_t reach, uint8_t* to,
                 size_t toStep) {
    const auto at = [&](int64_t i) {
        return int64_t{from[static_cast<size_t>(std::clamp<int64_t>(i, 0, length - 1)) * fromStep]};
    };
    // Each position beyond the line counts as the sample at that end.
    const int64_t beyond = std::max<int64_t>(0, reach - (length - 1));
    int64_t sum = at(0) * (reach + 1) + at(length - 1) * beyond;
    for (int64_t i = 1; i <= reach - beyond; ++i) sum += at(i);
    for (int32_t i = 0; i < length; ++i, to += toStep) {
        *to = static_cast<uint8_t>(sum / (2 * reach + 1));
        sum += at(i + reach + 1) - at(i - reach);
    }
}

}  // namespace

ImageHandle BoxBlur(ImageHandle source, int32_t depth) {
    const ImageLock from(source);
    const int64_t reach = depth / 6;
    if (!from || reach < 1 || from->bitCount < 24) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    NewImage to(DuplicateImage(from.image));
    // The three channels after the horizontal pass, one plane after the other.
    const size_t planeBytes = static_cast<size_t>(width) * static_cast<size_t>(height);
    const Scratch<uint8_t> planes(3 * planeBytes);
    if (!to || !planes) return nullptr;

    const size_t step = from->bitCount / 8u;
    for (size_t channel = 0; channel < 3; ++channel) {
        uint8_t* plane = planes.address + channel * planeBytes;
        for (int32_t r = 0; r < height; ++r)
            AverageLine(StoredRow(from.image, r) + channel, step, width, reach,
                        plane + static_cast<size_t>(r) * static_cast<size_t>(width), 1);
        for (int32_t x = 0; x < width; ++x)
            AverageLine(plane + x, static_cast<size_t>(width), height, reach,
                        StoredRow(to.image, 0) + static_cast<size_t>(x) * step + channel, StrideOf(to.image));
    }
    return to.Release();
}

}  // namespace kfx
