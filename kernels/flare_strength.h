// SPDX-License-Identifier: MIT
// How strongly a spot of light brightens the pixels of a row.
#pragma once

#include <cstdint>

namespace kfx {

enum class FlareKind : int32_t {
    Disc = 1,  // fading towards its rim
    Spot = 2,  // even, with a soft rim
    Halo = 3,  // brightest near its rim
    Ring = 4,
    // The glows of the light itself, whose distances are held in single precision.
    SteepGlow = 5,  // falling off with the square
    EvenGlow = 6,
    RingGlow = 7,
};

// The strength of a pixel that a spot does not reach. Blending with strength 0 would keep the colours, but
// not the top byte of a 32-bit pixel.
constexpr float kUnpainted = -1e30f;

// A run of pixels in one row, as seen from a spot's centre: `dy` pixels below it, from `dx` on.
struct FlareRun {
    FlareKind kind;
    double radius;  // of the spot, pixels
    int32_t dx;
    int32_t dy;
    int32_t count;
};

// The strength of each pixel of the run, kUnpainted where the spot does not reach.
void FillStrengths(const FlareRun& run, float* strengths);

// The same with 0 instead of kUnpainted: faster, for pictures in which blending with strength 0 changes
// nothing.
void FillStrengthsFast(const FlareRun& run, float* strengths);

}  // namespace kfx
