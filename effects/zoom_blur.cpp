// SPDX-License-Identifier: MIT
// Zoom Blur: the average of copies of the picture scaled step by step towards its centre. Sampling of a pixel
// ends at the first sample outside the picture. Samples leave it only when the scale is negative, so that
// they are mirrored at the centre.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>

#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/zoom_samples.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kMostCycles = 256;  // far beyond the panel's 40; keeps the tables small

// Takes pictures of every depth; pixel values are averaged byte by byte. Without cycles the picture is
// copied.
ImageHandle ApplyZoomBlur(ImageHandle source, const KernelInput& input) {
    const int32_t displacement = input.values[0];
    const int32_t cycles = std::min(input.values[1], kMostCycles);
    const ImageLock from(source);
    if (!from) return nullptr;
    if (cycles < 1) return DuplicateImage(from.image);
    const int32_t width = from->width;
    const int32_t height = from->height;
    NewImage to(CreateLike(from.image));
    if (!to) return nullptr;
    const int32_t key[] = {width, height, from->bitCount, displacement, cycles};
    const size_t sides = static_cast<size_t>(width) + static_cast<size_t>(height);
    bool fresh = false;
    auto* tables = static_cast<int32_t*>(
        CachedTable(&input.cache->values, key, sizeof key,
                    sides * (static_cast<size_t>(cycles) + 1) * sizeof(int32_t), &fresh));
    if (!tables) return nullptr;

    const ZoomAxis columns = {tables + sides, tables};
    const ZoomAxis rows = {columns.places + static_cast<ptrdiff_t>(width) * cycles, tables + width};
    const bool asBytes = from->bitCount == 24;
    if (fresh) {
        const auto stride = static_cast<int32_t>(StrideOf(from.image));
        FillZoomAxis(width, displacement, cycles, {0, asBytes ? 3 : 1}, columns);
        FillZoomAxis(height, displacement, cycles,
                     asBytes ? ZoomScale{(height - 1) * stride, -stride} : ZoomScale{0, 1}, rows);
        KeepTable(&input.cache->values);
    }
    const Reciprocals reciprocals;
    for (int32_t y = 0; y < height; ++y) {
        const int32_t* places = rows.places + static_cast<ptrdiff_t>(y) * cycles;
        if (asBytes)
            AverageZoomRow(from.image, columns, places, rows.counts[y], cycles, reciprocals,
                           PictureRow(to.image, y));
        else
            AverageZoomRowOfAnyDepth(from.image, columns, places, rows.counts[y], cycles, to.image, y);
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_ZOOM_BLUR_DISPLACEMENT, &settings.style007Displacement, ZOOM_BLUR_DISPLACEMENT_RANGE,
           ZOOM_BLUR_DISPLACEMENT_CAPTION),
    Slider(IDC_ZOOM_BLUR_CYCLES, &settings.style007Cycles, ZOOM_BLUR_CYCLES_RANGE, ZOOM_BLUR_CYCLES_CAPTION),
});

}  // namespace

const Effect kZoomBlur = {
    .name = "Zoom Blur", .panel = IDD_PANEL_ZOOM_BLUR, .controls = kControls, .apply = ApplyZoomBlur};

}  // namespace kfx
