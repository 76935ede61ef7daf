// SPDX-License-Identifier: MIT
#include "media/png_colors.h"

#include <algorithm>
#include <cstring>

namespace kfx {
namespace {

constexpr size_t kMostColors = 256;

size_t SlotOf(PackedColor color) { return (color * 0x9E3779B1u) >> 22; }

// Where the colour stands, or would stand.
size_t FindSlot(const ColorNumbering& numbering, PackedColor color) {
    size_t slot = SlotOf(color);
    while (numbering.slots[slot] != 0 && numbering.colors[numbering.slots[slot] - 1u] != color)
        slot = (slot + 1) % ColorNumbering::kSlots;
    return slot;
}

uint8_t Channel(PackedColor color, unsigned i) { return static_cast<uint8_t>(color >> 8 * i); }

unsigned BrightnessOf(PackedColor color) {
    return 299u * Channel(color, 0) + 587u * Channel(color, 1) + 114u * Channel(color, 2);
}

// Entries without full alpha come first: the others then need none.
bool IsTransparent(PackedColor color) { return AlphaOf(color) != 255; }

// Transparent colours first, then by `rank`; the colour itself decides between equal ones.
uint64_t OrderOf(unsigned rank, PackedColor color) {
    const uint64_t place = IsTransparent(color) ? 0 : uint64_t{1} << 63;
    return place | uint64_t{rank} << 32 | color;
}

unsigned RedFirst(PackedColor color) {
    return static_cast<unsigned>(Channel(color, 0) << 16 | Channel(color, 1) << 8 | Channel(color, 2));
}

int DistanceOf(PackedColor a, PackedColor b) {
    int sum = 0;
    for (unsigned i = 0; i < 3; ++i) {
        const int difference = Channel(a, i) - Channel(b, i);
        sum += difference * difference;
    }
    return sum;
}

// After each colour the nearest of those that are left, the transparent ones staying where they are.
void OrderAsChain(std::vector<PackedColor>* colors) {
    const auto start = std::partition_point(colors->begin(), colors->end(), IsTransparent);
    for (auto last = start; last != colors->end() && last + 1 != colors->end(); ++last) {
        const auto next = std::min_element(last + 1, colors->end(), [last](PackedColor a, PackedColor b) {
            return DistanceOf(a, *last) < DistanceOf(b, *last);
        });
        std::iter_swap(last + 1, next);
    }
}

int DepthFor(size_t values) {
    if (values <= 2) return 1;
    if (values <= 4) return 2;
    return values <= 16 ? 4 : 8;
}

// The fewest bits that can hold all of these grey values.
int GreyDepth(const std::vector<PackedColor>& colors) {
    for (const int depth : {1, 2, 4}) {
        const int unit = 255 / ((1 << depth) - 1);
        if (std::all_of(colors.begin(), colors.end(),
                        [unit](PackedColor color) { return Channel(color, 0) % unit == 0; }))
            return depth;
    }
    return 8;
}

PngFormat PaletteFormat(const std::vector<PackedColor>& colors) {
    PngFormat format = {.colors = kPngPalette, .depth = DepthFor(colors.size()), .palette = {}, .alphas = {}};
    for (const PackedColor color : colors) {
        format.palette.push_back({Channel(color, 0), Channel(color, 1), Channel(color, 2)});
        if (AlphaOf(color) != 255) format.alphas.resize(format.palette.size(), 255);
        if (AlphaOf(color) != 255) format.alphas.back() = Channel(color, 3);
    }
    return format;
}

// Of few colours, several orders can be the same.
void AddPalette(const std::vector<PackedColor>& colors, std::vector<PngFormat>* formats) {
    PngFormat format = PaletteFormat(colors);
    const auto isSame = [&format](const PngFormat& other) {
        return other.palette == format.palette && other.alphas == format.alphas;
    };
    if (std::none_of(formats->begin(), formats->end(), isSame)) formats->push_back(std::move(format));
}

// One sample of up to 8 bits a pixel; `value` gives it.
template <typename Value>
void PackSamples(int depth, int width, const uint8_t* rgba, uint8_t* row, const Value& value) {
    unsigned bits = 0;
    int count = 0;
    for (int x = 0; x < width; ++x, rgba += 4) {
        bits = bits << depth | value(rgba);
        count += depth;
        if (count < 8) continue;
        *row++ = static_cast<uint8_t>(bits);
        count = 0;
    }
    if (count > 0) *row = static_cast<uint8_t>(bits << (8 - count));
}

void CopyChannels(const PngFormat& format, int width, const uint8_t* rgba, uint8_t* row) {
    const uint8_t key[3] = {static_cast<uint8_t>(format.key[0]), static_cast<uint8_t>(format.key[1]),
                            static_cast<uint8_t>(format.key[2])};
    for (int x = 0; x < width; ++x, rgba += 4) {
        const uint8_t* color = format.hasKey && rgba[3] == 0 ? key : rgba;
        if (format.colors == kPngGreyAlpha) {
            *row++ = rgba[0];
            *row++ = rgba[3];
            continue;
        }
        for (int i = 0; i < 3; ++i) *row++ = color[i];
        if (format.colors == kPngRgba) *row++ = rgba[3];
    }
}

}  // namespace

PackedColor PackedColorAt(const uint8_t* rgba) {
    return static_cast<PackedColor>(rgba[0]) | static_cast<PackedColor>(rgba[1]) << 8 |
           static_cast<PackedColor>(rgba[2]) << 16 | static_cast<PackedColor>(rgba[3]) << 24;
}

int NumberOfColor(const ColorNumbering& numbering, PackedColor color) {
    return numbering.slots[FindSlot(numbering, color)] - 1;
}

bool AddColor(PackedColor color, ColorNumbering* numbering) {
    const size_t slot = FindSlot(*numbering, color);
    if (numbering->slots[slot] != 0) return true;
    if (numbering->colors.size() == kMostColors) return false;
    numbering->colors.push_back(color);
    numbering->slots[slot] = static_cast<uint16_t>(numbering->colors.size());
    return true;
}

void CountColors(const uint8_t* rgba, size_t pixels, ColorCensus* census) {
    PackedColor last = kNoColor;
    bool isFirst = true;
    for (size_t i = 0; i < pixels; ++i, rgba += 4) {
        const PackedColor color = PackedColorAt(rgba);
        if (color == last && !isFirst) continue;
        isFirst = false;
        last = color;
        census->isGrey &= rgba[0] == rgba[1] && rgba[1] == rgba[2];
        census->isOpaque &= rgba[3] == 255;
        census->isSolid &= rgba[3] == 255 || rgba[3] == 0;
        if (census->isFew) census->isFew = AddColor(color, &census->numbering);
    }
}

std::vector<PngFormat> PngFormatsFor(const ColorCensus& census, const PngFormatOptions& options) {
    std::vector<PngFormat> formats;
    const bool hasAlpha = !census.isOpaque && !options.hasKey;
    if (census.isFew) {
        std::vector<PackedColor> colors = census.numbering.colors;
        std::stable_partition(colors.begin(), colors.end(), IsTransparent);
        AddPalette(colors, &formats);
        std::sort(colors.begin(), colors.end(), [](PackedColor a, PackedColor b) {
            return OrderOf(BrightnessOf(a), a) < OrderOf(BrightnessOf(b), b);
        });
        AddPalette(colors, &formats);
        OrderAsChain(&colors);
        AddPalette(colors, &formats);
        std::sort(colors.begin(), colors.end(), [](PackedColor a, PackedColor b) {
            return OrderOf(RedFirst(a), a) < OrderOf(RedFirst(b), b);
        });
        AddPalette(colors, &formats);
    }
    PngFormat direct = {.colors = kPngRgba, .palette = {}, .alphas = {}};
    if (census.isGrey && options.mayBeGrey)
        direct.colors = hasAlpha ? kPngGreyAlpha : kPngGrey;
    else if (!hasAlpha)
        direct.colors = kPngRgb;
    if (direct.colors == kPngGrey && census.isFew && options.mayBeNarrow)
        direct.depth = GreyDepth(census.numbering.colors);
    if (options.hasKey) {
        direct.hasKey = true;
        const int unit = direct.colors == kPngGrey ? 255 / ((1 << direct.depth) - 1) : 1;
        for (unsigned i = 0; i < 3; ++i)
            direct.key[i] = static_cast<uint16_t>(Channel(options.key, i) / unit);
    }
    formats.push_back(direct);
    if (!options.mayBeNarrow)
        for (PngFormat& format : formats) format.depth = 8;
    return formats;
}

size_t PngPaletteBytes(const PngFormat& format) {
    constexpr size_t kChunkFrame = 12;
    size_t bytes = 0;
    if (!format.palette.empty()) bytes += kChunkFrame + 3 * format.palette.size();
    if (!format.alphas.empty()) bytes += kChunkFrame + format.alphas.size();
    return bytes;
}

PngRows MakePngRows(const PngFormat& format, const uint8_t* rgba, int width, int height) {
    PngRows rows;
    rows.rowBytes = PngRowBytes(format, width);
    rows.step = PngFilterStep(format);
    rows.bytes.resize(rows.rowBytes * static_cast<size_t>(height));
    ColorNumbering numbering;
    for (size_t i = 0; i < format.palette.size(); ++i) {
        const RgbColor color = format.palette[i];
        const uint8_t entry[4] = {color.red, color.green, color.blue,
                                  i < format.alphas.size() ? format.alphas[i] : uint8_t{255}};
        AddColor(PackedColorAt(entry), &numbering);
    }
    const unsigned unit = format.depth < 8 ? 255u / ((1u << format.depth) - 1) : 1;
    uint8_t* row = rows.bytes.data();
    for (int y = 0; y < height; ++y, row += rows.rowBytes, rgba += 4 * static_cast<ptrdiff_t>(width)) {
        if (format.colors == kPngPalette)
            PackSamples(format.depth, width, rgba, row, [&numbering](const uint8_t* pixel) {
                return static_cast<unsigned>(NumberOfColor(numbering, PackedColorAt(pixel)));
            });
        else if (format.colors == kPngGrey)
            PackSamples(format.depth, width, rgba, row, [&format, unit](const uint8_t* pixel) {
                return format.hasKey && pixel[3] == 0 ? unsigned{format.key[0]} : pixel[0] / unit;
            });
        else
            CopyChannels(format, width, rgba, row);
    }
    return rows;
}

}  // namespace kfx
