// SPDX-License-Identifier: MIT
#pragma once

#include "media/animation.h"

namespace kfx::commands {

// Scales a frame of `width` x `height` pixels to `newWidth` x `newHeight` by the plug-in's own scaler
// (kernels/scaler.h). Colours are weighed by their alpha, so that what is hidden under transparent pixels
// does not show at the edges. The frame's indices go, because its colours are mixed. False: memory ran out.
bool ResizeFrame(int width, int height, int newWidth, int newHeight, Frame* frame);

}  // namespace kfx::commands
