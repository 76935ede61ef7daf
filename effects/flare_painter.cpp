// SPDX-License-Identifier: MIT
#include "effects/flare_painter.h"

#include <cmath>

namespace kfx {
namespace {

// How far a spot reaches, and how far from its centre it begins, as shares of its radius.
struct Reach {
    double inner;
    double outer;
};

Reach ReachOf(FlareKind kind) {
    if (kind == FlareKind::Ring) return {0.96, 1.04};
    if (kind == FlareKind::RingGlow) return {0.93, 1.07};
    return {0, 1};
}

// What a pixel beyond a spot's reach has for a strength. Blending by nothing would keep colours, but not the
// top byte of a 32-bit pixel.
constexpr float kUnpainted = -1e30f;

// The strength at a distance of a spot of one kind; kUnpainted where it does not reach.
float StrengthAt(FlareKind kind, double radius, double distance) {
    const auto within = [](double t, double strength) {
        return t > 0 ? static_cast<float>(strength) : kUnpainted;
    };
    const auto ring = [](double u) {
        return std::fabs(u) < 1 ? static_cast<float>(1 - std::fabs(u)) : kUnpainted;
    };
    switch (kind) {
        case FlareKind::SteepGlow:
        case FlareKind::Disc: {
            const double t = (radius - distance) / radius;
            return within(t, t * t);
        }
        case FlareKind::EvenGlow: {
            const double t = (radius - distance) / radius;
            return within(t, t);
        }
        case FlareKind::RingGlow:
            return ring((distance - radius) / (radius * 0.07));
        case FlareKind::Spot: {
            const double t = (radius - distance) / (radius * 0.15);
            return within(t, t < 1 ? t : 1);
        }
        case FlareKind::Halo: {
            const double t = (radius - distance) / (radius * 0.12);
            return within(t, t <= 1 ? t : 1 - t * 0.12);
        }
        case FlareKind::Ring:
            return ring((distance - radius) / (radius * 0.04));
    }
    return kUnpainted;
}

bool IsGlow(FlareKind kind) { return kind >= FlareKind::SteepGlow; }

void FillStrengths(const FlareSpot& spot, int32_t y, int32_t first, int32_t end, float* strengths) {
    for (int32_t x = first; x < end; ++x) {
        const double exact = std::hypot(x - spot.column, y - spot.row);
        const double distance = IsGlow(spot.kind) ? double{static_cast<float>(exact)} : exact;
        strengths[x - first] = StrengthAt(spot.kind, spot.radius, distance);
    }
}

int32_t Clamp(double value, int32_t most) {
    return value < 0 ? 0 : value > most ? most : static_cast<int32_t>(value);
}

void PaintRun(WorkingImage* image, const FlareSpot& spot, int32_t y, int32_t first, int32_t end,
              float* strengths) {
    FillStrengths(spot, y, first, end, strengths);
    for (int32_t x = first; x < end; ++x)
        if (strengths[x - first] != kUnpainted) BrightenPixel(image, strengths[x - first], spot.color, x, y);
}

// Half the length of a circle's chord `away` from its centre; negative where it has none.
double HalfChord(double radius, double away) {
    const double square = radius * radius - away * away;
    return square < 0 ? -1 : std::sqrt(square);
}

uint32_t BrightenChannel(uint32_t channel, float strength, float share) {
    const auto c = static_cast<float>(channel);
    return static_cast<uint32_t>(static_cast<int32_t>((255 - c) * strength * share + c)) & 255;
}

}  // namespace

void BrightenPixel(WorkingImage* image, float strength, const float color[3], int32_t x, int32_t y) {
    const uint32_t pixel = GetDibPixel(image, x, y);
    SetDibPixel(image, x, y,
                Rgb(BrightenChannel(RedOf(pixel), strength, color[0]),
                    BrightenChannel(GreenOf(pixel), strength, color[1]),
                    BrightenChannel(BlueOf(pixel), strength, color[2])));
}

void PaintFlareSpot(WorkingImage* image, const FlareSpot& spot, float* strengths) {
    // One pixel generous on both sides; each pixel is tested for itself.
    const Reach reach = ReachOf(spot.kind);
    const double outer = spot.radius * reach.outer + 1;
    const double inner = spot.radius * reach.inner - 1;
    const int32_t firstRow = Clamp(std::floor(spot.row - outer), image->height);
    const int32_t endRow = Clamp(std::ceil(spot.row + outer) + 1, image->height);
    for (int32_t y = firstRow; y < endRow; ++y) {
        const double half = HalfChord(outer, y - spot.row);
        if (half < 0) continue;
        const int32_t first = Clamp(std::floor(spot.column - half), image->width);
        const int32_t end = Clamp(std::ceil(spot.column + half) + 1, image->width);
        const double hole = inner > 0 ? HalfChord(inner, y - spot.row) : -1;
        if (hole < 0) {
            PaintRun(image, spot, y, first, end, strengths);
            continue;
        }
        const int32_t holeFirst = Clamp(std::ceil(spot.column - hole), image->width);
        const int32_t holeEnd = Clamp(std::floor(spot.column + hole) + 1, image->width);
        PaintRun(image, spot, y, first, holeFirst, strengths);
        PaintRun(image, spot, y, holeEnd < holeFirst ? holeFirst : holeEnd, end, strengths);
    }
}

}  // namespace kfx
