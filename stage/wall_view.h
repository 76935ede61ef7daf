// SPDX-License-Identifier: MIT
// The wall: a child window in which an animation plays under every effect at once. Its tiles are buttons, so
// that keyboards, screen readers and automatic tools find them; their text is the effect, its settings and
// how far they are.
//
// Arrows, Home, End, Page Up and Page Down move the focus. Enter, or a click, opens the effect with what its
// tile shows. Space shows the next variation of it; Backspace, and Left as long as the tile shows one, show
// the variation before; S keeps what is shown; Escape goes back to what is kept. Kept settings stay for other
// animations.
#pragma once

#include <memory>
#include <string>

#include <windows.h>

#include "stage/wall_settings.h"
#include "stage/wall_source.h"

namespace kfx::stage {

// The button of effect number i has this number and i.
constexpr int kFirstWallTile = 1000;

// Messages to the wall's parent, sent; their pointers hold until it has answered.
enum WallMessage : UINT {
    // LPARAM: const EffectSettings*, with which the effect is to be opened.
    kWallOpens = WM_APP + 80,
    // LPARAM: const std::string*, what the status line may say after the user has moved the focus or changed
    // the tile that has it.
    kWallTells,
    // To the wall: how many tiles show the picture that they are to show.
    kWallCountReady,
    // Of the wall's threads to it.
    kWallTileChanged,
};

// A wall without an animation, not visible. It takes its font by WM_SETFONT. Null: it could not be made.
HWND CreateWall(HWND parent, int id, int dpi);

// Shows another animation; null: none. The frames' pixels are shared until they have been scaled.
void ShowOnWall(HWND wall, std::shared_ptr<const WallSource> source);

// All tiles show their frame of this moment of the animation: whoever plays it says so for each frame. A
// moment behind the end shows the last one.
void ShowWallAt(HWND wall, uint64_t milliseconds);

// After the window has come to a screen of another resolution.
void SetWallDpi(HWND wall, int dpi);

// To be asked before accelerators and dialog keys are. True: the key was the wall's, and has been handled.
bool TakeWallKey(HWND wall, const MSG& message);

const std::vector<EffectDescription>& WallEffects(HWND wall);

}  // namespace kfx::stage
