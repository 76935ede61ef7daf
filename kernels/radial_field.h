// SPDX-License-Identifier: MIT
// What a distortion computes from a pixel's distance from a centre (a sine, a power) is the same in all four
// quarters round that centre and in every frame of one size: here it is computed once for each pair of
// distinct distances.
#pragma once

#include <cstdint>

#include "framework/kernel_cache.h"
#include "framework/memory_guards.h"

namespace kfx {

// One axis of a picture as seen from a centre. Test Ready() before use: false when memory ran out.
struct RadialAxis {
    RadialAxis(int32_t pixels, double center, double scale);
    bool Ready() const { return offset.address && square.address && distance.address; }

    const int32_t size;
    int32_t distinct;                 // how many distances differ
    const Scratch<double> offset;     // of each pixel: (pixel - center) * scale
    const Scratch<int32_t> distance;  // of each pixel: the number of its distance
    const Scratch<double> square;     // of each distinct distance: the offset's square
};

// Computes one row of a field: `valuesPerPixel` planes of `count` values from the squared offsets of the
// columns and of the row, `planeSize` values apart. `settings` points at the distortion's own parameters.
using RadialRow = void (*)(const void* settings, const double* columnSquares, int32_t count, double rowSquare,
                           double* values, size_t planeSize);

// The distances within a radius, from number `first` up to `end`. They are one run: in the order of the
// numbers distances grow, or fall and then grow.
struct DistanceRun {
    int32_t first;
    int32_t end;
};
DistanceRun DistancesWithin(double radius, const double* columnSquares, int32_t count, double rowSquare);

constexpr size_t kMostValuesPerPixel = 2;

struct RadialField {
    const RadialAxis* columns;
    const RadialAxis* rows;
    RadialRow compute;
    const void* settings;
    double radius;  // pixels; values are needed within it only
    size_t valuesPerPixel;
    const double* table;  // null: computed row by row
    double* row;          // then here
    bool found;           // the table is an earlier frame's
};

// Doubles in one row of a field.
inline size_t RadialRowSize(const RadialField& field) {
    return field.valuesPerPixel * static_cast<size_t>(field.columns->distinct);
}

// Sets the field's table to the kept one, filling it where it is new. Without memory, or for a table beyond
// kLargestKeptTable, the table stays null.
void KeepRadialField(RadialField* field, KeptTable* kept, const void* key, size_t keyBytes);

// The values of picture row y, plane after plane, `columns->distinct` each; of no use outside the radius.
const double* RadialRowAt(const RadialField& field, int32_t y);

}  // namespace kfx
