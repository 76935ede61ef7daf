// SPDX-License-Identifier: MIT
#include "framework/working_image.h"

#include <cstring>

#include "framework/memory_guards.h"

namespace kfx {
namespace {

constexpr uint64_t kLargestImage =
    0x7FFFFFFF;  // the header's size field and every row offset stay signed 32-bit

int32_t BitCountOf(int32_t depthRequest) {
    if (depthRequest == 1) return 1;
    if (depthRequest >= 2 && depthRequest <= 4) return 4;
    if (depthRequest >= 5 && depthRequest <= 8) return 8;
    if (depthRequest >= 9 && depthRequest <= 24) return 24;
    return 32;
}

bool Contains(const WorkingImage* image, int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && x < image->width && y < image->height;
}

// Spreads one row into blue-green-red bytes through a 256-entry table of packed 0x00RRGGBB words.
void ExpandRow(const uint8_t* from, int32_t bitCount, int32_t width, const uint32_t* colors, uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, to += 3) {
        uint32_t index;
        if (bitCount == 8)
            index = from[x];
        else if (bitCount == 4)
            index = x & 1 ? from[x >> 1] & 15u : from[x >> 1] >> 4u;
        else
            index = from[x >> 3] >> (7 - (x & 7)) & 1u;
        const uint32_t color = colors[index];
        to[0] = static_cast<uint8_t>(color);
        to[1] = static_cast<uint8_t>(color >> 8);
        to[2] = static_cast<uint8_t>(color >> 16);
    }
}

// The colours of a colour table as 0x00RRGGBB words, which is their byte order in a 24-bit row.
void ReadColors(const WorkingImage* image, uint32_t colors[256]) {
    std::memset(colors, 0, 256 * sizeof *colors);
    if (image->bitCount == 1) {
        // Two-colour pictures are black and white here; their colour table is not consulted.
        colors[1] = 0xFFFFFF;
        return;
    }
    const uint8_t* table = ColorTableOf(image);
    for (size_t i = 0; i < ColorTableBytes(image) / 4; ++i, table += 4)
        colors[i] = table[0] | static_cast<uint32_t>(table[1]) << 8 | static_cast<uint32_t>(table[2]) << 16;
}

}  // namespace

ImageHandle CreateDib(int32_t width, int32_t height, const uint8_t* palette, int32_t depthRequest) {
    if (width < 1 || height < 1) return nullptr;
    const int32_t bitCount = BitCountOf(depthRequest);
    const uint32_t colors = bitCount <= 8 ? 1u << bitCount : 0;
    const uint64_t imageSize = uint64_t{RowStride(width, bitCount)} * static_cast<uint64_t>(height);
    const uint64_t bytes = sizeof(WorkingImage) + imageSize + 4 * uint64_t{colors};
    if (bytes > kLargestImage) return nullptr;

    NewImage made(AllocateMemory(static_cast<size_t>(bytes)));
    if (!made) return nullptr;
    made->headerSize = sizeof(WorkingImage);
    made->width = width;
    made->height = height;
    made->planes = 1;
    made->bitCount = static_cast<uint16_t>(bitCount);
    made->imageSize = static_cast<uint32_t>(imageSize);
    made->colorsUsed = colors;
    made->colorsImportant = colors;
    if (palette) {
        uint8_t* table = ColorTableOf(made.image);
        for (uint32_t i = 0; i < colors; ++i, table += 4, palette += 3) {
            table[0] = palette[2];
            table[1] = palette[1];
            table[2] = palette[0];
        }
    }
    return made.Release();
}

uint32_t GetDibPixel(const WorkingImage* image, int32_t x, int32_t y) {
    if (!Contains(image, x, y)) return kNoPixel;
    const uint8_t* row = PictureRow(image, y);
    const uint8_t* pixel = row;
    switch (image->bitCount) {
        case 1:
            return row[x >> 3] >> (7 - (x & 7)) & 1u;
        case 4:
            return x & 1 ? row[x >> 1] & 15u : row[x >> 1] >> 4u;
        case 8:
            return row[x];
        case 24:
            pixel += 3 * static_cast<size_t>(x);
            return Rgb(pixel[2], pixel[1], pixel[0]);
        case 32:
            pixel += 4 * static_cast<size_t>(x);
            return Rgb(pixel[2], pixel[1], pixel[0]) | static_cast<uint32_t>(pixel[3]) << 24;
        default:
            return kNoPixel;
    }
}

void SetDibPixel(WorkingImage* image, int32_t x, int32_t y, uint32_t value) {
    if (!Contains(image, x, y)) return;
    uint8_t* row = PictureRow(image, y);
    switch (image->bitCount) {
        case 1: {
            const auto mask = static_cast<uint8_t>(128 >> (x & 7));
            row[x >> 3] = static_cast<uint8_t>(value & 1 ? row[x >> 3] | mask : row[x >> 3] & ~mask);
            break;
        }
        case 4: {
            uint8_t* pair = row + (x >> 1);
            *pair = static_cast<uint8_t>(x & 1 ? (*pair & 0xF0) | (value & 15)
                                               : (*pair & 0x0F) | (value & 15) << 4);
            break;
        }
        case 8:
            row[x] = static_cast<uint8_t>(value);
            break;
        case 32:
        case 24: {
            uint8_t* pixel = row + static_cast<size_t>(x) * (image->bitCount / 8u);
            pixel[0] = static_cast<uint8_t>(BlueOf(value));
            pixel[1] = static_cast<uint8_t>(GreenOf(value));
            pixel[2] = static_cast<uint8_t>(RedOf(value));
            if (image->bitCount == 32) pixel[3] = static_cast<uint8_t>(value >> 24);
            break;
        }
        default:
            break;
    }
}

void ReadColorTable(const WorkingImage* image, uint8_t palette[kPaletteBytes]) {
    std::memset(palette, 0, kPaletteBytes);
    const uint8_t* table = ColorTableOf(image);
    for (size_t i = 0; i < ColorTableBytes(image) / 4; ++i, table += 4, palette += 3) {
        palette[0] = table[2];
        palette[1] = table[1];
        palette[2] = table[0];
    }
}

ImageHandle CreateLike(const WorkingImage* image) {
    uint8_t palette[kPaletteBytes];
    ReadColorTable(image, palette);
    return CreateDib(image->width, image->height, palette, image->bitCount);
}

ImageHandle DuplicateImage(const WorkingImage* image) {
    NewImage copy(CreateLike(image));
    if (!copy) return nullptr;
    std::memcpy(PixelsOf(copy.image), PixelsOf(image), StrideOf(image) * static_cast<size_t>(image->height));
    return copy.Release();
}

ImageHandle ConvertTo24Bits(ImageHandle source) {
    const ImageLock from(source);
    if (!from) return nullptr;
    NewImage to(CreateDib(from->width, from->height, nullptr, 24));
    if (!to) return nullptr;

    const auto width = static_cast<size_t>(from->width);
    uint32_t colors[256];
    if (from->bitCount <= 8) ReadColors(from.image, colors);
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* row = StoredRow(from.image, r);
        uint8_t* out = StoredRow(to.image, r);
        if (from->bitCount == 24)
            std::memcpy(out, row, 3 * width);
        else if (from->bitCount == 32)
            for (size_t x = 0; x < width; ++x) std::memcpy(out + 3 * x, row + 4 * x, 3);
        else
            ExpandRow(row, from->bitCount, from->width, colors, out);
    }
    return to.Release();
}

}  // namespace kfx
