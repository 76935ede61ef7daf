// SPDX-License-Identifier: MIT
#include "commands/plain_build.h"

#include <atomic>
#include <cstring>
#include <utility>

#include "media/quantize.h"

namespace kfx::commands {
namespace {

std::vector<uint8_t> WithoutAlpha(const std::vector<uint8_t>& rgba) {
    const size_t count = rgba.size() / 4;
    std::vector<uint8_t> rgb(3 * count);
    // Four bytes at a time are quicker; the pixel after it replaces the fourth.
    for (size_t i = 0; i + 1 < count; ++i) std::memcpy(rgb.data() + 3 * i, rgba.data() + 4 * i, 4);
    if (count > 0) std::memcpy(rgb.data() + 3 * (count - 1), rgba.data() + 4 * (count - 1), 3);
    return rgb;
}

}  // namespace

BuiltAnimation PlainBuild(Animation* source, const JobRunner& jobs) {
    BuiltAnimation built;
    built.width = source->width;
    built.height = source->height;
    built.palette = source->globalPalette;
    built.frames.resize(source->frames.size());
    RunJobs(jobs, source->frames.size(), [&](size_t number, size_t) {
        Frame frame = std::move(source->frames[number]);
        BuiltFrame& made = built.frames[number];
        made.indexed = frame.indexed;
        made.sourceIndex = number;
        if (frame.indexed) {
            made.pixels = std::move(frame.indices);
            made.palette = source->globalPalette;
        } else {
            made.pixels = WithoutAlpha(frame.pixels);
        }
    });
    source->frames.clear();
    built.complete = true;
    return built;
}

bool FitsGifPalettes(const Animation& animation, const JobRunner& jobs) {
    std::atomic<bool> fits = true;
    RunJobs(jobs, animation.frames.size(), [&](size_t number, size_t) {
        const Frame& frame = animation.frames[number];
        GifFrame made;
        if (fits && !frame.indexed &&
            !IndexFrame(frame.pixels.data(), animation.width, animation.height, &made))
            fits = false;
    });
    return fits;
}

const EffectChoice& UnchangingEffect() {
    static const EffectChoice effect = {
        "HSB and Channels", {{"Enable HSB", "off"}, {"Enable channels", "off"}, {"Invert colors", "off"}}};
    return effect;
}

}  // namespace kfx::commands
