// SPDX-License-Identifier: MIT
// WebP files. The library's reader of animations keeps two canvases besides the frames; here each frame is
// drawn into its own pixels, from those of the frame before, and blended as that reader does it.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include <webp/decode.h>
#include <webp/demux.h>

#include "media/gif_canvas.h"
#include "media/little_endian.h"
#include "media/loop_count.h"
#include "media/readers.h"
#include "media/recipe_note.h"

namespace kfx {
namespace {

constexpr size_t kRiffHeaderSize = 12;  // "RIFF", size, "WEBP"
constexpr size_t kChunkHeaderSize = 8;  // name, size
constexpr size_t kChunkPadding = 2;     // chunks begin at even offsets

struct DemuxerDeleter {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DemuxerDeleter>;

struct FrameIterator {
    WebPIterator at = {};
    ~FrameIterator() { WebPDemuxReleaseIterator(&at); }
};

// The complete chunks of a file that was cut, with a size that says so; empty when none is complete. The
// decoder refuses a file that ends before its announced size.
std::vector<uint8_t> CompleteChunks(const uint8_t* data, size_t size) {
    size_t end = kRiffHeaderSize;
    while (size - end >= kChunkHeaderSize) {
        const size_t content = LittleWord32(data + end + 4);
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
    const std::vector<uint8_t> recipe = ReadChunk(demuxer, kRecipeChunk);
    animation->recipe.assign(recipe.begin(), recipe.end());
    if (!IsRecipe(animation->recipe)) animation->recipe.clear();
    if ((WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) == 0) return;
    animation->loopCount = RepeatsOf(WebPDemuxGetI(demuxer, WEBP_FF_LOOP_COUNT));
    const uint32_t background = WebPDemuxGetI(demuxer, WEBP_FF_BACKGROUND_COLOR);  // 0xAARRGGBB
    animation->hasBackground = true;
    animation->background = {static_cast<uint8_t>(background >> 16), static_cast<uint8_t>(background >> 8),
                             static_cast<uint8_t>(background)};
}

VP8StatusCode TryFrame(const WebPIterator& frame, bool probe, uint8_t* target, size_t stride) {
    WebPDecoderConfig config;
    // Fails only where header and library are of different versions; here they are built together.
    static_cast<void>(WebPInitDecoderConfig(&config));
    if (probe) {
        config.options.use_cropping = 1;
        config.options.crop_width = 1;
        config.options.crop_height = 1;
    }
    const auto width = static_cast<size_t>(probe ? 1 : frame.width);
    const auto height = static_cast<size_t>(probe ? 1 : frame.height);
    config.output.colorspace = MODE_RGBA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = target;
    config.output.u.RGBA.stride = static_cast<int>(stride);
    config.output.u.RGBA.size = (height - 1) * stride + 4 * width;
    return WebPDecode(frame.fragment.bytes, frame.fragment.size, &config);
}

// Decodes the frame into a part of a picture that begins at `target`, with rows of `stride` bytes. Only the
// first pixel if `probe`: then damage in the frame's headers is found before the memory for all pixels is
// taken. False: the frame is damaged.
bool DecodeFrame(const WebPIterator& frame, bool probe, uint8_t* target, size_t stride) {
    VP8StatusCode status = TryFrame(frame, probe, target, stride);
    if (status == VP8_STATUS_OK) return true;
    // The library also calls it damage when it gets no memory for its tables or the alpha. What fails again,
    // with memory for as much as a frame, is damaged.
    constexpr size_t kTables = size_t{1} << 17;
    const size_t pixels = probe ? 0 : static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height);
    ::operator delete(::operator new(4 * pixels + kTables));
    if (status != VP8_STATUS_OUT_OF_MEMORY) status = TryFrame(frame, probe, target, stride);
    if (status == VP8_STATUS_OUT_OF_MEMORY) throw std::bad_alloc();
    return status == VP8_STATUS_OK;
}

// A picture of one colour is a few bytes, so that a small file may be sound. But it is worth a closer look.
bool IsSuspiciouslySmall(const WebPIterator& frame) {
    constexpr uint64_t kPixelsPerByte = 64;
    const auto area = static_cast<uint64_t>(frame.width) * static_cast<uint64_t>(frame.height);
    return frame.fragment.size < area / kPixelsPerByte;
}

// The level of a channel with straight alpha over another one; `scale` is 2^24 divided by the alpha of both.
uint8_t BlendLevel(uint32_t above, uint32_t alphaAbove, uint32_t below, uint32_t alphaBelow, uint32_t scale) {
    return static_cast<uint8_t>((above * alphaAbove + below * alphaBelow) * scale >> 24);
}

// Draws pixels of the frame over those that were there, in integers that give the same as the library.
void BlendRow(uint8_t* pixel, const uint8_t* below, int count) {
    for (int x = 0; x < count; ++x, pixel += 4, below += 4) {
        const uint32_t alpha = pixel[3];
        if (alpha == 255) continue;
        if (alpha == 0) {
            std::memcpy(pixel, below, 4);
            continue;
        }
        const uint32_t alphaBelow = below[3] * (256 - alpha) >> 8;
        const uint32_t both = alpha + alphaBelow;
        const uint32_t scale = (1u << 24) / both;
        for (int i = 0; i < 3; ++i) pixel[i] = BlendLevel(pixel[i], alpha, below[i], alphaBelow, scale);
        pixel[3] = static_cast<uint8_t>(both);
    }
}

// What the next frame is drawn onto: the last frame's picture, with the place of that frame cleared or not.
struct WebpCanvas {
    int width = 0;
    int height = 0;
    Rectangle last;
    bool cleared = false;
    bool wasEmpty = true;  // before the last frame, or there was none yet
};

bool IsWhole(const WebpCanvas& canvas, const Rectangle& place) {
    return place.width == canvas.width && place.height == canvas.height;
}

// Draws the decoded part over what is left of the picture before.
void BlendOverLast(const WebpCanvas& canvas, const Rectangle& place, const uint8_t* below, uint8_t* pixels) {
    const int right = place.left + place.width;
    for (int y = place.top; y < place.top + place.height; ++y) {
        const auto blend = [&](int from, int to) {
            const size_t first =
                static_cast<size_t>(y) * static_cast<size_t>(canvas.width) + static_cast<size_t>(from);
            BlendRow(pixels + 4 * first, below + 4 * first, to - from);
        };
        const Rectangle& last = canvas.last;
        if (canvas.cleared && y >= last.top && y < last.top + last.height) {
            blend(place.left, std::clamp(last.left, place.left, right));
            blend(std::clamp(last.left + last.width, place.left, right), right);
        } else {
            blend(place.left, right);
        }
    }
}

// Makes the frame's pixels; false when its data are damaged.
bool DrawFrame(const WebPIterator& at, const std::vector<Frame>& frames, WebpCanvas* canvas, Frame* frame) {
    uint8_t probed[4];
    if (IsSuspiciouslySmall(at) && !DecodeFrame(at, true, probed, sizeof probed)) return false;
    const Rectangle place = {.left = at.x_offset, .top = at.y_offset, .width = at.width, .height = at.height};
    const bool blends = at.blend_method == WEBP_MUX_BLEND;
    const bool isEmpty = frames.empty() || (IsWhole(*canvas, place) && (!at.has_alpha || !blends)) ||
                         (canvas->cleared && (canvas->wasEmpty || IsWhole(*canvas, canvas->last)));
    const size_t stride = 4 * static_cast<size_t>(canvas->width);
    const auto offsetOf = [&](const Rectangle& part, int row) {
        return static_cast<size_t>(part.top + row) * stride + 4 * static_cast<size_t>(part.left);
    };
    if (isEmpty) {
        frame->pixels.resize(stride * static_cast<size_t>(canvas->height));
    } else {
        frame->pixels = frames.back().pixels;
        for (int y = 0; canvas->cleared && y < canvas->last.height; ++y)
            std::memset(frame->pixels.data() + offsetOf(canvas->last, y), 0,
                        4 * static_cast<size_t>(canvas->last.width));
    }
    if (!DecodeFrame(at, false, frame->pixels.data() + offsetOf(place, 0), stride)) return false;
    if (!isEmpty && blends) BlendOverLast(*canvas, place, frames.back().pixels.data(), frame->pixels.data());
    canvas->last = place;
    canvas->cleared = at.dispose_method == WEBP_MUX_DISPOSE_BACKGROUND;
    canvas->wasEmpty = isEmpty;
    return true;
}

// Decodes frames until the end, or until the first damaged one: then returns false.
bool ReadFrames(const WebPDemuxer* demuxer, Animation* animation) {
    const bool isAnimated = (WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0;
    animation->frames.reserve(WebPDemuxGetI(demuxer, WEBP_FF_FRAME_COUNT));
    WebpCanvas canvas = {.width = animation->width, .height = animation->height, .last = {}};
    FrameIterator frames;
    int carry = 0;
    bool more = WebPDemuxGetFrame(demuxer, 1, &frames.at) != 0;
    while (more) {
        Frame frame;
        if (!DrawFrame(frames.at, animation->frames, &canvas, &frame)) return false;
        NoteTransparency(&frame);
        frame.left = frames.at.x_offset;
        frame.top = frames.at.y_offset;
        frame.partWidth = frames.at.width;
        frame.partHeight = frames.at.height;
        frame.disposal = canvas.cleared ? kDisposalBackground : kDisposalKeep;
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
        repaired = CompleteChunks(data, size);
        // A file that lacks nothing is taken this time when there was no memory before.
        whole = std::equal(repaired.begin(), repaired.end(), data, data + size);
        file = {repaired.data(), repaired.size()};
        if (!repaired.empty()) demuxer.reset(WebPDemux(&file));
    }
    if (!demuxer) {
        *error = kDamaged;
        return false;
    }
    const WebPDemuxer* headers = demuxer.get();
    if (!SpendFrames(budget, WebPDemuxGetI(headers, WEBP_FF_CANVAS_WIDTH),
                     WebPDemuxGetI(headers, WEBP_FF_CANVAS_HEIGHT),
                     WebPDemuxGetI(headers, WEBP_FF_FRAME_COUNT), error))
        return false;
    ReadCanvas(demuxer.get(), animation);
    if (!ReadFrames(demuxer.get(), animation)) whole = false;
    if (animation->frames.empty()) {
        *error = kDamaged;
        return false;
    }
    if (!whole) animation->warning = DamageWarning(animation->frames.size());
    return true;
}

}  // namespace kfx
