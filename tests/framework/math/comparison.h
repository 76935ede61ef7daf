// SPDX-License-Identifier: MIT
// The elementary functions beside MPFR's.
#pragma once

#include <cstdint>

#include "tests/framework/math/arguments.h"

namespace kfx {

using Function = double (*)(double x, double y);
using FirstPhase = bool (*)(double x, double y, double* value);

struct Functions {
    const char* name;
    Function ours;
    FirstPhase first;
    Function exact;
};

extern const Functions kExp, kSin, kCos, kPow, kHypot;

// What the arguments of one case came to.
struct Count {
    int64_t arguments = 0;
    int64_t doubts = 0;
    int64_t wrong = 0;
};

// Compares one result with MPFR's, bit for bit, and counts it. The first wrong ones of a count are reported.
void Check(const Functions& functions, double x, double y, Count* count);

// A base and the exponent at which its power is next to the middle of two subnormal numbers.
void MakeSubnormalPower(Random& random, int32_t bits, double* x, double* y);

}  // namespace kfx
