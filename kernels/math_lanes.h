// SPDX-License-Identifier: MIT
// Four doubles in an AVX2 register, with the operators that the phases of the elementary functions use. Only
// for files that are compiled for AVX2: all of it has internal linkage, so that the linker cannot use these
// AVX2 copies for other files.
#pragma once

#include <immintrin.h>

#include "framework/math/double_double.h"

namespace kfx::math {
namespace {

struct LaneBits {
    KFX_INLINE LaneBits(__m256i b) : bits(b) {}
    KFX_INLINE explicit LaneBits(uint64_t b) : bits(_mm256_set1_epi64x(static_cast<long long>(b))) {}
    __m256i bits;
};

struct LaneMask {
    __m256d bits;
};

struct Lanes {
    KFX_INLINE Lanes(__m256d v) : values(v) {}
    KFX_INLINE explicit Lanes(double v) : values(_mm256_set1_pd(v)) {}
    __m256d values;
};

KFX_INLINE LaneBits operator+(LaneBits a, LaneBits b) { return _mm256_add_epi64(a.bits, b.bits); }
KFX_INLINE LaneBits operator-(LaneBits a, LaneBits b) { return _mm256_sub_epi64(a.bits, b.bits); }
KFX_INLINE LaneBits operator&(LaneBits a, LaneBits b) { return _mm256_and_si256(a.bits, b.bits); }
KFX_INLINE LaneBits operator|(LaneBits a, LaneBits b) { return _mm256_or_si256(a.bits, b.bits); }
KFX_INLINE LaneBits operator^(LaneBits a, LaneBits b) { return _mm256_xor_si256(a.bits, b.bits); }
KFX_INLINE LaneBits operator<<(LaneBits a, int count) { return _mm256_slli_epi64(a.bits, count); }
KFX_INLINE LaneBits operator>>(LaneBits a, int count) { return _mm256_srli_epi64(a.bits, count); }

KFX_INLINE Lanes operator+(Lanes a, Lanes b) { return _mm256_add_pd(a.values, b.values); }
KFX_INLINE Lanes operator-(Lanes a, Lanes b) { return _mm256_sub_pd(a.values, b.values); }
KFX_INLINE Lanes operator*(Lanes a, Lanes b) { return _mm256_mul_pd(a.values, b.values); }
KFX_INLINE LaneMask operator==(Lanes a, Lanes b) { return {_mm256_cmp_pd(a.values, b.values, _CMP_EQ_OQ)}; }
KFX_INLINE LaneMask operator<=(Lanes a, Lanes b) { return {_mm256_cmp_pd(a.values, b.values, _CMP_LE_OQ)}; }
KFX_INLINE LaneMask operator&(LaneMask a, LaneMask b) { return {_mm256_and_pd(a.bits, b.bits)}; }

KFX_INLINE LaneBits BitsOf(Lanes x) { return _mm256_castpd_si256(x.values); }
KFX_INLINE Lanes FromBits(LaneBits x) { return _mm256_castsi256_pd(x.bits); }

KFX_INLINE Lanes Gather(const double* table, LaneBits index) {
    return _mm256_i64gather_pd(table, index.bits, 8);
}

KFX_INLINE bool AllSet(LaneMask mask) { return _mm256_movemask_pd(mask.bits) == 15; }

}  // namespace

template <>
struct Companions<Lanes> {
    using Bits = LaneBits;
    using Mask = LaneMask;
};

}  // namespace kfx::math
