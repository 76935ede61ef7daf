// SPDX-License-Identifier: MIT
// The ranges were chosen by looking at thumbnails of the sample animation. Bump and Neon have no parameters,
// and so no variations.
#include <iterator>

#include "stage/variation.h"

namespace kfx::stage {
namespace {

constexpr CuratedLook kLooks[] = {
    {"Emboss", {{"Radius", 13, 36}, {"Depth", 15, 40}}},
    {"Explode", {{"Radius", 60, 100}, {"Center X", 25, 75}, {"Center Y", 25, 75}}},
    {"Gaussian Blur", {{"Radius", 7, 24}, {"Depth", 15, 45}}},
    {"Glass Block", {{"Block size", 5, 28}}},
    {"HSB and Channels", {{"Hue", 220, 330}, {"Saturation", 80, 160}, {"Brightness", 90, 115}}},
    {"HSB and Channels", {{"Enable HSB", 0, 0}, {"Enable channels", 1, 1}, {"Channels", 0, 6}}},
    {"HSB and Channels", {{"Hue", 30, 140}, {"Saturation", 80, 160}, {"Brightness", 90, 115}}},
    {"HSB and Channels", {{"Invert colors", 1, 1}, {"Hue", 0, 360}, {"Saturation", 70, 130}}},
    {"Implode", {{"Radius", 32, 58}, {"Center X", 30, 70}, {"Center Y", 30, 70}}},
    {"Implode", {{"Radius", 64, 96}, {"Center X", 47, 53}, {"Center Y", 47, 53}}},
    {"Lens Flare", {{"Center X", 12, 88}, {"Center Y", 12, 60}, {"Depth", 110, 260}}},
    {"Motion Blur", {{"Depth", 7, 18}, {"Radius", 5, 60}, {"Angle", 0, 359}}},
    {"Normalize", {{"Distributed", 0, 0}}},
    {"Normalize", {{"Distributed", 1, 1}}},
    {"Obscure", {{"Level", 3, 13}}},
    {"Oil Painting", {{"Radius", 100, 400}}},
    {"Radial Blur", {{"Angle", 3, 18}}},
    {"Raster", {{"Density", 90, 220}, {"Size", 1, 3}}},
    {"Ripple",
     {{"Center X", 60, 140},
      {"Center Y", 60, 140},
      {"Amplitude", 1500, 2600},
      {"Wavelength", 1500, 4000},
      {"Phase", 0, 360},
      {"Energy", 18, 28}}},
    {"Ripple",
     {{"Center X", 0, 200},
      {"Center Y", 0, 200},
      {"Amplitude", 250, 600},
      {"Wavelength", 2400, 5000},
      {"Phase", 0, 360},
      {"Dissipate", 0, 0}}},
    {"Solarize", {{"Threshold", 70, 215}}},
    {"Swirl", {{"Angle", -420, -60}}},
    {"Swirl", {{"Angle", 60, 420}}},
    {"Water Drops", {{"Radius", 3, 10}}},
    {"Zoom Blur", {{"Radius", 100, 250}, {"Cycles", 8, 32}}},
};

}  // namespace

const CuratedLook* CuratedLooks(size_t* count) {
    *count = std::size(kLooks);
    return kLooks;
}

}  // namespace kfx::stage
