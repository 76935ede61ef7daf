// SPDX-License-Identifier: MIT
// Animated PNG files: each frame is a picture in the format of the whole file.
#include <algorithm>
#include <utility>

#include "media/apng.h"
#include "media/color_cache.h"
#include "media/gif_canvas.h"
#include "media/loop_count.h"
#include "media/png_notes.h"
#include "media/readers.h"

namespace kfx {
namespace {

struct ApngFrame {
    Rectangle place;
    int milliseconds = 0;
    int disposal = kApngKeep;
    int blend = kApngReplace;
    std::vector<uint8_t> data;  // compressed
};

struct ApngReader {
    Animation* animation;
    PngFormat format;             // of all frames
    std::vector<uint8_t> canvas;  // RGBA
    // Of each pixel of the canvas its palette entry, kOffPalette where there is none; empty when the file has
    // no palette.
    std::vector<int16_t> globalIndices;
    // Of colours that blending made lately, the palette entries.
    ColorCache entries;
    PngNoteReader notes;
    ApngFrame frame;
    bool hasFrame = false;
    uint32_t sequence = 0;  // of the next chunk that has a number
    int carry = 0;
};

// Calls `use` with the number of each pixel of the canvas in this place.
template <typename Use>
void ForEachCanvasPixel(const ApngReader& reader, const Rectangle& place, const Use& use) {
    for (int y = place.top; y < place.top + place.height; ++y) {
        const size_t row = static_cast<size_t>(y) * static_cast<size_t>(reader.animation->width);
        for (int x = place.left; x < place.left + place.width; ++x) use(row + static_cast<size_t>(x));
    }
}

// The next frame's place and time; false when they are damaged.
bool ReadFrameControl(ApngReader* reader, const PngChunk& chunk) {
    if (chunk.size != kFrameControlSize || !IsPngChunkWhole(chunk)) return false;
    if (BigWord32(chunk.data) != reader->sequence++) return false;
    const uint64_t width = BigWord32(chunk.data + 4);
    const uint64_t height = BigWord32(chunk.data + 8);
    const uint64_t left = BigWord32(chunk.data + 12);
    const uint64_t top = BigWord32(chunk.data + 16);
    const auto canvasWidth = static_cast<uint64_t>(reader->animation->width);
    const auto canvasHeight = static_cast<uint64_t>(reader->animation->height);
    if (width == 0 || height == 0 || left + width > canvasWidth || top + height > canvasHeight) return false;
    const uint32_t denominator = BigWord16(chunk.data + 22);
    const uint32_t parts = denominator == 0 ? 100 : denominator;
    reader->frame = {
        .place = {.left = static_cast<int>(left),
                  .top = static_cast<int>(top),
                  .width = static_cast<int>(width),
                  .height = static_cast<int>(height)},
        .milliseconds = static_cast<int>((1000 * BigWord16(chunk.data + 20) + parts / 2) / parts),
        .disposal = chunk.data[24],
        .blend = chunk.data[25],
        .data = {}};
    reader->hasFrame = true;
    return reader->frame.disposal <= kApngPrevious && reader->frame.blend <= kApngOver;
}

// Draws a pixel over another one, both with straight alpha.
void BlendOver(const uint8_t* source, uint8_t* target) {
    const uint32_t own = 255u * source[3];
    const uint32_t behind = (255u - source[3]) * target[3];
    const uint32_t both = own + behind;
    if (both == 0) return;
    for (int i = 0; i < 3; ++i)
        target[i] = static_cast<uint8_t>((source[i] * own + target[i] * behind + both / 2) / both);
    target[3] = static_cast<uint8_t>((both + 127) / 255);
}

void DrawFrame(ApngReader* reader, const uint8_t* pixels) {
    const Rectangle& place = reader->frame.place;
    const bool over = reader->frame.blend == kApngOver;
    ForEachCanvasPixel(*reader, place, [&](size_t number) {
        uint8_t* const target = reader->canvas.data() + 4 * number;
        if (over)
            BlendOver(pixels, target);
        else
            std::copy_n(pixels, 4, target);
        pixels += 4;
    });
}

// The palette entry of a colour that blending made. Most of them occur again and again.
int16_t EntryOf(ApngReader* reader, const uint8_t* shown) {
    const RgbColor color = {.red = shown[0], .green = shown[1], .blue = shown[2]};
    const auto key = uint32_t{color.red} | uint32_t{color.green} << 8 | uint32_t{color.blue} << 16;
    ColorCache::Slot* const slot = SlotOf(&reader->entries, key);
    if (slot->color != key) {
        const int16_t entry = FindPaletteEntry(reader->format.palette, color);
        *slot = {.color = key, .value = static_cast<uint32_t>(entry)};
    }
    return static_cast<int16_t>(slot->value);
}

// The palette entries of the canvas where the frame was drawn. `indices` are the frame's own; empty when some
// of them are not in the palette.
void DrawIndices(ApngReader* reader, const uint8_t* pixels, const std::vector<uint8_t>& indices) {
    constexpr size_t kAlpha = 3;
    const bool over = reader->frame.blend == kApngOver;
    size_t i = 0;
    ForEachCanvasPixel(*reader, reader->frame.place, [&](size_t number) {
        const uint8_t alpha = pixels[4 * i + kAlpha];
        const uint8_t* const shown = reader->canvas.data() + 4 * number;
        int16_t* const entry = &reader->globalIndices[number];
        if (alpha == 255 && !indices.empty())
            *entry = indices[i];
        else if (shown[kAlpha] < 255)
            *entry = kOffPalette;
        else if (!over || alpha > 0)
            *entry = EntryOf(reader, shown);
        ++i;
    });
}

// Gives an opaque frame the palette entries of the canvas where each pixel has one.
void TakeIndices(const std::vector<int16_t>& entries, Frame* frame) {
    if (entries.empty() || frame->transparent) return;
    frame->indexed = std::all_of(entries.begin(), entries.end(), [](int16_t entry) { return entry >= 0; });
    if (frame->indexed) frame->indices.assign(entries.begin(), entries.end());
}

// What happens to the canvas after the time of the last frame. `before` is the canvas before it,
// `entriesBefore` its palette entries; they are only used where the canvas is restored.
void DisposeFrame(ApngReader* reader, std::vector<uint8_t> before, std::vector<int16_t> entriesBefore) {
    if (reader->frame.disposal == kApngPrevious) {
        reader->canvas = std::move(before);
        reader->globalIndices = std::move(entriesBefore);
    } else if (reader->frame.disposal == kApngBackground) {
        ForEachCanvasPixel(*reader, reader->frame.place, [&](size_t number) {
            std::fill_n(reader->canvas.data() + 4 * number, 4, uint8_t{0});
            if (!reader->globalIndices.empty()) reader->globalIndices[number] = kOffPalette;
        });
    }
}

// Adds the frame whose data are complete; false when they are damaged.
bool FinishFrame(ApngReader* reader) {
    if (!reader->hasFrame) return true;
    reader->hasFrame = false;
    const ApngFrame& given = reader->frame;
    const bool hasPalette = reader->format.colors == kPngPalette;
    std::vector<uint8_t> pixels;
    std::vector<uint8_t> indices;
    if (DecodePngPixels(reader->format, given.place.width, given.place.height,
                        {{given.data.data(), given.data.size()}}, &pixels,
                        hasPalette ? &indices : nullptr) != nullptr)
        return false;
    if (hasPalette && reader->animation->frames.empty()) {
        reader->globalIndices.assign(reader->canvas.size() / 4, kOffPalette);
        reader->animation->hasGlobalPalette = true;
        reader->animation->globalPalette = reader->format.palette;
    }
    const bool restores = given.disposal == kApngPrevious;
    std::vector<uint8_t> before = restores ? reader->canvas : std::vector<uint8_t>();
    std::vector<int16_t> entriesBefore = restores ? reader->globalIndices : std::vector<int16_t>();
    DrawFrame(reader, pixels.data());
    if (hasPalette) DrawIndices(reader, pixels.data(), indices);
    Frame frame;
    frame.pixels = reader->canvas;
    NoteTransparency(&frame);
    TakeIndices(reader->globalIndices, &frame);
    frame.left = given.place.left;
    frame.top = given.place.top;
    frame.partWidth = given.place.width;
    frame.partHeight = given.place.height;
    frame.disposal = given.disposal == kApngKeep         ? kDisposalKeep
                     : given.disposal == kApngBackground ? kDisposalBackground
                                                         : kDisposalPrevious;
    frame.milliseconds = given.milliseconds;
    frame.delay = HundredthsOf(given.milliseconds, &reader->carry);
    reader->animation->frames.push_back(std::move(frame));
    DisposeFrame(reader, std::move(before), std::move(entriesBefore));
    return true;
}

// False at damage.
bool ReadChunk(ApngReader* reader, const PngChunk& chunk) {
    switch (chunk.name) {
        case kPaletteChunk:
            // The frames so far have the entries of another one.
            if (!reader->animation->frames.empty()) return false;
            [[fallthrough]];
        case kTransparencyChunk:
            return TakeFormatChunk(chunk, &reader->format);
        case kFrameControlChunk:
            return FinishFrame(reader) && ReadFrameControl(reader, chunk);
        case kDataChunk:
            // Without control before it, the still picture is not part of the animation.
            if (!reader->hasFrame) return true;
            if (!IsPngChunkWhole(chunk)) return false;
            reader->frame.data.insert(reader->frame.data.end(), chunk.data, chunk.data + chunk.size);
            return true;
        case kFrameDataChunk:
            if (!reader->hasFrame || chunk.size < 4 || !IsPngChunkWhole(chunk)) return false;
            if (BigWord32(chunk.data) != reader->sequence++) return false;
            reader->frame.data.insert(reader->frame.data.end(), chunk.data + 4, chunk.data + chunk.size);
            return true;
        default:
            TakePngNote(chunk, reader->format, &reader->notes);
            return true;
    }
}

}  // namespace

bool IsAnimatedPng(const uint8_t* data, size_t size) {
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    bool announced = false;
    while (NextPngChunk(data, size, &at, &chunk)) {
        if (chunk.name == kDataChunk && !announced) return false;
        if (chunk.name == kAnimationChunk) announced = chunk.size == kAnimationChunkSize;
        if (chunk.name == kFrameControlChunk && announced) return true;
    }
    return false;
}

bool ReadAnimatedPng(const uint8_t* data, size_t size, const PngHeader& header, PixelBudget* budget,
                     Animation* animation, std::string* error) {
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    uint64_t frames = 0;
    while (NextPngChunk(data, size, &at, &chunk)) {
        frames += chunk.name == kFrameControlChunk;
        if (chunk.name == kAnimationChunk && chunk.size == kAnimationChunkSize)
            animation->loopCount = RepeatsOf(BigWord32(chunk.data + 4));
    }
    if (!SpendFrames(budget, header.width, header.height, frames, error)) return false;
    animation->width = static_cast<int>(header.width);
    animation->height = static_cast<int>(header.height);
    ApngReader reader = {.animation = animation,
                         .format = header.format,
                         .canvas = {},
                         .globalIndices = {},
                         .entries = {},
                         .notes = {.animation = animation},
                         .frame = {}};
    reader.canvas.resize(size_t{4} * header.width * header.height);
    at = kPngSignatureSize;
    bool whole = true;
    bool ended = false;
    while (whole && !ended && NextPngChunk(data, size, &at, &chunk)) {
        ended = chunk.name == kEndChunk;
        whole = ended ? FinishFrame(&reader) : ReadChunk(&reader, chunk);
    }
    if (!ended) {
        // The last frame of a cut file is whole when all of its data are there.
        if (whole) FinishFrame(&reader);
        whole = false;
    }
    if (animation->frames.empty()) {
        *error = "the PNG file is damaged before the end of its first frame";
        return false;
    }
    if (!whole) animation->warning = DamageWarning(animation->frames.size());
    return true;
}

}  // namespace kfx
