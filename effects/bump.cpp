// SPDX-License-Identifier: MIT
// Bump: raised relief, lit from the upper left, by a fixed 3 x 3 kernel whose weights sum to 1. The products
// of bytes with -1, 0 and 1 are whole numbers, so integer arithmetic gives the same results as single
// precision.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "kernels/neighbor_filter.h"
#include "kernels/neighbor_rows.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

ImageHandle ApplyBump(ImageHandle source, const KernelInput&) { return FilterNeighbors(source, ReliefRow()); }

}  // namespace

const Effect kBump = {.name = "Bump", .panel = IDD_PANEL_BUMP, .apply = ApplyBump};

}  // namespace kfx
