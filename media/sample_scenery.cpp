// SPDX-License-Identifier: MIT
#include "media/sample_scene.h"

namespace kfx {
namespace {

constexpr Light kZenith = {0.10, 0.15, 0.36};
constexpr Light kUpperSky = {0.36, 0.32, 0.55};
constexpr Light kLowerSky = {0.90, 0.52, 0.42};
constexpr Light kHorizon = {1.00, 0.80, 0.48};
constexpr Light kSunColor = {1.00, 0.95, 0.76};
constexpr Light kHaze = {0.93, 0.62, 0.47};

struct HillLayer {
    double base;    // height of the ridge's middle
    double relief;  // how far it rises and falls
    double scale;   // pixels from one hill to the next
    double offset;  // where in the noise the ridge is taken from
    Light lit;
    Light shaded;
    double haze;
    int roughness;  // octaves of the ridge
};

constexpr HillLayer kHills[] = {
    {118, 66, 74, 3.7, {0.80, 0.56, 0.58}, {0.34, 0.28, 0.47}, 0.44, 6},
    {140, 40, 56, 11.2, {0.62, 0.46, 0.32}, {0.20, 0.20, 0.32}, 0.22, 5},
    {158, 34, 43, 24.5, {0.46, 0.44, 0.18}, {0.07, 0.13, 0.14}, 0.05, 4},
};

Light SkyAt(double x, double y) {
    const double height = y / kWaterLine;
    Light sky = Mix(kZenith, kUpperSky, SmoothStep(0.0, 0.45, height));
    sky = Mix(sky, kLowerSky, SmoothStep(0.25, 0.72, height));
    sky = Mix(sky, kHorizon, SmoothStep(0.55, 0.95, height));

    const double across = x - kSunLeft;
    const double down = y - kSunTop;
    const double distance = std::sqrt(across * across + down * down);
    const double glow = 1 / (1 + distance * distance / 1500);
    sky = Mix(sky, kSunColor, 0.75 * glow * glow);

    // Long clouds, lit from the side that faces the sun.
    const double cloud = Fractal(x / 62 + 5, y / 17 + 2, 5);
    const double towardsSun = Fractal((x + across * -0.045) / 62 + 5, (y - down * 0.06) / 17 + 2, 5);
    const double cover = SmoothStep(0.50, 0.76, cloud) * SmoothStep(150, 90, y);
    const double lightness = Clamp01(0.5 + 5.0 * (cloud - towardsSun));
    const Light cloudColor = Mix(Light{0.42, 0.30, 0.46}, Light{1.0, 0.80, 0.62}, lightness);
    sky = Mix(sky, cloudColor, 0.82 * cover);

    return Mix(sky, kSunColor, SmoothStep(17.5, 16.0, distance) * (1 - 0.45 * cover));
}

double RidgeOf(const HillLayer& hills, double x) {
    const double wide = Fractal(x / hills.scale + hills.offset, hills.offset, hills.roughness);
    return hills.base + hills.relief * (0.5 - wide) * 1.6;
}

// Slopes that face the sun are bright; the texture stands for rocks, meadows and trees.
Light HillColor(const HillLayer& hills, double x, double y) {
    const double u = x / (hills.scale * 0.30) + hills.offset * 7;
    const double v = y / (hills.scale * 0.22) + hills.offset;
    const double here = Fractal(u, v, 5);
    const double sunSide = std::fmax(-1, std::fmin(1, (kSunLeft - x) / 90));  // to the right of here: 1
    const double towardsSun = Fractal(u + 0.22 * sunSide, v - 0.24, 5);
    const double slope = RidgeOf(hills, x + 3) - RidgeOf(hills, x - 3);
    const double light = Clamp01(0.40 + 2.4 * (here - towardsSun) + 0.10 * slope * sunSide);
    const Light ground = Mix(hills.shaded, hills.lit, light) * (0.80 + 0.4 * here);
    return Mix(ground, kHaze,
               hills.haze * SmoothStep(hills.base - hills.relief, kWaterLine + 10, y) + hills.haze / 2);
}

}  // namespace

Light DrawScenery(double x, double y) {
    for (int i = 2; i >= 0; --i)
        if (y >= RidgeOf(kHills[i], x)) return HillColor(kHills[i], x, y);
    return SkyAt(x, y);
}

double WaterShift(double x, double y, double time) {
    // Waves draw together towards the far shore.
    const double depth = (y - kWaterLine) / (240 - kWaterLine);
    const double distance = 1 / (depth + 0.14);
    const double wave =
        Sine(1.9 * distance + x / 210 + 2 * time) + 0.6 * Sine(4.3 * distance - x / 130 + 3 * time);
    return (0.8 + 6.5 * depth) * wave;
}

}  // namespace kfx
