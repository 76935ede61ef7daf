// SPDX-License-Identifier: MIT
// Oil Painting: a mode filter over brightness in a diamond-shaped neighbourhood. It has three
// oddities: the diamond's rows above and below stand one pixel to the right of its middle row; the
// picture's rightmost column and top row are not filtered and come out in the background colour; on ties the
// brightness that came first to the greatest count wins.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "effects/effects.h"
#include "framework/math/elementary.h"
#include "framework/settings.h"
#include "kernels/diamond_mode.h"
#include "kernels/region_copy.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The panel's greatest radius gives 9. The limit keeps the canvas near the picture's size.
constexpr int32_t kFarthestReach = 99;

// How far the diamond reaches from its centre, in pixels.
int32_t ReachOf(int32_t radius) {
    const double x = radius / 100.0;
    if (x > 0) return std::min(static_cast<int32_t>(2 * std::ceil(x) + 1), kFarthestReach);
    // Without a radius: the largest odd size for which the outermost weight of a narrow bell, times 255, is
    // at least 1.
    for (int32_t n = 5;; n += 2) {
        const int32_t half = n / 2;
        double sum = 0;
        for (int32_t k = -half; k <= half; ++k) sum += Exp(-2.0 * k * k);
        if (static_cast<int32_t>(Exp(-2.0 * half * half) / sum * 255) < 1) return n - 2;
    }
}

constexpr size_t kReadAhead = 32;  // bytes that the painter may read beyond a row

void ComputeLevels(const WorkingImage* canvas, uint8_t* levels, size_t stride) {
    for (int32_t r = 0; r < canvas->height; ++r, levels += stride) {
        const uint8_t* pixel = StoredRow(canvas, r);
        for (int32_t x = 0; x < canvas->width; ++x, pixel += 3)
            levels[x] = static_cast<uint8_t>((pixel[0] * 3735 + pixel[1] * 19235 + pixel[2] * 9798) >> 15);
    }
}

// Lists the diamond's rows in the order in which they are visited: from the farthest to the nearest, of two
// equally far ones the one at the smaller stored row first, and the middle row last.
void ListSpans(int32_t reach, DiamondSpan* spans) {
    for (int32_t k = 0; k < reach; ++k) {
        *spans++ = {-(reach - k), 1 - k, 1 + k};
        *spans++ = {reach - k, 1 - k, 1 + k};
    }
    *spans = {0, -reach, reach};
}

// Paints the picture that stands on the canvas inside a border of n pixels, but not its rightmost column and
// its last stored row. False: memory ran out, `out` is as it was.
bool Paint(const WorkingImage* canvas, int32_t n, uint16_t* counters, WorkingImage* out) {
    const int32_t count = canvas->width - 2 * n - 1;
    const size_t stride = static_cast<size_t>(canvas->width) + kReadAhead;
    const Scratch<uint8_t> levels(stride * static_cast<size_t>(canvas->height) + kReadAhead);
    const Scratch<DiamondSpan> spans(2 * static_cast<size_t>(n) + 1);
    const Scratch<int32_t> winners(kPaintedRows * static_cast<size_t>(canvas->width));
    if (!levels || !spans || !winners) return false;
    ComputeLevels(canvas, levels.address, stride);
    ListSpans(n, spans.address);
    const Diamond diamond = {n, spans.address};
    const LevelPlane plane = {levels.address, stride, static_cast<size_t>(StrideOf(canvas))};
    const int32_t end = canvas->height - n - 1;
    for (int32_t r = n; r < end; r += kPaintedRows) {
        const int32_t rows = std::min(kPaintedRows, end - r);
        PaintRows(diamond, plane, r, rows, n, count, counters, winners.address);
        const int32_t* winner = winners.address;
        for (int32_t k = 0; k < rows; ++k) {
            uint8_t* to = StoredRow(out, r + k) + 3 * static_cast<size_t>(n);
            const uint8_t* from = StoredRow(canvas, r + k) + 3 * static_cast<size_t>(n);
            for (int32_t i = 0; i < count; ++i, ++winner, to += 3, from += 3)
                std::memcpy(to, from + *winner, 3);
        }
    }
    return true;
}

ImageHandle ApplyOilPainting(ImageHandle source, const KernelInput& input) {
    int32_t width, height;
    {
        const ImageLock from(source);
        if (!from || from->bitCount != 24) return nullptr;
        width = from->width;
        height = from->height;
    }
    const int32_t n = ReachOf(input.values[0]);
    const NewImage canvas(FrameImage(source, width + 2 * n, height + 2 * n, n, n, input.background));
    if (!canvas) return nullptr;
    const NewImage painted(CreateLike(canvas.image));
    if (!painted) return nullptr;
    FillImage(painted.image, input.background);
    // Without memory for the counters the result is all background.
    const Scratch<uint16_t> counters(CounterCount(n));
    if (counters && !Paint(canvas.image, n, counters.address, painted.image)) return nullptr;
    return CropImage(painted.owner.memory, {n, n, width + n, height + n});
}

constexpr auto kControls = MakeControls({
    Slider(IDC_OIL_PAINTING_RADIUS, &settings.style006Radius, OIL_PAINTING_RADIUS_RANGE,
           OIL_PAINTING_RADIUS_CAPTION),
});

}  // namespace

const Effect kOilPainting = {.name = "Oil Painting",
                             .panel = IDD_PANEL_OIL_PAINTING,
                             .controls = kControls,
                             .apply = ApplyOilPainting};

}  // namespace kfx
