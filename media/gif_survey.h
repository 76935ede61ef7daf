// SPDX-License-Identifier: MIT
// What the headers of a GIF file say. Nothing is decoded and nothing is allocated here, so that a file that
// is too large is refused before it takes time or memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "media/gif_canvas.h"

namespace kfx {

struct GifSurvey {
    uint64_t images = 0;  // up to the file's end, or to the first place that is none of its records
    // The canvas: the screen, enlarged where the first image goes beyond it, as browsers have it. For a
    // screen without a size it is the first image that has one.
    int width = 0;
    int height = 0;
    uint64_t excessPixels = 0;   // of images that are larger than the canvas; they are decoded and then cut
    bool cut = false;            // the file ends inside a record; a missing trailer alone is none
    size_t cutBlock = SIZE_MAX;  // when it ends inside a block of data: where the block's length stands
};

GifSurvey SurveyGif(const uint8_t* data, size_t size);

struct GifImageHeader {
    Rectangle place;
    size_t codes = 0;  // offset of the code size, which stands before the blocks of data
};

// The header of the image whose separator is at `at`; false when the file ends before its data.
bool ReadGifImageHeader(const uint8_t* data, size_t size, size_t at, GifImageHeader* header);

// Whether the image shows nothing: it has no width, no height or no pixel in its data. False for an image
// that is cut. `*end` becomes the offset behind its data, of a cut one the file's size.
bool IsEmptyGifImage(const uint8_t* data, size_t size, const GifImageHeader& header, size_t* end);

}  // namespace kfx
