// SPDX-License-Identifier: MIT
#include "commands/result_fingerprint.h"

#include <algorithm>
#include <climits>

#include "media/loop_count.h"

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

}  // namespace kfx::commands
