// SPDX-License-Identifier: MIT
// The C runtime's pseudo-random numbers, 15 bits each. On Windows they are rand()'s own; elsewhere this file
// steps the same linear congruential generator itself, so that a picture made from one seed is the same
// everywhere.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

// A running sequence, for one thread. A thread may have only one sequence at a time, because it may come from
// the runtime's generator, of which each thread has just one. Sequences of different threads are independent.
struct RandomSequence {
    uint32_t state;
    bool computed;  // stepped here; false: by calling rand()
};

// The sequence of srand(seed).
RandomSequence SeedRandom(uint32_t seed);

// The sequence's next `count` numbers, 0 to 32767 each.
void NextRandoms(RandomSequence* sequence, uint16_t* numbers, size_t count);

// The clock in whole seconds since 1970, in the 32 bits that srand() takes.
uint32_t ClockSeconds();

constexpr int64_t kClockRuns = -1;

// Makes ClockSeconds() answer `seconds`, in all threads, until it is told another number; kClockRuns: the
// time again. Returns what was said before.
int64_t HoldClock(int64_t seconds);
void ReleaseClock();

}  // namespace kfx
