// SPDX-License-Identifier: MIT
// The elementary functions beside the C library's. The counter tells nanoseconds for one result.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/math_cases.h"
#include "framework/cpu.h"

namespace kfx::bench {
namespace {

void TimeCase(benchmark::State& state, const MathCase& item) {
    std::vector<double> x(kMathArguments), values(kMathArguments);
    item.make(x.data());
    AllowAvx2(item.lanes);
    for (auto _ : state) {
        item.run(x.data(), values.data());
        benchmark::DoNotOptimize(values.data());
        benchmark::ClobberMemory();
    }
    AllowAvx2(true);
    state.counters["each"] = benchmark::Counter(static_cast<double>(state.iterations()) * kMathArguments,
                                                benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Register() {
    for (size_t i = 0; i < MathCaseCount(); ++i)
        benchmark::RegisterBenchmark(MathCaseAt(i).name, TimeCase, MathCaseAt(i));
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    kfx::bench::Register();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
