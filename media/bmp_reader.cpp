// SPDX-License-Identifier: MIT
// Windows bitmap files: 1, 4, 8, 16, 24 and 32 bits a pixel, either row order, with plain, run-length (8 and
// 4 bits) or bit-field storage. None of the libraries in use reads them.
#include <algorithm>

#include "media/little_endian.h"
#include "media/readers.h"

namespace kfx {
namespace {

constexpr size_t kFileHeaderSize = 14;
constexpr uint32_t kCoreHeaderSize = 12;
constexpr uint32_t kInfoHeaderSize = 40;
constexpr uint32_t kInfoHeaderWithAlphaMaskSize = 56;

enum Compression : uint32_t {
    kPlain = 0,
    kRunLength8 = 1,
    kRunLength4 = 2,
    kBitFields = 3,
    kAlphaBitFields = 6,
};

struct BmpHeader {
    uint32_t headerSize = 0;
    int width = 0;
    int height = 0;
    bool topDown = false;
    unsigned bitCount = 0;
    uint32_t compression = kPlain;
    uint32_t masks[4] = {};  // red, green, blue, alpha
    size_t pixelOffset = 0;
    std::vector<RgbColor> palette;
};

// Sizes, order and storage from either kind of header; false when no file of this kind has such values.
bool ReadSizes(const uint8_t* info, BmpHeader* header) {
    if (header->headerSize == kCoreHeaderSize) {
        header->width = static_cast<int>(LittleWord16(info + 4));
        header->height = static_cast<int>(LittleWord16(info + 6));
        header->bitCount = LittleWord16(info + 10);
    } else {
        const auto width = static_cast<int32_t>(LittleWord32(info + 4));
        const auto height = static_cast<int32_t>(LittleWord32(info + 8));
        if (width < 0 || height == INT32_MIN) return false;
        header->width = width;
        header->height = height < 0 ? -height : height;
        header->topDown = height < 0;
        header->bitCount = LittleWord16(info + 14);
        header->compression = LittleWord32(info + 16);
    }
    return header->width > 0 && header->height > 0;
}

bool IsKnownStorage(const BmpHeader& header) {
    switch (header.compression) {
        case kPlain:
            return header.bitCount == 1 || header.bitCount == 4 || header.bitCount == 8 ||
                   header.bitCount == 16 || header.bitCount == 24 || header.bitCount == 32;
        case kRunLength8:
            return header.bitCount == 8 && !header.topDown;
        case kRunLength4:
            return header.bitCount == 4 && !header.topDown;
        case kBitFields:
        case kAlphaBitFields:
            return header.bitCount == 16 || header.bitCount == 32;
        default:
            return false;
    }
}

// Later headers contain the masks; the 40-byte header is followed by them.
bool ReadMasks(const uint8_t* data, size_t size, BmpHeader* header) {
    if (header->compression == kPlain) {
        const uint32_t bits16[] = {0x7C00, 0x03E0, 0x001F, 0};
        const uint32_t bits32[] = {0xFF0000, 0x00FF00, 0x0000FF, 0};
        std::copy_n(header->bitCount == 16 ? bits16 : bits32, 4, header->masks);
        return true;
    }
    const bool hasAlpha =
        header->compression == kAlphaBitFields || header->headerSize >= kInfoHeaderWithAlphaMaskSize;
    const size_t count = hasAlpha ? 4 : 3;
    const size_t start = kFileHeaderSize + kInfoHeaderSize;
    if (size < start + 4 * count) return false;
    for (size_t i = 0; i < count; ++i) header->masks[i] = LittleWord32(data + start + 4 * i);
    return true;
}

// Colours follow the header, which lies in the file, or the masks when masks follow it; a count of 0 means
// all.
bool ReadPalette(const uint8_t* data, size_t size, BmpHeader* header) {
    if (header->bitCount > 8) return true;
    const bool isCore = header->headerSize == kCoreHeaderSize;
    const size_t entrySize = isCore ? 3 : 4;
    const size_t start = kFileHeaderSize + header->headerSize;
    size_t count = size_t{1} << header->bitCount;
    if (!isCore) {
        const size_t used = LittleWord32(data + kFileHeaderSize + 32);
        if (used != 0) count = std::min(used, count);
    }
    // The pixels may begin before a full-length palette would end.
    if (header->pixelOffset > start) count = std::min(count, (header->pixelOffset - start) / entrySize);
    if (count == 0 || (size - start) / entrySize < count) return false;
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* entry = data + start + entrySize * i;
        header->palette.push_back({entry[2], entry[1], entry[0]});
    }
    return true;
}

bool ReadHeader(const uint8_t* data, size_t size, BmpHeader* header) {
    if (size < kFileHeaderSize + kCoreHeaderSize) return false;
    header->pixelOffset = LittleWord32(data + 10);
    header->headerSize = LittleWord32(data + kFileHeaderSize);
    if (header->headerSize != kCoreHeaderSize && header->headerSize < kInfoHeaderSize) return false;
    if (header->headerSize > size - kFileHeaderSize || header->pixelOffset > size) return false;
    return ReadSizes(data + kFileHeaderSize, header) && IsKnownStorage(*header) &&
           (header->bitCount < 16 || header->bitCount == 24 || ReadMasks(data, size, header)) &&
           ReadPalette(data, size, header);
}

// Where a channel stands in a pixel's value.
struct Channel {
    uint32_t mask;
    unsigned shift;
    uint64_t range;
};

Channel MakeChannel(uint32_t mask) {
    unsigned shift = 0;
    while (mask != 0 && (mask >> shift & 1) == 0) ++shift;
    return {mask, shift, uint64_t{mask >> shift}};
}

// The channel's level stretched to 0 to 255; `absent` when the file has no such channel.
uint8_t LevelOf(const Channel& channel, uint32_t value, uint8_t absent) {
    if (channel.mask == 0) return absent;
    const uint64_t level = (value & channel.mask) >> channel.shift;
    return static_cast<uint8_t>((level * 255 + channel.range / 2) / channel.range);
}

// Bytes of a row in the file, when it is not run-length storage.
size_t StoredStride(const BmpHeader& header) {
    return (static_cast<size_t>(header.width) * header.bitCount + 31) / 32 * 4;
}

// Run-length storage may end anywhere.
bool HasAllRows(const BmpHeader& header, size_t size) {
    const bool isRunLength = header.compression == kRunLength8 || header.compression == kRunLength4;
    return isRunLength || size / StoredStride(header) >= static_cast<size_t>(header.height);
}

uint8_t* RowOf(const BmpHeader& header, std::vector<uint8_t>* pixels, size_t bytes, int storedRow) {
    const int row = header.topDown ? storedRow : header.height - 1 - storedRow;
    return pixels->data() + bytes * static_cast<size_t>(row) * static_cast<size_t>(header.width);
}

void DecodeColors(const BmpHeader& header, const uint8_t* data, std::vector<uint8_t>* pixels) {
    const size_t stride = StoredStride(header);
    const unsigned bytes = header.bitCount / 8;
    const Channel channels[] = {MakeChannel(header.masks[0]), MakeChannel(header.masks[1]),
                                MakeChannel(header.masks[2]), MakeChannel(header.masks[3])};
    for (int y = 0; y < header.height; ++y, data += stride) {
        uint8_t* target = RowOf(header, pixels, 4, y);
        const uint8_t* source = data;
        for (int x = 0; x < header.width; ++x, source += bytes, target += 4) {
            if (bytes == 3) {
                target[0] = source[2];
                target[1] = source[1];
                target[2] = source[0];
                target[3] = 255;
                continue;
            }
            const uint32_t value = bytes == 2 ? LittleWord16(source) : LittleWord32(source);
            for (int channel = 0; channel < 4; ++channel)
                target[channel] = LevelOf(channels[channel], value, channel == 3 ? 255 : 0);
        }
    }
}

void DecodePlainIndices(const BmpHeader& header, const uint8_t* data, std::vector<uint8_t>* indices) {
    const size_t stride = StoredStride(header);
    const unsigned perByte = 8 / header.bitCount;
    const unsigned mask = (1u << header.bitCount) - 1;
    for (int y = 0; y < header.height; ++y, data += stride) {
        uint8_t* target = RowOf(header, indices, 1, y);
        for (unsigned x = 0; x < static_cast<unsigned>(header.width); ++x) {
            const unsigned shift = 8 - header.bitCount * (x % perByte + 1);
            target[x] = static_cast<uint8_t>(data[x / perByte] >> shift & mask);
        }
    }
}

// Run-length storage: pairs of count and value; a count of 0 announces the end of a row (0), the end of the
// picture (1), a jump (2, followed by its x and y) or that many single values, padded to 16 bits. Values are
// bytes, or two pixels each with 4 bits. Pixels that are jumped over keep index 0; a missing end is no
// damage.
void DecodeRunLength(const BmpHeader& header, const uint8_t* data, size_t size,
                     std::vector<uint8_t>* indices) {
    int x = 0;
    int y = 0;
    const bool halves = header.bitCount == 4;
    const auto put = [&](uint8_t value, unsigned position) {
        if (halves) value = position % 2 == 0 ? value >> 4 : value & 15;
        if (x < header.width) RowOf(header, indices, 1, y)[x++] = value;
    };
    size_t at = 0;
    while (size - at >= 2 && y < header.height) {
        const unsigned count = data[at];
        const uint8_t value = data[at + 1];
        at += 2;
        if (count > 0) {
            for (unsigned i = 0; i < count; ++i) put(value, i);
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return;
        } else if (value == 2) {
            if (size - at < 2) return;
            x = std::min(x + data[at], header.width);
            y += data[at + 1];
            at += 2;
        } else {
            const size_t bytes = halves ? (value + 1u) / 2 : value;
            if (size - at < bytes) return;
            for (unsigned i = 0; i < value; ++i) put(data[at + (halves ? i / 2 : i)], i);
            at = std::min(size, at + bytes + bytes % 2);
        }
    }
}

void DecodeIndices(const BmpHeader& header, const uint8_t* data, size_t size, Frame* frame) {
    frame->indices.assign(frame->pixels.size() / 4, 0);
    if (header.compression == kPlain)
        DecodePlainIndices(header, data, &frame->indices);
    else
        DecodeRunLength(header, data, size, &frame->indices);
    frame->indexed = true;
    for (size_t i = 0; i < frame->indices.size(); ++i) {
        const bool known = frame->indices[i] < header.palette.size();
        const RgbColor color = known ? header.palette[frame->indices[i]] : RgbColor();
        uint8_t* pixel = frame->pixels.data() + 4 * i;
        pixel[0] = color.red;
        pixel[1] = color.green;
        pixel[2] = color.blue;
        pixel[3] = 255;
        if (!known) frame->indexed = false;
    }
    if (!frame->indexed) frame->indices = {};
}

}  // namespace

bool ReadBmp(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    BmpHeader header;
    if (!ReadHeader(data, size, &header)) {
        *error = "the BMP file is damaged or of an unknown kind";
        return false;
    }
    if (!SpendPixels(budget, static_cast<uint64_t>(header.width), static_cast<uint64_t>(header.height),
                     error))
        return false;
    const uint8_t* stored = data + header.pixelOffset;
    const size_t storedSize = size - header.pixelOffset;
    if (!HasAllRows(header, storedSize)) {
        *error = "the BMP file ends before its last row";
        return false;
    }
    animation->width = header.width;
    animation->height = header.height;
    Frame frame;
    frame.pixels.resize(size_t{4} * static_cast<size_t>(header.width) * static_cast<size_t>(header.height));
    if (header.bitCount > 8)
        DecodeColors(header, stored, &frame.pixels);
    else
        DecodeIndices(header, stored, storedSize, &frame);
    NoteTransparency(&frame);
    if (header.bitCount <= 8) {
        animation->hasGlobalPalette = true;
        animation->globalPalette = header.palette;
    }
    animation->frames.push_back(std::move(frame));
    return true;
}

}  // namespace kfx
