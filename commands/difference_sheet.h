// SPDX-License-Identifier: MIT
// Where two animations differ, as a picture.
#pragma once

#include <string>

#include "commands/playback.h"
#include "media/animation_writer.h"

namespace kfx::commands {

// Shows the first moment with different pixels, and below it the one with the lowest PSNR when it is another:
// both frames, and beside them the first in pale grey with the different pixels in full red, however little
// they differ. An empty picture when no pixel differs.
Picture DrawDifferences(const std::string& title, const Animation& a, const Animation& b,
                        const Comparison& comparison);

// The first moment with different pixels, and the one with the lowest PSNR; null: there is none.
const Moment* FirstDifference(const Comparison& comparison);
const Moment* WorstMoment(const Comparison& comparison);

}  // namespace kfx::commands
