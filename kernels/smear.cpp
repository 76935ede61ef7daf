// SPDX-License-Identifier: MIT
// A sum in double precision depends on the order of adding, so the sums of several neighbouring pixels are
// computed at the same time, each in order. With AVX2 an estimate in whole numbers comes first: where its
// error cannot change the truncated level, the byte is certain. In flat areas sums lie exactly on a level, so
// their results are taken from a table. The remaining samples are summed in order.
#include "kernels/smear.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/memory_guards.h"
#include "kernels/smear_estimate.h"

namespace kfx {
namespace {

struct Smear {
    const WorkingImage* from;
    const Tap* taps;  // as given; their weights are added in this order
    int32_t count;
    const uint8_t* background;  // kSmearSamples bytes
};

uint8_t Truncate(double sum) { return static_cast<uint8_t>(static_cast<int32_t>(sum)); }

// One pixel, its taps added in their order.
void SumPixel(const Smear& smear, int32_t x, int32_t r, uint8_t* out) {
    double blue = 0, green = 0, red = 0;
    for (const Tap* tap = smear.taps; tap < smear.taps + smear.count; ++tap) {
        const int32_t column = x + tap->dx;
        const int32_t row = r + tap->dy;
        const bool inside = column >= 0 && column < smear.from->width && row >= 0 && row < smear.from->height;
        const uint8_t* pixel =
            inside ? StoredRow(smear.from, row) + 3 * static_cast<size_t>(column) : smear.background;
        blue += tap->weight * pixel[0];
        green += tap->weight * pixel[1];
        red += tap->weight * pixel[2];
    }
    out[0] = Truncate(blue);
    out[1] = Truncate(green);
    out[2] = Truncate(red);
}

// The kSmearSamples samples that a tap adds for the pixels from x on: in the picture, in the background, or,
// where the picture's edge runs between them, put together in `mixed`.
const uint8_t* SamplesAt(const Smear& smear, const Tap& tap, int32_t x, int32_t r, uint8_t* mixed) {
    const int32_t width = smear.from->width;
    const int32_t row = r + tap.dy;
    const int32_t column = x + tap.dx;
    if (row < 0 || row >= smear.from->height || column <= -kSmearPixels || column >= width)
        return smear.background;
    const uint8_t* samples = StoredRow(smear.from, row) + 3 * static_cast<ptrdiff_t>(column);
    if (column >= 0 && column + kSmearPixels <= width) return samples;
    const int32_t begin = std::max(0, -column);
    const int32_t end = std::min(kSmearPixels, width - column);
    std::memcpy(mixed, smear.background, kSmearSamples);
    std::memcpy(mixed + 3 * begin, samples + 3 * begin, 3 * static_cast<size_t>(end - begin));
    return mixed;
}

// kSmearPixels pixels, the taps added in their order.
KFX_INLINE void SumBlock(const Smear& smear, int32_t x, int32_t r, uint8_t* out) {
    double sums[kSmearSamples] = {};
    uint8_t mixed[kSmearSamples];
    for (const Tap* tap = smear.taps; tap < smear.taps + smear.count; ++tap) {
        const uint8_t* samples = SamplesAt(smear, *tap, x, r, mixed);
        const double weight = tap->weight;
        for (int32_t s = 0; s < kSmearSamples; ++s) sums[s] += weight * samples[s];
    }
    for (int32_t s = 0; s < kSmearSamples; ++s) out[s] = Truncate(sums[s]);
}

#if KFX_HAS_AVX2

// The estimate's taps: those of the smear that fall on the same pixel are one.
struct Estimate {
    Smear merged;
    WholeWeights weights;
    ptrdiff_t* offsets;       // of each merged tap's samples from the pixel's, in bytes
    const uint8_t** samples;  // of each merged tap, for the current block
    uint8_t* mixed;           // kSmearSamples for each merged tap
    uint8_t flat[256];        // the exact result where all samples are the same
};

int32_t MergeTaps(const Smear& smear, Tap* merged) {
    int32_t count = 0;
    for (int32_t i = 0; i < smear.count; ++i) {
        const Tap& tap = smear.taps[i];
        if (count && merged[count - 1].dx == tap.dx && merged[count - 1].dy == tap.dy)
            merged[count - 1].weight += tap.weight;
        else
            merged[count++] = tap;
    }
    return count;
}

// How many of the estimate's taps lie inside the picture for a block at x of row r. The taps walk away from
// the pixel, so those outside are the last ones.
struct Inside {
    int32_t whole;   // all samples inside
    int32_t partly;  // at least one
};

bool WithinRows(const Smear& smear, const Tap& tap, int32_t r) {
    return r + tap.dy >= 0 && r + tap.dy < smear.from->height;
}

Inside FindInside(const Smear& merged, int32_t x) {
    const int32_t width = merged.from->width;
    Inside inside = {0, 0};
    const auto column = [&](int32_t i) { return x + merged.taps[i].dx; };
    while (inside.whole < merged.count && column(inside.whole) >= 0 &&
           column(inside.whole) + kSmearPixels <= width)
        ++inside.whole;
    inside.partly = inside.whole;
    while (inside.partly < merged.count && column(inside.partly) > -kSmearPixels &&
           column(inside.partly) < width)
        ++inside.partly;
    return inside;
}

// Computes the samples in doubt exactly, or the whole block if there are many of them.
void SettleDoubts(const Smear& smear, const Estimate& estimate, int32_t used, const uint8_t* doubts,
                  int32_t x, int32_t r, uint8_t* out) {
    constexpr int32_t kManyPixels = 3;
    uint8_t least[kSmearSamples], greatest[kSmearSamples];
    RangeOfSamples(estimate.samples, used, least, greatest);
    const bool sawBackground = used < estimate.merged.count;
    int32_t open[kSmearPixels];
    int32_t openCount = 0;
    for (int32_t pixel = 0; pixel < kSmearPixels; ++pixel) {
        bool settled = true;
        for (int32_t s = 3 * pixel; s < 3 * pixel + 3; ++s) {
            if (!doubts[s]) continue;
            if (least[s] == greatest[s] && (!sawBackground || least[s] == smear.background[s]))
                out[s] = estimate.flat[least[s]];
            else
                settled = false;
        }
        if (!settled) open[openCount++] = pixel;
    }
    if (openCount >= kManyPixels)
        Fastest<SumBlock>()(smear, x, r, out);
    else
        for (int32_t i = 0; i < openCount; ++i) SumPixel(smear, x + open[i], r, out + 3 * open[i]);
}

// `inside` is FindInside for x, `rows` how many taps lie within the picture's rows.
void EstimateBlock(const Smear& smear, const Estimate& estimate, const Inside& inside, int32_t rows,
                   int32_t x, int32_t r, uint8_t* out) {
    const Smear& merged = estimate.merged;
    const uint8_t* pixel = StoredRow(merged.from, r) + 3 * static_cast<size_t>(x);
    const int32_t whole = std::min(inside.whole, rows);
    // Taps are taken in pairs. The partner of an odd last tap is the background, or a tap of weight 0.
    const int32_t used = (std::min(inside.partly, rows) + 1) & ~1;
    for (int32_t i = 0; i < whole; ++i) estimate.samples[i] = pixel + estimate.offsets[i];
    for (int32_t i = whole; i < used; ++i)
        estimate.samples[i] = i < merged.count
                                  ? SamplesAt(merged, merged.taps[i], x, r,
                                              estimate.mixed + static_cast<size_t>(i) * kSmearSamples)
                                  : estimate.samples[0];
    uint8_t doubts[kSmearSamples];
    if (SumWholeWeights(estimate.weights, estimate.samples, used / 2, smear.background, out, doubts))
        SettleDoubts(smear, estimate, used, doubts, x, r, out);
}

// False: memory ran out.
bool SmearByEstimate(const Smear& smear, WorkingImage* to) {
    const auto room = static_cast<size_t>(smear.count) + 2;
    const int32_t width = to->width;
    const Scratch<Tap> merged(room);
    const Scratch<double> weights(room);
    const Scratch<int32_t> parts(4 * room);
    const Scratch<ptrdiff_t> offsets(room);
    const Scratch<const uint8_t*> samples(room);
    const Scratch<uint8_t> mixed(room * kSmearSamples);
    const Scratch<Inside> insides(static_cast<size_t>(width / kSmearPixels) + 1);
    if (!merged || !weights || !parts || !offsets || !samples || !mixed || !insides) return false;

    const int32_t count = MergeTaps(smear, merged.address);
    Estimate estimate = {.merged = {.from = smear.from,
                                    .taps = merged.address,
                                    .count = count,
                                    .background = smear.background},
                         .weights = {.highPairs = parts.address,
                                     .lowPairs = parts.address + room,
                                     .highRest = parts.address + 2 * room,
                                     .lowRest = parts.address + 3 * room,
                                     .margin = 0},
                         .offsets = offsets.address,
                         .samples = samples.address,
                         .mixed = mixed.address,
                         .flat = {}};
    for (int32_t i = 0; i < count; ++i) {
        const Tap& tap = merged.address[i];
        weights.address[i] = tap.weight;
        offsets.address[i] =
            tap.dy * static_cast<ptrdiff_t>(StrideOf(to)) + 3 * static_cast<ptrdiff_t>(tap.dx);
    }
    RoundWeights(weights.address, count, &estimate.weights);
    for (int32_t value = 0; value < 256; ++value) {
        double sum = 0;
        for (int32_t i = 0; i < smear.count; ++i) sum += smear.taps[i].weight * value;
        estimate.flat[value] = Truncate(sum);
    }
    // The last block of a row may overlap the one before it.
    const auto blockAt = [&](int32_t block) { return std::min(block * kSmearPixels, width - kSmearPixels); };
    const int32_t blocks = (width + kSmearPixels - 1) / kSmearPixels;
    for (int32_t block = 0; block < blocks; ++block)
        insides.address[block] = FindInside(estimate.merged, blockAt(block));
    // A long smear reads hundreds of rows for each of its own: strips of blocks keep them in the cache.
    constexpr int32_t kBlocksInStrip = 20;
    for (int32_t strip = 0; strip < blocks; strip += kBlocksInStrip) {
        for (int32_t r = 0; r < to->height; ++r) {
            int32_t rows = 0;
            while (rows < count && WithinRows(smear, merged.address[rows], r)) ++rows;
            for (int32_t block = strip; block < std::min(blocks, strip + kBlocksInStrip); ++block) {
                const int32_t x = blockAt(block);
                EstimateBlock(smear, estimate, insides.address[block], rows, x, r,
                              StoredRow(to, r) + 3 * static_cast<size_t>(x));
            }
        }
    }
    return true;
}

#endif

}  // namespace

bool SmearImage(const WorkingImage* from, WorkingImage* to, const Tap* taps, int32_t count,
                uint32_t background) {
    uint8_t pattern[kSmearSamples];
    for (int32_t s = 0; s < kSmearSamples; ++s)
        pattern[s] = static_cast<uint8_t>(background >> (16 - s % 3 * 8));
    const Smear smear = {from, taps, count, pattern};
    const int32_t width = from->width;
#if KFX_HAS_AVX2
    if (UseAvx2() && width >= kSmearPixels && count <= kMostWholeTaps) return SmearByEstimate(smear, to);
#endif
    for (int32_t r = 0; r < from->height; ++r) {
        uint8_t* out = StoredRow(to, r);
        if (width < kSmearPixels)
            for (int32_t x = 0; x < width; ++x) SumPixel(smear, x, r, out + 3 * static_cast<size_t>(x));
        else
            for (int32_t next = 0; next < width; next += kSmearPixels) {
                const int32_t x = std::min(next, width - kSmearPixels);
                Fastest<SumBlock>()(smear, x, r, out + 3 * static_cast<size_t>(x));
            }
    }
    return true;
}

}  // namespace kfx
