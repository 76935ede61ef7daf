// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <new>

#include "media/animation_writer.h"
#include "media/apng.h"
#include "media/apng_frames.h"
#include "media/file_io.h"
#include "media/loop_count.h"
#include "media/png_notes.h"

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

void PutFrameControl(Bytes* file, const StoredFrame& stored, const Frame& frame, uint32_t sequence) {
    Bytes control;
    PutBigWord32(&control, sequence);
    PutBigWord32(&control, static_cast<uint32_t>(stored.place.width));
    PutBigWord32(&control, static_cast<uint32_t>(stored.place.height));
    PutBigWord32(&control, static_cast<uint32_t>(stored.place.left));
    PutBigWord32(&control, static_cast<uint32_t>(stored.place.top));
    const int milliseconds = std::max(MillisecondsOf(frame), 0);
    const bool fits = milliseconds <= kMaxApngNumber;
    PutBigWord16(&control,
                 static_cast<uint32_t>(fits ? milliseconds : std::min(milliseconds / 10, kMaxApngNumber)));
    PutBigWord16(&control, fits ? 1000 : 100);
    control.push_back(static_cast<uint8_t>(stored.disposal));
    control.push_back(static_cast<uint8_t>(stored.blend));
    PutPngChunk(file, kFrameControlChunk, control);
}

void EncodeChecked(const Animation& animation, const PngOptions& options, Bytes* file) {
    PngFormat format = ChooseApngFormat(animation);
    const std::vector<StoredFrame> frames = StoreFrames(animation, format, options);
    Bytes control;
    PutBigWord32(&control, static_cast<uint32_t>(frames.size()));
    PutBigWord32(&control, TimesShown(animation.loopCount, INT_MAX));
    PutPngHead(file, animation.width, animation.height, animation, &format);
    PutPngChunk(file, kAnimationChunk, control);
    uint32_t sequence = 0;
    for (size_t i = 0; i < frames.size(); ++i) {
        PutFrameControl(file, frames[i], animation.frames[i], sequence++);
        Bytes data;
        if (i > 0) PutBigWord32(&data, sequence++);
        data.insert(data.end(), frames[i].data.begin(), frames[i].data.end());
        PutPngChunk(file, i > 0 ? kFrameDataChunk : kDataChunk, data);
    }
    PutPngChunk(file, kEndChunk, {});
}

}  // namespace

bool EncodeApng(const Animation& animation, Bytes* file, std::string* error, const PngOptions& options) {
    file->clear();
    if (const char* fault = FaultOf(animation)) {
        *error = fault;
        return false;
    }
    try {
        EncodeChecked(animation, options, file);
        return true;
    } catch (const std::bad_alloc&) {
        *error = "there is not enough memory to write the PNG file";
        file->clear();
        return false;
    }
}

bool WriteApng(const std::string& path, const Animation& animation, std::string* error,
               const PngOptions& options) {
    const auto encode = [&](size_t, Bytes* file, std::string* clause) {
        return EncodeApng(animation, file, clause, options);
    };
    return WriteWholeFiles({path}, encode, error);
}

}  // namespace kfx
