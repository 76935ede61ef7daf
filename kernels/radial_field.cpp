// SPDX-License-Identifier: MIT
#include "kernels/radial_field.h"

#include <cmath>

namespace kfx {
namespace {

// Only for centres on whole and half pixels are the offsets on both sides the same doubles.
bool IsMirrored(double center) { return std::fabs(center) < 1e9 && center * 2 == std::floor(center * 2); }

void ComputeRow(const RadialField& field, double rowSquare, double* values) {
    const double* squares = field.columns->square.address;
    const int32_t distinct = field.columns->distinct;
    const DistanceRun run = DistancesWithin(field.radius, squares, distinct, rowSquare);
    field.compute(field.settings, squares + run.first, run.end - run.first, rowSquare, values + run.first,
                  static_cast<size_t>(distinct));
}

}  // namespace

RadialAxis::RadialAxis(int32_t pixels, double center, double scale)
    : size(pixels),
      distinct(0),
      offset(static_cast<size_t>(pixels)),
      distance(static_cast<size_t>(pixels)),
      square(static_cast<size_t>(pixels)) {
    if (!Ready()) return;
    const bool mirrored = IsMirrored(center);
    const int64_t twice = mirrored ? static_cast<int64_t>(center * 2) : 0;
    // Distances in half pixels; they all have the parity of the nearest one.
    const int64_t last = 2 * (int64_t{pixels} - 1);
    const int64_t nearest = twice < 0 ? -twice : twice > last ? twice - last : twice & 1;
    for (int32_t i = 0; i < pixels; ++i) {
        const double away = (i - center) * scale;
        const int64_t halves = 2 * int64_t{i} - twice;
        const int32_t number =
            mirrored ? static_cast<int32_t>(((halves < 0 ? -halves : halves) - nearest) / 2) : i;
        offset.address[i] = away;
        distance.address[i] = number;
        square.address[number] = away * away;
        if (number >= distinct) distinct = number + 1;
    }
}

DistanceRun DistancesWithin(double radius, const double* columnSquares, int32_t count, double rowSquare) {
    const double most = radius * radius;
    DistanceRun run = {0, count};
    while (run.first < run.end && columnSquares[run.first] + rowSquare >= most) ++run.first;
    while (run.end > run.first && columnSquares[run.end - 1] + rowSquare >= most) --run.end;
    return run;
}

void KeepRadialField(RadialField* field, KeptTable* kept, const void* key, size_t keyBytes) {
    const size_t rowSize = RadialRowSize(*field);
    const auto rowCount = static_cast<size_t>(field->rows->distinct);
    if (rowCount > kLargestKeptTable / sizeof(double) / rowSize) return;
    bool fresh;
    auto* table =
        static_cast<double*>(CachedTable(kept, key, keyBytes, rowCount * rowSize * sizeof(double), &fresh));
    if (!table) return;
    if (fresh) {
        for (size_t k = 0; k < rowCount; ++k)
            ComputeRow(*field, field->rows->square.address[k], table + k * rowSize);
        KeepTable(kept);
    }
    field->table = table;
    field->found = !fresh;
}

const double* RadialRowAt(const RadialField& field, int32_t y) {
    const int32_t k = field.rows->distance.address[y];
    if (field.table) return field.table + static_cast<size_t>(k) * RadialRowSize(field);
    ComputeRow(field, field.rows->square.address[k], field.row);
    return field.row;
}

}  // namespace kfx
