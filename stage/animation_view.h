// SPDX-License-Identifier: MIT
// Drawing an animation into a rectangle of a window, as large as it fits.
#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

#include "media/animation.h"

namespace kfx::stage {

// The frame that is shown this long after the start. Very short delays are taken as a tenth of a second, as
// browsers do. 0 for an animation without frames.
size_t FrameAt(const Animation& animation, uint64_t milliseconds);

struct ViewStyle {
    HFONT font;
    HFONT smallFont;
    int unit;  // pixels of a device-independent pixel, times 96
};

// Draws a card: the title, the animation's current frame on a chequered ground, a line about it. Without
// frames `hint` stands in the middle.
void DrawAnimationCard(HDC target, const RECT& card, const std::string& title, const std::string& hint,
                       const Animation& animation, size_t frame, const ViewStyle& style);

COLORREF StageBackground();

}  // namespace kfx::stage
