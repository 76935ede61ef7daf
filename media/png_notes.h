// SPDX-License-Identifier: MIT
// What PNG files say beside the picture: colour profile, EXIF, XMP, comment, recipe, background colour.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/animation.h"
#include "media/png_format.h"

namespace kfx {

// Compressed notes of a file may unpack to so many bytes together; what is more is left out.
constexpr size_t kMostUnpackedNotes = size_t{16} << 20;

struct PngNoteReader {
    Animation* animation;
    size_t room = kMostUnpackedNotes;
};

// Takes over what the chunk says to the animation, when it is one of these chunks. Damaged ones say nothing.
void TakePngNote(const PngChunk& chunk, const PngFormat& format, PngNoteReader* reader);

// Whether pictures with these notes may be stored in grey, which a colour profile of colours does not allow.
bool MayBeGrey(const Metadata& metadata);

// Appends the chunks of header, palette, transparency and notes. `format` may get another entry of the
// palette for the background colour.
void PutPngHead(std::vector<uint8_t>* file, int width, int height, const Animation& notes, PngFormat* format);

}  // namespace kfx
