// SPDX-License-Identifier: MIT
// Bump: raised relief, lit from the upper left, by a fixed 3 x 3 kernel whose weights sum to 1. Products of
// bytes with -1, 0 and 1 are whole numbers, so integers give what single precision would.
#include "effects/bump.h"

#include <algorithm>

#include "effects/shared/neighbor_filter.h"
#include "framework/cpu.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

//   -1 -1  0
//   -1  1  1
//    0  1  1
KFX_INLINE void BumpRow(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                        uint8_t* out) {
    for (size_t s = 0; s < bytes; ++s) {
        const int lit = centre[s + 3] + centre[s + 6] + below[s + 3] + below[s + 6];
        const int shaded = above[s] + above[s + 3] + centre[s];
        const auto relief = static_cast<int16_t>(lit - shaded);
        out[s] = static_cast<uint8_t>(std::clamp<int16_t>(relief, 0, 255));
    }
}

void BumpRowPlain(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                  uint8_t* out) {
    BumpRow(above, centre, below, bytes, out);
}

KFX_AVX2 void BumpRowAvx2(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                          uint8_t* out) {
    BumpRow(above, centre, below, bytes, out);
}

ImageHandle Kernel(ImageHandle source, const KernelInput&) { return ApplyBump(source); }

constexpr uint32_t kControlIds[] = {0};

}  // namespace

ImageHandle ApplyBump(ImageHandle source) {
    return FilterNeighbors(source, UseAvx2() ? BumpRowAvx2 : BumpRowPlain);
}

const EffectRecord kBumpEffect = {"Bump", IDD_PANEL_BUMP, kControlIds, nullptr, 0, Kernel, nullptr};

}  // namespace kfx
