// SPDX-License-Identifier: MIT
// Emboss's bytes where its estimate leaves them in doubt: the sum in the matrix's order, without most of the
// matrix.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

struct EmbossMatrix {
    int32_t n;
    const double* weights;  // n x n in row-major order
    double divisor;         // MatrixDivisor of the weights
};

// What of a matrix is summed: the entries at most `reach` from its centre. The weights farther out are so
// small that a sum in double precision hardly ever changes when one is added.
struct SettlePlan {
    EmbossMatrix matrix;
    int32_t reach;
    double outer;  // beyond what all entries farther out can add, whatever the roundings; 0 without any
};

SettlePlan PlanReach(const EmbossMatrix& matrix, int32_t reach);

// With the least reach that settles nearly all bytes.
SettlePlan PlanSettling(const EmbossMatrix& matrix);

constexpr size_t kSettledSamples = 24;  // settled side by side

// Computes the bytes of kSettledSamples samples of a row, from the one at `first` on. `rows` are where the
// samples of the row and of `reach` rows below and above it begin, the lowest first, as doubles, with 3 *
// reach more on both sides. Returns whether all bytes are certain; otherwise they need the whole matrix.
bool SettleSamples(const SettlePlan& plan, const double* const* rows, size_t first, uint8_t* bytes);

}  // namespace kfx
