// SPDX-License-Identifier: MIT
// The same cases as math_bench by a plain loop, for builds without a benchmark library: the least time for
// one result of many runs, in nanoseconds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "bench/math_cases.h"
#include "framework/cpu.h"

namespace kfx::bench {
namespace {

double NanosecondsEach(const MathCase& item) {
    using Clock = std::chrono::steady_clock;
    constexpr int32_t kRuns = 300;
    std::vector<double> x(kMathArguments), values(kMathArguments);
    item.make(x.data());
    AllowAvx2(item.lanes);
    double least = 1e9;
    for (int32_t i = 0; i < kRuns; ++i) {
        const Clock::time_point start = Clock::now();
        item.run(x.data(), values.data());
        const std::chrono::duration<double, std::nano> took = Clock::now() - start;
        least = std::min(least, took.count() / kMathArguments);
    }
    AllowAvx2(true);
    return least;
}

}  // namespace
}  // namespace kfx::bench

int main() {
    using namespace kfx::bench;
    for (size_t i = 0; i < MathCaseCount(); ++i)
        std::printf("%-18s %8.2f ns\n", MathCaseAt(i).name, NanosecondsEach(MathCaseAt(i)));
    return 0;
}
