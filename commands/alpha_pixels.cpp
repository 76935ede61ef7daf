// SPDX-License-Identifier: MIT
#include "commands/alpha_pixels.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "media/quantize.h"

namespace kfx::commands {
namespace {

constexpr uint8_t kOpaque = 255;
constexpr uint8_t kGrey = 127;
constexpr int kRemainder = 1;  // the alpha that truncation leaves

constexpr int kPlaceBits = 12;
constexpr int kPlaces = 1 << kPlaceBits;

// value * share / 255, rounded.
uint8_t Share(int value, int share) { return static_cast<uint8_t>((value * share + 127) / 255); }

// Gives a pixel that stands over black an alpha.
void DivideByAlpha(int alpha, uint8_t* pixel) {
    pixel[3] = static_cast<uint8_t>(alpha);
    if (alpha == kOpaque) return;
    for (int c = 0; c < 3; ++c) {
        const int color = alpha == 0 ? 0 : (pixel[c] * 255 + alpha / 2) / alpha;
        pixel[c] = static_cast<uint8_t>(std::min(color, 255));
    }
}

void SetColor(uint8_t* pixel, const uint8_t* color) { std::copy(color, color + 3, pixel); }

// The coordinate nearest to `own` with these low bits; `own` when it lies beyond the side.
int PlaceNear(int own, int lowBits, int side) {
    int step = (lowBits - own) & (kPlaces - 1);
    if (step >= kPlaces / 2) step -= kPlaces;
    const int place = own + step;
    return place >= 0 && place < side ? place : own;
}

constexpr uint32_t kNowhere = UINT32_MAX;

// The nearest visible pixel that is known so far, and how far away it is in thirds of a pixel.
struct Nearest {
    uint32_t pixel = kNowhere;
    uint32_t distance = UINT32_MAX / 2;
};

void Offer(const Nearest& neighbor, uint32_t step, Nearest* nearest) {
    if (neighbor.pixel == kNowhere || neighbor.distance + step >= nearest->distance) return;
    *nearest = {neighbor.pixel, neighbor.distance + step};
}

// One pass of the distance transform by Borgefors (1986) with steps of 3 and 4: forwards from the neighbours
// above and to the left, and backwards from the opposite ones.
void PassDistances(int width, int height, bool backwards, std::vector<Nearest>* map) {
    constexpr uint32_t kStraight = 3, kDiagonal = 4;
    const int sign = backwards ? -1 : 1;
    for (int row = 0; row < height; ++row) {
        const int y = backwards ? height - 1 - row : row;
        for (int column = 0; column < width; ++column) {
            const int x = backwards ? width - 1 - column : column;
            Nearest* const nearest = map->data() + static_cast<ptrdiff_t>(y) * width + x;
            if (column > 0) Offer(nearest[-sign], kStraight, nearest);
            if (row == 0) continue;
            const Nearest* const before = nearest - sign * width;
            Offer(before[0], kStraight, nearest);
            if (column > 0) Offer(before[-sign], kDiagonal, nearest);
            if (column + 1 < width) Offer(before[sign], kDiagonal, nearest);
        }
    }
}

std::vector<uint32_t> VisiblePixels(const Pixels& pixels) {
    std::vector<uint32_t> visible;
    for (size_t i = 0; i < pixels.size() / 4; ++i) {
        if (pixels[4 * i + 3] != 0) visible.push_back(static_cast<uint32_t>(i));
    }
    return visible;
}

// Five bits a channel.
size_t CellOf(const uint8_t* color) {
    return static_cast<size_t>(color[0] >> 3) << 10 | static_cast<size_t>(color[1] >> 3) << 5 | color[2] >> 3;
}

}  // namespace

std::vector<uint8_t> TakeAlphaOut(Pixels* pixels) {
    std::vector<uint8_t> alpha(pixels->size() / 4);
    for (size_t i = 0; i < alpha.size(); ++i) {
        alpha[i] = (*pixels)[4 * i + 3];
        (*pixels)[4 * i + 3] = kOpaque;
    }
    return alpha;
}

bool PutAlphaBack(const std::vector<uint8_t>& alpha, Pixels* pixels) {
    if (alpha.size() * 4 != pixels->size()) return false;
    for (size_t i = 0; i < alpha.size(); ++i) (*pixels)[4 * i + 3] = alpha[i];
    return true;
}

void PutOver(uint8_t level, Pixels* pixels) {
    for (uint8_t* pixel = pixels->data(); pixel != pixels->data() + pixels->size(); pixel += 4) {
        const int alpha = pixel[3];
        if (alpha == kOpaque) continue;
        const int ground = Share(level, kOpaque - alpha);
        for (int c = 0; c < 3; ++c)
            pixel[c] = static_cast<uint8_t>(std::min(Share(pixel[c], alpha) + ground, 255));
        pixel[3] = kOpaque;
    }
}

void SolveAlpha(const Pixels& overWhite, Pixels* overBlack) {
    if (overWhite.size() != overBlack->size()) return;
    const uint8_t* white = overWhite.data();
    for (uint8_t* pixel = overBlack->data(); pixel != overBlack->data() + overBlack->size();
         pixel += 4, white += 4) {
        int alpha = 0;
        for (int c = 0; c < 3; ++c) alpha = std::max(alpha, 255 - (white[c] - pixel[c]));
        DivideByAlpha(alpha <= kRemainder ? 0 : std::min(alpha, 255), pixel);
    }
}

void CutOut(const std::vector<uint8_t>& alpha, bool light, Pixels* overBlack) {
    if (alpha.size() * 4 != overBlack->size()) return;
    for (size_t i = 0; i < alpha.size(); ++i) {
        uint8_t* const pixel = overBlack->data() + 4 * i;
        const int brightest = std::max({pixel[0], pixel[1], pixel[2]});
        DivideByAlpha(light ? std::max<int>(alpha[i], brightest) : alpha[i], pixel);
    }
}

Pixels DrawPlaces(int width, int height) {
    Pixels places;
    places.reserve(4 * static_cast<size_t>(width) * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int place = (y & (kPlaces - 1)) << kPlaceBits | (x & (kPlaces - 1));
            places.push_back(static_cast<uint8_t>(place));
            places.push_back(static_cast<uint8_t>(place >> 8));
            places.push_back(static_cast<uint8_t>(place >> 16));
            places.push_back(kOpaque);
        }
    }
    return places;
}

Pixels FetchPlaces(const Pixels& places, const Pixels& source, int width, int height) {
    if (places.size() != source.size()) return source;
    Pixels fetched(source.size());
    size_t out = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, out += 4) {
            const int place = places[out] | places[out + 1] << 8 | places[out + 2] << 16;
            const int column = PlaceNear(x, place & (kPlaces - 1), width);
            const int row = PlaceNear(y, place >> kPlaceBits, height);
            const size_t from =
                4 * (static_cast<size_t>(row) * static_cast<size_t>(width) + static_cast<size_t>(column));
            std::copy_n(source.begin() + static_cast<ptrdiff_t>(from), 4,
                        fetched.begin() + static_cast<ptrdiff_t>(out));
        }
    }
    return fetched;
}

void FillFromNearest(int width, int height, Pixels* pixels) {
    std::vector<Nearest> map(pixels->size() / 4);
    for (size_t i = 0; i < map.size(); ++i) {
        if ((*pixels)[4 * i + 3] != 0) map[i] = {static_cast<uint32_t>(i), 0};
    }
    PassDistances(width, height, false, &map);
    PassDistances(width, height, true, &map);
    constexpr uint8_t kNoColor[3] = {kGrey, kGrey, kGrey};
    for (size_t i = 0; i < map.size(); ++i) {
        if (map[i].distance == 0) continue;
        const bool found = map[i].pixel != kNowhere;
        SetColor(pixels->data() + 4 * i, found ? pixels->data() + 4 * size_t{map[i].pixel} : kNoColor);
    }
}

void FillInProportion(Pixels* pixels) {
    const std::vector<uint32_t> visible = VisiblePixels(*pixels);
    if (visible.empty()) return FillWith({.red = kGrey, .green = kGrey, .blue = kGrey}, pixels);
    const uint64_t hidden = pixels->size() / 4 - visible.size();
    uint64_t number = 0;
    for (size_t i = 0; i < pixels->size(); i += 4) {
        if ((*pixels)[i + 3] != 0) continue;
        const size_t from = visible[static_cast<size_t>(number++ * visible.size() / hidden)];
        SetColor(pixels->data() + i, pixels->data() + 4 * from);
    }
}

void FillWith(RgbColor color, Pixels* pixels) {
    const uint8_t bytes[3] = {color.red, color.green, color.blue};
    for (size_t i = 0; i < pixels->size(); i += 4) {
        if ((*pixels)[i + 3] == 0) SetColor(pixels->data() + i, bytes);
    }
}

RgbColor FrequentColor(const std::vector<Frame>& frames) {
    struct Cell {
        uint64_t count = 0;
        uint8_t color[3] = {};
    };
    std::vector<Cell> cells(size_t{1} << 15);
    for (const Frame& frame : frames) {
        for (size_t i = 0; i < frame.pixels.size(); i += 4) {
            if (frame.pixels[i + 3] == 0) continue;
            Cell& cell = cells[CellOf(&frame.pixels[i])];
            if (cell.count++ == 0) SetColor(cell.color, &frame.pixels[i]);
        }
    }
    const auto most = std::max_element(cells.begin(), cells.end(),
                                       [](const Cell& a, const Cell& b) { return a.count < b.count; });
    return {.red = most->color[0], .green = most->color[1], .blue = most->color[2]};
}

void MixOnto(RgbColor color, Pixels* pixels) {
    const int ground[3] = {color.red, color.green, color.blue};
    for (size_t i = 0; i < pixels->size(); i += 4) {
        uint8_t* const pixel = pixels->data() + i;
        const int alpha = pixel[3];
        if (alpha == 0 || alpha == kOpaque) continue;
        for (int c = 0; c < 3; ++c)
            pixel[c] = static_cast<uint8_t>((pixel[c] * alpha + ground[c] * (255 - alpha) + 127) / 255);
        pixel[3] = kOpaque;
    }
}

bool HasHalfTransparency(const Pixels& pixels) {
    // Whole pixels and no branch, so that the compiler takes several at a time. Alpha is the byte behind the
    // others.
    static_assert(std::endian::native == std::endian::little);
    constexpr uint32_t kBetween = kOpaque - 1;
    uint32_t neither = 0;
    for (size_t i = 0; i < pixels.size(); i += 4) {
        uint32_t pixel;
        std::memcpy(&pixel, pixels.data() + i, sizeof pixel);
        neither |= static_cast<uint32_t>((pixel >> 24) - 1 < kBetween);
    }
    return neither != 0;
}

bool ApplyThreshold(Pixels* pixels) {
    if (!HasHalfTransparency(*pixels)) return false;
    for (size_t i = 3; i < pixels->size(); i += 4) (*pixels)[i] = (*pixels)[i] < kOpaqueFrom ? 0 : kOpaque;
    return true;
}

bool HasAlpha(const Animation& animation) {
    return std::any_of(animation.frames.begin(), animation.frames.end(),
                       [](const Frame& frame) { return frame.transparent; });
}

}  // namespace kfx::commands
