// SPDX-License-Identifier: MIT
// How fast a job could be on this machine: the work that it cannot do without, at the machine's rates.
#pragma once

#include <string>

#include "bench/limits.h"

namespace kfx::bench {

struct Bound {
    double milliseconds = 0;  // for one frame; 0: nothing is known
    std::string by = {};      // what takes that long
};

// The least time for one frame of `width` x `height` pixels of a job, by name and variant. Copying the frame
// counts in any case; no kernel reaches that, since pixels have three bytes.
Bound BoundOf(const std::string& job, const std::string& variant, int width, int height,
              const Limits& limits);

}  // namespace kfx::bench
