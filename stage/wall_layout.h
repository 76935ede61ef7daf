// SPDX-License-Identifier: MIT
// Where the tiles of a wall stand: rows of as many as fit, in a window that scrolls up and down. Pixels.
#pragma once

#include <cstddef>

namespace kfx::stage {

struct WallLayout {
    size_t count = 0;  // of tiles
    size_t columns = 1;
    int tileWidth = 1;
    int tileHeight = 1;
    int gap = 0;     // between tiles, and above and below all of them
    int left = 0;    // of the first column
    int height = 0;  // of all rows
};

WallLayout LayOutWall(int windowWidth, size_t count, int tileWidth, int tileHeight, int gap);

// Left and upper edge of a tile in a wall that is not scrolled.
int TileLeft(const WallLayout& layout, size_t tile);
int TileTop(const WallLayout& layout, size_t tile);

// How far the wall can be scrolled in a window of this height.
int LargestScroll(const WallLayout& layout, int windowHeight);

// The scroll position nearest to `scroll` at which the tile is seen with the gap round it.
int ScrollToTile(const WallLayout& layout, int windowHeight, int scroll, size_t tile);

// The tiles of which something is seen; first > last: none.
struct TileRange {
    size_t first = 1;
    size_t last = 0;
};
TileRange VisibleTiles(const WallLayout& layout, int windowHeight, int scroll);

enum class WallStep { Left, Right, Up, Down, PageUp, PageDown, First, Last };

// The tile that the focus moves to; the same one where there is none further.
size_t TileBeside(const WallLayout& layout, int windowHeight, size_t tile, WallStep step);

}  // namespace kfx::stage
