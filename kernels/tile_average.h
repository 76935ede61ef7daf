// SPDX-License-Identifier: MIT
// Square tiles filled with the average of their own pixels, for Obscure.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// A row of tiles: picture rows `top` to `bottom` - 1.
struct TileRow {
    int32_t top;
    int32_t bottom;
};

// Working space for AverageTiles: three entries for each pixel of a row.
struct TileSums {
    uint16_t* columns;
    uint64_t* tiles;
};

// Fills the tiles of one row, `level` pixels wide from the left edge on, the last one cut off by the
// picture's right edge. Both images are 24 bits deep and of one size.
void AverageTiles(const WorkingImage* from, const TileRow& tiles, int32_t level, const TileSums& sums,
                  WorkingImage* to);

// Fills one tile, columns `left` to `right` - 1, of images of any depth. What is averaged are the bytes of
// the pixel values, colour-table indices included.
void AverageTileOfAnyDepth(const WorkingImage* from, const TileRow& tiles, int32_t left, int32_t right,
                           WorkingImage* to);

}  // namespace kfx
