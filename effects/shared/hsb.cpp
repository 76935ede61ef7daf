// SPDX-License-Identifier: MIT
#include "effects/shared/hsb.h"

#include <cmath>

namespace kfx {
namespace {

struct Hsb {
    double hue;  // degrees; any number, the circle is not closed
    double saturation;
    double brightness;
};

Hsb ToHsb(float red, float green, float blue) {
    const double greatest = red > green ? (red > blue ? red : blue) : (green > blue ? green : blue);
    const double least = red < green ? (red < blue ? red : blue) : (green < blue ? green : blue);
    Hsb color = {-1, 0, greatest};
    if (greatest == 0) return color;
    const double delta = greatest - least;
    color.saturation = delta / greatest;
    const double divisor = delta == 0 ? 1 : delta;
    if (red == greatest)
        color.hue = (double{green} - double{blue}) / divisor;
    else if (green == greatest)
        color.hue = (double{blue} - double{red}) / divisor + 2;
    else
        color.hue = (double{red} - double{green}) / divisor + 4;
    color.hue *= 60;
    if (color.hue < 0) color.hue += 360;
    return color;
}

uint8_t ToByte(double value) { return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value); }

void PutRgb(uint8_t* pixel, double red, double green, double blue) {
    pixel[0] = ToByte(blue * 255);
    pixel[1] = ToByte(green * 255);
    pixel[2] = ToByte(red * 255);
}

void PutHsb(uint8_t* pixel, const Hsb& color) {
    const double saturation = color.saturation > 1 ? 1 : color.saturation;
    const double v = color.brightness > 1 ? 1 : color.brightness;
    if (saturation == 0) {
        pixel[0] = pixel[1] = pixel[2] = ToByte(static_cast<float>(v * 255));
        return;
    }
    const double position = color.hue / 60;
    const double sector = std::floor(position);
    const double fraction = position - sector;
    const double p = (1 - saturation) * v;
    const double q = (1 - fraction * saturation) * v;
    const double t = (1 - (1 - fraction) * saturation) * v;
    if (sector == 0)
        PutRgb(pixel, v, t, p);
    else if (sector == 1)
        PutRgb(pixel, q, v, p);
    else if (sector == 2)
        PutRgb(pixel, p, v, t);
    else if (sector == 3)
        PutRgb(pixel, p, q, v);
    else if (sector == 4)
        PutRgb(pixel, t, p, v);
    else
        PutRgb(pixel, v, p, q);
}

}  // namespace

HsbShift MakeHsbShift(int32_t hue, int32_t saturation, int32_t brightness) {
    return {hue - 180.0, 2 * (static_cast<float>(saturation) / 200),
            2 * (static_cast<float>(brightness) / 200)};
}

void ShiftHsbRow(uint8_t* row, int32_t width, const HsbShift& shift) {
    for (int32_t x = 0; x < width; ++x, row += 3) {
        Hsb color = ToHsb(static_cast<float>(row[2] / 255.0), static_cast<float>(row[1] / 255.0),
                          static_cast<float>(row[0] / 255.0));
        color.hue += shift.hue;
        color.saturation *= shift.saturation;
        color.brightness *= shift.brightness;
        PutHsb(row, color);
    }
}

}  // namespace kfx
