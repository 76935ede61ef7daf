// SPDX-License-Identifier: MIT
#include "media/gif_palette.h"

#include <algorithm>

namespace kfx {
namespace {

constexpr size_t kMostColors = 256;

// The bytes that depend on the global palette's order.
size_t SizeWith(const GifParts& parts, const PaletteOrder& order) {
    size_t size = 0;
    size_t entries = order.colors.size();
    for (const CompressedFrame& frame : parts.frames) {
        if (frame.isLocal) continue;
        const FrameIndices indices = IndicesOf(frame, order.indices);
        entries = std::max(entries, static_cast<size_t>(indices.highest) + 1);
        size += LzwSize(frame.codes, LzwCodeSize(indices.highest + 1));
    }
    return size + (entries > 0 ? PaletteBytes(entries) : 0);
}

// The order of the given global palette, when it has all colours.
PaletteOrder GivenOrder(const GifParts& parts, const std::vector<uint8_t>& used) {
    std::vector<ColorNumber> colors;
    size_t last = 0;
    size_t found = 0;
    std::vector<uint8_t> seen(used.size());
    for (const RgbColor color : parts.gif->globalPalette) {
        const auto packed = static_cast<uint32_t>(color.red << 16 | color.green << 8 | color.blue);
        const auto place = parts.numbers.numbers.find(packed);
        const bool isUsed =
            place != parts.numbers.numbers.end() && used[place->second] && !seen[place->second];
        colors.push_back(isUsed ? place->second : kUnused);
        if (!isUsed) continue;
        seen[place->second] = 1;
        ++found;
        last = colors.size();
    }
    colors.resize(last);
    if (found != static_cast<size_t>(std::count(used.begin(), used.end(), 1))) colors.clear();
    return OrderOf(colors, used.size());
}

}  // namespace

GlobalColors ChooseGlobalColors(const GifAnimation& gif, const GifPlan& plan) {
    GlobalColors global;
    global.contains.resize(plan.numbers.colors.size());
    const auto addAll = [&](const std::vector<ColorNumber>& colors) {
        const size_t before = global.colors.size();
        for (const ColorNumber number : colors) {
            if (global.contains[number]) continue;
            global.contains[number] = 1;
            global.colors.push_back(number);
        }
        if (global.colors.size() <= kMostColors) return;
        for (size_t i = before; i < global.colors.size(); ++i) global.contains[global.colors[i]] = 0;
        global.colors.resize(before);
    };
    for (const FramePlan& frame : plan.frames) addAll(frame.needed);
    for (const FramePlan& frame : plan.frames) addAll(frame.shown);
    const size_t given = gif.globalPalette.size();
    const size_t most = std::min(std::max(global.colors.size() + 1, given), kMostColors);
    global.codeSize = LzwCodeSize(static_cast<int>(most));
    return global;
}

FrameIndices IndicesOf(const CompressedFrame& frame, const std::vector<uint8_t>& indexOfColor) {
    FrameIndices result;
    bool taken[kMostColors] = {};
    for (size_t symbol = 0; symbol < frame.colors.size(); ++symbol) {
        const ColorNumber number = frame.colors[symbol];
        if (number == kUnused || number == kClear) continue;
        const uint8_t index = indexOfColor[number];
        taken[index] = true;
        result.indexOfSymbol[symbol] = index;
        result.highest = std::max<int>(result.highest, index);
    }
    for (size_t symbol = 0; symbol < frame.colors.size(); ++symbol) {
        if (frame.colors[symbol] != kClear) continue;
        result.transparentIndex = static_cast<int>(std::find(taken, taken + kMostColors, false) - taken);
        result.indexOfSymbol[symbol] = static_cast<uint8_t>(result.transparentIndex);
        result.highest = std::max(result.highest, result.transparentIndex);
    }
    if (result.transparentIndex < 0 && frame.disposal == kDisposalBackground) {
        const bool* const free = std::find(taken, taken + kMostColors, false);
        if (free != taken + kMostColors) result.transparentIndex = static_cast<int>(free - taken);
    }
    return result;
}

PaletteOrder OrderOf(const std::vector<ColorNumber>& colors, size_t numberCount) {
    PaletteOrder order = {.colors = colors, .indices = std::vector<uint8_t>(numberCount)};
    for (size_t i = 0; i < colors.size(); ++i)
        if (colors[i] != kUnused) order.indices[colors[i]] = static_cast<uint8_t>(i);
    return order;
}

PaletteOrder ChooseOrder(const GifParts& parts) {
    std::vector<uint8_t> used(parts.numbers.colors.size());
    std::vector<size_t> frames(used.size());
    for (const CompressedFrame& frame : parts.frames) {
        if (frame.isLocal) continue;
        for (const ColorNumber number : frame.colors) {
            if (number == kUnused || number == kClear) continue;
            used[number] = 1;
            ++frames[number];
        }
    }
    std::vector<ColorNumber> colors;
    for (ColorNumber number = 0; number < used.size(); ++number)
        if (used[number]) colors.push_back(number);
    std::stable_sort(colors.begin(), colors.end(),
                     [&](ColorNumber a, ColorNumber b) { return frames[a] > frames[b]; });
    const PaletteOrder byUse = OrderOf(colors, used.size());
    const PaletteOrder given = GivenOrder(parts, used);
    return !given.colors.empty() && SizeWith(parts, given) <= SizeWith(parts, byUse) ? given : byUse;
}

}  // namespace kfx
