// SPDX-License-Identifier: MIT
// The parts of the sample animation, in pixels from the top left corner. Lights run from 0 to 1; `time` is 0
// to 1 over the whole animation, and everything that moves returns to its start.
#pragma once

#include "media/sample_noise.h"

namespace kfx {

constexpr double kWaterLine = 170;
constexpr double kSunLeft = 214;
constexpr double kSunTop = 104;

// Sky, sun, clouds and hills above the water line. They stand still.
Light DrawScenery(double x, double y);

// A layer of the moving parts at one point: its colour and how much it covers what is behind it.
struct Touch {
    Light color;
    double cover = 0;
};

// A glossy ball with turning segments that bobs on the lake, and its mirror image in the water.
Touch DrawBall(double x, double y, double time);

// A sailing boat and its mirror image.
Touch DrawBoat(double x, double y, double time);

// A kestrel that hovers with beating wings.
Touch DrawKestrel(double x, double y, double time);

// Reeds on the near shore, swaying.
Touch DrawReeds(double x, double y, double time);

// The title with a gleam that runs over it.
Touch DrawTitle(double x, double y, double time);

// How far the water displaces a mirrored point sideways.
double WaterShift(double x, double y, double time);

}  // namespace kfx
