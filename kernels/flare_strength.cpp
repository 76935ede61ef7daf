// SPDX-License-Identifier: MIT
#include "kernels/flare_strength.h"

#include <algorithm>
#include <cmath>

#include "framework/cpu.h"
#include "framework/math/elementary.h"

namespace kfx {
namespace {

// A strength as a function of the distance: at or below 0 where a spot does not reach.
template <FlareKind kKind>
KFX_INLINE double StrengthOf(double radius, double distance) {
    if (kKind == FlareKind::Ring || kKind == FlareKind::RingGlow) {
        const double width = kKind == FlareKind::Ring ? 0.04 : 0.07;
        return 1 - std::fabs((distance - radius) / (radius * width));
    }
    if (kKind == FlareKind::Spot) {
        const double t = (radius - distance) / (radius * 0.15);
        return t < 1 ? t : 1;
    }
    if (kKind == FlareKind::Halo) {
        const double t = (radius - distance) / (radius * 0.12);
        return t <= 1 ? t : 1 - t * 0.12;
    }
    const double t = (radius - distance) / radius;
    return kKind == FlareKind::EvenGlow ? t : t > 0 ? t * t : -1;
}

// Whether a spot reaches a distance at all: a halo's strength may fall to 0 and below inside it.
template <FlareKind kKind>
KFX_INLINE bool Reaches(double radius, double distance, double strength) {
    return kKind == FlareKind::Halo ? (radius - distance) / (radius * 0.12) > 0 : strength > 0;
}

constexpr bool IsGlow(FlareKind kind) { return kind >= FlareKind::SteepGlow; }

template <FlareKind kKind>
float ExactStrength(double radius, int32_t dx, int32_t dy) {
    const double exact = Hypot(dx, dy);
    const double distance = IsGlow(kKind) ? double{static_cast<float>(exact)} : exact;
    const double strength = StrengthOf<kKind>(radius, distance);
    return Reaches<kKind>(radius, distance, strength) ? static_cast<float>(strength) : kUnpainted;
}

template <FlareKind kKind>
void FillExactly(const FlareRun& run, float* strengths) {
    for (int32_t i = 0; i < run.count; ++i)
        strengths[i] = ExactStrength<kKind>(run.radius, run.dx + i, run.dy);
}

// So far from a centre the sum of the squares is exact, and its root, rounded once, is the distance as
// Hypot() gives it.
constexpr int32_t kNear = 1 << 26;

template <FlareKind kKind>
KFX_INLINE void FillFromRoots(const FlareRun& run, float* __restrict strengths) {
    const double radius = run.radius;
    const double rowSquare = static_cast<double>(run.dy) * run.dy;
    for (int32_t i = 0; i < run.count; ++i) {
        const double dx = run.dx + i;
        const double root = std::sqrt(dx * dx + rowSquare);
        const double distance = IsGlow(kKind) ? double{static_cast<float>(root)} : root;
        const double strength = StrengthOf<kKind>(radius, distance);
        strengths[i] = strength > 0 ? static_cast<float>(strength) : 0;
    }
}

template <FlareKind kKind>
void FillFast(const FlareRun& run, float* strengths) {
    const bool nearby = run.dy > -kNear && run.dy < kNear && run.dx > -kNear && run.dx < kNear - run.count;
    if (nearby) {
        Fastest<FillFromRoots<kKind>>()(run, strengths);
        return;
    }
    FillExactly<kKind>(run, strengths);
    for (int32_t i = 0; i < run.count; ++i) strengths[i] = std::max(strengths[i], 0.0f);
}

using Filler = void (*)(const FlareRun& run, float* strengths);

constexpr Filler kExactFillers[] = {
    FillExactly<FlareKind::Disc>,     FillExactly<FlareKind::Spot>,      FillExactly<FlareKind::Halo>,
    FillExactly<FlareKind::Ring>,     FillExactly<FlareKind::SteepGlow>, FillExactly<FlareKind::EvenGlow>,
    FillExactly<FlareKind::RingGlow>,
};
constexpr Filler kFastFillers[] = {
    FillFast<FlareKind::Disc>,     FillFast<FlareKind::Spot>,      FillFast<FlareKind::Halo>,
    FillFast<FlareKind::Ring>,     FillFast<FlareKind::SteepGlow>, FillFast<FlareKind::EvenGlow>,
    FillFast<FlareKind::RingGlow>,
};

int32_t NumberOf(FlareKind kind) {
    return static_cast<int32_t>(kind) - static_cast<int32_t>(FlareKind::Disc);
}

}  // namespace

void FillStrengths(const FlareRun& run, float* strengths) {
    kExactFillers[NumberOf(run.kind)](run, strengths);
}

void FillStrengthsFast(const FlareRun& run, float* strengths) {
    kFastFillers[NumberOf(run.kind)](run, strengths);
}

}  // namespace kfx
