// SPDX-License-Identifier: MIT
// Neon: each channel becomes the length of its gradient (vertical and horizontal differences of three
// neighbours each), so that edges glow on a dark ground.
#include "effects/neon.h"

#include <cmath>

#include "effects/shared/neighbor_filter.h"
#include "framework/cpu.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The length is defined as sqrt(squares) / 1.8 in double precision, truncated. For each of the 1,170,451
// possible sums of squares this single-precision product truncates to the same byte, which a test goes
// through.
constexpr float kScale = 0.555555582f;

KFX_INLINE void NeonRow(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                        uint8_t* out) {
    for (size_t s = 0; s < bytes; ++s) {
        const int vertical = below[s] + below[s + 3] + below[s + 6] - above[s] - above[s + 3] - above[s + 6];
        const int horizontal = above[s + 6] + centre[s + 6] + below[s + 6] - above[s] - centre[s] - below[s];
        const float length =
            std::sqrt(static_cast<float>(horizontal * horizontal + vertical * vertical)) * kScale;
        out[s] = static_cast<uint8_t>(length > 255.0f ? 255 : static_cast<int>(length));
    }
}

void NeonRowPlain(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                  uint8_t* out) {
    NeonRow(above, centre, below, bytes, out);
}

KFX_AVX2 void NeonRowAvx2(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                          uint8_t* out) {
    NeonRow(above, centre, below, bytes, out);
}

ImageHandle Kernel(ImageHandle source, const KernelInput&) { return ApplyNeon(source); }

constexpr uint32_t kControlIds[] = {0};

}  // namespace

ImageHandle ApplyNeon(ImageHandle source) {
    return FilterNeighbors(source, UseAvx2() ? NeonRowAvx2 : NeonRowPlain);
}

const EffectRecord kNeonEffect = {"Neon", IDD_PANEL_NEON, kControlIds, nullptr, 0, Kernel, nullptr};

}  // namespace kfx
