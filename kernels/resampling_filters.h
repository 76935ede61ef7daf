// SPDX-License-Identifier: MIT
// The filters of the image scaler: what each contributes at a distance x from the centre, in source pixels
// when enlarging and in result pixels when shrinking.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

struct ResamplingFilter {
    const char* name;
    double (*weight)(double x, double support);
    double support;  // half-width; 0: a single point
    // The same for `count` places at once, up to kMostPlaces; null: there is no faster way.
    void (*weights)(const double* x, double support, int32_t count, double* weights);
};

constexpr int32_t kMostPlaces = 32;

// The weights of a filter at `count` places, up to kMostPlaces.
void WeighPlaces(const ResamplingFilter& filter, const double* x, int32_t count, double* weights);

// The table of all sixteen filters. Of these the scaler uses two; the rest are there for whoever wants
// another look.
const ResamplingFilter& FilterAt(size_t index);
size_t FilterCount();

constexpr size_t kMitchellFilter = 12;
constexpr size_t kLanczosFilter = 13;

}  // namespace kfx
