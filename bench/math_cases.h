// SPDX-License-Identifier: MIT
// What is timed of the elementary functions: each by the C library, by our own for one number, and by our
// row, plain and in lanes where there is one, over the same arguments.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx::bench {

constexpr int32_t kMathArguments = 4096;

struct MathCase {
    const char* name;
    bool lanes;  // AVX2 allowed
    void (*make)(double* x);
    void (*run)(const double* x, double* values);
};

const MathCase& MathCaseAt(size_t index);
size_t MathCaseCount();

}  // namespace kfx::bench
