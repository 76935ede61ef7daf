// SPDX-License-Identifier: MIT
#include "media/png_format.h"

namespace kfx {
namespace {

constexpr size_t kHeaderSize = 13;
constexpr size_t kMaxEntries = 256;

bool IsKnownDepth(int colors, int depth) {
    switch (colors) {
        case kPngGrey:
            return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
        case kPngPalette:
            return depth == 1 || depth == 2 || depth == 4 || depth == 8;
        case kPngRgb:
        case kPngGreyAlpha:
        case kPngRgba:
            return depth == 8 || depth == 16;
        default:
            return false;
    }
}

bool TakePalette(const PngChunk& chunk, PngFormat* format) {
    if (chunk.size == 0 || chunk.size % 3 != 0 || chunk.size > 3 * kMaxEntries) return false;
    format->palette.clear();
    for (size_t i = 0; i < chunk.size; i += 3)
        format->palette.push_back({chunk.data[i], chunk.data[i + 1], chunk.data[i + 2]});
    return true;
}

bool TakeTransparency(const PngChunk& chunk, PngFormat* format) {
    if (format->colors == kPngPalette) {
        if (chunk.size > format->palette.size()) return false;
        format->alphas.assign(chunk.data, chunk.data + chunk.size);
        return true;
    }
    if (format->colors != kPngGrey && format->colors != kPngRgb) return false;
    const auto samples = static_cast<size_t>(ChannelsOf(*format));
    if (chunk.size != 2 * samples) return false;
    format->hasKey = true;
    for (size_t i = 0; i < samples; ++i)
        format->key[i] = static_cast<uint16_t>(BigWord16(chunk.data + 2 * i));
    return true;
}

}  // namespace

bool IsGrey(const PngFormat& format) { return format.colors == kPngGrey || format.colors == kPngGreyAlpha; }

int ChannelsOf(const PngFormat& format) {
    switch (format.colors) {
        case kPngRgb:
            return 3;
        case kPngGreyAlpha:
            return 2;
        case kPngRgba:
            return 4;
        default:
            return 1;
    }
}

size_t PngRowBytes(const PngFormat& format, int width) {
    const auto bits = static_cast<size_t>(ChannelsOf(format)) * static_cast<size_t>(format.depth);
    return (bits * static_cast<size_t>(width) + 7) / 8;
}

int PngFilterStep(const PngFormat& format) {
    const int bits = ChannelsOf(format) * format.depth;
    return bits < 8 ? 1 : bits / 8;
}

bool ReadPngHeader(const uint8_t* data, size_t size, PngHeader* header) {
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    if (!NextPngChunk(data, size, &at, &chunk) || chunk.name != kHeaderChunk || chunk.size != kHeaderSize ||
        !IsPngChunkWhole(chunk))
        return false;
    const uint8_t* kinds = chunk.data + 8;  // depth, colours, compression, filters, interlace
    header->width = BigWord32(chunk.data);
    header->height = BigWord32(chunk.data + 4);
    header->format.depth = kinds[0];
    header->format.colors = kinds[1];
    header->format.interlaced = kinds[4] == 1;
    return header->width != 0 && header->height != 0 && IsKnownDepth(kinds[1], kinds[0]) && kinds[2] == 0 &&
           kinds[3] == 0 && kinds[4] <= 1;
}

bool TakeFormatChunk(const PngChunk& chunk, PngFormat* format) {
    if (chunk.name == kPaletteChunk) return IsPngChunkWhole(chunk) && TakePalette(chunk, format);
    if (chunk.name == kTransparencyChunk) return IsPngChunkWhole(chunk) && TakeTransparency(chunk, format);
    return true;
}

}  // namespace kfx
