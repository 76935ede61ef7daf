// SPDX-License-Identifier: MIT
// Both passes in one sweep over the picture: each row is blurred horizontally into a ring of n rows, held as
// floats, from which the vertical pass takes its sums. Every sum adds its products in the order of the
// weights, so results do not depend on how many samples are summed side by side.
#include "kernels/separable_blur.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"

namespace kfx {
namespace {

// Rounds a sum, halves up. The number added is the one just below 0.5: with it single precision gives what
// double precision gives with 0.5, for every sum below 2^22.
KFX_INLINE int32_t Rounded(float sum) { return static_cast<int32_t>(sum + 0x1.fffffep-2f); }

constexpr size_t kBlock = 256;  // samples summed side by side where the number of taps varies

// sums[s] for `count` samples up to kBlock: the sum of weights[j] * rows[j][first + s].
KFX_INLINE void SumTaps(const float* const* rows, const float* weights, int32_t n, size_t first, size_t count,
                        float* sums) {
    for (size_t s = 0; s < count; ++s) sums[s] = 0;
    for (int32_t j = 0; j < n; ++j)
        for (size_t s = 0; s < count; ++s) sums[s] += weights[j] * rows[j][first + s];
}

// Rounded sums. With a number of taps known to the compiler the loop over them disappears and sums stay in
// registers.
template <int kTaps, typename Sample>
KFX_INLINE void BlurSamples(const float* const* rows, const float* weights, int32_t n, size_t count,
                            Sample* __restrict out) {
    if constexpr (kTaps > 0) {
        // Local copies: otherwise the compiler must assume that storing a result may change them.
        const float* row[kTaps];
        float weight[kTaps];
        std::copy_n(rows, kTaps, row);
        std::copy_n(weights, kTaps, weight);
        for (size_t s = 0; s < count; ++s) {
            float sum = 0;
            for (int j = 0; j < kTaps; ++j) sum += weight[j] * row[j][s];
            out[s] = static_cast<Sample>(Rounded(sum));
        }
    } else {
        for (size_t first = 0; first < count; first += kBlock) {
            float sums[kBlock];
            const size_t samples = std::min(kBlock, count - first);
            SumTaps(rows, weights, n, first, samples, sums);
            for (size_t s = 0; s < samples; ++s) out[first + s] = static_cast<Sample>(Rounded(sums[s]));
        }
    }
}

KFX_INLINE void Widen(const uint8_t* bytes, size_t count, float* __restrict out) {
    for (size_t s = 0; s < count; ++s) out[s] = bytes[s];
}
struct BlurFunctions {
    void (*toFloats)(const float* const* rows, const float* weights, int32_t n, size_t count, float* out);
    void (*toBytes)(const float* const* rows, const float* weights, int32_t n, size_t count, uint8_t* out);
};

// `kTaps` 0: any number.
template <int kTaps>
BlurFunctions FunctionsFor() {
    return {Fastest<BlurSamples<kTaps, float>>(), Fastest<BlurSamples<kTaps, uint8_t>>()};
}

// The panel's depths make 5 to 11 taps.
BlurFunctions ChooseFunctions(int32_t n) {
    switch (n) {
        case 5:
            return FunctionsFor<5>();
        case 7:
            return FunctionsFor<7>();
        case 9:
            return FunctionsFor<9>();
        case 11:
            return FunctionsFor<11>();
        default:
            return FunctionsFor<0>();
    }
}

// Near the ends of a line the weights are cut off: this is the sum of those left at a position.
float CutWeightSum(const float* weights, int32_t n, int32_t position, int32_t length) {
    const int32_t first = position - n / 2;
    float sum = 0;
    for (int32_t j = std::max(0, -first); j < std::min(n, length - first); ++j) sum += weights[j];
    return sum;
}

uint8_t CutValue(float sum, float weightSum) {
    return static_cast<uint8_t>(static_cast<int32_t>((sum + 0.5) / weightSum));
}

struct Blur {
    BlurFunctions functions;
    const float* weights;
    int32_t n;
    const float** rows;  // n pointers, working space
};

// `padded` is a row of `width` pixels as floats with n pixels of zeros to either side: products of zeros
// leave a sum as it is, so cut sums need no loop of their own.
void BlurRow(const Blur& blur, const float* padded, int32_t width, float* out) {
    const int32_t half = blur.n / 2;
    for (int32_t j = 0; j < blur.n; ++j)
        blur.rows[j] = padded + 3 * static_cast<ptrdiff_t>(blur.n - half + j);
    blur.functions.toFloats(blur.rows, blur.weights, blur.n, 3 * static_cast<size_t>(width), out);
    for (int32_t x = 0; x < width; ++x) {
        if (x == half) x = std::max(x, width - half);
        if (x >= width) break;
        const float weightSum = CutWeightSum(blur.weights, blur.n, x, width);
        for (ptrdiff_t s = 3 * static_cast<ptrdiff_t>(x); s < 3 * static_cast<ptrdiff_t>(x) + 3; ++s) {
            float sum = 0;
            for (int32_t j = 0; j < blur.n; ++j) sum += blur.weights[j] * blur.rows[j][s];
            out[s] = CutValue(sum, weightSum);
        }
    }
}

// Computes result row y from the ring, in which picture row y stands at place y % n. Rows are counted from
// the top.
void BlurColumns(const Blur& blur, const float* ring, size_t samples, int32_t y, int32_t height,
                 uint8_t* out) {
    const int32_t half = blur.n / 2;
    const int32_t firstRow = y - half;
    const int32_t begin = std::max(0, -firstRow);
    const int32_t end = std::min(blur.n, height - firstRow);
    for (int32_t j = begin; j < end; ++j)
        blur.rows[j] = ring + static_cast<size_t>((firstRow + j) % blur.n) * samples;
    if (y >= half && y < height - half) {
        blur.functions.toBytes(blur.rows, blur.weights, blur.n, samples, out);
        return;
    }
    const float weightSum = CutWeightSum(blur.weights, blur.n, y, height);
    for (size_t first = 0; first < samples; first += kBlock) {
        float sums[kBlock];
        const size_t count = std::min(kBlock, samples - first);
        SumTaps(blur.rows + begin, blur.weights + begin, end - begin, first, count, sums);
        for (size_t s = 0; s < count; ++s) out[first + s] = CutValue(sums[s], weightSum);
    }
}

}  // namespace

bool BlurRowsAndColumns(const WorkingImage* from, WorkingImage* to, const float* weights, int32_t n) {
    const int32_t width = from->width;
    const int32_t height = from->height;
    const size_t samples = 3 * static_cast<size_t>(width);
    const size_t margin = 3 * static_cast<size_t>(n);
    const Scratch<float> padded(samples + 2 * margin);
    const Scratch<float> ring(samples * static_cast<size_t>(n));
    const Scratch<const float*> rows(static_cast<size_t>(n));
    if (!padded || !ring || !rows) return false;

    const Blur blur = {ChooseFunctions(n), weights, n, rows.address};
    const auto widen = Fastest<Widen>();
    int32_t blurred = 0;  // rows that have been through the horizontal pass
    for (int32_t y = 0; y < height; ++y) {
        for (; blurred < std::min(height, y - n / 2 + n); ++blurred) {
            widen(PictureRow(from, blurred), samples, padded.address + margin);
            BlurRow(blur, padded.address, width, ring.address + static_cast<size_t>(blurred % n) * samples);
        }
        BlurColumns(blur, ring.address, samples, y, height, PictureRow(to, y));
    }
    return true;
}

}  // namespace kfx
