// SPDX-License-Identifier: MIT
// Y4M, uncompressed video as video programs pass it through pipes: a line of text for the stream, and before
// each frame a line that begins with FRAME. Then come the planes of brightness and colour differences.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "media/readers.h"
#include "media/yuv.h"

namespace kfx {
namespace {

constexpr std::string_view kStreamMark = "YUV4MPEG2 ";
constexpr std::string_view kFrameMark = "FRAME";
constexpr size_t kLongestLine = 4096;
constexpr uint64_t kMostFrames = 1000000;  // of a few pixels each; memory goes into what surrounds them
constexpr double kLongestTime = 655350;    // milliseconds
constexpr double kUsualRate = 25;          // frames a second where the stream says nothing

// How the colour differences are sampled, by the letters behind C in the stream's line. Centred samples stand
// in the middle between the pixels that share them, others on the first of these.
struct Sampling {
    std::string_view name;
    int across;  // pixels that share a sample; 0: there are none, the picture is grey
    int down;
    bool centeredAcross;
    bool centeredDown;
};

constexpr Sampling kSamplings[] = {
    {.name = "420jpeg", .across = 2, .down = 2, .centeredAcross = true, .centeredDown = true},
    {.name = "420", .across = 2, .down = 2, .centeredAcross = true, .centeredDown = true},
    {.name = "420mpeg2", .across = 2, .down = 2, .centeredAcross = false, .centeredDown = true},
    {.name = "420paldv", .across = 2, .down = 2, .centeredAcross = false, .centeredDown = false},
    {.name = "422", .across = 2, .down = 1, .centeredAcross = false, .centeredDown = false},
    {.name = "444", .across = 1, .down = 1, .centeredAcross = false, .centeredDown = false},
    {.name = "mono", .across = 0, .down = 0, .centeredAcross = false, .centeredDown = false},
};

struct Stream {
    int width = 0;
    int height = 0;
    double frameTime = 1000 / kUsualRate;  // milliseconds
    const Sampling* sampling = &kSamplings[0];
    const YuvRange* range = &kLimitedRange;
    size_t firstFrame = 0;  // where its line begins
};

size_t SamplesOf(int side, int shared) {
    return shared == 0
               ? 0
               : (static_cast<size_t>(side) + static_cast<size_t>(shared) - 1) / static_cast<size_t>(shared);
}

size_t PlaneBytes(const Stream& stream) {
    return static_cast<size_t>(stream.width) * static_cast<size_t>(stream.height);
}

size_t DifferenceBytes(const Stream& stream) {
    return SamplesOf(stream.width, stream.sampling->across) * SamplesOf(stream.height, stream.sampling->down);
}

// The line at `start` without its line feed; its end in *next. False: there is none of a sensible length.
bool TakeLine(const uint8_t* data, size_t size, size_t start, std::string_view* line, size_t* next) {
    const size_t most = std::min(size - start, kLongestLine);
    const void* end = std::memchr(data + start, '\n', most);
    if (!end) return false;
    const auto length = static_cast<size_t>(static_cast<const uint8_t*>(end) - (data + start));
    *line = {reinterpret_cast<const char*>(data + start), length};
    *next = start + length + 1;
    return true;
}

bool RefuseLine(std::string* error) {
    *error = "the first line of the video is damaged";
    return false;
}

bool ReadSide(std::string_view text, int* side, std::string* error) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), *side);
    const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    if (whole && *side > 0) return true;
    return RefuseLine(error);
}

// As 30000:1001. What is no rate leaves the usual one.
void ReadRate(std::string_view text, double* frameTime) {
    int64_t numerator = 0, denominator = 0;
    const char* end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, numerator);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != ':') return;
    const auto second = std::from_chars(first.ptr + 1, end, denominator);
    if (second.ec != std::errc() || numerator <= 0 || denominator <= 0) return;
    *frameTime =
        std::min(1000.0 * static_cast<double>(denominator) / static_cast<double>(numerator), kLongestTime);
}

bool ReadSampling(std::string_view text, Stream* stream, std::string* error) {
    for (const Sampling& sampling : kSamplings) {
        if (text != sampling.name) continue;
        stream->sampling = &sampling;
        return true;
    }
    *error = "the video has the colour format C" + std::string(text.substr(0, 20)) +
             ", which is not read; make it 8-bit 4:4:4 or 4:2:0 (ffmpeg: -pix_fmt yuv444p)";
    return false;
}

bool ReadField(std::string_view field, Stream* stream, std::string* error) {
    const std::string_view value = field.substr(1);
    switch (field[0]) {
        case 'W':
            return ReadSide(value, &stream->width, error);
        case 'H':
            return ReadSide(value, &stream->height, error);
        case 'F':
            ReadRate(value, &stream->frameTime);
            return true;
        case 'C':
            return ReadSampling(value, stream, error);
        case 'X':
            if (value == "COLORRANGE=FULL") stream->range = &kFullRange;
            return true;
        default:  // interlacing and the shape of pixels change no sample
            return true;
    }
}

bool ReadStreamLine(const uint8_t* data, size_t size, Stream* stream, std::string* error) {
    std::string_view line;
    if (!TakeLine(data, size, 0, &line, &stream->firstFrame)) return RefuseLine(error);
    line.remove_prefix(std::min(line.size(), kStreamMark.size()));
    while (!line.empty()) {
        const size_t end = std::min(line.find(' '), line.size());
        if (end > 0 && !ReadField(line.substr(0, end), stream, error)) return false;
        line.remove_prefix(std::min(line.size(), end + 1));
    }
    if (stream->width > 0 && stream->height > 0) return true;
    return RefuseLine(error);
}

// Where the samples of the frame whose line begins at *at are; *at is moved behind them. Null: no whole frame
// is left.
const uint8_t* TakeFrame(const Stream& stream, const uint8_t* data, size_t size, size_t* at) {
    std::string_view line;
    size_t samples = 0;
    if (*at >= size || !TakeLine(data, size, *at, &line, &samples)) return nullptr;
    if (line.substr(0, kFrameMark.size()) != kFrameMark) return nullptr;
    const size_t bytes = PlaneBytes(stream) + 2 * DifferenceBytes(stream);
    if (size - samples < bytes) return nullptr;
    *at = samples + bytes;
    return data + samples;
}

// The two samples around a pixel and how much of the second counts, in quarters.
struct Neighbours {
    size_t first;
    size_t second;
    int part;
};

Neighbours NeighboursOf(int pixel, int shared, bool centered, size_t samples) {
    const int quarters = shared == 1 ? 4 * pixel : 2 * pixel - (centered ? 1 : 0);
    const auto last = static_cast<int>(samples) - 1;
    const int first = quarters >> 2;  // -1 before the first sample
    return {static_cast<size_t>(std::clamp(first, 0, last)),
            static_cast<size_t>(std::clamp(first + 1, 0, last)), quarters & 3};
}

std::vector<Neighbours> NeighboursOfAll(int side, int shared, bool centered) {
    std::vector<Neighbours> all;
    const size_t samples = SamplesOf(side, shared);
    for (int pixel = 0; samples > 0 && pixel < side; ++pixel)
        all.push_back(NeighboursOf(pixel, shared, centered, samples));
    return all;
}

// Between the four samples around a pixel, in straight lines.
uint8_t Between(const uint8_t* upper, const uint8_t* lower, int lowerPart, const Neighbours& across) {
    const int above = upper[across.first] * (4 - across.part) + upper[across.second] * across.part;
    const int below = lower[across.first] * (4 - across.part) + lower[across.second] * across.part;
    return static_cast<uint8_t>((above * (4 - lowerPart) + below * lowerPart + 8) >> 4);
}

struct Layout {
    std::vector<Neighbours> across;  // for each column; empty when the picture is grey
    std::vector<Neighbours> down;
};

void DecodeRow(const Stream& stream, const Layout& layout, const uint8_t* samples, size_t y, uint8_t* out) {
    const auto width = static_cast<size_t>(stream.width);
    const uint8_t* brightness = samples + y * width;
    const uint8_t* rows[4] = {};  // upper and lower, of both planes
    int part = 0;
    if (!layout.down.empty()) {
        const Neighbours& down = layout.down[y];
        const size_t stride = SamplesOf(stream.width, stream.sampling->across);
        const uint8_t* cb = samples + PlaneBytes(stream);
        const uint8_t* cr = cb + DifferenceBytes(stream);
        part = down.part;
        rows[0] = cb + down.first * stride;
        rows[1] = cb + down.second * stride;
        rows[2] = cr + down.first * stride;
        rows[3] = cr + down.second * stride;
    }
    for (size_t x = 0; x < width; ++x, out += 4) {
        YuvColor color = {brightness[x], 128, 128};
        if (!layout.across.empty()) {
            color.cb = Between(rows[0], rows[1], part, layout.across[x]);
            color.cr = Between(rows[2], rows[3], part, layout.across[x]);
        }
        const RgbColor rgb = RgbOf(color, *stream.range);
        out[0] = rgb.red;
        out[1] = rgb.green;
        out[2] = rgb.blue;
        out[3] = 255;
    }
}

void DecodeFrame(const Stream& stream, const Layout& layout, const uint8_t* samples,
                 std::vector<uint8_t>* pixels) {
    const size_t rowBytes = 4 * static_cast<size_t>(stream.width);
    pixels->resize(4 * PlaneBytes(stream));
    for (size_t y = 0; y < static_cast<size_t>(stream.height); ++y)
        DecodeRow(stream, layout, samples, y, pixels->data() + y * rowBytes);
}

// All whole frames are counted before the first is decoded.
bool CountFrames(const Stream& stream, const uint8_t* data, size_t size, PixelBudget* budget, uint64_t* count,
                 std::string* error) {
    const auto width = static_cast<uint64_t>(stream.width), height = static_cast<uint64_t>(stream.height);
    PixelBudget one = *budget;
    if (!SpendPixels(&one, width, height, error)) return false;
    for (size_t at = stream.firstFrame; TakeFrame(stream, data, size, &at);) {
        if (++*count <= kMostFrames) continue;
        *error = "the video has more than " + std::to_string(kMostFrames) + " frames";
        return false;
    }
    if (*count > 0) return SpendFrames(budget, width, height, *count, error);
    *error = "the video has no whole frame";
    return false;
}

}  // namespace

bool ReadY4m(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    Stream stream;
    uint64_t count = 0;
    if (!ReadStreamLine(data, size, &stream, error)) return false;
    if (!CountFrames(stream, data, size, budget, &count, error)) return false;
    const Layout layout = {
        NeighboursOfAll(stream.width, stream.sampling->across, stream.sampling->centeredAcross),
        NeighboursOfAll(stream.height, stream.sampling->down, stream.sampling->centeredDown)};
    animation->width = stream.width;
    animation->height = stream.height;
    size_t at = stream.firstFrame;
    int64_t shown = 0;  // milliseconds
    int carry = 0;
    for (uint64_t i = 0; i < count; ++i) {
        Frame& frame = animation->frames.emplace_back();
        DecodeFrame(stream, layout, TakeFrame(stream, data, size, &at), &frame.pixels);
        const int64_t end = std::llround(static_cast<double>(i + 1) * stream.frameTime);
        frame.milliseconds = static_cast<int>(end - shown);
        frame.delay = HundredthsOf(frame.milliseconds, &carry);
        shown = end;
    }
    if (at != size) animation->warning = DamageWarning(animation->frames.size());
    return true;
}

}  // namespace kfx
