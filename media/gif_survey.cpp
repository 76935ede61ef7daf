// SPDX-License-Identifier: MIT
#include "media/gif_survey.h"

#include <algorithm>

#include "media/little_endian.h"

namespace kfx {
namespace {

constexpr size_t kScreenEnd = 13;
constexpr size_t kDescriptorSize = 10;
constexpr uint8_t kImageSeparator = 0x2C;
constexpr uint8_t kExtensionIntroducer = 0x21;

int SideAt(const uint8_t* bytes) { return static_cast<int>(LittleWord16(bytes)); }

size_t PaletteBytes(uint8_t flags) { return flags & 0x80 ? size_t{6} << (flags & 7) : 0; }

// Moves behind a chain of blocks. False when the file ends before the chain does: `*at` is then the offset of
// the block that is cut, or the file's size.
bool SkipBlocks(const uint8_t* data, size_t size, size_t* at) {
    while (*at < size && data[*at] != 0) {
        if (size - *at <= data[*at]) return false;
        *at += size_t{1} + data[*at];
    }
    if (*at >= size) return false;
    ++*at;
    return true;
}

// Whether an end code, or the end of the data, stands before the first pixel. Behind the code size at `codes`
// is a whole chain of blocks.
bool EndsBeforePixels(const uint8_t* data, size_t codes) {
    constexpr unsigned kLargestCodeSize = 8;
    size_t at = codes + 1;
    if (data[codes] > kLargestCodeSize) return data[at] == 0;
    const uint32_t clear = 1u << data[codes];
    const unsigned bits = data[codes] + 1u;
    uint32_t window = 0;
    unsigned count = 0;
    for (; data[at] != 0; at += size_t{1} + data[at]) {
        for (size_t i = at + 1; i <= at + data[at]; ++i) {
            window |= static_cast<uint32_t>(data[i]) << count;
            for (count += 8; count >= bits; count -= bits, window >>= bits) {
                const uint32_t code = window & (2 * clear - 1);
                if (code != clear) return code == clear + 1;
            }
        }
    }
    return true;
}

void AddImage(const Rectangle& place, GifSurvey* survey) {
    const auto canvas = static_cast<uint64_t>(survey->width) * static_cast<uint64_t>(survey->height);
    const auto image = static_cast<uint64_t>(place.width) * static_cast<uint64_t>(place.height);
    if (image > canvas) survey->excessPixels += image;
    ++survey->images;
}

}  // namespace

bool ReadGifImageHeader(const uint8_t* data, size_t size, size_t at, GifImageHeader* header) {
    if (size - at < kDescriptorSize) return false;
    header->place = {.left = SideAt(data + at + 1),
                     .top = SideAt(data + at + 3),
                     .width = SideAt(data + at + 5),
                     .height = SideAt(data + at + 7)};
    header->codes = at + kDescriptorSize + PaletteBytes(data[at + kDescriptorSize - 1]);
    return header->codes < size;
}

bool IsEmptyGifImage(const uint8_t* data, size_t size, const GifImageHeader& header, size_t* end) {
    *end = header.codes + 1;
    const bool isWhole = SkipBlocks(data, size, end);
    if (!isWhole) *end = size;
    return isWhole &&
           (header.place.width == 0 || header.place.height == 0 || EndsBeforePixels(data, header.codes));
}

GifSurvey SurveyGif(const uint8_t* data, size_t size) {
    GifSurvey survey;
    if (size < kScreenEnd) {
        survey.cut = true;
        return survey;
    }
    survey.width = SideAt(data + 6);
    survey.height = SideAt(data + 8);
    size_t at = kScreenEnd + PaletteBytes(data[10]);
    while (at < size) {
        GifImageHeader image;
        const bool isImage = data[at] == kImageSeparator;
        if (!isImage && data[at] != kExtensionIntroducer) return survey;
        if (isImage && !ReadGifImageHeader(data, size, at, &image)) {
            survey.cut = true;
            return survey;
        }
        if (isImage) {
            const Rectangle& place = image.place;
            const bool hasArea = place.width > 0 && place.height > 0;
            const bool isFirst = survey.images == 0 || survey.width == 0 || survey.height == 0;
            if (isFirst && hasArea) {
                survey.width = std::max(survey.width, place.left + place.width);
                survey.height = std::max(survey.height, place.top + place.height);
            }
            AddImage(place, &survey);
        }
        at = isImage ? image.codes + 1 : at + 2;
        if (!SkipBlocks(data, size, &at)) {
            if (at < size) survey.cutBlock = at;
            survey.cut = true;
            return survey;
        }
    }
    survey.cut = at > size;
    return survey;
}

}  // namespace kfx
