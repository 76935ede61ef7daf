// SPDX-License-Identifier: MIT
#include "kernels/scaler.h"

#include <algorithm>

#include "framework/memory_guards.h"
#include "kernels/resampling_filters.h"
#include "kernels/scaler_passes.h"

namespace kfx {
namespace {

constexpr double kSmallestScale = 0.0001;

struct Contribution {
    double weight;
    int64_t position;
};
static_assert(sizeof(Contribution) == 16, "the working table counts in 16 bytes");

// One direction of the scaling.
struct Direction {
    int32_t from;  // source and result side
    int32_t to;
    double scale;   // to / from, but not below kSmallestScale
    double spread;  // how far the filter is drawn out: above 1 when shrinking
};

Direction MakeDirection(int32_t from, int32_t to, double blur) {
    const double scale = std::max(static_cast<double>(to) / from, kSmallestScale);
    return {from, to, scale, std::max(1 / scale, 1.0) * blur};
}

// At least as many as GatherContributions() finds for any result position.
size_t MostWeights(const Direction& direction, const ResamplingFilter& filter) {
    const double widest = std::max({direction.spread * filter.support, filter.support, 0.5});
    return static_cast<size_t>(2 * widest + 3);
}

// Gathers what lies under the filter around result position `x`, clamped at the picture's edges and
// normalised.
int32_t GatherContributions(const Direction& direction, const ResamplingFilter& filter, int32_t x,
                            Contribution* found) {
    // A filter narrower than a pixel would miss every one: it becomes the nearest pixel.
    const bool narrow = direction.spread * filter.support <= 0.5;
    const double spread = narrow ? 1 : direction.spread;
    const double reach = narrow ? 0.5 : spread * filter.support;
    const double center = (x + 0.5) / direction.scale;
    const int32_t last = direction.from - 1;
    const int32_t start = std::min(static_cast<int32_t>(std::max(center - reach + 0.5, 0.0)), last);
    const int32_t end =
        static_cast<int32_t>(std::min(center + reach + 0.5, static_cast<double>(direction.from)));
    double sum = 0;
    int32_t count = 0;
    for (int32_t position = start; position < end;) {
        double places[kMostPlaces], weights[kMostPlaces];
        const int32_t some = std::min(end - position, kMostPlaces);
        for (int32_t i = 0; i < some; ++i) places[i] = (position + i - center + 0.5) / spread;
        WeighPlaces(filter, places, some, weights);
        for (int32_t i = 0; i < some; ++i, ++position) {
            found[count++] = {weights[i], position};
            sum += weights[i];
        }
    }
    if (count == 0 || sum == 0) {
        found[0] = {1, std::min(static_cast<int32_t>(center), last)};
        return 1;
    }
    for (int32_t i = 0; i < count; ++i) found[i].weight /= sum;
    return count;
}

// Fills the table of a whole pass at once, so that weights are not computed again for each pixel.
void FillTable(const Direction& direction, const ResamplingFilter& filter, Contribution* work,
               const PassTable& table) {
    for (int32_t x = 0; x < direction.to; ++x) {
        const int32_t count = GatherContributions(direction, filter, x, work);
        PassTable::Span* span = table.spans.address + x;
        span->start = static_cast<int32_t>(work[0].position);
        span->count = count;
        int32_t heaviest = 0;
        float* weights = table.WeightsOf(x);
        for (int32_t i = 0; i < count; ++i) {
            weights[i] = static_cast<float>(work[i].weight);
            if (work[i].weight > work[heaviest].weight) heaviest = i;
        }
        span->heaviest = span->start + heaviest;
    }
}

// Palette indices cannot be blended and a palette must not change: each pixel is the one that weighs most.
void PickPixels(const WorkingImage* from, WorkingImage* to, const PassTable& across, const PassTable& down) {
    for (int32_t y = 0; y < to->height; ++y) {
        // Tables run over stored rows, bottom up; the accessors count from the top.
        const int32_t sourceY = from->height - 1 - down.spans.address[to->height - 1 - y].heaviest;
        for (int32_t x = 0; x < to->width; ++x)
            SetDibPixel(to, x, y, GetDibPixel(from, across.spans.address[x].heaviest, sourceY));
    }
}

// The two passes, the cheaper order first. The intermediate picture holds whole bytes.
bool RunPasses(const WorkingImage* from, WorkingImage* to, const PassTable& across, const PassTable& down) {
    const int64_t w = from->width, h = from->height, W = to->width, H = to->height;
    const bool verticalFirst = (h + H) * W <= (w + W) * H;
    const MemoryOwner owner(verticalFirst ? CreateDib(from->width, to->height, nullptr, from->bitCount)
                                          : CreateDib(to->width, from->height, nullptr, from->bitCount));
    const ImageLock between(owner.memory);
    if (!between) return false;
    if (!verticalFirst) {
        if (!SumColumns(from, between.image, across)) return false;
        return SumRows(between.image, to, down);
    }
    return SumRows(from, between.image, down) && SumColumns(between.image, to, across);
}

}  // namespace

ImageHandle Resample(ImageHandle source, int32_t width, int32_t height, double blur) {
    const ImageLock from(source);
    if (!from) return nullptr;
    if (width == from->width && height == from->height && blur == 1.0) return DuplicateImage(from.image);
    uint8_t palette[kPaletteBytes];
    ReadColorTable(from.image, palette);
    NewImage to(CreateDib(width, height, palette, from->bitCount));
    if (!to) return nullptr;

    const Direction across = MakeDirection(from->width, width, blur);
    const Direction down = MakeDirection(from->height, height, blur);
    const ResamplingFilter& filter =
        FilterAt(across.scale * down.scale > 1.0 ? kMitchellFilter : kLanczosFilter);
    const size_t mostAcross = MostWeights(across, filter), mostDown = MostWeights(down, filter);
    const Scratch<Contribution> work(std::max(mostAcross, mostDown));
    const PassTable acrossTable(width, mostAcross);
    const PassTable downTable(height, mostDown);
    if (!work || !acrossTable.Ready() || !downTable.Ready()) return nullptr;
    FillTable(across, filter, work.address, acrossTable);
    FillTable(down, filter, work.address, downTable);

    if (from->bitCount <= 8)
        PickPixels(from.image, to.image, acrossTable, downTable);
    else if (!RunPasses(from.image, to.image, acrossTable, downTable))
        return nullptr;
    return to.Release();
}

ImageHandle ScaleByPercentage(ImageHandle source, int32_t horizontalPercentage, int32_t verticalPercentage) {
    double width, height;
    {
        const ImageLock lock(source);
        if (!lock || horizontalPercentage < 0 || verticalPercentage < 0) return nullptr;
        width = static_cast<double>(lock->width) * horizontalPercentage / 100 + 0.5;
        height = static_cast<double>(lock->height) * verticalPercentage / 100 + 0.5;
    }
    if (width > INT32_MAX || height > INT32_MAX) return nullptr;
    return Resample(source, std::max(static_cast<int32_t>(width), 1),
                    std::max(static_cast<int32_t>(height), 1), 1.0);
}

}  // namespace kfx
