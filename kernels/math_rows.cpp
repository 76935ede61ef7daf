// SPDX-License-Identifier: MIT
#include "kernels/math_rows.h"

#include "framework/cpu.h"
#include "framework/math/elementary.h"

namespace kfx {
namespace {

constexpr bool kHasAvx2 = KFX_HAS_AVX2;  // in this build; the processor is asked at run time

// How many of `count` numbers are computed in lanes; the rest, at most three, one by one.
int32_t CountInLanes(int32_t count) { return kHasAvx2 && UseAvx2() ? count & ~3 : 0; }

}  // namespace

void ExpRow(const double* x, int32_t count, double* values) {
    const int32_t done = CountInLanes(count);
    if constexpr (kHasAvx2) ExpRowAvx2(x, done, values);
    for (int32_t i = done; i < count; ++i) values[i] = Exp(x[i]);
}

void PowRow(const double* x, double exponent, int32_t count, double* values) {
    const int32_t done = CountInLanes(count);
    if constexpr (kHasAvx2) PowRowAvx2(x, exponent, done, values);
    for (int32_t i = done; i < count; ++i) values[i] = Pow(x[i], exponent);
}

void SinRow(const double* x, int32_t count, double* sines) {
    const int32_t done = CountInLanes(count);
    if constexpr (kHasAvx2) SinRowAvx2(x, done, sines);
    for (int32_t i = done; i < count; ++i) sines[i] = Sin(x[i]);
}

void SinCosRow(const double* x, int32_t count, double* sines, double* cosines) {
    const int32_t done = CountInLanes(count);
    if constexpr (kHasAvx2) SinCosRowAvx2(x, done, sines, cosines);
    for (int32_t i = done; i < count; ++i) {
        const double angle = x[i];
        sines[i] = Sin(angle);
        cosines[i] = Cos(angle);
    }
}

}  // namespace kfx
