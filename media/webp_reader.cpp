// SPDX-License-Identifier: MIT
#include <memory>

#include <webp/demux.h>

#include "media/loop_count.h"
#include "media/readers.h"

namespace kfx {
namespace {

constexpr size_t kRiffHeaderSize = 12;  // "RIFF", size, "WEBP"
constexpr size_t kChunkHeaderSize = 8;  // name, size
constexpr size_t kChunkPadding = 2;     // chunks begin at even offsets

struct DemuxerDeleter {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DemuxerDeleter>;

struct DecoderDeleter {
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};
using Decoder = std::unique_ptr<WebPAnimDecoder, DecoderDeleter>;

struct FrameIterator {
    WebPIterator at = {};
    ~FrameIterator() { WebPDemuxReleaseIterator(&at); }
};

uint32_t ReadU32(const uint8_t* bytes) {
    return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8 | static_cast<uint32_t>(bytes[2]) << 16 |
           static_cast<uint32_t>(bytes[3]) << 24;
}

// The complete chunks of a file that was cut, with a size that says so; empty when none is complete. The
// decoder refuses a file that ends before its announced size.
std::vector<uint8_t> CompleteChunks(const uint8_t* data, size_t size) {
    size_t end = kRiffHeaderSize;
    while (size - end >= kChunkHeaderSize) {
        const size_t content = ReadU32(data + end + 4);
        const size_t padded = content + content % kChunkPadding;
        if (padded > size - end - kChunkHeaderSize) break;
        end += kChunkHeaderSize + padded;
    }
    if (end == kRiffHeaderSize) return {};
    std::vector<uint8_t> whole(data, data + end);
    const auto riffSize = static_cast<uint32_t>(end - kChunkHeaderSize);
    for (unsigned i = 0; i < 4; ++i) whole[4 + i] = static_cast<uint8_t>(riffSize >> (8 * i));
    return whole;
}

struct ChunkIterator {
    WebPChunkIterator at = {};
    ~ChunkIterator() { WebPDemuxReleaseChunkIterator(&at); }
};

// The first chunk of this name; empty when there is none.
std::vector<uint8_t> ReadChunk(const WebPDemuxer* demuxer, const char* name) {
    ChunkIterator chunk;
    if (!WebPDemuxGetChunk(demuxer, name, 1, &chunk.at)) return {};
    return {chunk.at.chunk.bytes, chunk.at.chunk.bytes + chunk.at.chunk.size};
}

void ReadCanvas(const WebPDemuxer* demuxer, Animation* animation) {
    animation->width = static_cast<int>(WebPDemuxGetI(demuxer, WEBP_FF_CANVAS_WIDTH));
    animation->height = static_cast<int>(WebPDemuxGetI(demuxer, WEBP_FF_CANVAS_HEIGHT));
    animation->metadata = {.colorProfile = ReadChunk(demuxer, "ICCP"),
                           .exif = ReadChunk(demuxer, "EXIF"),
                           .xmp = ReadChunk(demuxer, "XMP ")};
    if ((WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) == 0) return;
    animation->loopCount = RepeatsOf(WebPDemuxGetI(demuxer, WEBP_FF_LOOP_COUNT));
    const uint32_t background = WebPDemuxGetI(demuxer, WEBP_FF_BACKGROUND_COLOR);  // 0xAARRGGBB
    animation->hasBackground = true;
    animation->background = {static_cast<uint8_t>(background >> 16), static_cast<uint8_t>(background >> 8),
                             static_cast<uint8_t>(background)};
}

// Decodes frames until the end, or until the first damaged one: then returns false.
bool ReadFrames(const WebPDemuxer* demuxer, WebPAnimDecoder* decoder, Animation* animation) {
    const size_t bytes = 4 * static_cast<size_t>(animation->width) * static_cast<size_t>(animation->height);
    const bool isAnimated = (WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0;
    FrameIterator frames;
    int carry = 0;
    bool more = WebPDemuxGetFrame(demuxer, 1, &frames.at) != 0;
    while (more) {
        uint8_t* canvas = nullptr;
        int endTime = 0;
        if (!WebPAnimDecoderGetNext(decoder, &canvas, &endTime)) return false;
        Frame frame;
        frame.pixels.assign(canvas, canvas + bytes);
        NoteTransparency(&frame);
        frame.left = frames.at.x_offset;
        frame.top = frames.at.y_offset;
        frame.disposal =
            frames.at.dispose_method == WEBP_MUX_DISPOSE_BACKGROUND ? kDisposalBackground : kDisposalKeep;
        frame.delay = HundredthsOf(frames.at.duration, &carry);
        if (isAnimated) frame.milliseconds = frames.at.duration;
        animation->frames.push_back(std::move(frame));
        more = WebPDemuxNextFrame(&frames.at) != 0;
    }
    return true;
}

}  // namespace

bool ReadWebp(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
              std::string* error) {
    const char* const kDamaged = "the WebP file is damaged";
    WebPData file = {data, size};
    Demuxer demuxer(WebPDemux(&file));
    std::vector<uint8_t> repaired;
    bool whole = true;
    if (!demuxer) {
        whole = false;
        repaired = CompleteChunks(data, size);
        file = {repaired.data(), repaired.size()};
        if (!repaired.empty()) demuxer.reset(WebPDemux(&file));
    }
    if (!demuxer || WebPDemuxGetI(demuxer.get(), WEBP_FF_FRAME_COUNT) == 0) {
        *error = kDamaged;
        return false;
    }
    const WebPDemuxer* headers = demuxer.get();
    if (!SpendFrames(budget, WebPDemuxGetI(headers, WEBP_FF_CANVAS_WIDTH),
                     WebPDemuxGetI(headers, WEBP_FF_CANVAS_HEIGHT),
                     WebPDemuxGetI(headers, WEBP_FF_FRAME_COUNT), error))
        return false;
    ReadCanvas(demuxer.get(), animation);

    WebPAnimDecoderOptions options;
    if (!WebPAnimDecoderOptionsInit(&options)) {
        *error = "the WebP decoder does not fit this program";
        return false;
    }
    options.color_mode = MODE_RGBA;
    const Decoder decoder(WebPAnimDecoderNew(&file, &options));
    if (!decoder) {
        *error = kDamaged;
        return false;
    }
    if (!ReadFrames(demuxer.get(), decoder.get(), animation)) whole = false;
    if (animation->frames.empty()) {
        *error = kDamaged;
        return false;
    }
    if (!whole) animation->warning = DamageWarning(animation->frames.size());
    return true;
}

}  // namespace kfx
