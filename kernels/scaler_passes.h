// SPDX-License-Identifier: MIT
// The two passes of the scaler: each makes every row, or every column, of its result a weighted sum of the
// source's.
#pragma once

#include <cstdint>

#include "framework/memory_guards.h"
#include "framework/working_image.h"

namespace kfx {

// For each result position of a pass the source positions under the filter, one after another, and their
// weights, which add up to 1. Starts and ends do not fall, unless weights cancel. The table is not usable
// when memory ran out: see Ready().
struct PassTable {
    PassTable(int32_t positions, size_t mostWeights)
        : stride(mostWeights),
          spans(static_cast<size_t>(positions)),
          weights(static_cast<size_t>(positions) * mostWeights) {}

    struct Span {
        int32_t start;
        int32_t count;
        int32_t heaviest;  // the source position of the largest weight
    };
    bool Ready() const { return spans && weights; }
    float* WeightsOf(int32_t position) const {
        return weights.address + static_cast<size_t>(position) * stride;
    }

    const size_t stride;
    const Scratch<Span> spans;
    const Scratch<float> weights;
};

// Fills `to`, as wide as `from`, whose stored rows are sums of stored rows: `table` has a position for each.
// Pictures have 24 or 32 bits. Samples are added in the order of their weights in single precision, then
// rounded to bytes. False: memory ran out.
bool SumRows(const WorkingImage* from, WorkingImage* to, const PassTable& table);

// The same for columns: `to` is as high as `from`.
bool SumColumns(const WorkingImage* from, WorkingImage* to, const PassTable& table);

}  // namespace kfx
