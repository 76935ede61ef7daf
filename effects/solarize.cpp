// SPDX-License-Identifier: MIT
// Solarize: colour channels darker than a threshold are inverted, the others kept, each channel by itself.
// That it is the dark side which turns, and not the bright one, is intended.
#include "effects/solarize.h"

#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// Inverts every byte up to `most`.
KFX_INLINE void InvertDark(const uint8_t* from, size_t count, uint8_t most, uint8_t* __restrict to) {
    for (size_t i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(from[i] <= most ? ~from[i] : from[i]);
}

KFX_AVX2 void InvertDarkAvx2(const uint8_t* from, size_t count, uint8_t most, uint8_t* to) {
    InvertDark(from, count, most, to);
}

void SolarizeBytes(const uint8_t* from, size_t count, int32_t threshold, uint8_t* to) {
    const auto most = static_cast<uint8_t>(threshold > 255 ? 255 : threshold - 1);
    if (threshold < 1)
        std::memcpy(to, from, count);
    else if (UseAvx2())
        InvertDarkAvx2(from, count, most, to);
    else
        InvertDark(from, count, most, to);
}

}  // namespace

ImageHandle ApplySolarize(ImageHandle source, int32_t threshold) {
    const ImageLock from(source);
    if (!from.image || from.image->bitCount != 24) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const size_t rowBytes = 3 * static_cast<size_t>(from.image->width);
    for (int32_t r = 0; r < from.image->height; ++r)
        SolarizeBytes(StoredRow(from.image, r), rowBytes, threshold, StoredRow(to.image, r));
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplySolarize(source, input.values[0]);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_SOLARIZE_THRESHOLD, &settings.style012Threshold, SOLARIZE_THRESHOLD_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_SOLARIZE_THRESHOLD), 0};

}  // namespace

const EffectRecord kSolarizeEffect = {"Solarize", IDD_PANEL_SOLARIZE, kControlIds, kControls, 1, Kernel,
                                      nullptr};

}  // namespace kfx
