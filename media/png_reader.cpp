// SPDX-License-Identifier: MIT
#include <algorithm>

#include "media/apng.h"
#include "media/png_format.h"
#include "media/png_notes.h"
#include "media/readers.h"

namespace kfx {
namespace {

// The compressed data of the picture, which stand in one chunk or in several ones.
struct PngData {
    PackedParts parts;
    bool isCut = false;  // the file ends before its end mark
};

// Chunks whose first letter is small may be left out.
bool IsNeeded(const PngChunk& chunk) { return (chunk.name & 0x20000000) == 0; }

// Reads what belongs to the picture, and notes; a clause about what is wrong, null for nothing.
const char* ReadChunks(const uint8_t* data, size_t size, PngFormat* format, PngData* picture,
                       PngNoteReader* notes) {
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    while (NextPngChunk(data, size, &at, &chunk)) {
        switch (chunk.name) {
            case kHeaderChunk:
                break;
            case kPaletteChunk:
                if (!TakeFormatChunk(chunk, format)) return "its palette is damaged";
                break;
            case kTransparencyChunk:
                if (!TakeFormatChunk(chunk, format)) return "its transparency is damaged";
                break;
            case kDataChunk:
                if (!IsPngChunkWhole(chunk)) return "its picture data are damaged";
                if (chunk.size > 0) picture->parts.push_back({chunk.data, chunk.size});
                break;
            case kEndChunk:
                return nullptr;
            default:
                if (IsNeeded(chunk)) return "it has a part of an unknown kind";
                TakePngNote(chunk, *format, notes);
        }
    }
    picture->isCut = true;
    return nullptr;
}

// The file's palette becomes the global one; opaque pictures keep their indices into it.
void TakePalette(const PngFormat& format, std::vector<uint8_t> indices, Animation* animation) {
    if (format.colors != kPngPalette) return;
    animation->hasGlobalPalette = true;
    animation->globalPalette = format.palette;
    Frame& frame = animation->frames[0];
    if (frame.transparent || indices.empty()) return;
    frame.indices = std::move(indices);
    frame.indexed = true;
}

}  // namespace

bool ReadPng(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    PngHeader header;
    if (!ReadPngHeader(data, size, &header)) {
        *error = "the PNG file is damaged: its header is wrong or cut off";
        return false;
    }
    if (IsAnimatedPng(data, size)) return ReadAnimatedPng(data, size, header, budget, animation, error);
    if (!SpendPixels(budget, header.width, header.height, error)) return false;
    const auto width = static_cast<int>(header.width);
    const auto height = static_cast<int>(header.height);
    PngData picture;
    PngNoteReader notes = {.animation = animation};
    const char* fault = ReadChunks(data, size, &header.format, &picture, &notes);
    Frame frame;
    std::vector<uint8_t> indices;
    if (!fault) {
        fault = DecodePngPixels(header.format, width, height, picture.parts, &frame.pixels, &indices);
        // A file that lacks nothing but its end mark is no damaged one.
        if (fault && picture.isCut) fault = "it is cut off";
    }
    if (fault) {
        *error = std::string("the PNG file is damaged: ") + fault;
        return false;
    }
    animation->width = width;
    animation->height = height;
    NoteTransparency(&frame);
    animation->frames.push_back(std::move(frame));
    TakePalette(header.format, std::move(indices), animation);
    return true;
}

}  // namespace kfx
