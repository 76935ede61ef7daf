// SPDX-License-Identifier: MIT
// Oil Painting: a mode filter over brightness in a diamond-shaped neighbourhood. It has three
// oddities: the diamond's rows above and below stand one pixel to the right of its middle row; the
// picture's rightmost column and top row are not filtered and come out in the background colour; on ties the
// brightness that came first to the greatest count wins.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cmath>

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

// Paints the picture that stands on the canvas inside a border of n pixels, but not its rightmost column and
// its last stored row. False: memory ran out, `out` is as it was.
bool Paint(const WorkingImage* canvas, int32_t n, uint16_t* counters, WorkingImage* out) {
    const size_t stride = static_cast<size_t>(canvas->width) + kReadAhead;
    const Scratch<uint8_t> levels(stride * static_cast<size_t>(canvas->height) + kReadAhead);
    const Scratch<DiamondSpan> spans(SpanCount(n));
    if (!levels || !spans) return false;
    ComputeLevels(canvas, levels.address, stride);
    const auto border = static_cast<size_t>(n);
    const PaintedArea area = {.rows = out->height - 1,
                              .columns = out->width - 1,
                              .levels = levels.address + border * stride + border,
                              .levelStride = stride,
                              .from = StoredRow(canvas, n) + 3 * border,
                              .fromStride = StrideOf(canvas),
                              .to = StoredRow(out, 0),
                              .toStride = StrideOf(out)};
    PaintModes(n, area, {spans.address, counters});
    return true;
}

ImageHandle ApplyOilPainting(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
    const int32_t n = ReachOf(input.values[0]);
    const NewImage canvas(
        FrameImage(source, from->width + 2 * n, from->height + 2 * n, n, n, input.background));
    if (!canvas) return nullptr;
    NewImage to(CreateLike(from.image));
    if (!to) return nullptr;
    FillImage(to.image, input.background);
    // Without memory for the counters the result is all background.
    const Scratch<uint16_t> counters(CounterCount(n));
    if (counters && !Paint(canvas.image, n, counters.address, to.image)) return nullptr;
    return to.Release();
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
