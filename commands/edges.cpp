// SPDX-License-Identifier: MIT
#include "commands/edges.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "commands/alpha_pixels.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr int kLongestSide = 65535;
constexpr double kDegree = 3.141592653589793 / 180;

// The border that the effect adds itself, and what it leaves out of the last column and row.
Margins OilPaintingMargins(const Job& job, int, int) {
    const int border = 2 * ((ValueOf(job, "Radius", 250) + 99) / 100) + 1;
    return {border + 2, border + 2};
}

// The smear's end, or four times the spread of its bell: what is farther away weighs nothing.
Margins MotionBlurMargins(const Job& job, int, int) {
    const int reach = std::min(2 * ValueOf(job, "Radius", 5), 4 * ValueOf(job, "Depth", 25)) + 1;
    const double angle = ValueOf(job, "Angle", 45) * kDegree;
    const auto share = [reach](double part) {
        return static_cast<int>(std::ceil(std::fabs(part) * reach)) + 1;
    };
    return {share(std::sin(angle)), share(std::cos(angle))};
}

// Half of the arc's chord at a corner, twice: pixels that are blurred already are blurred once more.
Margins RadialBlurMargins(const Job& job, int width, int height) {
    const double diagonal = std::hypot(width, height);
    const double reach = diagonal * std::sin(ValueOf(job, "Angle", 5) * kDegree / 4);
    const int margin = static_cast<int>(std::ceil(2 * reach)) + 2;
    return {margin, margin};
}

// An effect that shows a background colour.
struct EdgeRow {
    const char* effect;
    // Null: its places depend on the picture's size, or the colour is shown inside the picture.
    Margins (*margins)(const Job& job, int width, int height);
};

constexpr EdgeRow kRows[] = {
    {.effect = "Explode", .margins = nullptr},
    {.effect = "Implode", .margins = nullptr},
    {.effect = "Motion Blur", .margins = MotionBlurMargins},
    {.effect = "Oil Painting", .margins = OilPaintingMargins},
    {.effect = "Radial Blur", .margins = RadialBlurMargins},
    {.effect = "Raster", .margins = nullptr},
    {.effect = "Swirl", .margins = nullptr},
};

// The part of a picture that begins at (left, top), which may lie outside: edge pixels are repeated there.
void CutPart(int left, int top, int width, int height, const Animation& from, std::vector<uint8_t>* pixels) {
    std::vector<uint8_t> part;
    part.reserve(4 * static_cast<size_t>(width) * static_cast<size_t>(height));
    const int first = std::max(left, 0), end = std::min(left + width, from.width);
    for (int y = 0; y < height; ++y) {
        const int row = std::clamp(y + top, 0, from.height - 1);
        const uint8_t* const line =
            pixels->data() + 4 * static_cast<size_t>(row) * static_cast<size_t>(from.width);
        for (int x = left; x < first; ++x) part.insert(part.end(), line, line + 4);
        part.insert(part.end(), line + 4 * first, line + 4 * end);
        for (int x = end; x < left + width; ++x) part.insert(part.end(), line + 4 * end - 4, line + 4 * end);
    }
    *pixels = std::move(part);
}

void CutFrames(const Margins& added, Animation* animation) {
    const int width = animation->width + 2 * added.columns;
    const int height = animation->height + 2 * added.rows;
    for (Frame& frame : animation->frames) {
        CutPart(-added.columns, -added.rows, width, height, *animation, &frame.pixels);
        frame.indexed = false;
        frame.indices = {};
    }
    animation->width = width;
    animation->height = height;
}

}  // namespace

Margins EdgeMargins(const Job& job, int width, int height) {
    for (const EdgeRow& row : kRows) {
        if (job.effectName != row.effect || !row.margins) continue;
        const Margins wanted = row.margins(job, width, height);
        return {std::min(wanted.columns, (kLongestSide - width) / 2),
                std::min(wanted.rows, (kLongestSide - height) / 2)};
    }
    return {};
}

std::vector<std::string> EffectsWithEdges() {
    std::vector<std::string> names;
    for (const EdgeRow& row : kRows) {
        if (row.margins) names.emplace_back(row.effect);
    }
    return names;
}

std::vector<std::string> EffectsWithBackground() {
    std::vector<std::string> names;
    for (const EdgeRow& row : kRows) names.emplace_back(row.effect);
    return names;
}

void WidenFrames(const Margins& margins, Animation* animation) { CutFrames(margins, animation); }

void CropFrames(const Margins& margins, Animation* animation) {
    CutFrames({-margins.columns, -margins.rows}, animation);
    for (Frame& frame : animation->frames)
        if (frame.transparent) NoteTransparency(&frame);
}

}  // namespace kfx::commands
