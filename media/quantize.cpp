// SPDX-License-Identifier: MIT
#include "media/quantize.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

#include "media/color_cache.h"

namespace kfx {
namespace {

struct CountedColor {
    std::array<uint8_t, 3> levels;
    uint64_t count;
};

// A run of the list of colours, to be shown by one palette entry.
struct Box {
    size_t begin;
    size_t end;
    int widestAxis;  // the channel with the largest spread
    double spread;   // summed squared distance from the mean in that channel
    int split;       // the highest level below or at the mean there
    RgbColor mean;
};

uint32_t PackColor(const uint8_t* rgb) { return static_cast<uint32_t>(rgb[0] << 16 | rgb[1] << 8 | rgb[2]); }

Box MeasureBox(const std::vector<CountedColor>& colors, size_t begin, size_t end) {
    double total = 0;
    double sums[3] = {};
    double squares[3] = {};
    for (size_t i = begin; i < end; ++i) {
        const auto weight = static_cast<double>(colors[i].count);
        total += weight;
        for (size_t axis = 0; axis < 3; ++axis) {
            const double level = colors[i].levels[axis];
            sums[axis] += weight * level;
            squares[axis] += weight * level * level;
        }
    }
    Box box = {begin, end, 0, -1, 0, {}};
    uint8_t mean[3];
    for (int axis = 0; axis < 3; ++axis) {
        const double spread = squares[axis] - sums[axis] * sums[axis] / total;
        if (spread > box.spread) {
            box.spread = spread;
            box.widestAxis = axis;
            box.split = static_cast<int>(sums[axis] / total);
        }
        mean[axis] = static_cast<uint8_t>(sums[axis] / total + 0.5);
    }
    box.mean = {mean[0], mean[1], mean[2]};
    return box;
}

// Divides the box at the mean of its widest channel, which leaves less squared error than the median does.
size_t SplitPoint(std::vector<CountedColor>* colors, const Box& box) {
    const auto axis = static_cast<size_t>(box.widestAxis);
    const auto begin = colors->begin();
    const auto middle =
        std::partition(begin + static_cast<ptrdiff_t>(box.begin), begin + static_cast<ptrdiff_t>(box.end),
                       [&](const CountedColor& color) { return color.levels[axis] <= box.split; });
    return static_cast<size_t>(middle - begin);
}

std::vector<RgbColor> CutIntoPalette(std::vector<CountedColor>* colors, size_t maxColors) {
    std::vector<Box> boxes = {MeasureBox(*colors, 0, colors->size())};
    while (boxes.size() < maxColors) {
        const auto widest = std::max_element(boxes.begin(), boxes.end(),
                                             [](const Box& a, const Box& b) { return a.spread < b.spread; });
        const Box box = *widest;
        const size_t middle = SplitPoint(colors, box);
        if (middle == box.begin || middle == box.end) {
            // All of one colour, as far as the rounding of the sums tells.
            if (widest->spread <= 0) break;
            widest->spread = 0;
            continue;
        }
        *widest = MeasureBox(*colors, box.begin, middle);
        boxes.push_back(MeasureBox(*colors, middle, box.end));
    }
    std::vector<RgbColor> palette;
    palette.reserve(boxes.size());
    for (const Box& box : boxes) palette.push_back(box.mean);
    return palette;
}

uint8_t NearestEntry(const std::vector<RgbColor>& palette, const std::array<uint8_t, 3>& levels) {
    size_t nearest = 0;
    int least = 3 * 256 * 256;
    for (size_t i = 0; i < palette.size(); ++i) {
        const int red = levels[0] - palette[i].red;
        const int green = levels[1] - palette[i].green;
        const int blue = levels[2] - palette[i].blue;
        const int distance = red * red + green * green + blue * blue;
        if (distance < least) {
            least = distance;
            nearest = i;
        }
    }
    return static_cast<uint8_t>(nearest);
}

bool IsOpaque(const uint8_t* pixel) { return pixel[3] >= kOpaqueFrom; }

constexpr uint8_t kHidden = 255;

// The opaque colours of a picture in the order of their first appearance, so that equal pictures get equal
// palettes.
struct PictureColors {
    std::vector<CountedColor> colors;
    // By pixel, kHidden where it is transparent. Wrong from 257 colours on, or 256 beside transparent pixels.
    std::vector<uint8_t> places;
    size_t hidden = 0;  // transparent pixels
};

// Ends as soon as there are more than `maxColors`: the list is longer then, and nothing else is complete.
PictureColors CountColors(const uint8_t* rgba, size_t area, size_t maxColors) {
    PictureColors found;
    found.places.resize(area);
    std::unordered_map<uint32_t, size_t> numbers;
    ColorCache cache;
    for (size_t i = 0; i < area;) {
        // Equal neighbours are looked up once.
        const uint8_t* const pixel = rgba + 4 * i;
        size_t end = i + 1;
        while (area - end >= 4 && std::memcmp(rgba + 4 * (end - 1), rgba + 4 * end, 16) == 0) end += 4;
        while (end < area && std::memcmp(pixel, rgba + 4 * end, 4) == 0) ++end;
        const size_t count = end - i;
        const size_t first = std::exchange(i, end);
        const auto places = found.places.begin() + static_cast<ptrdiff_t>(first);
        if (!IsOpaque(pixel)) {
            found.hidden += count;
            std::fill_n(places, count, kHidden);
            continue;
        }
        const uint32_t color = PackColor(pixel);
        ColorCache::Slot* const slot = SlotOf(&cache, color);
        if (slot->color != color) {
            const auto [place, added] = numbers.emplace(color, found.colors.size());
            if (added) found.colors.push_back({{pixel[0], pixel[1], pixel[2]}, 0});
            if (found.colors.size() > maxColors) break;
            *slot = {.color = color, .value = static_cast<uint32_t>(place->second)};
        }
        found.colors[slot->value].count += count;
        std::fill_n(places, count, static_cast<uint8_t>(slot->value));
    }
    return found;
}

// Gives each opaque pixel the entry that is nearest to its colour.
void PutNearestEntries(const uint8_t* rgba, const std::vector<CountedColor>& colors, GifFrame* frame) {
    std::unordered_map<uint32_t, uint8_t> indices;
    for (const CountedColor& color : colors)
        indices.emplace(PackColor(color.levels.data()), NearestEntry(frame->palette, color.levels));
    ColorCache cache;
    for (size_t i = 0; i < frame->indices.size(); ++i) {
        const uint8_t* const pixel = rgba + 4 * i;
        if (!IsOpaque(pixel)) continue;
        const uint32_t color = PackColor(pixel);
        ColorCache::Slot* const slot = SlotOf(&cache, color);
        if (slot->color != color) *slot = {.color = color, .value = indices.find(color)->second};
        frame->indices[i] = static_cast<uint8_t>(slot->value);
    }
}

size_t EntriesFor(const PictureColors& found, int maxColors) {
    return static_cast<size_t>(std::clamp(maxColors, 2, 256)) - (found.hidden > 0 ? 1 : 0);
}

// Behind the colours stands the entry of the transparent pixels.
void AddTransparentEntry(GifFrame* frame) {
    frame->transparentIndex = static_cast<int>(frame->palette.size());
    frame->palette.push_back({});
}

// A palette of the colours themselves. The places become the indices.
void PutAllColors(PictureColors* found, GifFrame* frame) {
    for (const CountedColor& color : found->colors)
        frame->palette.push_back({color.levels[0], color.levels[1], color.levels[2]});
    frame->indices = std::move(found->places);
    if (found->hidden == 0) return;
    AddTransparentEntry(frame);
    const auto clear = static_cast<uint8_t>(frame->transparentIndex);
    // Stored in any case, so that the compiler takes several at a time.
    for (uint8_t& index : frame->indices) index = index == kHidden ? clear : index;
}

void PutFewerColors(const uint8_t* rgba, size_t area, size_t entries, PictureColors* found, GifFrame* frame) {
    frame->palette = CutIntoPalette(&found->colors, entries);
    frame->indices.assign(area, static_cast<uint8_t>(frame->palette.size()));
    PutNearestEntries(rgba, found->colors, frame);
    if (found->hidden > 0) AddTransparentEntry(frame);
}

void ClearColors(GifFrame* frame) {
    frame->palette.clear();
    frame->transparentIndex = -1;
}

}  // namespace

void QuantizeFrame(const uint8_t* rgba, int width, int height, int maxColors, GifFrame* frame) {
    const size_t area = static_cast<size_t>(width) * static_cast<size_t>(height);
    PictureColors found = CountColors(rgba, area, SIZE_MAX);
    const size_t entries = EntriesFor(found, maxColors);
    ClearColors(frame);
    if (found.colors.size() <= entries)
        PutAllColors(&found, frame);
    else
        PutFewerColors(rgba, area, entries, &found, frame);
}

bool IndexFrame(const uint8_t* rgba, int width, int height, GifFrame* frame) {
    constexpr int kMostColors = 256;
    PictureColors found =
        CountColors(rgba, static_cast<size_t>(width) * static_cast<size_t>(height), kMostColors);
    if (found.colors.size() > EntriesFor(found, kMostColors)) return false;
    ClearColors(frame);
    PutAllColors(&found, frame);
    return true;
}

}  // namespace kfx
