// SPDX-License-Identifier: MIT
// Both passes in one sweep over the picture: each row is blurred horizontally into a ring of n rows, held as
// words, from which the vertical pass takes its sums. Every sum adds its products in the order of the
// weights, so results do not depend on how many samples are summed side by side.
#include "kernels/separable_blur.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "kernels/blur_estimate.h"

namespace kfx {
namespace {

KFX_INLINE int32_t Rounded(float sum) { return static_cast<int32_t>(sum + kBlurHalf); }

constexpr size_t kBlock = 256;  // samples whose sums are kept before they are rounded
constexpr size_t kGroup = 16;   // of these, summed side by side

// sums[s] for `count` samples up to kBlock: the sum of weights[j] * rows[j][first + s]. Some more are
// computed and read, to whole groups that stay in registers over all taps.
KFX_INLINE void SumTaps(const uint16_t* const* rows, const float* weights, int32_t n, size_t first,
                        size_t count, float* sums) {
    for (size_t s = 0; s < count; s += kGroup) {
        float group[kGroup] = {};
        for (int32_t j = 0; j < n; ++j) {
            const uint16_t* row = rows[j] + first + s;
            for (size_t i = 0; i < kGroup; ++i) group[i] += weights[j] * row[i];
        }
        for (size_t i = 0; i < kGroup; ++i) sums[s + i] = group[i];
    }
}

template <typename Sample>
KFX_INLINE void BlurSamples(const uint16_t* const* rows, const float* weights, int32_t n, size_t count,
                            Sample* out) {
    for (size_t first = 0; first < count; first += kBlock) {
        float sums[kBlock];
        const size_t samples = std::min(kBlock, count - first);
        SumTaps(rows, weights, n, first, samples, sums);
        for (size_t s = 0; s < samples; ++s) out[first + s] = static_cast<Sample>(Rounded(sums[s]));
    }
}

KFX_INLINE void Widen(const uint8_t* bytes, size_t count, uint16_t* __restrict words) {
    for (size_t s = 0; s < count; ++s) words[s] = bytes[s];
}

// Near the ends of a line the weights are cut off: this is the sum of those left at a position.
float CutWeightSum(const float* weights, int32_t n, int32_t position, int32_t length) {
    const int32_t first = position - n / 2;
    float sum = 0;
    for (int32_t j = std::max(0, -first); j < std::min(n, length - first); ++j) sum += weights[j];
    return sum;
}

KFX_INLINE uint8_t CutValue(float sum, float weightSum) {
    return static_cast<uint8_t>(static_cast<int32_t>((sum + 0.5) / weightSum));
}

// Columns from `first` up to `end` of 24-bit pixels, whose weights add up to `weightSums`.
KFX_INLINE void BlurCutColumns(const uint16_t* const* rows, const float* weights, int32_t n,
                               const float* weightSums, int32_t first, int32_t end, uint16_t* out) {
    constexpr int32_t kColumns = kBlock / 3;
    for (; first < end; first += kColumns, weightSums += kColumns) {
        float sums[kBlock];
        const auto samples = 3 * static_cast<size_t>(std::min(kColumns, end - first));
        const size_t at = 3 * static_cast<size_t>(first);
        SumTaps(rows, weights, n, at, samples, sums);
        for (size_t s = 0; s < samples; ++s) out[at + s] = CutValue(sums[s], weightSums[s / 3]);
    }
}

// A whole row of `count` samples, of whose taps n are inside the picture.
KFX_INLINE void BlurCutRow(const uint16_t* const* rows, const float* weights, int32_t n, float weightSum,
                           size_t count, uint8_t* out) {
    for (size_t first = 0; first < count; first += kBlock) {
        float sums[kBlock];
        const size_t samples = std::min(kBlock, count - first);
        SumTaps(rows, weights, n, first, samples, sums);
        for (size_t s = 0; s < samples; ++s) out[first + s] = CutValue(sums[s], weightSum);
    }
}

struct Blur {
    const float* weights;
    int32_t n;
    const uint16_t** rows;  // n pointers, working space
    const float* cutSums;   // of the first n / 2 columns, then of the last
#if KFX_HAS_AVX2
    BlurEstimate estimate;
    bool hasEstimate;  // and the processor AVX2
#endif
};

// The whole sums of `count` samples of blur.rows, as words or as bytes.
void BlurSums(const Blur& blur, size_t count, uint16_t* words) {
#if KFX_HAS_AVX2
    if (blur.hasEstimate) return BlurToWords(blur.estimate, blur.rows, count, words);
#endif
    Fastest<BlurSamples<uint16_t>>()(blur.rows, blur.weights, blur.n, count, words);
}

void BlurSums(const Blur& blur, size_t count, uint8_t* bytes) {
#if KFX_HAS_AVX2
    if (blur.hasEstimate) return BlurToBytes(blur.estimate, blur.rows, count, bytes);
#endif
    Fastest<BlurSamples<uint8_t>>()(blur.rows, blur.weights, blur.n, count, bytes);
}

// `padded` is a row of `width` pixels as words with n pixels of zeros to either side: products of zeros
// leave a sum as it is, so cut sums need no loop of their own.
void BlurRow(const Blur& blur, const uint16_t* padded, int32_t width, uint16_t* out) {
    const int32_t half = blur.n / 2;
    for (int32_t j = 0; j < blur.n; ++j)
        blur.rows[j] = padded + 3 * static_cast<ptrdiff_t>(blur.n - half + j);
    BlurSums(blur, 3 * static_cast<size_t>(width), out);
    const auto blurCutColumns = Fastest<BlurCutColumns>();
    blurCutColumns(blur.rows, blur.weights, blur.n, blur.cutSums, 0, half, out);
    blurCutColumns(blur.rows, blur.weights, blur.n, blur.cutSums + half, width - half, width, out);
}

// Computes result row y from the ring, in which picture row y stands at place y % n. Rows are counted from
// the top.
void BlurColumns(const Blur& blur, const uint16_t* ring, size_t rowSize, size_t samples, int32_t y,
                 int32_t height, uint8_t* out) {
    const int32_t half = blur.n / 2;
    const int32_t firstRow = y - half;
    const int32_t begin = std::max(0, -firstRow);
    const int32_t end = std::min(blur.n, height - firstRow);
    for (int32_t j = begin; j < end; ++j)
        blur.rows[j] = ring + static_cast<size_t>((firstRow + j) % blur.n) * rowSize;
    if (y >= half && y < height - half) {
        BlurSums(blur, samples, out);
        return;
    }
    Fastest<BlurCutRow>()(blur.rows + begin, blur.weights + begin, end - begin,
                          CutWeightSum(blur.weights, blur.n, y, height), samples, out);
}

}  // namespace

bool BlurRowsAndColumns(const WorkingImage* from, WorkingImage* to, const float* weights, int32_t n) {
    const int32_t width = from->width;
    const int32_t height = from->height;
    const size_t samples = 3 * static_cast<size_t>(width);
    const size_t margin = 3 * static_cast<size_t>(n);
    const size_t rowSize = samples + kEstimateRoom;
    const Scratch<uint16_t> padded(samples + 2 * margin + kEstimateRoom);
    const Scratch<uint16_t> ring(rowSize * static_cast<size_t>(n));
    const Scratch<const uint16_t*> rows(static_cast<size_t>(n));
    const Scratch<float> cutSums(static_cast<size_t>(n));
    if (!padded || !ring || !rows || !cutSums) return false;
    for (int32_t x = 0; x < n / 2; ++x) {
        cutSums.address[x] = CutWeightSum(weights, n, x, width);
        cutSums.address[n / 2 + x] = CutWeightSum(weights, n, width - n / 2 + x, width);
    }

    Blur blur = {};
    blur.weights = weights;
    blur.n = n;
    blur.rows = rows.address;
    blur.cutSums = cutSums.address;
#if KFX_HAS_AVX2
    blur.hasEstimate = UseAvx2() && MakeBlurEstimate(weights, n, &blur.estimate);
#endif
    const auto widen = Fastest<Widen>();
    int32_t blurred = 0;  // rows that have been through the horizontal pass
    for (int32_t y = 0; y < height; ++y) {
        for (; blurred < std::min(height, y - n / 2 + n); ++blurred) {
            widen(PictureRow(from, blurred), samples, padded.address + margin);
            BlurRow(blur, padded.address, width, ring.address + static_cast<size_t>(blurred % n) * rowSize);
        }
        BlurColumns(blur, ring.address, rowSize, samples, y, height, PictureRow(to, y));
    }
    return true;
}

}  // namespace kfx
