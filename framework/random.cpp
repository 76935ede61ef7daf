// SPDX-License-Identifier: MIT
#include "framework/random.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "framework/cpu.h"

namespace kfx {
namespace {

// The linear congruential generator of the Windows C runtime: the upper half of the state, without its sign
// bit.
constexpr uint32_t kMultiplier = 214013;
constexpr uint32_t kIncrement = 2531011;

uint32_t Step(uint32_t state) { return state * kMultiplier + kIncrement; }
uint16_t NumberOf(uint32_t state) { return static_cast<uint16_t>(state >> 16 & 0x7FFF); }

// Several steps at once are one step with other constants. This many states are computed side by side.
constexpr size_t kLanes = 16;

struct Jump {
    uint32_t multiplier;
    uint32_t increment;
};

constexpr Jump MakeJump() {
    Jump jump = {1, 0};
    for (size_t i = 0; i < kLanes; ++i) {
        jump.multiplier *= kMultiplier;
        jump.increment = jump.increment * kMultiplier + kIncrement;
    }
    return jump;
}

constexpr Jump kJump = MakeJump();

// Writes whole groups of numbers and returns how many numbers these are. `state` is then advanced by as many
// steps.
KFX_INLINE size_t StepLanes(uint32_t* state, uint16_t* __restrict numbers, size_t count) {
    uint32_t lanes[kLanes];
    uint32_t next = *state;
    for (uint32_t& lane : lanes) lane = next = Step(next);
    size_t done = 0;
    for (; done + kLanes <= count; done += kLanes) {
        *state = lanes[kLanes - 1];
        for (size_t i = 0; i < kLanes; ++i) {
            numbers[done + i] = NumberOf(lanes[i]);
            lanes[i] = lanes[i] * kJump.multiplier + kJump.increment;
        }
    }
    return done;
}

constinit std::atomic<int64_t> heldClock = kClockRuns;  // the seconds at which the clock stands

#ifdef _WIN32
// Calling rand() costs more than everything else Water Drops does, so its numbers are computed here, as long
// as this comparison says that they are the numbers of the runtime in use.
bool RuntimeGeneratorIsKnown() {
    constexpr uint32_t kSeeds[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 1700000000};
    for (const uint32_t seed : kSeeds) {
        std::srand(seed);
        uint32_t state = seed;
        for (int i = 0; i < 5000; ++i) {
            state = Step(state);
            if (std::rand() != NumberOf(state)) return false;
        }
    }
    return true;
}
#else
bool RuntimeGeneratorIsKnown() { return true; }
#endif

enum class Generator { NotCompared, Known, Unknown };

// The runtime keeps one state for each thread, so any thread may do the comparison. Two threads that do it at
// once get the same result.
constinit std::atomic<Generator> runtimeGenerator = Generator::NotCompared;

}  // namespace

RandomSequence SeedRandom(uint32_t seed) {
    Generator generator = runtimeGenerator.load(std::memory_order_relaxed);
    if (generator == Generator::NotCompared) {
        generator = RuntimeGeneratorIsKnown() ? Generator::Known : Generator::Unknown;
        runtimeGenerator.store(generator, std::memory_order_relaxed);
    }
    std::srand(seed);
    return RandomSequence{.state = seed, .computed = generator == Generator::Known};
}

void NextRandoms(RandomSequence* sequence, uint16_t* numbers, size_t count) {
    if (!sequence->computed) {
        for (size_t i = 0; i < count; ++i) numbers[i] = static_cast<uint16_t>(std::rand());
        return;
    }
    uint32_t state = sequence->state;
    size_t i = Fastest<StepLanes>()(&state, numbers, count);
    for (; i < count; ++i) {
        state = Step(state);
        numbers[i] = NumberOf(state);
    }
    sequence->state = state;
}

uint32_t ClockSeconds() {
    const int64_t held = heldClock.load(std::memory_order_relaxed);
    return held == kClockRuns ? static_cast<uint32_t>(std::time(nullptr)) : static_cast<uint32_t>(held);
}

int64_t HoldClock(int64_t seconds) { return heldClock.exchange(seconds, std::memory_order_relaxed); }

void ReleaseClock() { HoldClock(kClockRuns); }

}  // namespace kfx
