// SPDX-License-Identifier: MIT
#include "commands/result_fingerprint.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <utility>

#include "commands/sequence.h"
#include "media/loop_count.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr int kMostHundredths = 65535;     // and of times, in GIF and PNG files
constexpr int kMostRepeats = 65535;        // of a GIF file
constexpr uint32_t kMostShowings = 65535;  // of a WebP file

// What a frame of a GIF draws onto the canvas.
void Draw(const GifFrame& frame, const std::vector<RgbColor>& palette, std::vector<uint8_t>* canvas) {
    for (size_t i = 0; i < frame.indices.size(); ++i) {
        const uint8_t index = frame.indices[i];
        if (index == frame.transparentIndex || index >= palette.size()) continue;
        uint8_t* const pixel = canvas->data() + 4 * i;
        pixel[0] = palette[index].red;
        pixel[1] = palette[index].green;
        pixel[2] = palette[index].blue;
        pixel[3] = 255;
    }
}

// Files of the format hold milliseconds up to 65535, and hundredths above.
int MillisecondsInPng(int milliseconds) {
    if (milliseconds <= kMostHundredths) return milliseconds;
    return 10 * std::min(milliseconds / 10, kMostHundredths);
}

// One picture of a stream, with the colours that a reader gives it.
void MakeShown(const Animation& animation, size_t index, RawFormat format, RgbColor behind, Frame* shown) {
    if (format == RawFormat::Rgba) {
        *shown = animation.frames[index];
        return;
    }
    Animation one;
    one.width = animation.width;
    one.height = animation.height;
    one.frames = {animation.frames[index]};
    std::vector<uint8_t> bytes;
    const auto take = [&](const uint8_t* data, size_t size) {
        bytes.insert(bytes.end(), data, data + size);
        return true;
    };
    WriteRawVideo(one, {.rate = {}, .repeats = {1}}, format, behind, take);
    if (format == RawFormat::Rgb) {
        shown->pixels.assign(bytes.size() / 3 * 4, 255);
        for (size_t i = 0; i < bytes.size() / 3; ++i)
            std::copy_n(bytes.data() + 3 * i, 3, shown->pixels.data() + 4 * i);
        return;
    }
    Animation read;
    std::string ignored;
    if (ReadAnimationFromMemory(bytes.data(), bytes.size(), &read, &ignored))
        shown->pixels = std::move(read.frames[0].pixels);
}

}  // namespace

std::string FingerprintOfGif(const GifAnimation& gif) {
    Frame shown;
    shown.transparent = true;  // perhaps
    shown.pixels.resize(4 * static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height));
    std::vector<uint8_t> before;  // what a frame that is taken back leaves
    const auto show = [&](size_t i) -> ShownFrame {
        const GifFrame* const last = i > 0 ? &gif.frames[i - 1] : nullptr;
        if (last && last->disposal == kDisposalBackground)
            std::fill(shown.pixels.begin(), shown.pixels.end(), uint8_t{0});
        if (last && last->disposal == kDisposalPrevious) shown.pixels = before;
        const GifFrame& frame = gif.frames[i];
        if (frame.disposal == kDisposalPrevious) before = shown.pixels;
        Draw(frame, frame.palette.empty() ? gif.globalPalette : frame.palette, &shown.pixels);
        return {.frame = &shown, .milliseconds = 10 * std::clamp(frame.delay, 0, kMostHundredths)};
    };
    return FingerprintOf({.width = gif.width,
                          .height = gif.height,
                          .loopCount = std::clamp(gif.loopCount, kLoopNone, kMostRepeats),
                          .frames = gif.frames.size()},
                         show);
}

std::string FingerprintIn(const std::string& format, const Animation& animation) {
    const bool isPng = format == "apng";
    const auto show = [&](size_t i) -> ShownFrame {
        const Frame& frame = animation.frames[i];
        const int milliseconds = std::max(MillisecondsOf(frame), 0);
        return {.frame = &frame, .milliseconds = isPng ? MillisecondsInPng(milliseconds) : milliseconds};
    };
    const uint32_t most = isPng ? uint32_t{INT_MAX} : kMostShowings;
    return FingerprintOf({.width = animation.width,
                          .height = animation.height,
                          .loopCount = RepeatsOf(TimesShown(animation.loopCount, most)),
                          .frames = animation.frames.size()},
                         show);
}

std::string FingerprintOfStill(const Animation& animation, size_t frame) {
    const auto show = [&](size_t) -> ShownFrame {
        return {.frame = &animation.frames[frame], .milliseconds = 0};
    };
    return FingerprintOf(
        {.width = animation.width, .height = animation.height, .loopCount = kLoopNone, .frames = 1}, show);
}

std::string FingerprintOfPictures(const Animation& animation) {
    const auto show = [&](size_t i) -> ShownFrame {
        return {.frame = &animation.frames[i], .milliseconds = kStillMilliseconds};
    };
    return FingerprintOf({.width = animation.width,
                          .height = animation.height,
                          .loopCount = kLoopForever,
                          .frames = animation.frames.size()},
                         show);
}

std::string FingerprintOfStream(const Animation& animation, const ConstantRate& plan, RawFormat format,
                                RgbColor behind) {
    // Those that stand in the stream.
    std::vector<size_t> numbers;
    for (size_t i = 0; i < animation.frames.size(); ++i)
        if (plan.repeats[i] > 0) numbers.push_back(i);
    const double frameTime =
        1000.0 * static_cast<double>(plan.rate.denominator) / static_cast<double>(plan.rate.numerator);
    Frame shown;
    int64_t frames = 0, milliseconds = 0;
    const auto show = [&](size_t i) -> ShownFrame {
        shown = {};
        MakeShown(animation, numbers[i], format, behind, &shown);
        NoteTransparency(&shown);
        frames += plan.repeats[numbers[i]];
        const int64_t end = std::llround(static_cast<double>(frames) * frameTime);
        const auto time = static_cast<int>(end - milliseconds);
        milliseconds = end;
        return {.frame = &shown, .milliseconds = time};
    };
    return FingerprintOf({.width = animation.width,
                          .height = animation.height,
                          .loopCount = kLoopNone,
                          .frames = numbers.size()},
                         show);
}

std::string FingerprintOfFile(const std::vector<uint8_t>& file) {
    Animation animation;
    std::string ignored;
    ReadLimits limits;
    limits.maxPixels = UINT64_MAX;  // it was in memory already
    const bool isRead = ReadAnimationFromMemory(file.data(), file.size(), &animation, &ignored, limits);
    return isRead ? FingerprintOf(animation) : "";
}

}  // namespace kfx::commands
