// SPDX-License-Identifier: MIT
// Emboss: turns edges into relief with a matrix of weights from a Gaussian bell. The weights are positive in
// the quadrant to the right of and above the pixel, zero on the anti-diagonal and negative elsewhere. They
// nearly cancel, and the result is divided by their small sum, which makes the contrast harsh.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/convolution.h"
#include "kernels/emboss_estimate.h"
#include "kernels/math_rows.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kDeepest = 16383;

bool HoldsMatrix(ImageHandle source, int32_t n) {
    const ImageLock from(source);
    return from && from->width >= n && from->height >= n;
}

// A picture smaller than the matrix stays as it is.
ImageHandle ApplyEmboss(ImageHandle source, const KernelInput& input) {
    const double sigma = input.values[0] / 10.0;  // the bell's spread, pixels
    const int32_t depth = input.values[1];
    // No picture is large enough for a larger matrix, and the size of the matrix would overflow.
    if (depth < 0 || depth > kDeepest || !HoldsMatrix(source, depth | 1)) return nullptr;
    const int32_t n = depth | 1;  // the next odd number
    const int32_t half = n / 2;
    const Scratch<double> matrix(static_cast<size_t>(n) * static_cast<size_t>(n));
    if (!matrix) return nullptr;
    double* weight = matrix.address;
    for (int32_t ky = -half; ky <= half; ++ky, weight += n) {
        for (int32_t kx = -half; kx <= half; ++kx) weight[half + kx] = -(kx * kx + ky * ky) / (sigma * sigma);
        ExpRow(weight, n, weight);
        for (int32_t kx = -half; kx <= half; ++kx)
            weight[half + kx] = kx == -ky ? 0.0 : weight[half + kx] * (kx >= 0 && ky >= 0 ? 8.0 : -8.0);
    }
    const ImageHandle fast = EmbossWithinBound(source, n, matrix.address, sigma);
    return fast ? fast : ConvolveImage(source, n, matrix.address);
}

constexpr auto kControls = MakeControls({
    Slider(IDC_EMBOSS_RADIUS, &settings.style000Radius, EMBOSS_RADIUS_RANGE, EMBOSS_RADIUS_CAPTION),
    Slider(IDC_EMBOSS_DEPTH, &settings.style000Depth, EMBOSS_DEPTH_RANGE, EMBOSS_DEPTH_CAPTION),
});

}  // namespace

const Effect kEmboss = {
    .name = "Emboss", .panel = IDD_PANEL_EMBOSS, .controls = kControls, .apply = ApplyEmboss};

}  // namespace kfx
