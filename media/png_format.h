// SPDX-License-Identifier: MIT
// How a PNG file stores its pixels: what its chunks of header, palette and transparency say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/animation.h"
#include "media/png_chunks.h"
#include "media/png_deflate.h"

namespace kfx {

constexpr uint32_t kHeaderChunk = PngName("IHDR");
constexpr uint32_t kPaletteChunk = PngName("PLTE");
constexpr uint32_t kTransparencyChunk = PngName("tRNS");
constexpr uint32_t kDataChunk = PngName("IDAT");
constexpr uint32_t kEndChunk = PngName("IEND");

// As the header has them.
enum PngColors : uint8_t {
    kPngGrey = 0,
    kPngRgb = 2,
    kPngPalette = 3,
    kPngGreyAlpha = 4,
    kPngRgba = 6,
};

struct PngFormat {
    uint8_t colors = kPngRgba;
    int depth = 8;  // bits of a sample
    bool interlaced = false;
    std::vector<RgbColor> palette;  // up to 256 entries; colours without a palette may have a suggested one
    std::vector<uint8_t> alphas;    // of the first entries of the palette; the others are opaque
    bool hasKey = false;            // grey and RGB: pixels of this colour are transparent
    uint16_t key[3] = {};           // red, green, blue; grey is the first
};

// Whether pixels have a grey value instead of a colour.
bool IsGrey(const PngFormat& format);

// Samples of a pixel.
int ChannelsOf(const PngFormat& format);

// Bytes of a row of `width` pixels, without the one that names its filter.
size_t PngRowBytes(const PngFormat& format, int width);

// Bytes from a byte to that of the same sample on its left, at least 1.
int PngFilterStep(const PngFormat& format);

// The nearest sample of 8 bits to one of 0 to `most`.
inline uint8_t RoundPngSample(uint32_t sample, uint32_t most) {
    return static_cast<uint8_t>((sample * 255 + most / 2) / most);
}

struct PngHeader {
    uint32_t width = 0;
    uint32_t height = 0;
    PngFormat format;
};

// The header that begins a PNG file; false when it is damaged. Sizes may be any but 0.
bool ReadPngHeader(const uint8_t* data, size_t size, PngHeader* header);

// Takes over a palette or transparency chunk; any other one is left alone. False when it is damaged.
bool TakeFormatChunk(const PngChunk& chunk, PngFormat* format);

// Decodes compressed data, all of a picture, to RGBA. `indices` gets the palette's indices when the picture
// has a palette and all of them are in it, else becomes empty; it may be null. Returns what is wrong as a
// clause, null for nothing.
const char* DecodePngPixels(const PngFormat& format, int width, int height, const PackedParts& data,
                            std::vector<uint8_t>* rgba, std::vector<uint8_t>* indices);

}  // namespace kfx
