// SPDX-License-Identifier: MIT
// What a wall's window holds. Only its own thread touches this.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "stage/wall_layout.h"
#include "stage/wall_render.h"
#include "stage/wall_view.h"

namespace kfx::stage {

struct WallTile {
    HWND button = nullptr;
    uint64_t variation = 0;  // that is shown
    uint64_t keptVariation = 0;
    bool isKept = false;  // the user has kept settings
    EffectSettings shown;
    EffectSettings kept;
    TileView view;
    std::wstring text;  // of the button
};

struct WallWindow {
    HWND window = nullptr;
    int dpi = 96;
    HFONT font = nullptr;  // the parent's
    HFONT boldFont = nullptr;
    std::vector<EffectDescription> effects;
    WallRender* render = nullptr;
    std::shared_ptr<const WallSource> source;  // for another resolution of the screen
    std::shared_ptr<const Animation> thumbnails;
    std::vector<WallTile> tiles;
    WallLayout layout;
    int scroll = 0;
    int wheelRest = 0;
    size_t focus = 0;
    size_t hot = SIZE_MAX;  // under the pointer
    uint64_t moment = 0;    // of the animation, that is shown
    size_t frame = 0;       // of the thumbnails at this moment
};

inline int Scaled(const WallWindow& wall, int value) { return MulDiv(value, wall.dpi, 96); }

// The picture's size in a tile, and the tile's.
SIZE PictureRoom(const WallWindow& wall);
SIZE TileRoom(const WallWindow& wall);

// The second line of a tile; empty when there is nothing to say.
std::string TileNote(const WallWindow& wall, size_t tile);

// Answers WM_DRAWITEM.
void DrawTile(const WallWindow& wall, const DRAWITEMSTRUCT& item);

// Gives the tile's button its text after the tile has changed.
void NameTile(WallWindow* wall, size_t tile);

// Tells the parent about the tile.
void TellTile(const WallWindow& wall, size_t tile);

void RedrawTile(const WallWindow& wall, size_t tile);

// Tells the threads which tiles matter most.
void RankWall(const WallWindow& wall);

void ScrollWall(WallWindow* wall, int scroll);

// Shows a variation by its number, or what is kept.
void ShowVariation(WallWindow* wall, size_t tile, uint64_t variation);
void ShowKept(WallWindow* wall, size_t tile);
void KeepShown(WallWindow* wall, size_t tile);
void OpenTile(const WallWindow& wall, size_t tile);

// A key for the tile with the focus. False: the wall does nothing with it.
bool OnWallKey(WallWindow* wall, WPARAM key);

}  // namespace kfx::stage
