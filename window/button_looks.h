// SPDX-License-Identifier: MIT
// The three looks of push buttons beside the system's own.
#pragma once

#include <windows.h>

#include <cstdint>

namespace kfx {

struct ButtonFace {
    HDC dc;
    RECT area;
    bool pushed;
    bool hot;        // the pointer is over it
    bool isDefault;  // Enter presses it
    bool focused;
    bool ringed;  // and the system shows the focus
    bool disabled;
};

// Draws every pixel of the button but its text and the dotted focus rectangle. Look 2 is flat, look 3
// rounded, any other bevelled. Where the system's colours are chosen for high contrast, all looks are one
// plain one.
void DrawButtonFace(const ButtonFace& face, uint32_t look);

// How the text stands on that face.
struct ButtonLabel {
    COLORREF color;
    bool moves;     // by a pixel, when the button is pushed
    bool engraved;  // a light shadow below the text of a disabled button
    bool dotted;    // the focus is shown by a dotted rectangle
};
ButtonLabel LabelOn(const ButtonFace& face, uint32_t look);

}  // namespace kfx
