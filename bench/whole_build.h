// SPDX-License-Identifier: MIT
#pragma once

#include "builder/build_driver.h"
#include "framework/frame_list.h"

namespace kfx::bench {

// A whole build of copies of these 24-bit frames, with a host that accepts everything: the build's own work,
// without an effect's. The options' palette must not be the source's. False: the build failed.
bool BuildFrames(const FrameList& frames, const BuildOptions& options);

// Options for a palette that is computed from the frames, with everything else off.
BuildOptions ComputedPaletteOptions();

}  // namespace kfx::bench
