// SPDX-License-Identifier: MIT
// WorkingImage: the one kind of image that effects and builder work on, a packed device-independent bitmap in
// one movable block: 40-byte header, full colour table for 1, 4 and 8 bits, then rows bottom-up, padded to 4
// bytes. Pixel values are COLORREFs (red in the low byte) above 8 bits and colour-table indices otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/memory_guards.h"

namespace kfx {

using ImageHandle = MemoryHandle;  // of a block that holds a WorkingImage

#pragma pack(push, 1)
struct WorkingImage {
    uint32_t headerSize;  // 40
    int32_t width;
    int32_t height;  // positive: rows bottom-up
    uint16_t planes;
    uint16_t bitCount;
    uint32_t compression;
    uint32_t imageSize;  // bytes of all rows
    int32_t horizontalResolution;
    int32_t verticalResolution;
    uint32_t colorsUsed;
    uint32_t colorsImportant;
};
#pragma pack(pop)
static_assert(sizeof(WorkingImage) == 40, "WorkingImage");
static_assert(offsetof(WorkingImage, width) == 4, "WorkingImage.width");
static_assert(offsetof(WorkingImage, height) == 8, "WorkingImage.height");
static_assert(offsetof(WorkingImage, planes) == 12, "WorkingImage.planes");
static_assert(offsetof(WorkingImage, bitCount) == 14, "WorkingImage.bitCount");
static_assert(offsetof(WorkingImage, compression) == 16, "WorkingImage.compression");
static_assert(offsetof(WorkingImage, imageSize) == 20, "WorkingImage.imageSize");
static_assert(offsetof(WorkingImage, horizontalResolution) == 24, "WorkingImage.horizontalResolution");
static_assert(offsetof(WorkingImage, verticalResolution) == 28, "WorkingImage.verticalResolution");
static_assert(offsetof(WorkingImage, colorsUsed) == 32, "WorkingImage.colorsUsed");
static_assert(offsetof(WorkingImage, colorsImportant) == 36, "WorkingImage.colorsImportant");

constexpr uint32_t kNoPixel = 0xFFFFFFFFu;  // what reading outside an image answers: -1
constexpr size_t kPaletteBytes = 768;       // a palette buffer: 256 red-green-blue triples

constexpr uint32_t Rgb(uint32_t red, uint32_t green, uint32_t blue) { return red | green << 8 | blue << 16; }
constexpr uint32_t RedOf(uint32_t color) { return color & 255; }
constexpr uint32_t GreenOf(uint32_t color) { return color >> 8 & 255; }
constexpr uint32_t BlueOf(uint32_t color) { return color >> 16 & 255; }

// Bytes of one row of `width` pixels, padded to a multiple of 4.
constexpr size_t RowStride(int32_t width, int32_t bitCount) {
    return (static_cast<size_t>(width) * static_cast<size_t>(bitCount) + 31) / 32 * 4;
}

// A new zero-filled image. The depth request 1 gives 1 bit, 2..4 give 4, 5..8 give 8, 9..24 give 24, anything
// else 32 bits per pixel. `palette` is red-green-blue triples, one for every colour-table entry, or null. The
// caller owns the handle. Null: a side below 1, a picture of 2 GiB or more, or memory ran out.
ImageHandle CreateDib(int32_t width, int32_t height, const uint8_t* palette, int32_t depthRequest);

// The pixel at column x and row y (0 is the top row) of a locked image; kNoPixel outside it or at a depth
// other than 1, 4, 8, 24 or 32. For edges and tests: inner loops walk rows.
uint32_t GetDibPixel(const WorkingImage* image, int32_t x, int32_t y);

// Writes a pixel; nothing happens outside the image.
void SetDibPixel(WorkingImage* image, int32_t x, int32_t y, uint32_t value);

// Bytes of the full colour table that stands between header and rows.
inline size_t ColorTableBytes(const WorkingImage* image) {
    return image->bitCount <= 8 ? size_t{4} << image->bitCount : 0;
}
inline size_t StrideOf(const WorkingImage* image) { return RowStride(image->width, image->bitCount); }

inline uint8_t* ColorTableOf(WorkingImage* image) {
    return reinterpret_cast<uint8_t*>(image) + sizeof *image;
}
inline const uint8_t* ColorTableOf(const WorkingImage* image) {
    return reinterpret_cast<const uint8_t*>(image) + sizeof *image;
}
inline uint8_t* PixelsOf(WorkingImage* image) { return ColorTableOf(image) + ColorTableBytes(image); }
inline const uint8_t* PixelsOf(const WorkingImage* image) {
    return ColorTableOf(image) + ColorTableBytes(image);
}

// The row stored at position r: r = 0 is the bottom row of the picture.
inline uint8_t* StoredRow(WorkingImage* image, int32_t r) {
    return PixelsOf(image) + static_cast<size_t>(r) * StrideOf(image);
}
inline const uint8_t* StoredRow(const WorkingImage* image, int32_t r) {
    return PixelsOf(image) + static_cast<size_t>(r) * StrideOf(image);
}
// The row at picture row y: y = 0 is the top row.
inline uint8_t* PictureRow(WorkingImage* image, int32_t y) { return StoredRow(image, image->height - 1 - y); }
inline const uint8_t* PictureRow(const WorkingImage* image, int32_t y) {
    return StoredRow(image, image->height - 1 - y);
}

// The colour table of an image of 8 bits or fewer as red-green-blue triples, the rest of the 768 bytes zero;
// all zero for deeper images.
void ReadColorTable(const WorkingImage* image, uint8_t palette[kPaletteBytes]);

// A new image of the same size, depth and colour table with all pixels zero. Null: memory ran out.
ImageHandle CreateLike(const WorkingImage* image);

// A new image with the same header, colour table and rows. Null: memory ran out.
ImageHandle DuplicateImage(const WorkingImage* image);

// A new 24-bit image of the same size; the source stays. 1-bit pictures become black and white whatever their
// colour table says. Null: the source cannot be locked, or memory ran out.
ImageHandle ConvertTo24Bits(ImageHandle source);

// Holds an image locked for its scope. Test it before use: false when the lock failed.
struct ImageLock {
    explicit ImageLock(ImageHandle handle)
        : memory(handle), image(static_cast<WorkingImage*>(LockMemory(handle))) {}
    ~ImageLock() {
        if (image) UnlockMemory(memory);
    }
    ImageLock(const ImageLock&) = delete;
    ImageLock& operator=(const ImageLock&) = delete;
    explicit operator bool() const { return image != nullptr; }
    WorkingImage* operator->() const { return image; }

    const MemoryHandle memory;
    WorkingImage* const image;
};

// A new image, owned and locked for its scope, unless it is released to the caller. Test it before use: false
// when there was no memory for it or the lock failed.
struct NewImage {
    explicit NewImage(ImageHandle made) : owner(made), lock(made), image(lock.image) {}
    explicit operator bool() const { return image != nullptr; }
    WorkingImage* operator->() const { return image; }
    ImageHandle Release() { return owner.Release(); }

    MemoryOwner owner;
    const ImageLock lock;
    WorkingImage* const image;
};

}  // namespace kfx
