// SPDX-License-Identifier: MIT
#include "bench/bench_picture.h"

#include <algorithm>
#include <iterator>

#include "framework/memory_guards.h"

namespace kfx::bench {
namespace {

uint32_t Hash(uint32_t x, uint32_t y, uint32_t layer) {
    uint32_t h = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ layer * 0xC2B2AE3Du;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    return h ^ h >> 15;
}

// Noise in 0 .. 255 that changes smoothly over `cell` pixels.
int32_t SmoothNoise(int32_t x, int32_t y, int32_t cell, uint32_t layer) {
    const auto corner = [&](int32_t dx, int32_t dy) {
        return static_cast<int32_t>(
            Hash(static_cast<uint32_t>(x / cell + dx), static_cast<uint32_t>(y / cell + dy), layer) & 255);
    };
    const int32_t fx = x % cell, fy = y % cell;
    const int32_t top = corner(0, 0) * (cell - fx) + corner(1, 0) * fx;
    const int32_t bottom = corner(0, 1) * (cell - fx) + corner(1, 1) * fx;
    return (top * (cell - fy) + bottom * fy) / (cell * cell);
}

uint32_t ChannelAt(int32_t x, int32_t y, uint32_t channel) {
    const int32_t shapes = SmoothNoise(x, y, 160, channel) * 5 + SmoothNoise(x, y, 40, channel + 3) * 2 +
                           SmoothNoise(x, y, 9, channel + 6);
    const bool edge = SmoothNoise(x, y, 97, 20) > 150;
    const auto grain =
        static_cast<int32_t>(Hash(static_cast<uint32_t>(x), static_cast<uint32_t>(y), channel + 9) % 9);
    return static_cast<uint32_t>(std::clamp(shapes / 8 + grain - 4 + (edge ? 40 : -20), 0, 255));
}

uint32_t PhotographAt(int32_t x, int32_t y) {
    return Rgb(ChannelAt(x, y, 0), ChannelAt(x, y, 1), ChannelAt(x, y, 2));
}

uint32_t FlatAt(int32_t, int32_t) { return Rgb(200, 120, 40); }

// Steps of one level, two to four pixels wide, along both diagonals: a folded ramp without a jump.
uint32_t GradientAt(int32_t x, int32_t y) {
    const auto ramp = [](int32_t place) {
        const int32_t folded = place & 511;
        return static_cast<uint32_t>(folded < 256 ? folded : 511 - folded);
    };
    return Rgb(ramp((x + y) / 2), ramp((x - y + 4096) / 3), ramp((x + 2 * y) / 4));
}

uint32_t NoiseAt(int32_t x, int32_t y) {
    return Hash(static_cast<uint32_t>(x), static_cast<uint32_t>(y), 30) & 0xFFFFFF;
}

// Lines of black signs, five by seven pixels, on white, with a gap after some signs and below each line.
uint32_t TextAt(int32_t x, int32_t y) {
    const auto column = static_cast<uint32_t>(x / 6), line = static_cast<uint32_t>(y / 11);
    const bool blank = x % 6 == 5 || y % 11 >= 7 || Hash(column, line, 31) % 6 == 0;
    const auto dot = static_cast<uint32_t>(y % 11 * 5 + x % 6);
    return !blank && Hash(Hash(column, line, 32) % 40, dot, 33) % 5 < 2 ? 0x000000 : 0xFFFFFF;
}

}  // namespace

const Content kContents[] = {
    {.name = "photograph", .pixelAt = PhotographAt},
    {.name = "flat", .pixelAt = FlatAt},
    {.name = "gradient", .pixelAt = GradientAt},
    {.name = "noise", .pixelAt = NoiseAt},
    {.name = "text", .pixelAt = TextAt},
};
const size_t kContentCount = std::size(kContents);

ImageHandle MakePicture(const Content& content, int32_t width, int32_t height) {
    const ImageHandle picture = CreateDib(width, height, nullptr, 24);
    const ImageLock lock(picture);
    for (int32_t y = 0; lock.image && y < height; ++y)
        for (int32_t x = 0; x < width; ++x) SetDibPixel(lock.image, x, y, content.pixelAt(x, y));
    return picture;
}

ImageHandle MakeBenchPicture(int32_t width, int32_t height) {
    return MakePicture(kContents[0], width, height);
}

}  // namespace kfx::bench
