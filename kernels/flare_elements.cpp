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
    {{0, 14, 113}, 0.027, 0.6699, FlareKind::Disc},    {{90, 181, 142}, 0.01, 0.2692, FlareKind::Disc},
    {{56, 140, 106}, 0.005, -0.0112, FlareKind::Disc}, {{9, 29, 19}, 0.031, 0.649, FlareKind::Spot},
    {{24, 14, 0}, 0.015, 0.4696, FlareKind::Spot},     {{24, 14, 0}, 0.037, 0.4087, FlareKind::Spot},
    {{42, 19, 0}, 0.022, -0.2003, FlareKind::Spot},    {{0, 9, 17}, 0.025, -0.4103, FlareKind::Spot},
    {{0, 4, 10}, 0.058, -0.4503, FlareKind::Spot},     {{5, 5, 14}, 0.017, -0.5112, FlareKind::Spot},
    {{9, 4, 0}, 0.2, -1.496, FlareKind::Spot},         {{9, 4, 0}, 0.5, -1.496, FlareKind::Spot},
    {{34, 19, 0}, 0.075, 0.4487, FlareKind::Halo},     {{14, 26, 0}, 0.1, 1, FlareKind::Halo},
    {{10, 25, 13}, 0.039, -1.301, FlareKind::Halo},    {{9, 0, 17}, 0.19, 1.309, FlareKind::Ring},
    {{9, 16, 5}, 0.195, 1.309, FlareKind::Ring},       {{17, 4, 0}, 0.2, 1.309, FlareKind::Ring},
    {{17, 4, 0}, 0.038, -1.301, FlareKind::Ring},
};
// The one element that mirrors the light in the centre exactly, also where half a side was rounded down.
constexpr int32_t kMirrorElement = 13;

struct GlowDesign {
    uint8_t color[3];
    double radius;  // share of the flare's scale
    FlareKind kind;
};

constexpr GlowDesign kGlows[] = {
    {{239, 239, 239}, 0.0375, FlareKind::SteepGlow},  {{245, 245, 245}, 0.078125, FlareKind::SteepGlow},
    {{255, 38, 43}, 0.1796875, FlareKind::SteepGlow}, {{69, 59, 64}, 0.3359375, FlareKind::EvenGlow},
    {{80, 15, 4}, 0.084375, FlareKind::RingGlow},
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
        PaintFlareSpot(image, {color, scale * glow.radius, lightX, lightY, glow.kind}, strengths);
    }
    FlareElement elements[kFlareElements];
    BuildFlareElements(lightX, lightY, image->width, image->height, scale, elements);
    for (const FlareElement& element : elements)
        PaintFlareSpot(image,
                       {element.color, double{element.size}, element.column, element.row, element.kind},
                       strengths);
}

}  // namespace kfx
