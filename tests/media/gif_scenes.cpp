// SPDX-License-Identifier: MIT
#include "tests/media/gif_scenes.h"

#include <algorithm>
#include <random>

#include "media/bitmap_font.h"
#include "media/quantize.h"
#include "media/sample_noise.h"

namespace kfx::test {
namespace {

GifAnimation StartGif(int width, int height) {
    GifAnimation gif;
    gif.width = width;
    gif.height = height;
    gif.loopCount = kLoopForever;
    return gif;
}

// Calls `indexOf(x, y)` for each pixel.
template <typename IndexOf>
GifFrame DrawFrame(const GifAnimation& gif, int disposal, const IndexOf& indexOf) {
    GifFrame frame;
    frame.delay = 5;
    frame.disposal = disposal;
    frame.indices.reserve(static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height));
    for (int y = 0; y < gif.height; ++y)
        for (int x = 0; x < gif.width; ++x) frame.indices.push_back(static_cast<uint8_t>(indexOf(x, y)));
    return frame;
}

uint8_t Level(double light) { return static_cast<uint8_t>(255 * Clamp01(light) + 0.5); }

// From dark blue over red to yellow and white.
std::vector<RgbColor> Ramp(int entries) {
    std::vector<RgbColor> palette;
    for (int i = 0; i < entries; ++i) {
        const double at = static_cast<double>(i) / (entries - 1);
        palette.push_back(
            {Level(0.1 + 1.4 * at), Level(1.6 * at - 0.5), Level(0.4 - at + 1.8 * at * at * at)});
    }
    return palette;
}

bool IsInDisc(double x, double y, double left, double top, double radius) {
    return (x - left) * (x - left) + (y - top) * (y - top) < radius * radius;
}

// A place that runs once round the middle in `frames` frames.
struct Place {
    double left;
    double top;
};

Place PlaceOnCircle(const GifAnimation& gif, int frame, int frames) {
    const double turns = static_cast<double>(frame) / frames;
    return {.left = gif.width * (0.5 + 0.3 * Cosine(turns)), .top = gif.height * (0.5 + 0.3 * Sine(turns))};
}

int CloudIndex(double x, double y, int entries) {
    return std::min(static_cast<int>(Fractal(x / 24, y / 24, 5) * entries), entries - 1);
}

// A ball moves over a picture of clouds.
GifAnimation SpriteOverPicture(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(200);
    for (int i = 0; i < 20; ++i) gif.globalPalette.push_back({0, Level(0.3 + 0.03 * i), Level(0.05 * i)});
    for (int i = 0; i < frames; ++i) {
        const Place place = PlaceOnCircle(gif, i, frames);
        const double radius = height / 8.0;
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int x, int y) {
            if (!IsInDisc(x, y, place.left, place.top, radius)) return CloudIndex(x, y, 200);
            const double shade = 10 + 9 * ((place.left - x) + (place.top - y)) / (2 * radius);
            return 200 + std::clamp(static_cast<int>(shade), 0, 19);
        }));
    }
    return gif;
}

// A shaded ball with a hole turns about the middle; all around it is transparent.
GifAnimation TransparentSprite(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(60);
    gif.globalPalette.push_back({});
    for (int i = 0; i < frames; ++i) {
        const Place place = PlaceOnCircle(gif, i, frames);
        const double radius = height / 5.0;
        gif.frames.push_back(DrawFrame(gif, kDisposalBackground, [&](int x, int y) {
            if (!IsInDisc(x, y, place.left, place.top, radius)) return 60;
            if (IsInDisc(x, y, place.left, place.top, radius / 3)) return 60;
            return std::clamp(static_cast<int>(30 + 29 * (x - place.left + i) / radius), 0, 59);
        }));
        gif.frames.back().transparentIndex = 60;
    }
    return gif;
}

// Text appears letter by letter.
GifAnimation TypedText(int width, int height, int frames) {
    const std::string line = "the quick brown fox jumps over the lazy dog ";
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = {{255, 255, 255}, {20, 20, 30}, {200, 40, 40}, {240, 240, 200}};
    for (int i = 0; i < frames; ++i) {
        const int columns = width / kGlyphAdvance;
        const int typed = (i + 1) * columns / 2;
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int x, int y) {
            const int column = x / kGlyphAdvance;
            const int row = y / (kGlyphHeight + 2);
            const int number = row * columns + column;
            if (number == typed) return 2;
            if (number > typed || column >= columns) return row % 2 == 0 ? 0 : 3;
            const char letter = line[static_cast<size_t>(number) % line.size()];
            return HasInk(letter, x % kGlyphAdvance, y % (kGlyphHeight + 2)) ? 1 : row % 2 == 0 ? 0 : 3;
        }));
    }
    return gif;
}

// Every pixel of every frame is another of 64 greys.
GifAnimation Noise(int width, int height, int frames) {
    std::mt19937 random(7);
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(64);
    for (int i = 0; i < frames; ++i)
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int, int) { return random() >> 26; }));
    return gif;
}

// A dithered gradient moves sideways.
GifAnimation ScrollingGradient(int width, int height, int frames) {
    constexpr int kOrdered[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(32);
    for (int i = 0; i < frames; ++i) {
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int x, int y) {
            const double at = 0.5 + 0.5 * Sine((x + 3.0 * i) / width + 0.3 * y / height);
            return std::clamp(static_cast<int>(31 * at + kOrdered[y % 4][x % 4] / 16.0), 0, 31);
        }));
    }
    return gif;
}

// A picture in true colour grows darker, with a palette of its own for each frame.
GifAnimation FadingPicture(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    for (int i = 0; i < frames; ++i) {
        std::vector<uint8_t> pixels;
        const double light = 1 - 0.8 * i / frames;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double cloud = Fractal(x / 30.0, y / 30.0, 4);
                pixels.insert(pixels.end(), {Level(light * cloud), Level(light * (0.2 + 0.6 * y / height)),
                                             Level(light * (1 - cloud)), 255});
            }
        }
        GifFrame frame;
        QuantizeFrame(pixels.data(), width, height, 256, &frame);
        frame.delay = 8;
        frame.disposal = kDisposalKeep;
        gif.frames.push_back(std::move(frame));
    }
    return gif;
}

// A line of one colour turns about the middle of an empty sheet.
GifAnimation TurningLine(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = {{250, 250, 250}, {0, 0, 0}};
    for (int i = 0; i < frames; ++i) {
        const double across = Cosine(0.5 * i / frames);
        const double down = Sine(0.5 * i / frames);
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int x, int y) {
            const int right = x - width / 2, below = y - height / 2;
            return std::fabs(right * down - below * across) < 1.2 ? 1 : 0;
        }));
    }
    return gif;
}

// Lamps on a wall of clouds go on for one frame each.
GifAnimation BlinkingLamps(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(120);
    gif.globalPalette.push_back({255, 255, 120});
    for (int i = 0; i < frames; ++i) {
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int x, int y) {
            const double left = width * (0.2 + 0.2 * (i % 4));
            const bool lit = i % 2 == 1 && IsInDisc(x, y, left, height / 2.0, height / 6.0);
            return lit ? 120 : CloudIndex(x, y, 120);
        }));
    }
    return gif;
}

// A picture of 16 colours with random dither comes nearer.
GifAnimation DitheredZoom(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(16);
    for (int i = 0; i < frames; ++i) {
        const double scale = 24 + 4 * i;
        gif.frames.push_back(DrawFrame(gif, kDisposalKeep, [&](int x, int y) {
            const double cloud = Fractal(x / scale, y / scale, 3);
            return std::clamp(static_cast<int>(16 * cloud + HashNoise(x, y) - 0.5), 0, 15);
        }));
    }
    return gif;
}

// Rings that grow from points of a transparent ground.
GifAnimation GrowingRings(int width, int height, int frames) {
    GifAnimation gif = StartGif(width, height);
    gif.globalPalette = Ramp(12);
    gif.globalPalette.push_back({});
    for (int i = 0; i < frames; ++i) {
        gif.frames.push_back(DrawFrame(gif, kDisposalBackground, [&](int x, int y) {
            for (int ring = 0; ring < 3; ++ring) {
                const double radius = 4 + (i * 3 + ring * 9) % (height / 3);
                const double left = width * (0.25 + 0.25 * ring);
                if (IsInDisc(x, y, left, height / 2.0, radius) &&
                    !IsInDisc(x, y, left, height / 2.0, radius - 4))
                    return 4 * ring + static_cast<int>(radius) % 4;
            }
            return 12;
        }));
        gif.frames.back().transparentIndex = 12;
    }
    return gif;
}

// A screen on which only a text cursor blinks, and a line is added from time to time.
GifAnimation BlinkingCursor(int width, int height, int frames) {
    GifAnimation gif = TypedText(width, height, frames);
    for (int i = 0; i < frames; ++i) {
        GifFrame& frame = gif.frames[static_cast<size_t>(i)];
        if (i % 4 != 0) frame = gif.frames[static_cast<size_t>(i - 1)];
        frame.delay = i % 3;
        for (int y = 2; y < 10; ++y)
            frame.indices[static_cast<size_t>(y) * static_cast<size_t>(width) +
                          static_cast<size_t>(width / 2)] = static_cast<uint8_t>(i % 2);
    }
    return gif;
}

}  // namespace

const GifScene kGifScenes[kGifSceneCount] = {
    {.name = "sprite_over_picture", .make = SpriteOverPicture},
    {.name = "transparent_sprite", .make = TransparentSprite},
    {.name = "typed_text", .make = TypedText},
    {.name = "noise", .make = Noise},
    {.name = "scrolling_gradient", .make = ScrollingGradient},
    {.name = "fading_picture", .make = FadingPicture},
    {.name = "turning_line", .make = TurningLine},
    {.name = "blinking_lamps", .make = BlinkingLamps},
    {.name = "dithered_zoom", .make = DitheredZoom},
    {.name = "growing_rings", .make = GrowingRings},
    {.name = "blinking_cursor", .make = BlinkingCursor},
};

}  // namespace kfx::test
