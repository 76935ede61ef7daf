// SPDX-License-Identifier: MIT
// Neon: each channel becomes the length of its gradient (vertical and horizontal differences of three
// neighbours each), so that edges glow on a dark ground.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "kernels/neighbor_filter.h"
#include "kernels/neighbor_rows.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

ImageHandle ApplyNeon(ImageHandle source, const KernelInput&) {
    return FilterNeighbors(source, GradientRow());
}

}  // namespace

const Effect kNeon = {.name = "Neon", .panel = IDD_PANEL_NEON, .apply = ApplyNeon};

}  // namespace kfx
