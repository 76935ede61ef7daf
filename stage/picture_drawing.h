// SPDX-License-Identifier: MIT
// Drawing a picture with alpha over a ground, at any size.
#pragma once

#include <cstdint>
#include <vector>

#include <windows.h>

namespace kfx::stage {

// What stands behind a picture's transparent pixels: two colours in squares, which may be the same.
struct PictureGround {
    COLORREF even;
    COLORREF odd;
    int square;  // pixels of the screen
};

// The usual squares.
PictureGround ChequeredGround(int square);

// Draws the part of the picture that lies in `visible`; the whole of it would fill `place`. `rgba` has
// 4 * width * height bytes, top row first. Larger pictures show their pixels as squares; in smaller ones each
// pixel is the mean of at most nine that it stands for, so that the time depends on the screen only.
void DrawPicture(HDC target, const RECT& place, const RECT& visible, const uint8_t* rgba, SIZE picture,
                 const PictureGround& ground);

// The picture at `size`, scaled in the same way and with its alpha.
std::vector<uint8_t> ScaledPicture(const uint8_t* rgba, SIZE picture, SIZE size);

}  // namespace kfx::stage
