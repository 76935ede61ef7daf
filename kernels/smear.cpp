// SPDX-License-Identifier: MIT
// A sum in double precision depends on the order of adding, so the sums of several neighbouring pixels are
// computed at the same time, each in order. With AVX2 an estimate in whole numbers comes first: where its
// error cannot change the truncated level, the byte is certain. In flat areas sums lie on a level, so each is
// computed once and then taken from a table. The remaining samples are summed in order.
#include "kernels/smear.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/memory_guards.h"
#include "kernels/short_smear.h"
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
    OrderedTaps ordered;
    ptrdiff_t* offsets;       // of each merged tap's samples from the pixel's, in bytes
    const uint8_t** samples;  // of each merged tap, for the current block
    uint8_t* mixed;           // kSmearSamples for each merged tap
    // Results where the taps inside the picture have one value and all others the background: for each value,
    // number of merged taps inside and channel, one more than the result; 0 is one that is not known yet.
    uint16_t* flat;
};

bool OnOnePixel(const Tap& a, const Tap& b) { return a.dx == b.dx && a.dy == b.dy; }

int32_t MergeTaps(const Smear& smear, Tap* merged) {
    int32_t count = 0;
    for (int32_t i = 0; i < smear.count; ++i) {
        const Tap& tap = smear.taps[i];
        if (count && OnOnePixel(merged[count - 1], tap))
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

// The result where the first `inside` merged taps have the same value in this channel.
uint8_t FlatResult(const Estimate& estimate, uint8_t value, int32_t inside, int32_t channel) {
    const size_t place = static_cast<size_t>(value) * static_cast<size_t>(estimate.merged.count + 1);
    uint16_t& known = estimate.flat[3 * (place + static_cast<size_t>(inside)) + static_cast<size_t>(channel)];
    if (known == 0) {
        const OrderedTaps& taps = estimate.ordered;
        const uint8_t background = estimate.merged.background[channel];
        double sum = 0;
        for (int32_t i = 0; i < taps.count; ++i)
            sum += taps.weights[i] * (i < taps.before[inside] ? value : background);
        known = static_cast<uint16_t>(Truncate(sum) + 1);
    }
    return static_cast<uint8_t>(known - 1);
}

// The taps of a block: all samples of the first `whole` lie inside the picture, none of those from `used` on.
// The taps between reach over its left or right edge.
struct BlockTaps {
    int32_t whole;
    int32_t used;
};

// How many merged taps of one pixel of the block lie inside, when these have the same value in each of its
// channels that is in doubt. 0: they have not.
int32_t FlatTaps(const Estimate& estimate, const BlockTaps& taps, int32_t x, int32_t pixel,
                 const uint8_t* doubts, const uint8_t* least, const uint8_t* greatest) {
    const Smear& merged = estimate.merged;
    const int32_t begin = 3 * pixel, end = begin + 3;
    for (int32_t s = begin; s < end; ++s)
        if (doubts[s] && least[s] != greatest[s]) return 0;
    int32_t inside = taps.whole;
    for (; inside < taps.used; ++inside) {
        const int32_t column = x + pixel + merged.taps[inside].dx;
        if (column < 0 || column >= merged.from->width) break;
        for (int32_t s = begin; s < end; ++s)
            if (doubts[s] && estimate.samples[inside][s] != least[s]) return 0;
    }
    return inside;
}

// Computes the samples in doubt exactly: those of flat places once for all, or else the whole block.
void SettleDoubts(const Estimate& estimate, const BlockTaps& taps, const uint8_t* doubts, int32_t x,
                  uint8_t* out) {
    uint8_t least[kSmearSamples], greatest[kSmearSamples];
    RangeOfSamples(estimate.samples, taps.whole, least, greatest);
    for (int32_t pixel = 0; pixel < kSmearPixels; ++pixel) {
        const int32_t first = 3 * pixel;
        if (!doubts[first] && !doubts[first + 1] && !doubts[first + 2]) continue;
        const int32_t inside = FlatTaps(estimate, taps, x, pixel, doubts, least, greatest);
        if (inside == 0) {
            SumInOrder(estimate.ordered, estimate.samples, taps.used, estimate.merged.background, out);
            return;
        }
        for (int32_t channel = 0; channel < 3; ++channel)
            if (doubts[first + channel])
                out[first + channel] = FlatResult(estimate, least[first + channel], inside, channel);
    }
}

// `inside` is FindInside for x, `rows` how many taps lie within the picture's rows.
void EstimateBlock(const Estimate& estimate, const Inside& inside, int32_t rows, int32_t x, int32_t r,
                   uint8_t* out) {
    const Smear& merged = estimate.merged;
    const uint8_t* pixel = StoredRow(merged.from, r) + 3 * static_cast<size_t>(x);
    const BlockTaps taps = {.whole = std::min(inside.whole, rows), .used = std::min(inside.partly, rows)};
    // Taps are taken in pairs. The partner of an odd last tap is the background, or a tap of weight 0.
    const int32_t paired = (taps.used + 1) & ~1;
    for (int32_t i = 0; i < taps.whole; ++i) estimate.samples[i] = pixel + estimate.offsets[i];
    for (int32_t i = taps.whole; i < paired; ++i)
        estimate.samples[i] = i < merged.count
                                  ? SamplesAt(merged, merged.taps[i], x, r,
                                              estimate.mixed + static_cast<size_t>(i) * kSmearSamples)
                                  : estimate.samples[0];
    uint8_t doubts[kSmearSamples];
    if (SumWholeWeights(estimate.weights, estimate.samples, paired / 2, merged.background, out, doubts))
        SettleDoubts(estimate, taps, doubts, x, out);
}

// How many weights can change a result. Once 255 times a weight is less than 2^-54, adding it changes no sum
// from a half on, and smaller sums stay below 1.
int32_t WeightsThatCount(const Tap* taps, int32_t count) {
    while (count > 1 && 255 * taps[count - 1].weight < 0x1p-54) --count;
    return count;
}

// `merged` are the taps that fall on different pixels. False: memory ran out.
bool SmearByEstimate(const Smear& smear, const Tap* merged, int32_t count, WorkingImage* to) {
    const auto room = static_cast<size_t>(count) + 2;
    const int32_t width = to->width;
    const Scratch<double> weights(room);
    const Scratch<double> orderedWeights(static_cast<size_t>(smear.count));
    const Scratch<int32_t> parts(5 * room);
    const Scratch<ptrdiff_t> offsets(room);
    const Scratch<const uint8_t*> samples(room);
    const Scratch<uint8_t> mixed(room * kSmearSamples);
    const Scratch<uint16_t> flat(256 * 3 * (static_cast<size_t>(count) + 1));
    const Scratch<Inside> insides(static_cast<size_t>(width / kSmearPixels) + 1);
    if (!weights || !orderedWeights || !parts || !offsets || !samples || !mixed || !flat || !insides)
        return false;

    int32_t* before = parts.address + 4 * room;
    Estimate estimate = {
        .merged = {.from = smear.from, .taps = merged, .count = count, .background = smear.background},
        .weights = {.highPairs = parts.address,
                    .lowPairs = parts.address + room,
                    .highRest = parts.address + 2 * room,
                    .lowRest = parts.address + 3 * room,
                    .margin = 0},
        .ordered = {.weights = orderedWeights.address,
                    .before = before,
                    .count = WeightsThatCount(smear.taps, smear.count)},
        .offsets = offsets.address,
        .samples = samples.address,
        .mixed = mixed.address,
        .flat = flat.address};
    for (int32_t i = 0, tap = -1; i < smear.count; ++i) {
        orderedWeights[static_cast<size_t>(i)] = smear.taps[i].weight;
        if (tap < 0 || !OnOnePixel(merged[tap], smear.taps[i])) before[++tap] = i;
    }
    before[count] = smear.count;
    for (int32_t i = 0; i < count; ++i) {
        const Tap& tap = merged[i];
        weights.address[i] = tap.weight;
        offsets.address[i] =
            tap.dy * static_cast<ptrdiff_t>(StrideOf(to)) + 3 * static_cast<ptrdiff_t>(tap.dx);
    }
    RoundWeights(weights.address, count, &estimate.weights);
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
            while (rows < count && WithinRows(smear, merged[rows], r)) ++rows;
            for (int32_t block = strip; block < std::min(blocks, strip + kBlocksInStrip); ++block) {
                const int32_t x = blockAt(block);
                EstimateBlock(estimate, insides.address[block], rows, x, r,
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
    if (UseAvx2() && count <= kMostWholeTaps) {
        const Scratch<Tap> merged(static_cast<size_t>(count));
        if (!merged) return false;
        const int32_t mergedCount = MergeTaps(smear, merged.address);
        if (mergedCount <= kMostShortTaps)
            return SmearShortLine(from, to, taps, count, merged.address, mergedCount, background);
        if (width >= kSmearPixels) return SmearByEstimate(smear, merged.address, mergedCount, to);
    }
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
