// SPDX-License-Identifier: MIT
#include "commands/source_block.h"

#include <algorithm>
#include <cstring>

#include "host/animation_layout.h"

namespace kfx::commands {
namespace {

constexpr size_t kEndBytes = 4;

void Put32(uint8_t* bytes, size_t value) {
    const auto word = static_cast<uint32_t>(value);
    std::memcpy(bytes, &word, sizeof word);
}

void PutTag(uint8_t* bytes, const char* tag) {
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(tag[i]);
}

void Put16(uint8_t* bytes, size_t value) {
    const auto word = static_cast<uint16_t>(value);
    std::memcpy(bytes, &word, sizeof word);
}

bool AllIndexed(const Animation& animation) {
    return animation.hasGlobalPalette &&
           std::all_of(animation.frames.begin(), animation.frames.end(),
                       [](const Frame& frame) { return frame.indexed && !frame.transparent; });
}

size_t GlobalColors(const Animation& animation) {
    return animation.hasGlobalPalette ? std::min<size_t>(animation.globalPalette.size(), 256) : 0;
}

// Entries of the palette that is handed over. To a palette of one or two colours the plug-in would remap by
// luminance, as to black and white, so that both could become one; black entries fill it up, which the
// remapping to a longer palette has behind its end, too.
size_t HandedColors(const Animation& animation) {
    constexpr size_t kLeast = 3;
    const size_t colors = GlobalColors(animation);
    return colors == 0 ? 0 : std::max(colors, kLeast);
}

// Header and palette, up to the first frame.
size_t StartBytes(const Animation& animation) { return kAnimationHeaderBytes + 3 * HandedColors(animation); }

size_t RowBytes(const Animation& animation, bool indexed) {
    return (static_cast<size_t>(animation.width) * (indexed ? 8 : 24) + 31) / 32 * 4;
}

size_t BitmapBytes(const Animation& animation, bool indexed) {
    return kBitmapHeaderBytes + (indexed ? 1024 : 0) +
           RowBytes(animation, indexed) * static_cast<size_t>(animation.height);
}

void PutBitmapHeader(const Animation& animation, bool indexed, uint8_t* bitmap) {
    Put32(bitmap, kBitmapHeaderBytes);
    Put32(bitmap + 4, static_cast<size_t>(animation.width));
    Put32(bitmap + 8, static_cast<size_t>(animation.height));
    Put16(bitmap + 12, 1);
    Put16(bitmap + 14, indexed ? 8 : 24);
    Put32(bitmap + 20, RowBytes(animation, indexed) * static_cast<size_t>(animation.height));
    Put32(bitmap + 32, indexed ? 256 : 0);
    Put32(bitmap + 36, indexed ? 256 : 0);
    if (!indexed) return;
    uint8_t* entry = bitmap + kBitmapHeaderBytes;
    for (size_t i = 0; i < GlobalColors(animation); ++i, entry += 4) {
        const RgbColor color = animation.globalPalette[i];
        entry[0] = color.blue;
        entry[1] = color.green;
        entry[2] = color.red;
    }
}

void PutIndexRows(const Animation& animation, const Frame& frame, uint8_t* rows) {
    const auto width = static_cast<size_t>(animation.width);
    const auto height = static_cast<size_t>(animation.height);
    const size_t stride = RowBytes(animation, true);
    for (size_t y = 0; y < height; ++y) {
        std::memcpy(rows + (height - 1 - y) * stride, frame.indices.data() + y * width, width);
    }
}

void PutColorRows(const Animation& animation, const Frame& frame, uint8_t* rows) {
    // Not the file's background colour: viewers ignore it, and in many files it is one of the picture's own.
    constexpr uint8_t kBehind = 255;
    const auto width = static_cast<size_t>(animation.width);
    const auto height = static_cast<size_t>(animation.height);
    const size_t stride = RowBytes(animation, false);
    const uint8_t* pixel = frame.pixels.data();
    for (size_t y = 0; y < height; ++y) {
        uint8_t* out = rows + (height - 1 - y) * stride;
        for (size_t x = 0; x < width; ++x, pixel += 4, out += 3) {
            // Half transparent pixels keep their own colour: their alpha comes back with the frame.
            const bool hidden = pixel[3] == 0;
            out[0] = hidden ? kBehind : pixel[2];
            out[1] = hidden ? kBehind : pixel[1];
            out[2] = hidden ? kBehind : pixel[0];
        }
    }
}

void PutFrame(const Animation& animation, const Frame& frame, bool indexed, uint8_t* block) {
    PutTag(block, "eMNA");
    Put32(block + 4, kImageBlockBytes);
    Put32(block + 16, BitmapBytes(animation, indexed));
    Put32(block + 24, static_cast<size_t>(frame.left));
    Put32(block + 28, static_cast<size_t>(frame.top));
    Put32(block + 32, static_cast<size_t>(frame.delay));
    Put32(block + 36, static_cast<size_t>(frame.disposal));
    uint8_t* bitmap = block + kImageBlockBytes;
    PutBitmapHeader(animation, indexed, bitmap);
    uint8_t* rows = bitmap + kBitmapHeaderBytes + (indexed ? 1024 : 0);
    if (indexed) {
        PutIndexRows(animation, frame, rows);
    } else {
        PutColorRows(animation, frame, rows);
    }
}

std::vector<uint8_t> AlphaOf(const Frame& frame) {
    std::vector<uint8_t> alpha(frame.pixels.size() / 4);
    for (size_t i = 0; i < alpha.size(); ++i) alpha[i] = frame.pixels[4 * i + 3];
    return alpha;
}

}  // namespace

bool HasOwnPalette(const Animation& animation) { return GlobalColors(animation) > 0; }

SourceRecord MakeRecordWithoutAlpha(const Animation& animation) {
    SourceRecord record;
    record.width = animation.width;
    record.height = animation.height;
    record.loopCount = animation.loopCount;
    record.ownPalette = HasOwnPalette(animation);
    record.hasBackground = animation.hasBackground;
    record.background = animation.background;
    record.comment = animation.comment;
    record.metadata = animation.metadata;
    for (const Frame& frame : animation.frames) {
        SourceFrame kept;
        kept.delay = frame.delay;
        kept.milliseconds = frame.milliseconds;
        record.transparent = record.transparent || frame.transparent;
        record.frames.push_back(std::move(kept));
    }
    return record;
}

SourceRecord MakeSourceRecord(const Animation& animation) {
    SourceRecord record = MakeRecordWithoutAlpha(animation);
    for (size_t i = 0; i < animation.frames.size(); ++i)
        if (animation.frames[i].transparent) record.frames[i].alpha = AlphaOf(animation.frames[i]);
    return record;
}

size_t AnimationBlockBytes(const Animation& animation) {
    const size_t bitmap = BitmapBytes(animation, AllIndexed(animation));
    if (bitmap > UINT32_MAX - kImageBlockBytes) return 0;
    return StartBytes(animation) + animation.frames.size() * (kImageBlockBytes + bitmap) + kEndBytes;
}

void WriteAnimationBlock(const Animation& animation, uint8_t* block) {
    const bool indexed = AllIndexed(animation);
    const size_t colors = GlobalColors(animation);
    const RgbColor back = animation.background;
    PutTag(block, "oMNA");
    Put32(block + 4, StartBytes(animation));
    block[12] = static_cast<uint8_t>((colors ? kFlagGlobalPalette : 0) |
                                     (animation.hasBackground ? kFlagBackground : 0));
    Put32(block + 16, animation.frames.size());
    Put32(block + 20, back.red | size_t{back.green} << 8 | size_t{back.blue} << 16);
    Put32(block + 24, static_cast<size_t>(animation.width));
    Put32(block + 28, static_cast<size_t>(animation.height));
    Put16(block + 36, HandedColors(animation));
    for (size_t i = 0; i < colors; ++i) {
        uint8_t* triple = block + kAnimationHeaderBytes + 3 * i;
        triple[0] = animation.globalPalette[i].red;
        triple[1] = animation.globalPalette[i].green;
        triple[2] = animation.globalPalette[i].blue;
    }
    uint8_t* next = block + StartBytes(animation);
    for (const Frame& frame : animation.frames) {
        PutFrame(animation, frame, indexed, next);
        next += kImageBlockBytes + BitmapBytes(animation, indexed);
    }
    PutTag(next, "xMNA");
}

}  // namespace kfx::commands
