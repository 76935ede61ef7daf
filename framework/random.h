// SPDX-License-Identifier: MIT
// The C runtime's pseudo-random numbers, 15 bits each. On Windows they are rand()'s own; elsewhere this file
// steps the same linear congruential generator itself, so that a picture made from one seed is the same
// everywhere.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

// A running sequence, for one thread. One at a time in a thread: where the runtime's generator is stepped,
// it is the only one that the thread has. Sequences of several threads do not disturb each other.
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

// Makes ClockSeconds() answer `seconds` until the clock is let go again: for tests.
void HoldClock(uint32_t seconds);
void ReleaseClock();

}  // namespace kfx
