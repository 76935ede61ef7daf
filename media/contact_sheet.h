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
    std::string label;      // under the thumbnail, ASCII; cut where it would not fit
    int timesAsLarge = 1;   // above 1: each pixel becomes a square of this side, and no bounds count
    std::string note = {};  // under the label, ASCII as well; empty: none
};

struct SheetRow {
    std::string title;  // above the row; empty: none
    std::vector<SheetPicture> pictures;
};

struct PictureSize {
    int width;
    int height;
};

// Where a thumbnail stands on a sheet.
struct SheetPlace {
    int left;
    int top;
    int width;
    int height;
};

// The largest size within these bounds that keeps a picture's shape; never larger than the picture.
PictureSize FitPicture(int width, int height, int mostWidth, int mostHeight);

// How many times as large a small picture may be shown within these bounds; at least 1, and 8 at the most.
int TimesAsLarge(int width, int height, int mostWidth, int mostHeight);

// Draws rows of thumbnails on a light sheet under a title (empty: none). Pictures larger than
// `thumbnailWidth` x `thumbnailHeight` are reduced to fit, smaller ones keep their size, in places that are
// wide enough for the labels; transparency shows a chequered ground. Returns an empty picture when there is
// nothing to show. `places` may be null; else it gets the thumbnails' places, row by row.
Picture DrawContactSheet(const std::string& title, const std::vector<SheetRow>& rows, int thumbnailWidth,
                         int thumbnailHeight, std::vector<SheetPlace>* places = nullptr);

// The same for a plain list of pictures, `columns` in a row.
Picture DrawGallery(const std::string& title, const std::vector<SheetPicture>& pictures, int columns,
                    int thumbnailWidth, int thumbnailHeight, std::vector<SheetPlace>* places = nullptr);

// Draws a picture, without its label, into a place of a sheet. The place has the picture's shape.
void DrawSheetPicture(const SheetPicture& picture, const SheetPlace& place, Picture* sheet);

// Up to `columns` evenly spread frames of the source, with the result's frames below them, labelled with
// their numbers, from 0: those of the same number, or of the same moment when the counts differ.
Picture DrawComparison(const std::string& title, const Animation& source, const Animation& result,
                       int columns, int thumbnailWidth, int thumbnailHeight);

}  // namespace kfx
