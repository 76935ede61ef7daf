// SPDX-License-Identifier: MIT
// The elementary functions (framework/math/elementary.h) of whole rows of numbers, four at a time where the
// processor has AVX2. Every result has the bits of the function for one number.
#pragma once

#include <cstdint>

namespace kfx {

// Each writes one result for each of the `count` arguments; angles are in radians. Results may be written
// over the arguments.
void ExpRow(const double* x, int32_t count, double* values);
void PowRow(const double* x, double exponent, int32_t count, double* values);
void SinRow(const double* x, int32_t count, double* sines);
void SinCosRow(const double* x, int32_t count, double* sines, double* cosines);

// The AVX2 code of the rows, for processors that have it. `count` is a multiple of four.
void ExpRowAvx2(const double* x, int32_t count, double* values);
void PowRowAvx2(const double* x, double exponent, int32_t count, double* values);
void SinRowAvx2(const double* x, int32_t count, double* sines);
void SinCosRowAvx2(const double* x, int32_t count, double* sines, double* cosines);

}  // namespace kfx
