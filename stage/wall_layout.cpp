// SPDX-License-Identifier: MIT
#include "stage/wall_layout.h"

#include <algorithm>

namespace kfx::stage {
namespace {

size_t RowOf(const WallLayout& layout, size_t tile) { return tile / layout.columns; }

int RowHeight(const WallLayout& layout) { return layout.tileHeight + layout.gap; }

}  // namespace

WallLayout LayOutWall(int windowWidth, size_t count, int tileWidth, int tileHeight, int gap) {
    WallLayout layout = {
        .count = count, .columns = 1, .tileWidth = tileWidth, .tileHeight = tileHeight, .gap = gap};
    const int fitting = (windowWidth - gap) / (tileWidth + gap);
    layout.columns =
        std::clamp<size_t>(fitting < 1 ? 1 : static_cast<size_t>(fitting), 1, std::max<size_t>(count, 1));
    const int used = static_cast<int>(layout.columns) * (tileWidth + gap) - gap;
    layout.left = std::max((windowWidth - used) / 2, 0);
    const size_t rows = (count + layout.columns - 1) / layout.columns;
    layout.height = gap + static_cast<int>(rows) * RowHeight(layout);
    return layout;
}

int TileLeft(const WallLayout& layout, size_t tile) {
    return layout.left + static_cast<int>(tile % layout.columns) * (layout.tileWidth + layout.gap);
}

int TileTop(const WallLayout& layout, size_t tile) {
    return layout.gap + static_cast<int>(RowOf(layout, tile)) * RowHeight(layout);
}

int LargestScroll(const WallLayout& layout, int windowHeight) {
    return std::max(layout.height - windowHeight, 0);
}

int ScrollToTile(const WallLayout& layout, int windowHeight, int scroll, size_t tile) {
    const int top = TileTop(layout, tile) - layout.gap;
    const int bottom = TileTop(layout, tile) + layout.tileHeight + layout.gap;
    scroll = std::max(scroll, bottom - windowHeight);
    return std::clamp(std::min(scroll, top), 0, LargestScroll(layout, windowHeight));
}

TileRange VisibleTiles(const WallLayout& layout, int windowHeight, int scroll) {
    TileRange range;
    bool any = false;
    for (size_t i = 0; i < layout.count; ++i) {
        const int top = TileTop(layout, i) - scroll;
        if (top >= windowHeight || top + layout.tileHeight <= 0) continue;
        if (!any) range.first = i;
        any = true;
        range.last = i;
    }
    return range;
}

size_t TileBeside(const WallLayout& layout, int windowHeight, size_t tile, WallStep step) {
    const size_t last = layout.count - 1;
    const size_t page = layout.columns * static_cast<size_t>(std::max(windowHeight / RowHeight(layout), 1));
    switch (step) {
        case WallStep::Left:
            return tile > 0 ? tile - 1 : 0;
        case WallStep::Right:
            return std::min(tile + 1, last);
        case WallStep::Up:
            return tile >= layout.columns ? tile - layout.columns : tile;
        case WallStep::Down:
            // From above a last row that is not full, its last tile.
            return RowOf(layout, tile) < RowOf(layout, last) ? std::min(tile + layout.columns, last) : tile;
        case WallStep::PageUp:
            return tile >= page ? tile - page : tile % layout.columns;
        case WallStep::PageDown:
            return std::min(tile + page, last);
        case WallStep::First:
            return 0;
        case WallStep::Last:
            return last;
    }
    return tile;
}

}  // namespace kfx::stage
