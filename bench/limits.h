// SPDX-License-Identifier: MIT
// What this machine can do on one thread: the rates that bound how fast a job can be.
#pragma once

#include <cstddef>

namespace kfx::bench {

// All in operations per nanosecond, so that the best of several measurements is the greatest. Lanes count one
// by one. Multiplying and adding are two instructions here, as in the kernels.
struct Limits {
    double copiedBytes = 0;
    double singleMultiplyAdds = 0;
    double doubleMultiplyAdds = 0;
    double doubleDivisions = 0;
    double singleRoots = 0;
    double loads = 0;           // four bytes from a computed place that is in the cache, added up
    double dependentLoads = 0;  // of which each has to wait for the one before, within a mebibyte
    double sines = 0;           // in rows, by the project's own function
};

// One limit, for reports.
struct LimitName {
    const char* text;
    double Limits::*value;
};
extern const LimitName kLimitNames[];
extern const size_t kLimitCount;

// Measures every rate for some milliseconds, copying with blocks of `copyBytes` bytes; `best` keeps the
// greater ones. Without AVX2 the lanes are those that every processor has.
void MeasureLimits(size_t copyBytes, Limits* best);

}  // namespace kfx::bench
