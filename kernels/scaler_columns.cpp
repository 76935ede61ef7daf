// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "kernels/scaler_passes.h"
#include "kernels/scaler_rounding.h"

namespace kfx {
namespace {

// A pass over columns takes so many rows at a time, interleaved pixel by pixel, so that one weight serves a
// run of neighbouring numbers.
constexpr int32_t kRowsAtOnce = 8;

template <size_t kPixelBytes>
void Interleave(const uint8_t* const* rows, int32_t width, float* lanes) {
    for (size_t x = 0; x < static_cast<size_t>(width); ++x)
        for (int32_t r = 0; r < kRowsAtOnce; ++r)
            for (size_t c = 0; c < kPixelBytes; ++c) *lanes++ = rows[r][x * kPixelBytes + c];
}

// One column of the result: `pixels` has room for kRowsAtOnce pixels of four bytes.
template <size_t kPixelBytes>
void SumColumn(const float* lanes, const float* weights, int32_t count, uint8_t* pixels) {
    constexpr size_t kLanes = kRowsAtOnce * kPixelBytes;
    float sums[kLanes] = {};
    for (int32_t i = 0; i < count; ++i, lanes += kLanes)
        for (size_t lane = 0; lane < kLanes; ++lane) sums[lane] += weights[i] * lanes[lane];
    for (size_t lane = 0; lane < kLanes; ++lane) pixels[lane] = RoundToByte(sums[lane]);
}

// Columns of kRowsAtOnce rows of the result.
template <size_t kPixelBytes, auto kSumColumn>
KFX_INLINE void SumLanes(const float* lanes, const PassTable& table, int32_t width, uint8_t* const* rows) {
    for (int32_t x = 0; x < width; ++x) {
        const PassTable::Span& span = table.spans[static_cast<size_t>(x)];
        uint8_t pixels[kRowsAtOnce * 4] = {};
        kSumColumn(lanes + static_cast<size_t>(span.start) * kRowsAtOnce * kPixelBytes, table.WeightsOf(x),
                   span.count, pixels);
        const auto store = [&](size_t bytes) {
            for (size_t r = 0; r < kRowsAtOnce; ++r)
                std::memcpy(rows[r] + static_cast<size_t>(x) * kPixelBytes, pixels + r * kPixelBytes, bytes);
        };
        // Four bytes are stored at once: the one behind a pixel of three is the next pixel's, which comes
        // later.
        if (x + 1 < width)
            store(4);
        else
            store(kPixelBytes);
    }
}

template <size_t kPixelBytes>
void SumLanesPlain(const float* lanes, const PassTable& table, int32_t width, uint8_t* const* rows) {
    SumLanes<kPixelBytes, SumColumn<kPixelBytes>>(lanes, table, width, rows);
}

#if KFX_HAS_AVX2

// Four bytes are converted at once: the number behind a pixel of three is written over by the next pixel's.
template <size_t kPixelBytes>
KFX_AVX2 void InterleaveAvx2(const uint8_t* const* rows, int32_t width, float* lanes) {
    const size_t last = static_cast<size_t>(width) - 1;
    for (size_t x = 0; x < last; ++x)
        for (int32_t r = 0; r < kRowsAtOnce; ++r, lanes += kPixelBytes) {
            int32_t bytes;
            std::memcpy(&bytes, rows[r] + x * kPixelBytes, sizeof bytes);
            _mm_storeu_ps(lanes, _mm_cvtepi32_ps(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(bytes))));
        }
    for (int32_t r = 0; r < kRowsAtOnce; ++r)
        for (size_t c = 0; c < kPixelBytes; ++c) *lanes++ = rows[r][last * kPixelBytes + c];
}

template <size_t kPixelBytes>
KFX_AVX2 inline void SumColumnAvx2(const float* lanes, const float* weights, int32_t count, uint8_t* pixels) {
    __m256 sums[4];
    for (__m256& sum : sums) sum = _mm256_setzero_ps();
    for (int32_t i = 0; i < count; ++i, lanes += kRowsAtOnce * kPixelBytes) {
        const __m256 weight = _mm256_broadcast_ss(weights + i);
        for (size_t k = 0; k < kPixelBytes; ++k)
            sums[k] = _mm256_add_ps(sums[k], _mm256_mul_ps(weight, _mm256_loadu_ps(lanes + 8 * k)));
    }
    StoreRoundedBytes(sums, pixels);
}

template <size_t kPixelBytes>
KFX_AVX2 void SumLanesAvx2(const float* lanes, const PassTable& table, int32_t width, uint8_t* const* rows) {
    SumLanes<kPixelBytes, SumColumnAvx2<kPixelBytes>>(lanes, table, width, rows);
}

#endif

template <size_t kPixelBytes>
void SumColumnsOf(const WorkingImage* from, WorkingImage* to, const PassTable& table, float* lanes) {
    auto interleave = Interleave<kPixelBytes>;
    auto sumLanes = SumLanesPlain<kPixelBytes>;
#if KFX_HAS_AVX2
    if (UseAvx2()) {
        interleave = InterleaveAvx2<kPixelBytes>;
        sumLanes = SumLanesAvx2<kPixelBytes>;
    }
#endif
    for (int32_t first = 0; first < to->height; first += kRowsAtOnce) {
        // Where fewer rows are left, the last one is done several times.
        const uint8_t* in[kRowsAtOnce];
        uint8_t* out[kRowsAtOnce];
        for (int32_t r = 0; r < kRowsAtOnce; ++r) {
            const int32_t row = std::min(first + r, to->height - 1);
            in[r] = StoredRow(from, row);
            out[r] = StoredRow(to, row);
        }
        interleave(in, from->width, lanes);
        sumLanes(lanes, table, to->width, out);
    }
}

}  // namespace

bool SumColumns(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    const size_t pixelBytes = from->bitCount / 8u;
    const Scratch<float> lanes(static_cast<size_t>(from->width) * kRowsAtOnce * pixelBytes);
    if (!lanes) return false;
    if (pixelBytes == 3)
        SumColumnsOf<3>(from, to, table, lanes.address);
    else
        SumColumnsOf<4>(from, to, table, lanes.address);
    return true;
}

}  // namespace kfx
