// SPDX-License-Identifier: MIT
// The sample animation that the project draws itself: a kestrel over a lake at sunset.
#pragma once

#include "media/animation.h"
#include "media/animation_writer.h"

namespace kfx {

constexpr int kSampleWidth = 320;
constexpr int kSampleHeight = 240;
constexpr int kSampleFrameCount = 24;
constexpr int kSampleDelay = 8;  // hundredths of a second

// One frame in true colour, opaque. The animation repeats seamlessly after kSampleFrameCount frames. Uses no
// mathematical library, so that each build draws the same pixels.
Picture DrawSampleFrame(int frameIndex);

// All frames, each with a palette of its own, repeating forever.
GifAnimation DrawSampleAnimation();

}  // namespace kfx
