// SPDX-License-Identifier: MIT
// The JPEG library behind functions that return. Where it finds an error it jumps; no jump leaves
// jpeg_decoder.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "media/animation.h"

namespace kfx {

// Why a picture cannot be decoded.
enum class JpegFault {
    None,
    Damaged,
    OtherKind,   // lossless, hierarchical, more than 8 bits a sample, or an unknown number of colours
    Sizeless,    // the height follows the picture's data, or is 0
    TooLarge,    // a side beyond what the library can hold
    ManyPasses,  // more passes over the picture than any writer makes
    NoMemory,
};

struct JpegDecoder;

struct JpegDecoderDeleter {
    void operator()(JpegDecoder* decoder) const;
};
using JpegDecoderOwner = std::unique_ptr<JpegDecoder, JpegDecoderDeleter>;

// A decoder of the file in memory, which outlives it.
JpegDecoderOwner MakeJpegDecoder(const uint8_t* data, size_t size);

// Reads up to the picture's data. The functions below hold after it has succeeded. Size, if it is known, can
// be asked for after a fault, too.
bool ReadJpegHeader(JpegDecoder* decoder);
uint32_t JpegWidth(const JpegDecoder& decoder);
uint32_t JpegHeight(const JpegDecoder& decoder);

// Whether the file ends where the picture's data should begin.
bool IsJpegEmpty(const JpegDecoder& decoder);

// Whether the file is so short that it cannot hold an eighth of its picture, even if that has one colour
// only.
bool IsJpegTooShort(const JpegDecoder& decoder);

// Rows are cyan, magenta, yellow and black, each 255 where there is no ink, instead of red, green, blue and
// 255.
bool IsJpegCmyk(const JpegDecoder& decoder);

// The file's comments, joined by line feeds, colour profile, EXIF and XMP.
bool ReadJpegMetadata(JpegDecoder* decoder, std::string* comment, Metadata* metadata);

// Allocates what the picture needs. A picture in several passes is read as a whole.
bool StartJpeg(JpegDecoder* decoder);

// The next row, four bytes a pixel; JpegHeight() times.
bool ReadJpegRow(JpegDecoder* decoder, uint8_t* row);

// Why the last of the functions above returned false.
JpegFault FaultOf(const JpegDecoder& decoder);

// Whether the end of the file was reached where more was needed.
bool IsJpegCut(const JpegDecoder& decoder);

// Whether what was decoded so far is not what the file's writer had: parts are missing or damaged.
bool IsJpegDamaged(const JpegDecoder& decoder);

}  // namespace kfx
