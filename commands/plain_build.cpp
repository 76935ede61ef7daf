// SPDX-License-Identifier: MIT
#include "commands/plain_build.h"

#include <unordered_set>
#include <utility>

#include "media/color_cache.h"
#include "media/quantize.h"

namespace kfx::commands {
namespace {

constexpr size_t kMostColors = 256;

// The opaque colours, and one entry for transparency, fit one palette.
bool FitsPalette(const Frame& frame) {
    constexpr uint32_t kTransparent = 1u << 24;
    std::unordered_set<uint32_t> colors;
    ColorCache cache;
    for (size_t i = 0; i < frame.pixels.size(); i += 4) {
        const uint8_t* pixel = frame.pixels.data() + i;
        const uint32_t color = pixel[3] < kOpaqueFrom
                                   ? kTransparent
                                   : static_cast<uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
        ColorCache::Slot* const slot = SlotOf(&cache, color);
        if (slot->color == color) continue;
        slot->color = color;
        if (colors.insert(color).second && colors.size() > kMostColors) return false;
    }
    return true;
}

std::vector<uint8_t> WithoutAlpha(const std::vector<uint8_t>& rgba) {
    std::vector<uint8_t> rgb(rgba.size() / 4 * 3);
    for (size_t i = 0; i < rgba.size() / 4; ++i) {
        for (size_t c = 0; c < 3; ++c) rgb[3 * i + c] = rgba[4 * i + c];
    }
    return rgb;
}

}  // namespace

BuiltAnimation PlainBuild(Animation* source) {
    BuiltAnimation built;
    built.width = source->width;
    built.height = source->height;
    built.palette = source->globalPalette;
    for (size_t i = 0; i < source->frames.size(); ++i) {
        const Frame frame = std::move(source->frames[i]);
        BuiltFrame made;
        made.indexed = frame.indexed;
        made.sourceIndex = i;
        if (frame.indexed) {
            made.pixels = frame.indices;
            made.palette = source->globalPalette;
        } else {
            made.pixels = WithoutAlpha(frame.pixels);
        }
        built.frames.push_back(std::move(made));
    }
    source->frames.clear();
    built.complete = true;
    return built;
}

bool FitsGifPalettes(const Animation& animation) {
    for (const Frame& frame : animation.frames) {
        if (!frame.indexed && !FitsPalette(frame)) return false;
    }
    return true;
}

const EffectChoice& UnchangingEffect() {
    static const EffectChoice effect = {
        "HSB and Channels", {{"Enable HSB", "off"}, {"Enable channels", "off"}, {"Invert colors", "off"}}};
    return effect;
}

}  // namespace kfx::commands
