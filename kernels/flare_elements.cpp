// SPDX-License-Identifier: MIT
#include "kernels/flare_elements.h"

namespace kfx {
namespace {

struct ElementDesign {
    uint8_t color[3];  // red, green, blue
    double size;       // share of the flare's scale
    double position;   // -1: on the light, 0: in the picture's centre, above: beyond it
    FlareKind kind;
};

constexpr ElementDesign kElements[kFlareElements] = {
    {.color = {0, 14, 113}, .size = 0.027, .position = 0.6699, .kind = FlareKind::Disc},
    {.color = {90, 181, 142}, .size = 0.01, .position = 0.2692, .kind = FlareKind::Disc},
    {.color = {56, 140, 106}, .size = 0.005, .position = -0.0112, .kind = FlareKind::Disc},
    {.color = {9, 29, 19}, .size = 0.031, .position = 0.649, .kind = FlareKind::Spot},
    {.color = {24, 14, 0}, .size = 0.015, .position = 0.4696, .kind = FlareKind::Spot},
    {.color = {24, 14, 0}, .size = 0.037, .position = 0.4087, .kind = FlareKind::Spot},
    {.color = {42, 19, 0}, .size = 0.022, .position = -0.2003, .kind = FlareKind::Spot},
    {.color = {0, 9, 17}, .size = 0.025, .position = -0.4103, .kind = FlareKind::Spot},
    {.color = {0, 4, 10}, .size = 0.058, .position = -0.4503, .kind = FlareKind::Spot},
    {.color = {5, 5, 14}, .size = 0.017, .position = -0.5112, .kind = FlareKind::Spot},
    {.color = {9, 4, 0}, .size = 0.2, .position = -1.496, .kind = FlareKind::Spot},
    {.color = {9, 4, 0}, .size = 0.5, .position = -1.496, .kind = FlareKind::Spot},
    {.color = {34, 19, 0}, .size = 0.075, .position = 0.4487, .kind = FlareKind::Halo},
    {.color = {14, 26, 0}, .size = 0.1, .position = 1, .kind = FlareKind::Halo},
    {.color = {10, 25, 13}, .size = 0.039, .position = -1.301, .kind = FlareKind::Halo},
    {.color = {9, 0, 17}, .size = 0.19, .position = 1.309, .kind = FlareKind::Ring},
    {.color = {9, 16, 5}, .size = 0.195, .position = 1.309, .kind = FlareKind::Ring},
    {.color = {17, 4, 0}, .size = 0.2, .position = 1.309, .kind = FlareKind::Ring},
    {.color = {17, 4, 0}, .size = 0.038, .position = -1.301, .kind = FlareKind::Ring},
};
// This element lies exactly opposite the light, also where half a side was rounded down.
constexpr int32_t kMirrorElement = 13;

struct GlowDesign {
    uint8_t color[3];
    double radius;  // share of the flare's scale
    FlareKind kind;
};

constexpr GlowDesign kGlows[] = {
    {.color = {239, 239, 239}, .radius = 0.0375, .kind = FlareKind::SteepGlow},
    {.color = {245, 245, 245}, .radius = 0.078125, .kind = FlareKind::SteepGlow},
    {.color = {255, 38, 43}, .radius = 0.1796875, .kind = FlareKind::SteepGlow},
    {.color = {69, 59, 64}, .radius = 0.3359375, .kind = FlareKind::EvenGlow},
    {.color = {80, 15, 4}, .radius = 0.084375, .kind = FlareKind::RingGlow},
};

void ToShares(const uint8_t color[3], float shares[3]) {
    for (int i = 0; i < 3; ++i) shares[i] = static_cast<float>(color[i] / 255.0);
}

}  // namespace

void BuildFlareElements(int32_t lightX, int32_t lightY, int32_t width, int32_t height, double scale,
                        FlareElement elements[kFlareElements]) {
    const int32_t middleX = width / 2;
    const int32_t middleY = height / 2;
    for (int32_t i = 0; i < kFlareElements; ++i) {
        const ElementDesign& design = kElements[i];
        ToShares(design.color, elements[i].color);
        elements[i].size = static_cast<float>(scale * design.size);
        elements[i].column = static_cast<int32_t>(middleX + (middleX - lightX) * design.position);
        elements[i].row = static_cast<int32_t>(middleY + (middleY - lightY) * design.position);
        elements[i].kind = design.kind;
    }
    elements[kMirrorElement].column = width - lightX;
    elements[kMirrorElement].row = height - lightY;
}

void PaintFlare(WorkingImage* image, int32_t lightX, int32_t lightY, double scale, float* strengths) {
    for (const GlowDesign& glow : kGlows) {
        float color[3];
        ToShares(glow.color, color);
        const FlareSpot spot = {.color = color,
                                .radius = scale * glow.radius,
                                .column = lightX,
                                .row = lightY,
                                .kind = glow.kind};
        PaintFlareSpot(image, spot, strengths);
    }
    FlareElement elements[kFlareElements];
    BuildFlareElements(lightX, lightY, image->width, image->height, scale, elements);
    for (const FlareElement& element : elements) {
        const FlareSpot spot = {.color = element.color,
                                .radius = double{element.size},
                                .column = element.column,
                                .row = element.row,
                                .kind = element.kind};
        PaintFlareSpot(image, spot, strengths);
    }
}

}  // namespace kfx
