// SPDX-License-Identifier: MIT
// Oil Painting: a mode filter over brightness in a diamond-shaped neighbourhood. Three oddities are part of
// the look: the diamond's rows above and below stand one pixel to the right of its middle row; the picture's
// rightmost column and top row are not filtered and come out in the background colour; on ties the brightness
// that came first to the greatest count wins.
#include "effects/oil_painting.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "effects/shared/region_copy.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kFarthestReach =
    99;  // the panel asks for 9 at most; keeps the canvas near the picture's size

// How far the diamond reaches from its centre, in pixels.
int32_t ReachOf(int32_t radius) {
    const double x = radius / 100.0;
    if (x > 0) return std::min(static_cast<int32_t>(2 * std::ceil(x) + 1), kFarthestReach);
    // Without a radius: the largest odd size whose outermost weight under a narrow bell still counts.
    for (int32_t n = 5;; n += 2) {
        const int32_t half = n / 2;
        double sum = 0;
        for (int32_t k = -half; k <= half; ++k) sum += std::exp(-2.0 * k * k);
        if (static_cast<int32_t>(std::exp(-2.0 * half * half) / sum * 255) < 1) return n - 2;
    }
}

uint8_t BrightnessOf(const uint8_t* pixel) {
    return static_cast<uint8_t>((pixel[0] * 3735 + pixel[1] * 19235 + pixel[2] * 9798) >> 15);
}

struct Vote {
    uint32_t* counters;  // 256
    uint32_t best;
    const uint8_t* winner;
};

void CastVotes(const uint8_t* row, int32_t firstX, int32_t lastX, Vote* vote) {
    for (int32_t x = firstX; x <= lastX; ++x) {
        const uint8_t* pixel = row + 3 * static_cast<size_t>(x);
        const uint32_t votes = ++vote->counters[BrightnessOf(pixel)];
        if (votes > vote->best) {
            vote->best = votes;
            vote->winner = pixel;
        }
    }
}

const uint8_t* MostFrequent(const WorkingImage* canvas, int32_t x, int32_t r, int32_t n, uint32_t* counters) {
    std::memset(counters, 0, 256 * sizeof *counters);
    Vote vote = {counters, 0, nullptr};
    for (int32_t k = 0; k < n; ++k) {
        CastVotes(StoredRow(canvas, r - (n - k)), x + 1 - k, x + 1 + k, &vote);
        CastVotes(StoredRow(canvas, r + (n - k)), x + 1 - k, x + 1 + k, &vote);
    }
    CastVotes(StoredRow(canvas, r), x - n, x + n, &vote);
    return vote.winner;
}

}  // namespace

ImageHandle ApplyOilPainting(ImageHandle source, int32_t radius, uint32_t background) {
    int32_t width, height;
    {
        const ImageLock from(source);
        if (!from.image || from.image->bitCount != 24) return nullptr;
        width = from.image->width;
        height = from.image->height;
    }
    const int32_t n = ReachOf(radius);
    const MemoryOwner framed(FrameImage(source, width + 2 * n, height + 2 * n, n, n, background));
    const ImageLock canvas(framed.memory);
    if (!canvas.image) return nullptr;
    const MemoryOwner painted(CreateLike(canvas.image));
    const ImageLock out(painted.memory);
    if (!out.image) return nullptr;
    FillImage(out.image, background);
    // Without memory for the count the picture is all background.
    const Scratch<uint32_t> counters(256);
    if (counters.address) {
        for (int32_t r = n; r < canvas.image->height - n - 1; ++r)
            for (int32_t x = n; x < canvas.image->width - n - 1; ++x)
                std::memcpy(StoredRow(out.image, r) + 3 * static_cast<size_t>(x),
                            MostFrequent(canvas.image, x, r, n, counters.address), 3);
    }
    return CropImage(painted.memory, {n, n, width + n, height + n});
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyOilPainting(source, input.values[0], input.background);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_OIL_PAINTING_RADIUS, &settings.style006Radius, OIL_PAINTING_RADIUS_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_OIL_PAINTING_RADIUS), 0};

}  // namespace

const EffectRecord kOilPaintingEffect = {
    "Oil Painting", IDD_PANEL_OIL_PAINTING, kControlIds, kControls, 1, Kernel, nullptr};

}  // namespace kfx
