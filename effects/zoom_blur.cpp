// SPDX-License-Identifier: MIT
// Zoom Blur: the average of copies of the picture scaled step by step towards its centre. Sampling of a pixel
// ends at the first sample outside the picture, which happens once the scale turns negative and samples
// mirror through the centre.
#include "effects/zoom_blur.h"

#include <algorithm>

#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "kernels/packed_sums.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kMostCycles = 256;  // far beyond the panel's 40; keeps the tables small

// Where the samples of one axis lie: for each coordinate the places of its `cycles` samples, and how many of
// them are taken before one lies outside. A pixel takes the smaller number of its column's and its row's.
struct Axis {
    int32_t* places;
    int32_t* counts;
};

// What makes a place out of a coordinate: offsets in bytes for 24-bit rows, the coordinate itself otherwise.
struct Scale {
    int32_t origin;
    int32_t step;
};

void FillAxis(int32_t size, int32_t displacement, int32_t cycles, const Scale& scale, const Axis& axis) {
    const auto percent = static_cast<float>(displacement / 100.0);
    const int32_t middle = size / 2;
    const auto half = static_cast<float>(middle);
    for (int32_t t = 0; t < size; ++t) {
        int32_t* places = axis.places + static_cast<ptrdiff_t>(t) * cycles;
        places[0] = scale.origin + t * scale.step;
        int32_t i = 1;
        for (; i < cycles; ++i) {
            const double zoom = 1.0 - static_cast<float>(i) * percent / 100.0;
            const double position = (static_cast<float>(t) - half) * zoom + half;
            // Truncation takes everything above -1 to 0 or more.
            if (!(position > -1.0 && position < size)) break;
            places[i] = scale.origin + static_cast<int32_t>(position) * scale.step;
        }
        axis.counts[t] = i;
    }
}

// `rows` and `columns` are offsets in bytes.
void BlurRow(const WorkingImage* from, const Axis& columns, const int32_t* rows, int32_t rowCount,
             int32_t cycles, const Reciprocals& reciprocals, uint8_t* out) {
    const uint8_t* pixels = PixelsOf(from);
    const int32_t* column = columns.places;
    for (int32_t x = 0; x < from->width; ++x, column += cycles, out += 3) {
        const int32_t count = std::min(columns.counts[x], rowCount);
        PackedSums sums;
        for (int32_t i = 0; i < count; ++i) sums.Add(PixelBytes(pixels + rows[i] + column[i]));
        reciprocals.PutAverages(sums, count, out);
    }
}

void BlurRowOfAnyDepth(const WorkingImage* from, const Axis& columns, const int32_t* rows, int32_t rowCount,
                       int32_t cycles, WorkingImage* to, int32_t y) {
    const int32_t* column = columns.places;
    for (int32_t x = 0; x < from->width; ++x, column += cycles) {
        const auto count = static_cast<uint32_t>(std::min(columns.counts[x], rowCount));
        uint32_t red = 0, green = 0, blue = 0;
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t value = GetDibPixel(from, column[i], rows[i]);
            red += RedOf(value);
            green += GreenOf(value);
            blue += BlueOf(value);
        }
        SetDibPixel(to, x, y, Rgb(red / count, green / count, blue / count));
    }
}

}  // namespace

ImageHandle ApplyZoomBlur(ImageHandle source, int32_t displacement, int32_t cycles, KernelCache* cache) {
    const ImageLock from(source);
    if (!from.image) return nullptr;
    if (cycles < 1) return DuplicateImage(from.image);
    cycles = std::min(cycles, kMostCycles);
    const int32_t width = from.image->width;
    const int32_t height = from.image->height;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    KernelCache own;
    if (!cache) cache = &own;
    const int32_t key[] = {width, height, from.image->bitCount, displacement, cycles};
    const size_t sides = static_cast<size_t>(width) + static_cast<size_t>(height);
    bool fresh = false;
    auto* tables = static_cast<int32_t*>(CachedTable(
        cache, key, sizeof key, sides * (static_cast<size_t>(cycles) + 1) * sizeof(int32_t), &fresh));
    if (!tables) return nullptr;

    const Axis columns = {tables + sides, tables};
    const Axis rows = {columns.places + static_cast<ptrdiff_t>(width) * cycles, tables + width};
    const bool asBytes = from.image->bitCount == 24;
    if (fresh) {
        const auto stride = static_cast<int32_t>(StrideOf(from.image));
        FillAxis(width, displacement, cycles, {0, asBytes ? 3 : 1}, columns);
        FillAxis(height, displacement, cycles, asBytes ? Scale{(height - 1) * stride, -stride} : Scale{0, 1},
                 rows);
        KeepTable(cache);
    }
    const Reciprocals reciprocals;
    for (int32_t y = 0; y < height; ++y) {
        const int32_t* places = rows.places + static_cast<ptrdiff_t>(y) * cycles;
        if (asBytes)
            BlurRow(from.image, columns, places, rows.counts[y], cycles, reciprocals,
                    PictureRow(to.image, y));
        else
            BlurRowOfAnyDepth(from.image, columns, places, rows.counts[y], cycles, to.image, y);
    }
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyZoomBlur(source, input.values[0], input.values[1], input.cache);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_ZOOM_BLUR_DISPLACEMENT, &settings.style007Displacement,
     ZOOM_BLUR_DISPLACEMENT_RANGE},
    {ControlKind::Slider, IDC_ZOOM_BLUR_CYCLES, &settings.style007Cycles, ZOOM_BLUR_CYCLES_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_ZOOM_BLUR_DISPLACEMENT), SLIDER_IDS(IDC_ZOOM_BLUR_CYCLES),
                                    0};

}  // namespace

const EffectRecord kZoomBlurEffect = {"Zoom Blur", IDD_PANEL_ZOOM_BLUR, kControlIds, kControls, 2, Kernel,
                                      nullptr};

}  // namespace kfx
