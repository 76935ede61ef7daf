// SPDX-License-Identifier: MIT
#include "commands/fit_look.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/resize_frame.h"

namespace kfx::commands {
namespace {

constexpr int kReach = 3;
constexpr float kWeights[2 * kReach + 1] = {1 / 64.0F,  6 / 64.0F, 15 / 64.0F, 20 / 64.0F,
                                            15 / 64.0F, 6 / 64.0F, 1 / 64.0F};
constexpr int kStep = 2;  // means are taken at each second row and column
constexpr size_t kBlockSide = 16;
constexpr double kWideWeight = 3;

// What is averaged for a place.
enum Plane { kLuma, kBlue, kRed, kWanted, kWantedSquare, kShown, kShownSquare, kPlanes };

using Planes = std::array<std::vector<float>, kPlanes>;

struct Luma {
    float y, blue, red;
};

Luma LumaOf(const uint8_t* pixel) {
    const auto r = static_cast<float>(pixel[0]), g = static_cast<float>(pixel[1]),
               b = static_cast<float>(pixel[2]);
    const float y = 0.299F * r + 0.587F * g + 0.114F * b;
    return {y, 0.564F * (b - y), 0.713F * (r - y)};
}

// Rows of one picture pair, each worked out once.
void FillRow(const uint8_t* wanted, const uint8_t* shown, size_t width, Planes* row) {
    for (size_t x = 0; x < width; ++x) {
        const Luma a = LumaOf(wanted + 4 * x), b = LumaOf(shown + 4 * x);
        (*row)[kLuma][x] = a.y - b.y;
        (*row)[kBlue][x] = a.blue - b.blue;
        (*row)[kRed][x] = a.red - b.red;
        (*row)[kWanted][x] = a.y;
        (*row)[kWantedSquare][x] = a.y * a.y;
        (*row)[kShown][x] = b.y;
        (*row)[kShownSquare][x] = b.y * b.y;
    }
}

size_t Clamped(int place, size_t count) {
    return static_cast<size_t>(std::clamp(place, 0, static_cast<int>(count) - 1));
}

double Deviation(float mean, float square) { return std::sqrt(std::max(0.0F, square - mean * mean)); }

// The error of means over a small neighbourhood.
double PlaceError(const std::array<float, kPlanes>& mean) {
    const double grain =
        Deviation(mean[kShown], mean[kShownSquare]) - Deviation(mean[kWanted], mean[kWantedSquare]);
    const double color = (double{mean[kBlue]} * mean[kBlue] + double{mean[kRed]} * mean[kRed]) / 2;
    return double{mean[kLuma]} * mean[kLuma] + color + (grain < 0 ? 1 : 0.125) * grain * grain;
}

// Sums of what has been averaged over the places of a wide block.
struct BlockSums {
    double luma = 0, blue = 0, red = 0;
    double places = 0;
};

// The block's error for each of its places together.
double BlockError(const BlockSums& block) {
    if (block.places == 0) return 0;
    return (block.luma * block.luma + block.blue * block.blue + block.red * block.red) / block.places;
}

// The errors of small neighbourhoods summed over the places of one row, from the column sums. Adds the places
// to the wide blocks, too.
double RowError(const Planes& columns, size_t width, std::vector<BlockSums>* blocks) {
    double sum = 0;
    for (size_t x = 0; x < width; x += kStep) {
        std::array<float, kPlanes> mean = {};
        for (int i = -kReach; i <= kReach; ++i) {
            const size_t from = Clamped(static_cast<int>(x) + i, width);
            for (size_t plane = 0; plane < kPlanes; ++plane)
                mean[plane] += kWeights[i + kReach] * columns[plane][from];
        }
        sum += PlaceError(mean);
        BlockSums& block = (*blocks)[x / kBlockSide];
        block.luma += double{mean[kLuma]};
        block.blue += double{mean[kBlue]};
        block.red += double{mean[kRed]};
        ++block.places;
    }
    return sum;
}

// Of opaque pictures.
double OpaqueError(const uint8_t* wanted, const uint8_t* shown, size_t width, size_t height) {
    std::array<Planes, 2 * kReach + 1> rows;  // row y stands at y modulo their number
    Planes columns;
    for (Planes& row : rows) {
        for (auto& plane : row) plane.resize(width);
    }
    for (auto& plane : columns) plane.resize(width);
    size_t filled = 0;
    double small = 0, wide = 0;
    std::vector<BlockSums> blocks((width + kBlockSide - 1) / kBlockSide);
    for (size_t y = 0; y < height; y += kStep) {
        for (; filled < height && filled <= y + kReach; ++filled)
            FillRow(wanted + 4 * width * filled, shown + 4 * width * filled, width,
                    &rows[filled % rows.size()]);
        for (auto& plane : columns) std::fill(plane.begin(), plane.end(), 0.0F);
        for (int i = -kReach; i <= kReach; ++i) {
            const Planes& row = rows[Clamped(static_cast<int>(y) + i, height) % rows.size()];
            for (size_t plane = 0; plane < kPlanes; ++plane) {
                float* const to = columns[plane].data();
                const float* const from = row[plane].data();
                for (size_t x = 0; x < width; ++x) to[x] += kWeights[i + kReach] * from[x];
            }
        }
        small += RowError(columns, width, &blocks);
        if ((y + kStep) % kBlockSide != 0 && y + kStep < height) continue;
        for (BlockSums& block : blocks) wide += BlockError(std::exchange(block, {}));
    }
    const size_t places = ((width + kStep - 1) / kStep) * ((height + kStep - 1) / kStep);
    return (small + kWideWeight * wide) / (1 + kWideWeight) / static_cast<double>(places);
}

bool IsOpaque(const std::vector<uint8_t>& pixels) {
    for (size_t i = 3; i < pixels.size(); i += 4) {
        if (pixels[i] != 255) return false;
    }
    return true;
}

}  // namespace

double PictureError(const std::vector<uint8_t>& wanted, const std::vector<uint8_t>& shown, int width,
                    int height) {
    const auto columns = static_cast<size_t>(width), rows = static_cast<size_t>(height);
    if (IsOpaque(wanted) && IsOpaque(shown)) return OpaqueError(wanted.data(), shown.data(), columns, rows);
    double worst = 0;
    for (const uint8_t level : {uint8_t{0}, uint8_t{255}}) {
        Pixels first = wanted, second = shown;
        PutOver(level, &first);
        PutOver(level, &second);
        worst = std::max(worst, OpaqueError(first.data(), second.data(), columns, rows));
    }
    return worst;
}

double LookOf(double meanError) {
    if (meanError <= 0) return kExactLook;
    return std::clamp(10 * std::log10(255.0 * 255.0 / meanError), 0.0, kExactLook);
}

double CompareLooks(const Animation& wanted, const Animation& shown, const std::vector<size_t>& shownFrames) {
    const bool isScaled = wanted.width != shown.width || wanted.height != shown.height;
    Frame scaled;
    size_t scaledNumber = shown.frames.size();
    double sum = 0, time = 0;
    for (size_t i = 0; i < wanted.frames.size(); ++i) {
        const Frame* frame = &shown.frames[shownFrames[i]];
        if (isScaled && scaledNumber != shownFrames[i]) {
            scaled = *frame;
            scaledNumber = shownFrames[i];
            if (!ResizeFrame(shown.width, shown.height, wanted.width, wanted.height, &scaled)) return -1;
        }
        if (isScaled) frame = &scaled;
        // A frame without a time is shown for a moment, too.
        const double weight = std::max(10, MillisecondsOf(wanted.frames[i]));
        sum += weight * PictureError(wanted.frames[i].pixels, frame->pixels, wanted.width, wanted.height);
        time += weight;
    }
    return LookOf(sum / time);
}

std::vector<size_t> MatchFrames(const Animation& wanted, const Animation& shown) {
    std::vector<size_t> match(wanted.frames.size());
    const bool sameCount = wanted.frames.size() == shown.frames.size();
    size_t at = 0;
    int64_t begin = 0, end = MillisecondsOf(shown.frames[0]);
    for (size_t i = 0; i < match.size(); ++i) {
        while (begin >= end && at + 1 < shown.frames.size()) end += MillisecondsOf(shown.frames[++at]);
        match[i] = sameCount ? i : at;
        begin += MillisecondsOf(wanted.frames[i]);
    }
    return match;
}

}  // namespace kfx::commands
