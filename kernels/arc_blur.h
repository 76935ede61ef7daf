// SPDX-License-Identifier: MIT
// The sums along arcs of Radial Blur.
#pragma once

#include <algorithm>
#include <cmath>

#include "framework/working_image.h"

namespace kfx {

struct Arc {
    int32_t count;  // of samples, at least 2
    const double* cosines;
    const double* sines;
    double centerX;
    double centerY;
    double radius;  // half the picture's diagonal
};

// Replaces every pixel of a locked 24-bit image, from the top left to the bottom right, by the average of its
// samples along the arc, at most kMostPackedSamples; samples outside count as `background` (0x00BBGGRR).
// False: memory ran out, the image is as it was.
bool BlurArcs(WorkingImage* image, const Arc& arc, uint32_t background);

// Pixels near the centre, whose arcs are short, take only every s-th sample. Returns s.
inline int32_t SampleStep(const Arc& arc, double dx, double dy) {
    const double distance = std::sqrt(dx * dx + dy * dy);
    // The centre itself takes every sample, as a pixel at full radius does.
    const auto quotient = static_cast<int32_t>(arc.radius / (distance == 0 ? arc.radius : distance));
    return std::clamp(quotient, 1, arc.count - 1);
}

}  // namespace kfx
