// SPDX-License-Identifier: MIT
// The few functions from which the sample animation is drawn. They use only operations that every compiler
// and processor rounds alike, so that each build draws the same pixels; a mathematical library would not.
#pragma once

#include <cmath>
#include <cstdint>

namespace kfx {

struct Light {
    double red = 0;
    double green = 0;
    double blue = 0;
};

inline Light operator*(Light color, double factor) {
    return {color.red * factor, color.green * factor, color.blue * factor};
}
inline Light operator+(Light a, Light b) { return {a.red + b.red, a.green + b.green, a.blue + b.blue}; }

inline Light Mix(Light a, Light b, double share) { return a * (1 - share) + b * share; }

inline double Clamp01(double value) { return value < 0 ? 0 : value > 1 ? 1 : value; }

// 0 up to `from`, 1 from `to`, smooth between; `from` may be the larger one.
inline double SmoothStep(double from, double to, double value) {
    const double share = Clamp01((value - from) / (to - from));
    return share * share * (3 - 2 * share);
}

// The sine of an angle given in full turns, to about one part in a thousand: a parabola, bent towards the
// sine.
inline double Sine(double turns) {
    const double angle = turns - std::floor(turns + 0.5);
    const double parabola = 8 * angle - 16 * angle * std::fabs(angle);
    return 0.225 * (parabola * std::fabs(parabola) - parabola) + parabola;
}

inline double Cosine(double turns) { return Sine(turns + 0.25); }

// A value of 0 to 1 for each pair of whole numbers, without visible pattern.
inline double HashNoise(int32_t x, int32_t y) {
    uint32_t bits = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u;
    bits = (bits ^ bits >> 15) * 0x2C1B3C6Du;
    bits = (bits ^ bits >> 12) * 0x297A2D39u;
    return static_cast<double>((bits ^ bits >> 15) >> 8) / 16777216.0;
}

// The hash between whole numbers, smoothly.
inline double ValueNoise(double x, double y) {
    const double left = std::floor(x);
    const double top = std::floor(y);
    const double across = SmoothStep(0, 1, x - left);
    const double down = SmoothStep(0, 1, y - top);
    const auto column = static_cast<int32_t>(left);
    const auto row = static_cast<int32_t>(top);
    const double upper = HashNoise(column, row) * (1 - across) + HashNoise(column + 1, row) * across;
    const double lower = HashNoise(column, row + 1) * (1 - across) + HashNoise(column + 1, row + 1) * across;
    return upper * (1 - down) + lower * down;
}

// Octaves of noise, each twice as fine and half as strong as the one before; 0 to 1.
inline double Fractal(double x, double y, int octaves) {
    double sum = 0;
    double strength = 0.5;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * ValueNoise(x, y);
        total += strength;
        strength /= 2;
        // An odd offset keeps the octaves' lattices from lying on each other.
        x = 2 * x + 17.3;
        y = 2 * y + 9.1;
    }
    return sum / total;
}

}  // namespace kfx
