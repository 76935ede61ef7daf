// SPDX-License-Identifier: MIT
// Animated PNG files: each frame is the smaller of two forms of the part that changes.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <lodepng.h>

#include "media/animation_writer.h"
#include "media/apng.h"
#include "media/file_io.h"
#include "media/gif_canvas.h"
#include "media/gif_pictures.h"
#include "media/loop_count.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kMaxApngNumber = 65535;  // times are two numbers of 16 bits

const char* FaultOf(const Animation& animation) {
    if (animation.width < 1 || animation.height < 1) return "a PNG animation needs at least one pixel";
    if (animation.frames.empty()) return "a PNG animation needs at least one frame";
    const size_t bytes = 4 * static_cast<size_t>(animation.width) * static_cast<size_t>(animation.height);
    for (const Frame& frame : animation.frames)
        if (frame.pixels.size() != bytes) return "a PNG frame must cover the whole animation";
    return nullptr;
}

bool IsOpaque(const Animation& animation) {
    for (const Frame& frame : animation.frames)
        for (size_t i = 3; i < frame.pixels.size(); i += 4)
            if (frame.pixels[i] != 255) return false;
    return true;
}

struct FreeDeleter {
    void operator()(unsigned char* memory) const { std::free(memory); }
};

// The compressed data of a picture, all frames' in one colour type; false when memory ran out.
bool CompressPicture(const Bytes& rgba, const Rectangle& part, bool opaque, Bytes* data) {
    LodePNGState state;
    lodepng_state_init(&state);
    state.encoder.auto_convert = 0;
    state.info_png.color.colortype = opaque ? LCT_RGB : LCT_RGBA;
    unsigned char* encoded = nullptr;
    size_t size = 0;
    const unsigned code = lodepng_encode(&encoded, &size, rgba.data(), static_cast<unsigned>(part.width),
                                         static_cast<unsigned>(part.height), &state);
    lodepng_state_cleanup(&state);
    const std::unique_ptr<unsigned char, FreeDeleter> owner(encoded);
    data->clear();
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    while (code == 0 && NextPngChunk(encoded, size, &at, &chunk))
        if (chunk.name == kDataChunk) data->insert(data->end(), chunk.data, chunk.data + chunk.size);
    return code == 0;
}

struct StoredFrame {
    Rectangle part;
    int blend = kApngReplace;
    Bytes data;
};

// False when memory ran out. `before` is null for the first frame, which has to be whole.
bool StoreFrame(const Animation& animation, const Frame& frame, const Frame* before, bool opaque,
                StoredFrame* stored) {
    const auto isSame = [&](size_t pixel) {
        return std::memcmp(frame.pixels.data() + 4 * pixel, before->pixels.data() + 4 * pixel, 4) == 0;
    };
    stored->part = {.left = 0, .top = 0, .width = animation.width, .height = animation.height};
    if (before) {
        stored->part =
            BoundsOf(animation.width, animation.height, [&](size_t pixel) { return !isSame(pixel); });
        if (stored->part.width == 0) stored->part = {.left = 0, .top = 0, .width = 1, .height = 1};
    }
    Bytes replacing;
    Bytes over;
    bool canBeOver = before && !opaque;
    ForEachPixel(animation.width, stored->part, [&](size_t pixel) {
        const uint8_t* rgba = frame.pixels.data() + 4 * pixel;
        replacing.insert(replacing.end(), rgba, rgba + 4);
        if (!canBeOver) return;
        constexpr uint8_t kNothing[4] = {};
        const bool same = isSame(pixel);
        // What is neither opaque nor unchanged would be mixed with what is there.
        if (!same && rgba[3] != 255) canBeOver = false;
        over.insert(over.end(), same ? kNothing : rgba, (same ? kNothing : rgba) + 4);
    });
    if (!CompressPicture(replacing, stored->part, opaque, &stored->data)) return false;
    Bytes other;
    if (!canBeOver) return true;
    if (!CompressPicture(over, stored->part, opaque, &other)) return false;
    if (other.size() < stored->data.size()) {
        stored->data = std::move(other);
        stored->blend = kApngOver;
    }
    return true;
}

void PutFrameControl(Bytes* file, const StoredFrame& stored, const Frame& frame, uint32_t sequence) {
    Bytes control;
    PutBigWord32(&control, sequence);
    PutBigWord32(&control, static_cast<uint32_t>(stored.part.width));
    PutBigWord32(&control, static_cast<uint32_t>(stored.part.height));
    PutBigWord32(&control, static_cast<uint32_t>(stored.part.left));
    PutBigWord32(&control, static_cast<uint32_t>(stored.part.top));
    const int milliseconds = std::max(MillisecondsOf(frame), 0);
    const bool fits = milliseconds <= kMaxApngNumber;
    PutBigWord16(&control,
                 static_cast<uint32_t>(fits ? milliseconds : std::min(milliseconds / 10, kMaxApngNumber)));
    PutBigWord16(&control, fits ? 1000 : 100);
    control.push_back(kApngKeep);
    control.push_back(static_cast<uint8_t>(stored.blend));
    PutPngChunk(file, kFrameControlChunk, control);
}

bool EncodeChecked(const Animation& animation, Bytes* file) {
    const bool opaque = IsOpaque(animation);
    Bytes header;
    PutBigWord32(&header, static_cast<uint32_t>(animation.width));
    PutBigWord32(&header, static_cast<uint32_t>(animation.height));
    header.insert(header.end(), {8, static_cast<uint8_t>(opaque ? LCT_RGB : LCT_RGBA), 0, 0, 0});
    Bytes control;
    PutBigWord32(&control, static_cast<uint32_t>(animation.frames.size()));
    PutBigWord32(&control, TimesShown(animation.loopCount, INT_MAX));
    PutPngSignature(file);
    PutPngChunk(file, kHeaderChunk, header);
    PutPngChunk(file, kAnimationChunk, control);
    uint32_t sequence = 0;
    const Frame* before = nullptr;
    for (const Frame& frame : animation.frames) {
        StoredFrame stored;
        if (!StoreFrame(animation, frame, before, opaque, &stored)) return false;
        PutFrameControl(file, stored, frame, sequence++);
        Bytes data;
        if (before) PutBigWord32(&data, sequence++);
        data.insert(data.end(), stored.data.begin(), stored.data.end());
        PutPngChunk(file, before ? kFrameDataChunk : kDataChunk, data);
        before = &frame;
    }
    PutPngChunk(file, kEndChunk, {});
    return true;
}

}  // namespace

bool EncodeApng(const Animation& animation, Bytes* file, std::string* error) {
    file->clear();
    if (const char* fault = FaultOf(animation)) {
        *error = fault;
        return false;
    }
    try {
        if (EncodeChecked(animation, file)) return true;
    } catch (const std::bad_alloc&) {
    }
    *error = "there is not enough memory to write the PNG file";
    file->clear();
    return false;
}

bool WriteApng(const std::string& path, const Animation& animation, std::string* error) {
    const auto encode = [&animation](size_t, Bytes* file, std::string* clause) {
        return EncodeApng(animation, file, clause);
    };
    return WriteWholeFiles({path}, encode, error);
}

}  // namespace kfx
