// SPDX-License-Identifier: MIT
// Swirl: the ellipse that touches the picture's edges is twisted about the centre, most in the middle and not
// at all at its rim. The slider runs from 0 to 2880 for -1440 to +1440 degrees.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/twist.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kNoTurn = 1440;  // the slider's position for 0 degrees
constexpr double kPi = 3.141592653589793;

ImageHandle ApplySwirl(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    if (!from) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    // In 32 bits with wrap-around: a file may hold any number.
    const auto degrees = static_cast<int32_t>(static_cast<uint32_t>(input.values[0]) - kNoTurn);
    const Turn turn = {(width > height ? width : height) * 0.5, degrees * kPi / 180};
    const int32_t key[] = {width, height, input.values[0]};
    RegionDistortion distortion = MakeTwist(turn);
    distortion.centerX = width * 0.5;
    distortion.centerY = height * 0.5;
    distortion.key = key;
    distortion.keyBytes = sizeof key;
    return DistortRegion(from.image, distortion, input.background, input.cache);
}

constexpr auto kControls = MakeControls({
    Slider(IDC_SWIRL_ANGLE, &settings.style015Angle, SWIRL_ANGLE_RANGE, SWIRL_ANGLE_CAPTION),
});

}  // namespace

const Effect kSwirl = {.name = "Swirl", .panel = IDD_PANEL_SWIRL, .controls = kControls, .apply = ApplySwirl};

}  // namespace kfx
