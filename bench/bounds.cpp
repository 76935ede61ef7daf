// SPDX-License-Identifier: MIT
#include "bench/bounds.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

#include "kernels/flare_elements.h"

namespace kfx::bench {
namespace {

// Which of the settings of a job is asked for, and the size of its frame.
struct Load {
    bool heavy;
    double width;
    double height;
};

// So many operations a pixel at one of the machine's rates.
struct Term {
    double Limits::*rate;
    double (*perPixel)(const Load& load);
    const char* what;
};

struct BoundRow {
    const char* job;
    std::vector<Term> terms;
};

// Swirl, Implode and Explode move what lies in a circle, or an ellipse, as wide and high as the picture.
constexpr double kMovedPart = 0.785;
// One sine is needed for each pair of distances from the middle.
constexpr double kQuarter = 0.25;

double One(const Load&) { return 1; }
double Two(const Load&) { return 2; }
double Three(const Load&) { return 3; }
double Four(const Load&) { return 4; }
double Quarter(const Load&) { return kQuarter; }
double FourMoved(const Load&) { return 4 * kMovedPart; }
double ThreeWhenHeavy(const Load& load) { return load.heavy ? 3 : 0; }

// Three channels, and three sums in one direction instead of one over the whole matrix.
double EmbossProducts(const Load& load) { return 3 * 3 * (load.heavy ? 51 : 15); }
double BlurProducts(const Load& load) { return 3 * 2 * (load.heavy ? 11 : 5); }
double ZoomSamples(const Load& load) { return load.heavy ? 40 : 8; }

// Taps along a line; at 45 degrees neighbouring ones share a pixel and count once.
double SmearProducts(const Load& load) { return 3 * std::floor(std::sqrt(0.5) * (load.heavy ? 601 : 11)); }

// To change what is kept of both diagonals through a pixel, and to add it to the census, 32 counts at a time.
double CensusLoads(const Load&) { return 12 + 2 * 256 / 32; }

// The mean number of samples of a pixel of Radial Blur: fewer where the arc is short.
double ArcSamples(const Load& load) {
    const double centerX = load.width / 2, centerY = load.height / 2;
    const double radius = std::sqrt(centerX * centerX + centerY * centerY);
    const double arc = (load.heavy ? 45 : 5) * 3.141592653589793 / 180;
    const double count = std::floor(std::sqrt(radius) * arc * 4 + 2);
    constexpr int kPitch = 4;
    double samples = 0, pixels = 0;
    for (double y = 0; y < load.height; y += kPitch) {
        for (double x = 0; x < load.width; x += kPitch) {
            const double distance = std::hypot(x - centerX, y - centerY);
            const double wanted = distance == 0 ? 1 : std::floor(radius / distance);
            samples += std::ceil(count / std::clamp(wanted, 1.0, std::max(count - 1, 1.0)));
            ++pixels;
        }
    }
    return samples / pixels;
}

// How many pixels of the picture lie in a disc.
double PixelsInDisc(const Load& load, double column, double row, double radius) {
    double pixels = 0;
    for (double y = std::max(0.0, row - radius); y < std::min(load.height, row + radius); ++y) {
        const double half = std::sqrt(std::max(0.0, radius * radius - (y - row) * (y - row)));
        pixels += std::max(0.0, std::min(load.width, column + half) - std::max(0.0, column - half));
    }
    return pixels;
}

// How often a pixel is painted on the average: by the glows of the light, which share a centre, and by the
// reflections. Of the rings only the seam is. The glows' sizes are those of kernels/flare_elements.cpp.
double FlareCoats(const Load& load) {
    const double column = load.width * (load.heavy ? 0.25 : 0.5);
    const double row = load.height * (load.heavy ? 0.3 : 0.5);
    const double scale = std::max(load.width, load.height) * (load.heavy ? 3 : 1.75);
    double pixels = PixelsInDisc(load, column, row, 0.084375 * scale * 1.07) -
                    PixelsInDisc(load, column, row, 0.084375 * scale * 0.93);
    for (const double share : {0.0375, 0.078125, 0.1796875, 0.3359375})
        pixels += PixelsInDisc(load, column, row, share * scale);
    FlareElement elements[kFlareElements];
    BuildFlareElements(static_cast<int32_t>(column), static_cast<int32_t>(row),
                       static_cast<int32_t>(load.width), static_cast<int32_t>(load.height), scale, elements);
    for (const FlareElement& element : elements) {
        const double size = double{element.size};
        const double outer = element.kind == FlareKind::Ring ? size * 1.04 : size;
        pixels += PixelsInDisc(load, element.column, element.row, outer);
        if (element.kind == FlareKind::Ring)
            pixels -= PixelsInDisc(load, element.column, element.row, size * 0.96);
    }
    return pixels / (load.width * load.height);
}
// The blend of three channels, four operations each.
double FlareProducts(const Load& load) { return 12 * FlareCoats(load); }

// To a width of 424 pixels with a filter of two pixels on each side: rows of the source, then columns of what
// has become narrower.
double FilterProducts(const Load& load) {
    const double shrunk = 424 / load.width;
    return 3 * 4 * (1 + shrunk);
}

// Jobs without a term copy: bytes are moved, or worked on in lanes so wide that moving them takes longer.
const BoundRow kRows[] = {
    {.job = "emboss", .terms = {{&Limits::doubleMultiplyAdds, EmbossProducts, "3 n products a sample"}}},
    {.job = "lens-flare",
     .terms = {{&Limits::singleRoots, FlareCoats, "a root"},
               {&Limits::singleMultiplyAdds, FlareProducts, "3 blends a painted pixel"}}},
    {.job = "glass-block", .terms = {}},
    {.job = "radial-blur", .terms = {{&Limits::loads, ArcSamples, "a load a sample"}}},
    {.job = "gaussian-blur", .terms = {{&Limits::singleMultiplyAdds, BlurProducts, "2 n products a sample"}}},
    {.job = "obscure", .terms = {}},
    {.job = "oil-painting", .terms = {{&Limits::loads, CensusLoads, "12 updates and 16 loads of changes"}}},
    {.job = "zoom-blur", .terms = {{&Limits::loads, ZoomSamples, "a load a sample"}}},
    {.job = "water-drops", .terms = {{&Limits::loads, One, "a load a pixel"}}},
    {.job = "ripple",
     .terms = {{&Limits::sines, Quarter, "a quarter of sines"}, {&Limits::loads, Four, "4 loads"}}},
    {.job = "hsb-channels", .terms = {{&Limits::doubleDivisions, ThreeWhenHeavy, "3 divisions"}}},
    {.job = "raster", .terms = {}},
    {.job = "solarize", .terms = {}},
    {.job = "bump", .terms = {}},
    {.job = "motion-blur",
     .terms = {{&Limits::singleMultiplyAdds, SmearProducts, "a product a sample and tap"}}},
    {.job = "swirl", .terms = {{&Limits::loads, FourMoved, "4 loads"}}},
    {.job = "neon", .terms = {{&Limits::singleRoots, Three, "3 roots"}}},
    {.job = "implode", .terms = {{&Limits::loads, FourMoved, "4 loads"}}},
    {.job = "explode", .terms = {{&Limits::loads, FourMoved, "4 loads"}}},
    {.job = "normalize", .terms = {{&Limits::loads, Four, "3 look-ups and a count"}}},
    {.job = "quantize", .terms = {{&Limits::loads, Two, "2 sums a pixel"}}},
    {.job = "remap", .terms = {{&Limits::loads, One, "a look-up a pixel"}}},
    {.job = "remap-fast", .terms = {{&Limits::loads, One, "a look-up a pixel"}}},
    {.job = "dither",
     .terms = {{&Limits::dependentLoads, Quarter, "look-ups that wait, in 4 rows at a time"}}},
    {.job = "dither-fast",
     .terms = {{&Limits::dependentLoads, Quarter, "look-ups that wait, in 4 rows at a time"}}},
    {.job = "diff", .terms = {}},
    {.job = "scaler", .terms = {{&Limits::singleMultiplyAdds, FilterProducts, "the filter's products"}}},
};

// A later frame finds its tables: only what is done for each pixel is left.
bool IsKept(const Term& term) { return term.rate == &Limits::sines; }

}  // namespace

Bound BoundOf(const std::string& job, const std::string& variant, int width, int height,
              const Limits& limits) {
    const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                   [&](const BoundRow& each) { return job == each.job; });
    if (row == std::end(kRows) || limits.copiedBytes <= 0) return {};
    const Load load = {.heavy = variant == "heavy",
                       .width = static_cast<double>(width),
                       .height = static_cast<double>(height)};
    const double pixels = load.width * load.height;
    Bound bound;
    for (const Term& term : row->terms) {
        if (limits.*term.rate <= 0 || (variant == "later" && IsKept(term))) continue;
        bound.milliseconds += pixels * term.perPixel(load) / (limits.*term.rate) * 1e-6;
        bound.by += (bound.by.empty() ? "" : ", ") + std::string(term.what);
    }
    const double copying = 3 * pixels / limits.copiedBytes * 1e-6;
    return bound.milliseconds > copying ? bound : Bound{.milliseconds = copying, .by = "copying"};
}

}  // namespace kfx::bench
