// SPDX-License-Identifier: MIT
// Radial Blur: every pixel becomes the average of samples along an arc about the picture's centre. It works
// in place on a copy, from the top left to the bottom right, so that pixels already blurred feed the samples
// of later ones.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/arc_blur.h"
#include "kernels/math_rows.h"
#include "kernels/packed_sums.h"
#include "kernels/region_copy.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kFullTurn = 360;

// For any depth and any number of samples.
uint32_t BlurredPixel(const WorkingImage* image, int32_t x, int32_t y, const Arc& arc, uint32_t background) {
    const double dx = x - arc.centerX;
    const double dy = y - arc.centerY;
    const int32_t stride = SampleStep(arc, dx, dy);
    uint32_t red = 0, green = 0, blue = 0, count = 0;
    for (int32_t i = 0; i < arc.count; i += stride, ++count) {
        const double column = arc.cosines[i] * dx + arc.centerX - arc.sines[i] * dy + 0.5;
        const double row = arc.sines[i] * dx + arc.centerY + arc.cosines[i] * dy + 0.5;
        uint32_t value = GetDibPixel(image, static_cast<int32_t>(column), static_cast<int32_t>(row));
        if (value == kNoPixel) value = background;
        red += RedOf(value);
        green += GreenOf(value);
        blue += BlueOf(value);
    }
    return Rgb(red / count, green / count, blue / count);
}

// Takes pictures of every depth; pixel values are averaged byte by byte.
ImageHandle ApplyRadialBlur(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    if (!from) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    const double centerX = width * 0.5;
    const double centerY = height * 0.5;
    const double radius = std::sqrt(centerX * centerX + centerY * centerY);
    const double arcWidth = std::clamp(input.values[0], -kFullTurn, kFullTurn) * 3.141592653589793 / 180.0;
    const auto count = static_cast<int32_t>(std::fabs(std::sqrt(radius) * (arcWidth * 4.0) + 2.0));
    if (count < 2) return nullptr;  // only for negative angles

    NewImage to(CreateLike(from.image));
    const Scratch<double> cosines(static_cast<size_t>(count));
    const Scratch<double> sines(static_cast<size_t>(count));
    if (!to || !cosines || !sines) return nullptr;
    CopyPixels(to.image, from.image, width, height);
    const double step = arcWidth / (count - 1);
    for (int32_t i = 0; i < count; ++i) sines.address[i] = i * step - (count - 1) * step * 0.5;
    SinCosRow(sines.address, count, sines.address, cosines.address);
    const Arc arc = {.count = count,
                     .cosines = cosines.address,
                     .sines = sines.address,
                     .centerX = centerX,
                     .centerY = centerY,
                     .radius = radius};
    if (from->bitCount == 24 && count <= kMostPackedSamples)
        return BlurArcs(to.image, arc, input.background) ? to.Release() : nullptr;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            SetDibPixel(to.image, x, y, BlurredPixel(to.image, x, y, arc, input.background));
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_RADIAL_BLUR_ANGLE, &settings.style003Angle, RADIAL_BLUR_ANGLE_RANGE,
           RADIAL_BLUR_ANGLE_CAPTION),
});

}  // namespace

const Effect kRadialBlur = {
    .name = "Radial Blur", .panel = IDD_PANEL_RADIAL_BLUR, .controls = kControls, .apply = ApplyRadialBlur};

}  // namespace kfx
