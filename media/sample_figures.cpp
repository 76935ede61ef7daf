// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "media/bitmap_font.h"
#include "media/sample_scene.h"

namespace kfx {
namespace {

struct Point {
    double x;
    double y;
};

double Length(double x, double y) { return std::sqrt(x * x + y * y); }

// Mirror images lie below the line where a thing meets the water, and are displaced as the water is.
Point MirrorPoint(double x, double y, double foot, double time) {
    return {x + 0.5 * WaterShift(x, y, time), 2 * foot - y};
}

Touch AsMirrorImage(Touch touch) {
    touch.color = Mix(touch.color, Light{0.10, 0.13, 0.26}, 0.38);
    touch.cover *= 0.72;
    return touch;
}

bool IsLeftOf(Point a, Point b, double x, double y) {
    return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x) < 0;
}

// The corners are given clockwise.
bool IsInTriangle(Point a, Point b, Point c, double x, double y) {
    return !IsLeftOf(a, b, x, y) && !IsLeftOf(b, c, x, y) && !IsLeftOf(c, a, x, y);
}

constexpr double kBallRadius = 29;
constexpr double kBallLeft = 74;
constexpr double kBallTop = 184;

Touch BallAbove(double x, double y, double time) {
    const double centerTop = kBallTop + 2.6 * Sine(time);
    const double across = (x - kBallLeft) / kBallRadius;
    const double down = (y - centerTop) / kBallRadius;
    const double square = across * across + down * down;
    if (square >= 1) return {};
    const double towardsEye = std::sqrt(1 - square);

    // The ball leans to the left and turns by one pair of segments: the loop closes.
    const double axisUp = 0.90 * -down + 0.30 * towardsEye - 0.31 * across;
    const double sideways = 0.95 * across - 0.31 * down;
    const double outward = std::sqrt(std::max(0.0, 1 - axisUp * axisUp - sideways * sideways));
    // Position round the axis in turns, from the ratio of the two coordinates; exact at the corners.
    const double octant = sideways / (std::fabs(sideways) + outward + 1e-9) * 0.25;
    const double segment = (octant + 1.0) * 8 + 2 * time;
    const auto number = static_cast<int>(std::floor(segment));
    const Light paints[] = {{0.90, 0.16, 0.14}, {0.97, 0.95, 0.90}};
    Light paint = paints[number % 2];
    if (std::fabs(axisUp) > 0.93) paint = {0.98, 0.78, 0.16};

    const double facingSun = 0.68 * across - 0.50 * down + 0.53 * towardsEye;
    const double light = 0.26 + 0.86 * std::max(0.0, facingSun);
    const double gleamDistance = Length(across - 0.40, down + 0.36);
    const double gleam = SmoothStep(0.24, 0.0, gleamDistance);
    const double rim = SmoothStep(0.50, 0.0, towardsEye);
    Light color = paint * light + Light{0.10, 0.13, 0.24} * (0.6 * rim);
    // Light reflected by the water from below.
    color = color + Light{0.26, 0.15, 0.10} * std::max(0.0, down - 0.2);
    return {Mix(color, Light{1, 0.98, 0.92}, 0.92 * gleam), 1};
}

constexpr double kBoatLeft = 262;
constexpr double kBoatFoot = 184;

Touch BoatAbove(double x, double y, double time) {
    const double lean = 0.075 * Sine(time);
    const double above = kBoatFoot - y;
    const double across = x - kBoatLeft - above * lean - 3 * Sine(time + 0.2);
    if (above >= 0 && above < 7) {
        const double half = 15 + 0.9 * above;
        if (std::fabs(across) > half) return {};
        const Light hull = above > 5.2 ? Light{0.93, 0.90, 0.82} : Light{0.20, 0.10, 0.10};
        return {hull * (0.85 + 0.012 * across), 1};
    }
    if (std::fabs(across) < 0.8 && above >= 7 && above < 48) return {{0.22, 0.15, 0.12}, 1};
    if (IsInTriangle({2, 46}, {2, 11}, {20, 11}, across, above))
        return {Mix(Light{0.98, 0.94, 0.84}, Light{0.80, 0.62, 0.60}, Clamp01(across / 20)), 1};
    if (IsInTriangle({-2, 11}, {-2, 40}, {-15, 11}, across, above)) {
        const bool stripe = static_cast<int>(above / 5) % 2 == 0;
        return {stripe ? Light{0.82, 0.20, 0.16} : Light{0.95, 0.90, 0.82}, 1};
    }
    return {};
}

// Wing colours run from the chestnut of the back to the slate of the flight feathers.
Light WingColor(double outward, double along, double below) {
    const bool barred = static_cast<int>(std::floor(along / 3.4)) % 2 == 0 && below > 0.55;
    Light color = Mix(Light{0.66, 0.36, 0.19}, Light{0.20, 0.17, 0.20}, SmoothStep(0.36, 0.56, outward));
    if (barred) color = color * 0.72;
    const bool spotted =
        outward < 0.5 && HashNoise(static_cast<int>(along / 2.2), static_cast<int>(below * 5)) > 0.72;
    if (spotted) color = color * 0.45;
    // The leading edge catches the low sun.
    return color * 0.88 + Light{0.95, 0.62, 0.34} * SmoothStep(0.24, 0.0, below);
}

Touch WingAt(double across, double down, double beat) {
    const double span = 60 - 7 * beat * beat;
    const double side = std::fabs(across);
    const double outward = side / span;
    if (outward >= 1) return {};
    // The tip travels far, the shoulder hardly; the wrist stays above the line between them.
    const double lift = beat * (7 * outward + 23 * outward * outward);
    const double wrist = 7.5 * SmoothStep(0.0, 0.42, outward) - 11 * SmoothStep(0.38, 1.0, outward);
    const double leading = -6.5 - wrist - lift;
    double chord = 17.5 * (1 - outward * outward) + 2;
    if (outward > 0.42) {
        const double feather = outward * 17 - std::floor(outward * 17);
        chord -= 3.4 * feather * SmoothStep(0.42, 0.6, outward);
    }
    const double below = (down - leading) / chord;
    if (below < 0 || below > 1) return {};
    return {WingColor(outward, side, below), 1};
}

Touch TailAt(double across, double down) {
    if (down < 12 || down > 40) return {};
    const double share = (down - 12) / 28;
    const double half = 4.0 + 9.5 * share - 2.2 * share * share;
    if (std::fabs(across) > half || Length(across * 0.9, down - 12) > 27) return {};
    const double reach = Length(across * 0.9, down - 12) / 27;
    Light color = {0.58, 0.57, 0.62};
    if (reach > 0.92)
        color = {0.97, 0.94, 0.90};
    else if (reach > 0.72)
        color = {0.09, 0.08, 0.10};
    const bool vane = static_cast<int>(std::floor((across / half + 1) * 4)) % 2 == 0;
    return {color * (vane ? 1.0 : 0.86), 1};
}

Touch BodyAt(double across, double down) {
    if (Length(across / 7.2, (down - 3) / 14.5) < 1) {
        const double round = 1 - std::fabs(across) / 7.2;
        const bool spot = HashNoise(static_cast<int>(std::floor(across / 2.1)),
                                    static_cast<int>(std::floor(down / 2.6))) > 0.74;
        const Light plumage = spot ? Light{0.24, 0.12, 0.08} : Light{0.72, 0.40, 0.21};
        return {plumage * (0.62 + 0.5 * round) + Light{0.22, 0.12, 0.05} * Clamp01(across / 7), 1};
    }
    const double headDistance = Length(across - 1.5, down + 13.5);
    if (headDistance < 6.2) {
        if (Length(across - 3.6, down + 14.6) < 1.35) return {{0.05, 0.04, 0.05}, 1};
        const bool streak = across > 3.4 && across < 5.2 && down > -13.5;
        const Light slate = streak ? Light{0.17, 0.16, 0.20} : Light{0.56, 0.58, 0.68};
        return {slate * (0.72 + 0.06 * across), 1};
    }
    if (IsInTriangle({6.5, -15.4}, {11.2, -11.4}, {6.4, -11.8}, across, down)) return {{0.93, 0.76, 0.20}, 1};
    return {};
}

constexpr const char* kTitle = "KESTREL FX";
constexpr int kTitleScale = 3;
constexpr int kTitleLeft = 14;
constexpr int kTitleTop = 12;

bool IsTitleInk(int column, int row) {
    if (column < 0 || row < 0) return false;
    const int glyph = column / (kGlyphAdvance * kTitleScale);
    if (glyph >= static_cast<int>(std::strlen(kTitle))) return false;
    return HasInk(kTitle[glyph], column % (kGlyphAdvance * kTitleScale) / kTitleScale, row / kTitleScale);
}

}  // namespace

Touch DrawBall(double x, double y, double time) {
    const double foot = kBallTop + 19;
    if (y < foot) return BallAbove(x, y, time);
    const Point mirrored = MirrorPoint(x, y, foot, time);
    return AsMirrorImage(BallAbove(mirrored.x, mirrored.y, time));
}

Touch DrawBoat(double x, double y, double time) {
    if (y < kBoatFoot) return BoatAbove(x, y, time);
    const Point mirrored = MirrorPoint(x, y, kBoatFoot, time);
    return AsMirrorImage(BoatAbove(mirrored.x, mirrored.y, time));
}

Touch DrawKestrel(double x, double y, double time) {
    const double centerLeft = 126 + 13 * Sine(time);
    const double centerTop = 82 + 5 * Sine(2 * time);
    const double bank = 0.12 * Cosine(time);
    const double fromLeft = x - centerLeft;
    const double fromTop = y - centerTop;
    const double across = fromLeft + bank * fromTop;
    const double down = fromTop - bank * fromLeft;
    if (std::fabs(across) > 66 || std::fabs(down) > 62) return {};
    const double beat = Sine(3 * time);
    const Touch body = BodyAt(across, down);
    if (body.cover > 0) return body;
    const Touch wing = WingAt(across, down, beat);
    return wing.cover > 0 ? wing : TailAt(across, down);
}

Touch DrawReeds(double x, double y, double time) {
    for (int i = 0; i < 22; ++i) {
        const double foot = 174 + 150 * HashNoise(i, 91);
        const double height = 26 + 44 * HashNoise(i, 92) * HashNoise(i, 95);
        const double up = (242 - y) / height;
        if (up > 1.16) continue;
        const double sway =
            (4 + 9 * HashNoise(i, 93)) * Sine(time + HashNoise(i, 94)) + 10 * (HashNoise(i, 96) - 0.5);
        const double distance = std::fabs(x - foot - sway * up * up);
        const bool isHead = up > 0.86 && i % 3 == 0;
        if (isHead && distance < 1.9) return {{0.26, 0.13, 0.06}, 1};
        if (up <= 1 && distance < 1.5 * (1 - up) + 0.35)
            return {Mix(Light{0.03, 0.07, 0.05}, Light{0.30, 0.30, 0.10}, up * 0.8), 1};
    }
    return {};
}

Touch DrawTitle(double x, double y, double time) {
    const int column = static_cast<int>(std::floor(x)) - kTitleLeft;
    const int row = static_cast<int>(std::floor(y)) - kTitleTop;
    if (IsTitleInk(column, row)) {
        const double height = (y - kTitleTop) / (7.0 * kTitleScale);
        const Light gold = Mix(Light{1.0, 0.97, 0.84}, Light{0.98, 0.66, 0.24}, Clamp01(height));
        const double gleamLeft = -60 + 340 * time;
        const double gleam = SmoothStep(16, 0, std::fabs(x - y * 0.5 - gleamLeft));
        return {Mix(gold, Light{1, 1, 1}, 0.9 * gleam), 1};
    }
    if (IsTitleInk(column - 2, row - 2)) return {{0.05, 0.06, 0.18}, 0.85};
    return {};
}

}  // namespace kfx
