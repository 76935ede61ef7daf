// SPDX-License-Identifier: MIT
#include "bench/limits.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bench/math_cases.h"
#include "framework/cpu.h"

namespace kfx::bench {
namespace {

constexpr int kRuns = 5;
constexpr int32_t kTurns = 20000;

// The compiler must not leave out work whose result nobody reads.
volatile double unread;

// How many of `operations` a nanosecond `work` does, in the fastest of some runs. What `work` answers comes
// from all of its results.
template <typename Work>
double RateOf(double operations, Work work) {
    using Clock = std::chrono::steady_clock;
    double least = 1e30;
    for (int run = 0; run < kRuns; ++run) {
        const Clock::time_point start = Clock::now();
        unread = work();
        const std::chrono::duration<double, std::nano> took = Clock::now() - start;
        least = std::min(least, took.count());
    }
    return operations / std::max(least, 1.0);
}

// Numbers side by side, and so many of these that the processor never waits for a result.
using Doubles = double __attribute__((vector_size(32)));
using Singles = float __attribute__((vector_size(32)));
constexpr int32_t kChains = 12;
constexpr double kDoubleOperations = 4.0 * kChains * kTurns;
constexpr double kSingleOperations = 8.0 * kChains * kTurns;

// The sum of each first lane.
template <typename Number, typename Lanes>
KFX_INLINE double SumOf(const Lanes (&chains)[kChains]) {
    double sum = 0;
    for (const Lanes& chain : chains) {
        Number first;
        std::memcpy(&first, &chain, sizeof first);
        sum += static_cast<double>(first);
    }
    return sum;
}

// Each number times a factor plus a summand, over and over; it stays near 1.
template <typename Number, typename Lanes>
KFX_INLINE double MultiplyAdd(Number factor) {
    const Number summand = 1 - factor;
    Lanes chains[kChains];
    for (int32_t k = 0; k < kChains; ++k) chains[k] = Lanes{} + static_cast<Number>(k);
    for (int32_t turn = 0; turn < kTurns; ++turn)
        for (Lanes& chain : chains) chain = chain * factor + summand;
    return SumOf<Number>(chains);
}
KFX_INLINE double MultiplyAddDoubles(double factor) { return MultiplyAdd<double, Doubles>(factor); }
KFX_INLINE double MultiplyAddSingles(float factor) { return MultiplyAdd<float, Singles>(factor); }

KFX_INLINE double DivideDoubles(double dividend) {
    Doubles chains[kChains];
    for (int32_t k = 0; k < kChains; ++k) chains[k] = Doubles{} + (k + 1.5);
    for (int32_t turn = 0; turn < kTurns; ++turn)
        for (Doubles& chain : chains) chain = dividend / chain;
    return SumOf<double>(chains);
}

constexpr int32_t kRootNumbers = 128;
constexpr int32_t kRootTurns = kTurns / 8;

KFX_INLINE double TakeRoots(float first) {
    float numbers[kRootNumbers];
    for (int32_t i = 0; i < kRootNumbers; ++i) numbers[i] = first + static_cast<float>(i);
    for (int32_t turn = 0; turn < kRootTurns; ++turn)
        for (float& number : numbers) number = std::sqrt(number);
    double sum = 0;
    for (const float number : numbers) sum += static_cast<double>(number);
    return sum;
}

double CopyRate(size_t bytes) {
    const std::vector<uint8_t> from(bytes, 1);
    std::vector<uint8_t> to(bytes);
    return RateOf(static_cast<double>(bytes), [&] {
        std::memcpy(to.data(), from.data(), bytes);
        return static_cast<double>(to[bytes / 2]);
    });
}

// Places along slanted lines of a picture 640 pixels wide, as a turned picture is read.
double LoadRate() {
    constexpr uint32_t kWidth = 640, kHeight = 480, kPlaces = kWidth * 64;
    const std::vector<uint8_t> pixels(3 * kWidth * kHeight + 4, 1);
    std::vector<uint32_t> places(kPlaces);
    for (uint32_t i = 0; i < kPlaces; ++i) {
        const uint32_t x = i % kWidth, y = i / kWidth;
        places[i] = ((y + x / 8 % 50) * kWidth + std::min(x + y / 3, kWidth - 2)) * 3;
    }
    return RateOf(kPlaces, [&] {
        uint32_t sum = 0;
        for (const uint32_t place : places) {
            uint32_t value = 0;
            std::memcpy(&value, pixels.data() + place, sizeof value);
            sum += value;
        }
        return static_cast<double>(sum);
    });
}

// One long walk through all places in random order.
double DependentLoadRate() {
    constexpr uint32_t kPlaces = (1u << 20) / sizeof(uint32_t), kSteps = 100000;
    std::vector<uint32_t> order(kPlaces), next(kPlaces);
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    for (uint32_t i = 0; i < kPlaces; ++i) next[order[i]] = order[(i + 1) % kPlaces];
    return RateOf(kSteps, [&] {
        uint32_t place = 0;
        for (uint32_t i = 0; i < kSteps; ++i) place = next[place];
        return static_cast<double>(place);
    });
}

// The rate of the row function that math_timing knows under this name.
double MathRate(const char* name) {
    for (size_t i = 0; i < MathCaseCount(); ++i) {
        const MathCase& item = MathCaseAt(i);
        if (std::string(item.name) != name) continue;
        std::vector<double> x(kMathArguments), values(kMathArguments);
        item.make(x.data());
        return RateOf(kMathArguments, [&] {
            item.run(x.data(), values.data());
            return values[0];
        });
    }
    return 0;
}

}  // namespace

const LimitName kLimitNames[] = {
    {.text = "bytes copied", .value = &Limits::copiedBytes},
    {.text = "single multiply-adds", .value = &Limits::singleMultiplyAdds},
    {.text = "double multiply-adds", .value = &Limits::doubleMultiplyAdds},
    {.text = "double divisions", .value = &Limits::doubleDivisions},
    {.text = "single roots", .value = &Limits::singleRoots},
    {.text = "loads", .value = &Limits::loads},
    {.text = "dependent loads", .value = &Limits::dependentLoads},
    {.text = "sines", .value = &Limits::sines},
};
const size_t kLimitCount = std::size(kLimitNames);

void MeasureLimits(size_t copyBytes, Limits* best) {
    const auto improve = [&](double Limits::*value, double rate) {
        best->*value = std::max(best->*value, rate);
    };
    improve(&Limits::copiedBytes, CopyRate(copyBytes));
    improve(&Limits::singleMultiplyAdds,
            RateOf(kSingleOperations, [] { return Fastest<MultiplyAddSingles>()(0.999F); }));
    improve(&Limits::doubleMultiplyAdds,
            RateOf(kDoubleOperations, [] { return Fastest<MultiplyAddDoubles>()(0.999); }));
    improve(&Limits::doubleDivisions,
            RateOf(kDoubleOperations, [] { return Fastest<DivideDoubles>()(3.0); }));
    improve(&Limits::singleRoots,
            RateOf(double{kRootNumbers} * kRootTurns, [] { return Fastest<TakeRoots>()(2.0F); }));
    improve(&Limits::loads, LoadRate());
    improve(&Limits::dependentLoads, DependentLoadRate());
    improve(&Limits::sines, MathRate("sin/lanes"));
}

}  // namespace kfx::bench
