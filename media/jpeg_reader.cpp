// SPDX-License-Identifier: MIT
// JPEG stills: baseline and progressive, grey, YCbCr, RGB, CMYK and YCCK, turned as EXIF says.
#include <algorithm>
#include <utility>

#include "media/jpeg_decoder.h"
#include "media/orientation.h"
#include "media/readers.h"

namespace kfx {
namespace {

std::string FaultClause(JpegFault fault) {
    switch (fault) {
        case JpegFault::OtherKind:
            return "the JPEG file is of a kind that cannot be read (lossless, or more than 8 bits a sample)";
        case JpegFault::Sizeless:
            return "the JPEG file does not say how high its picture is";
        case JpegFault::TooLarge:
            return "the JPEG picture is too large: a side may have 65500 pixels";
        case JpegFault::ManyPasses:
            return "the JPEG file draws its picture in too many passes";
        case JpegFault::NoMemory:
            return "there is not enough memory for the picture";
        default:
            return "the JPEG file is damaged before its picture can be shown";
    }
}

// Light is what no ink takes away, and black takes of all colours. Files have no ink as 255, whatever they
// say of themselves; browsers show them so.
void ConvertCmyk(uint8_t* row, size_t width) {
    for (size_t x = 0; x < width; ++x, row += 4) {
        const unsigned black = row[3];
        for (int i = 0; i < 3; ++i) row[i] = static_cast<uint8_t>((row[i] * black + 127) / 255);
        row[3] = 255;
    }
}

// Where the pixels of a stored row go.
struct Path {
    ptrdiff_t start;
    ptrdiff_t step;
};

Path PathOf(const Orientation& orientation, ptrdiff_t width, ptrdiff_t height, ptrdiff_t storedRow) {
    const ptrdiff_t x = orientation.swapsSides ? storedRow : 0;
    const ptrdiff_t y = orientation.swapsSides ? 0 : storedRow;
    const ptrdiff_t column = orientation.mirrorsX ? width - 1 - x : x;
    const ptrdiff_t row = orientation.mirrorsY ? height - 1 - y : y;
    const ptrdiff_t stepX = orientation.mirrorsX ? -1 : 1;
    const ptrdiff_t stepY = orientation.mirrorsY ? -width : width;
    return {.start = row * width + column, .step = orientation.swapsSides ? stepY : stepX};
}

// Decodes the rows and puts each pixel where it belongs.
bool ReadRows(JpegDecoder* decoder, const Orientation& orientation, Animation* animation) {
    const size_t storedWidth = JpegWidth(*decoder);
    const size_t storedHeight = JpegHeight(*decoder);
    Frame frame;
    frame.pixels.resize(4 * storedWidth * storedHeight);
    std::vector<uint8_t> buffer;
    for (size_t y = 0; y < storedHeight; ++y) {
        const Path path = PathOf(orientation, animation->width, animation->height, static_cast<ptrdiff_t>(y));
        const bool inPlace = path.step == 1;
        if (!inPlace) buffer.resize(4 * storedWidth);
        uint8_t* const start = frame.pixels.data() + 4 * path.start;
        uint8_t* const row = inPlace ? start : buffer.data();
        if (!ReadJpegRow(decoder, row)) return false;
        if (IsJpegCmyk(*decoder)) ConvertCmyk(row, storedWidth);
        if (inPlace) continue;
        for (size_t x = 0; x < storedWidth; ++x)
            std::copy_n(row + 4 * x, 4, start + 4 * path.step * static_cast<ptrdiff_t>(x));
    }
    animation->frames.push_back(std::move(frame));
    return true;
}

// The file's length without its last marker, which the end of the file cut. The file begins with one.
size_t LengthBeforeLastMarker(const uint8_t* data, size_t size) {
    const auto isInData = [](uint8_t code) {
        return code == 0 || code == 0xFF || (code >= 0xD0 && code <= 0xD7);
    };
    size_t at = size - 2;
    while (data[at] != 0xFF || isInData(data[at + 1])) --at;
    return at;
}

// Null: `*error` says why not.
JpegDecoderOwner OpenJpeg(const uint8_t* data, size_t size, std::string* error) {
    JpegDecoderOwner decoder = MakeJpegDecoder(data, size);
    if (ReadJpegHeader(decoder.get()) && !IsJpegEmpty(*decoder)) return decoder;
    *error = FaultClause(FaultOf(*decoder));
    return nullptr;
}

}  // namespace

bool ReadJpeg(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
              std::string* error) {
    JpegDecoderOwner decoder = OpenJpeg(data, size, error);
    if (!decoder) return false;
    const uint32_t width = JpegWidth(*decoder);
    const uint32_t height = JpegHeight(*decoder);
    if (!SpendPixels(budget, width, height, error)) return false;
    if (IsJpegTooShort(*decoder)) {
        *error = FaultClause(JpegFault::Damaged);
        return false;
    }
    bool started = ReadJpegMetadata(decoder.get(), &animation->comment, &animation->metadata) &&
                   StartJpeg(decoder.get());
    if (!started && IsJpegCut(*decoder) && FaultOf(*decoder) == JpegFault::Damaged) {
        // The passes before the cut one are whole.
        decoder = OpenJpeg(data, LengthBeforeLastMarker(data, size), error);
        started = decoder && StartJpeg(decoder.get());
    }
    const int number = OrientationNumber(animation->metadata.exif);
    if (number > 1) animation->turnedFrom = number;
    const Orientation orientation = TakeOrientation(&animation->metadata);
    animation->width = static_cast<int>(orientation.swapsSides ? height : width);
    animation->height = static_cast<int>(orientation.swapsSides ? width : height);
    if (!started || !ReadRows(decoder.get(), orientation, animation)) {
        if (decoder) *error = FaultClause(FaultOf(*decoder));
        return false;
    }
    if (IsJpegDamaged(*decoder))
        animation->warning = "the file is damaged or cut; what is missing of the picture is grey or blurred";
    return true;
}

}  // namespace kfx
