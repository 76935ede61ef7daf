// SPDX-License-Identifier: MIT
#include "framework/scaler.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "framework/resampling_filters.h"

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

// For each result position the source positions under the filter and their weights, which add up to 1.
struct PassTable {
    PassTable(int32_t positions, size_t mostWeights)
        : stride(mostWeights),
          spans(static_cast<size_t>(positions)),
          weights(static_cast<size_t>(positions) * mostWeights) {}

    struct Span {
        int32_t start;
        int32_t count;
        int32_t heaviest;  // the source position of the largest weight
    };
    const size_t stride;
    Scratch<Span> spans;
    Scratch<float> weights;
};

Direction MakeDirection(int32_t from, int32_t to, double blur) {
    const double scale = std::max(static_cast<double>(to) / from, kSmallestScale);
    return {from, to, scale, std::max(1 / scale, 1.0) * blur};
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
    for (int32_t position = start; position < end; ++position, ++count) {
        const double weight = filter.weight((position - center + 0.5) / spread, filter.support);
        found[count] = {weight, position};
        sum += weight;
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
               PassTable* table) {
    for (int32_t x = 0; x < direction.to; ++x) {
        const int32_t count = GatherContributions(direction, filter, x, work);
        PassTable::Span* span = table->spans.address + x;
        span->start = static_cast<int32_t>(work[0].position);
        span->count = count;
        int32_t heaviest = 0;
        float* weights = table->weights.address + static_cast<size_t>(x) * table->stride;
        for (int32_t i = 0; i < count; ++i) {
            weights[i] = static_cast<float>(work[i].weight);
            if (work[i].weight > work[heaviest].weight) heaviest = i;
        }
        span->heaviest = span->start + heaviest;
    }
}

KFX_INLINE uint8_t ToByte(float value) {
    const float rounded = value + 0.5f;
    return static_cast<uint8_t>(static_cast<int32_t>(std::min(std::max(rounded, 0.0f), 255.0f)));
}

// One row of a result from `span.count` rows under the filter, `stride` bytes apart; the first begins at
// `from`.
KFX_INLINE void SumRows(const uint8_t* from, size_t stride, const float* weights, int32_t count,
                        uint8_t* out) {
    constexpr size_t kBlock = 32;  // sums that stay in registers over all rows
    size_t first = 0;
    for (; first + kBlock <= stride; first += kBlock) {
        float sums[kBlock] = {};
        const uint8_t* row = from + first;
        for (int32_t i = 0; i < count; ++i, row += stride)
            for (size_t b = 0; b < kBlock; ++b) sums[b] += weights[i] * row[b];
        for (size_t b = 0; b < kBlock; ++b) out[first + b] = ToByte(sums[b]);
    }
    for (; first < stride; ++first) {
        float sum = 0;
        for (int32_t i = 0; i < count; ++i) sum += weights[i] * from[static_cast<size_t>(i) * stride + first];
        out[first] = ToByte(sum);
    }
}

void SumRowByRow(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    const auto sumRows = Fastest<SumRows>();
    for (int32_t r = 0; r < to->height; ++r) {
        const PassTable::Span& span = table.spans.address[r];
        sumRows(StoredRow(from, span.start), StrideOf(from),
                table.weights.address + static_cast<size_t>(r) * table.stride, span.count, StoredRow(to, r));
    }
}

// When a picture shrinks, each of its rows lies under the filters of several rows of the result. They are
// read and converted once, a few at a time, and added to the sums of all these. A row that is not under a
// filter has the weight 0 there, which leaves the sum as it is, so that each sum is made of the same numbers
// in the same order as row by row.
constexpr int32_t kAddedRows = 4;    // as many as AddRows() names
constexpr size_t kAddedBytes = 128;  // of each row at a time: converted, they stay in the nearest cache

// What is added to the sums of one row of the result.
struct Addition {
    float* sums;  // as many as a row has bytes
    float weights[kAddedRows];
};

// Adds rows of `bytes` bytes.
KFX_INLINE void AddRows(const uint8_t* const (&rows)[kAddedRows], size_t bytes, const Addition* additions,
                        int32_t count) {
    for (size_t first = 0; first < bytes; first += kAddedBytes) {
        const size_t width = std::min(kAddedBytes, bytes - first);
        float a[kAddedBytes], b[kAddedBytes], c[kAddedBytes], d[kAddedBytes];
        for (size_t i = 0; i < width; ++i) a[i] = rows[0][first + i];
        for (size_t i = 0; i < width; ++i) b[i] = rows[1][first + i];
        for (size_t i = 0; i < width; ++i) c[i] = rows[2][first + i];
        for (size_t i = 0; i < width; ++i) d[i] = rows[3][first + i];
        for (int32_t k = 0; k < count; ++k) {
            const float* w = additions[k].weights;
            float* sums = additions[k].sums + first;
            const float wa = w[0], wb = w[1], wc = w[2], wd = w[3];
            for (size_t i = 0; i < width; ++i)
                sums[i] = sums[i] + wa * a[i] + wb * b[i] + wc * c[i] + wd * d[i];
        }
    }
}

KFX_INLINE void StoreSums(const float* sums, size_t bytes, uint8_t* out) {
    for (size_t b = 0; b < bytes; ++b) out[b] = ToByte(sums[b]);
}

// The rows of a result that have a sum while the source's rows are added: `begun` is the first that has none
// yet, `done` the first that is not finished. Both only grow, as spans and their ends do.
struct OpenRows {
    const PassTable& table;
    const int32_t height;  // of the result
    int32_t begun = 0;
    int32_t done = 0;

    int32_t EndOf(int32_t r) const { return table.spans.address[r].start + table.spans.address[r].count; }
    // Whether the next row begins before source row `y`.
    bool NextBeginsBefore(int32_t y) const { return begun < height && table.spans.address[begun].start < y; }
    bool NextEndsBy(int32_t y) const { return done < begun && EndOf(done) <= y; }
    float WeightOf(int32_t r, int32_t y) const {
        const PassTable::Span& span = table.spans.address[r];
        const bool under = y >= span.start && y < span.start + span.count;
        return under
                   ? table.weights
                         .address[static_cast<size_t>(r) * table.stride + static_cast<size_t>(y - span.start)]
                   : 0.0f;
    }
};

// The most rows of a result that are open at a time.
int32_t MostOpenRows(const PassTable& table, int32_t sourceHeight, int32_t height) {
    OpenRows open = {.table = table, .height = height};
    int32_t most = 0;
    for (int32_t y = kAddedRows; y < sourceHeight + kAddedRows; y += kAddedRows) {
        while (open.NextBeginsBefore(y)) ++open.begun;
        most = std::max(most, open.begun - open.done);
        while (open.NextEndsBy(y)) ++open.done;
    }
    return most;
}

// False: memory ran out.
bool SumTogether(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    const auto addRows = Fastest<AddRows>();
    const auto storeSums = Fastest<StoreSums>();
    const size_t stride = StrideOf(from);
    const int32_t most = MostOpenRows(table, from->height, to->height);
    const Scratch<float> sums(static_cast<size_t>(most) * stride);
    const Scratch<Addition> additions(static_cast<size_t>(most));
    if (!sums || !additions) return false;
    const auto sumsOf = [&](int32_t r) { return sums.address + static_cast<size_t>(r % most) * stride; };
    OpenRows open = {.table = table, .height = to->height};
    for (int32_t y = 0; y < from->height; y += kAddedRows) {
        for (; open.NextBeginsBefore(y + kAddedRows); ++open.begun)
            std::memset(sumsOf(open.begun), 0, stride * sizeof(float));
        const uint8_t* rows[kAddedRows];
        for (int32_t i = 0; i < kAddedRows; ++i) rows[i] = StoredRow(from, std::min(y + i, from->height - 1));
        int32_t count = 0;
        for (int32_t r = open.done; r < open.begun; ++r) {
            Addition& addition = additions[static_cast<size_t>(count++)];
            addition.sums = sumsOf(r);
            for (int32_t i = 0; i < kAddedRows; ++i) addition.weights[i] = open.WeightOf(r, y + i);
        }
        addRows(rows, stride, additions.address, count);
        for (; open.NextEndsBy(y + kAddedRows); ++open.done)
            storeSums(sumsOf(open.done), stride, StoredRow(to, open.done));
    }
    return true;
}

// What shrinks less is summed row by row: few rows have weights in common there.
constexpr int32_t kLeastShrinking = 2;

// False: memory ran out.
bool VerticalPass(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    if (to->height <= from->height / kLeastShrinking) return SumTogether(from, to, table);
    SumRowByRow(from, to, table);
    return true;
}

// Several rows at a time, interleaved pixel by pixel, so that one weight serves a whole run of neighbouring
// numbers.
constexpr int32_t kRowsAtOnce = 8;

void Interleave(const WorkingImage* from, int32_t firstRow, int32_t rows, size_t pixelBytes, float* lanes) {
    const size_t laneCount = kRowsAtOnce * pixelBytes;
    for (int32_t r = 0; r < rows; ++r) {
        const uint8_t* pixel = StoredRow(from, firstRow + r);
        float* out = lanes + static_cast<size_t>(r) * pixelBytes;
        for (int32_t x = 0; x < from->width; ++x, pixel += pixelBytes, out += laneCount)
            for (size_t c = 0; c < pixelBytes; ++c) out[c] = pixel[c];
    }
}

// One column of a result, kRowsAtOnce rows high. `kPixelBytes` is known at compile time so that the sums stay
// in registers.
template <size_t kPixelBytes>
KFX_INLINE void SumColumns(const float* lanes, const float* weights, int32_t count, uint8_t* out) {
    constexpr size_t kLanes = kRowsAtOnce * kPixelBytes;
    float sums[kLanes] = {};
    for (int32_t i = 0; i < count; ++i, lanes += kLanes)
        for (size_t lane = 0; lane < kLanes; ++lane) sums[lane] += weights[i] * lanes[lane];
    for (size_t lane = 0; lane < kLanes; ++lane) out[lane] = ToByte(sums[lane]);
}

template <size_t kPixelBytes>
void HorizontalPass(const WorkingImage* from, WorkingImage* to, const PassTable& table, float* lanes) {
    constexpr size_t kLanes = kRowsAtOnce * kPixelBytes;
    const auto sumColumns = Fastest<SumColumns<kPixelBytes>>();
    for (int32_t firstRow = 0; firstRow < to->height; firstRow += kRowsAtOnce) {
        const int32_t rows = std::min(kRowsAtOnce, to->height - firstRow);
        Interleave(from, firstRow, rows, kPixelBytes, lanes);
        for (int32_t x = 0; x < to->width; ++x) {
            const PassTable::Span& span = table.spans.address[x];
            uint8_t pixels[kLanes];
            sumColumns(lanes + static_cast<size_t>(span.start) * kLanes,
                       table.weights.address + static_cast<size_t>(x) * table.stride, span.count, pixels);
            for (int32_t r = 0; r < rows; ++r)
                std::memcpy(StoredRow(to, firstRow + r) + static_cast<size_t>(x) * kPixelBytes,
                            pixels + static_cast<size_t>(r) * kPixelBytes, kPixelBytes);
        }
    }
}

bool RunHorizontalPass(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    const size_t pixelBytes = from->bitCount / 8u;
    const Scratch<float> lanes(static_cast<size_t>(from->width) * kRowsAtOnce * pixelBytes);
    if (!lanes) return false;
    if (pixelBytes == 3)
        HorizontalPass<3>(from, to, table, lanes.address);
    else
        HorizontalPass<4>(from, to, table, lanes.address);
    return true;
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
        if (!RunHorizontalPass(from, between.image, across)) return false;
        return VerticalPass(between.image, to, down);
    }
    return VerticalPass(from, between.image, down) && RunHorizontalPass(between.image, to, across);
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
    const double widest =
        std::max({across.spread * filter.support, down.spread * filter.support, filter.support, 0.5});
    const auto mostWeights = static_cast<size_t>(2 * widest + 3);
    const Scratch<Contribution> work(mostWeights);
    PassTable acrossTable(width, mostWeights);
    PassTable downTable(height, mostWeights);
    if (!work || !acrossTable.spans.address || !acrossTable.weights.address || !downTable.spans.address ||
        !downTable.weights.address)
        return nullptr;
    FillTable(across, filter, work.address, &acrossTable);
    FillTable(down, filter, work.address, &downTable);

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
