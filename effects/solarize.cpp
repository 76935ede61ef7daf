// SPDX-License-Identifier: MIT
// Solarize: each channel of a pixel is inverted if its value lies below a threshold, and kept otherwise. Dark
// values are inverted, not bright ones.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <cstring>

#include "effects/effects.h"
#include "framework/cpu.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// Inverts every byte up to `most`.
KFX_INLINE void InvertDark(const uint8_t* from, size_t count, uint8_t most, uint8_t* __restrict to) {
    for (size_t i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(from[i] <= most ? ~from[i] : from[i]);
}

void SolarizeBytes(const uint8_t* from, size_t count, int32_t threshold, uint8_t* to) {
    const auto most = static_cast<uint8_t>(threshold > 255 ? 255 : threshold - 1);
    if (threshold < 1)
        std::memcpy(to, from, count);
    else
        Fastest<InvertDark>()(from, count, most, to);
}

ImageHandle ApplySolarize(ImageHandle source, const KernelInput& input) {
    const int32_t threshold = input.values[0];
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
    NewImage to(CreateLike(from.image));
    if (!to) return nullptr;
    const size_t rowBytes = 3 * static_cast<size_t>(from->width);
    for (int32_t r = 0; r < from->height; ++r)
        SolarizeBytes(StoredRow(from.image, r), rowBytes, threshold, StoredRow(to.image, r));
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_SOLARIZE_THRESHOLD, &settings.style012Threshold, SOLARIZE_THRESHOLD_RANGE,
           SOLARIZE_THRESHOLD_CAPTION),
});

}  // namespace

const Effect kSolarize = {
    .name = "Solarize", .panel = IDD_PANEL_SOLARIZE, .controls = kControls, .apply = ApplySolarize};

}  // namespace kfx
