// SPDX-License-Identifier: MIT
// Times and repetitions of animations, in words.
#pragma once

#include <cstdint>
#include <string>

#include "media/animation.h"

namespace kfx::commands {

// Milliseconds of all frames together.
int64_t DurationOf(const Animation& animation);

// "1.92 s", "0.005 s": in seconds, with as many digits as the milliseconds need, at least two.
std::string SecondsText(int64_t milliseconds);

// The frames' times, equal ones in a row together: "24 x 80 ms", "2 x 40 ms, 80 ms". Where that would be
// long, only the shortest and the longest: "10 to 80 ms".
std::string TimesText(const Animation& animation);

// How often an animation of this loop count is shown; 0: forever.
int PlaysOf(int loopCount);

// The same in words: "forever", "once", "3 times".
std::string PlaysText(int loopCount);

}  // namespace kfx::commands
