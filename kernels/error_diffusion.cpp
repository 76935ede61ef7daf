// SPDX-License-Identifier: MIT
#include "kernels/error_diffusion.h"

#include <algorithm>

#include "kernels/palette_indices.h"
#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

// The errors that the last pixels of a row pass on.
struct Carry {
    int32_t right[3];      // to the next pixel
    int32_t below[3];      // gathered below the next pixel, and
    int32_t belowLeft[3];  // below this one
};

// Converts the pixel in column x and passes its error on.
template <int kBits>
void DitherPixel(const ErrorDiffusion& dither, const DiffusedRow& row, int32_t x, Carry* carry) {
    const auto column = static_cast<ptrdiff_t>(x);
    const uint8_t* from = row.from + 3 * column;
    const int16_t* errors = row.errors + kErrorLanes * column;
    int16_t* next = row.next + kErrorLanes * column;
    int32_t level[3];
    for (int c = 0; c < 3; ++c) level[c] = std::min(std::max(from[c] + errors[c] + carry->right[c], 0), 255);
    const uint8_t entry = LookUpColor(dither.index, static_cast<uint32_t>(level[2]),
                                      static_cast<uint32_t>(level[1]), static_cast<uint32_t>(level[0]));
    PutIndex<kBits>(row.out, x, entry);
    for (int c = 0; c < 3; ++c) {
        const int32_t e = level[c] - dither.palette[entry][c];
        carry->right[c] = 7 * e >> 4;
        if (x >= 2) next[c - kErrorLanes] = static_cast<int16_t>(carry->belowLeft[c] + (3 * e >> 4));
        carry->belowLeft[c] = carry->below[c] + (5 * e >> 4);
        carry->below[c] = e >> 4;
        next[c] = static_cast<int16_t>(carry->belowLeft[c]);  // final unless another pixel follows
    }
}

template <int kBits>
void DiffuseRowsPlain(const ErrorDiffusion& dither, const DiffusedRow* rows, int32_t count) {
    for (int32_t k = 0; k < count; ++k) {
        Carry carry = {};
        for (int32_t x = 0; x < dither.width; ++x) DitherPixel<kBits>(dither, rows[k], x, &carry);
    }
}

#if KFX_HAS_AVX2

struct VectorCarry {
    __m128i right;
    __m128i below;
    __m128i belowLeft;
};

template <int kBits>
KFX_AVX2 KFX_INLINE void DitherPixelAvx2(const ErrorDiffusion& dither, const DiffusedRow& row, int32_t x,
                                         VectorCarry* carry) {
    const auto column = static_cast<ptrdiff_t>(x);
    const uint8_t* from = row.from + 3 * column;
    const auto* errors = reinterpret_cast<const __m128i*>(row.errors + kErrorLanes * column);
    int16_t* next = row.next + kErrorLanes * column;
    const uint32_t pixel =
        from[0] | static_cast<uint32_t>(from[1]) << 8 | static_cast<uint32_t>(from[2]) << 16;
    const __m128i color = _mm_cvtepu8_epi16(_mm_cvtsi32_si128(static_cast<int>(pixel)));
    const __m128i sum = _mm_add_epi16(_mm_add_epi16(color, _mm_loadl_epi64(errors)), carry->right);
    const __m128i clamped = _mm_packus_epi16(sum, sum);
    const auto level = static_cast<uint32_t>(_mm_cvtsi128_si32(clamped));
    const uint8_t entry = LookUpColor(dither.index, level >> 16 & 255, level >> 8 & 255, level & 255);
    PutIndex<kBits>(row.out, x, entry);
    const __m128i nearest = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(dither.palette[entry]));
    const __m128i e = _mm_sub_epi16(_mm_cvtepu8_epi16(clamped), nearest);
    carry->right = _mm_srai_epi16(_mm_sub_epi16(_mm_slli_epi16(e, 3), e), 4);
    const __m128i three = _mm_srai_epi16(_mm_add_epi16(_mm_slli_epi16(e, 1), e), 4);
    const __m128i five = _mm_srai_epi16(_mm_add_epi16(_mm_slli_epi16(e, 2), e), 4);
    if (x != 1)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(next - kErrorLanes),
                         _mm_add_epi16(carry->belowLeft, three));
    carry->belowLeft = _mm_add_epi16(carry->below, five);
    carry->below = _mm_srai_epi16(e, 4);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(next), carry->belowLeft);
}

// Converts several rows at once, each two pixels behind the row before it, whose errors it needs. With one
// row at a time the processor would wait for each look-up in turn.
template <int kBits, int kRows>
KFX_AVX2 void DitherWaveAvx2(const ErrorDiffusion& dither, const DiffusedRow* rows) {
    constexpr int32_t kLag = 2;
    constexpr int32_t kDelay = kLag * (kRows - 1);  // of the last row
    VectorCarry carries[kRows] = {};
    const auto step = [&](int32_t x, int k)
                          KFX_AVX2 { DitherPixelAvx2<kBits>(dither, rows[k], x, &carries[k]); };
    int32_t x = 0;
    const auto edge = [&](int32_t end) KFX_AVX2 {
        for (; x < end; ++x)
            for (int k = 0; k < kRows; ++k)
                if (x >= kLag * k && x - kLag * k < dither.width) step(x - kLag * k, k);
    };
    edge(kDelay);
    for (; x < dither.width; ++x)
        for (int k = 0; k < kRows; ++k) step(x - kLag * k, k);
    edge(dither.width + kDelay);
}

template <int kBits>
void DiffuseRowsAvx2(const ErrorDiffusion& dither, const DiffusedRow* rows, int32_t count) {
    if (count == kDiffusedRows) return DitherWaveAvx2<kBits, kDiffusedRows>(dither, rows);
    for (int32_t k = 0; k < count; ++k) DitherWaveAvx2<kBits, 1>(dither, rows + k);
}

#endif

}  // namespace

DiffuseRows ChooseDiffuseRows(int32_t bitCount) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return bitCount == 8 ? DiffuseRowsAvx2<8> : DiffuseRowsAvx2<4>;
#endif
    return bitCount == 8 ? DiffuseRowsPlain<8> : DiffuseRowsPlain<4>;
}

}  // namespace kfx
