// SPDX-License-Identifier: MIT
// Sheets of labelled thumbnails: source above result, or a gallery.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "media/animation.h"
#include "media/animation_writer.h"

namespace kfx {

// A picture to show; the pixels (RGBA, top row first) stay the caller's.
struct SheetPicture {
    int width = 0;
    int height = 0;
    const uint8_t* pixels = nullptr;
    std::string label;  // under the thumbnail, ASCII; cut where it would not fit
};

struct SheetRow {
    std::string title;  // above the row; empty: none
    std::vector<SheetPicture> pictures;
};

// Draws rows of thumbnails on a light sheet under a title (empty: none). Pictures larger than
// `thumbnailWidth` x `thumbnailHeight` are reduced to fit, smaller ones keep their size; transparency shows
// a chequered ground. Returns an empty picture when there is nothing to show.
Picture DrawContactSheet(const std::string& title, const std::vector<SheetRow>& rows, int thumbnailWidth,
                         int thumbnailHeight);

// The same for a plain list of pictures, `columns` in a row.
Picture DrawGallery(const std::string& title, const std::vector<SheetPicture>& pictures, int columns,
                    int thumbnailWidth, int thumbnailHeight);

// Up to `columns` evenly spread frames of the source, with the result's frames below them, labelled with
// their numbers: those of the same number, or of the same moment when the counts differ.
Picture DrawComparison(const std::string& title, const Animation& source, const Animation& result,
                       int columns, int thumbnailWidth, int thumbnailHeight);

}  // namespace kfx
