// SPDX-License-Identifier: MIT
// Raster: horizontal scan lines, bands of rows blended towards the background colour between untouched bands
// of the same height.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <cstring>

#include "effects/effects.h"
#include "framework/cpu.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// What each value of a channel becomes on a line. The shares of source and background are divided separately,
// and each quotient is truncated.
void FillTints(int32_t density, uint32_t channel, uint8_t tints[256]) {
    const int64_t added = int64_t{channel} * density / 255;
    for (int64_t c = 0; c < 256; ++c)
        tints[c] = static_cast<uint8_t>(c * (255 - int64_t{density}) / 255 + added);
}

// Replaces every byte c by c * remaining / 255 + added, with `remaining` and `added` below 256. `added` holds
// the numbers for blue, green and red, repeated over 3 * 32 bytes. For every n below 65536, n / 255 is equal
// to (n + 1 + n / 256) / 256.
KFX_INLINE void TintBytes(const uint8_t* from, size_t count, uint32_t remaining, const uint8_t added[96],
                          uint8_t* __restrict to) {
    const auto tint = [remaining](uint8_t c, uint8_t offset) {
        const auto product = static_cast<uint16_t>(c * remaining);
        const auto quotient = static_cast<uint16_t>(static_cast<uint16_t>(product + 1 + (product >> 8)) >> 8);
        return static_cast<uint8_t>(quotient + offset);
    };
    size_t i = 0;
    for (; i + 96 <= count; i += 96)
        for (size_t k = 0; k < 96; ++k) to[i + k] = tint(from[i + k], added[k]);
    for (size_t k = 0; i + k < count; ++k) to[i + k] = tint(from[i + k], added[k]);
}

struct Tint {
    uint8_t values[3][256];  // what each value of blue, green and red becomes
    bool regular;            // the density is in the slider's range: the next two are valid
    uint32_t remaining;
    uint8_t added[96];
};

void MakeTint(int32_t density, uint32_t background, Tint* tint) {
    const uint32_t channels[] = {BlueOf(background), GreenOf(background), RedOf(background)};
    for (int i = 0; i < 3; ++i) FillTints(density, channels[i], tint->values[i]);
    tint->regular = density >= 0 && density <= 255;
    tint->remaining = tint->regular ? static_cast<uint32_t>(255 - density) : 0;
    for (int i = 0; i < 96; ++i) tint->added[i] = tint->values[i % 3][0];
}

void TintRow(const uint8_t* from, size_t width, const Tint& tint, uint8_t* to) {
    if (tint.regular) {
        Fastest<TintBytes>()(from, 3 * width, tint.remaining, tint.added, to);
        return;
    }
    for (size_t x = 0; x < width; ++x, from += 3, to += 3)
        for (int i = 0; i < 3; ++i) to[i] = tint.values[i][from[i]];
}

bool IsLine(int32_t y, int32_t size) { return size > 0 && y / size % 2 == 0; }

// Scan lines of `size` rows, with gaps of as many rows between them, starting with a line at the top;
// `density` is their opacity in 255ths. With a size below 1 there are no lines.
ImageHandle ApplyRaster(ImageHandle source, const KernelInput& input) {
    const int32_t density = input.values[0];
    const int32_t size = input.values[1];
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
    NewImage to(CreateLike(from.image));
    if (!to) return nullptr;

    Tint tint;
    MakeTint(density, input.background, &tint);
    const auto width = static_cast<size_t>(from->width);
    for (int32_t y = 0; y < from->height; ++y) {
        const uint8_t* in = PictureRow(from.image, y);
        if (IsLine(y, size))
            TintRow(in, width, tint, PictureRow(to.image, y));
        else
            std::memcpy(PictureRow(to.image, y), in, 3 * width);
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_RASTER_DENSITY, &settings.style011Density, RASTER_DENSITY_RANGE, RASTER_DENSITY_CAPTION),
    Slider(IDC_RASTER_SIZE, &settings.style011Size, RASTER_SIZE_RANGE, RASTER_SIZE_CAPTION),
});

}  // namespace

const Effect kRaster = {
    .name = "Raster", .panel = IDD_PANEL_RASTER, .controls = kControls, .apply = ApplyRaster};

}  // namespace kfx
