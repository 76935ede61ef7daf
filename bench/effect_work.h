// SPDX-License-Identifier: MIT
// What benchmarks of effects run: each effect at its built-in settings and at its greatest.
#pragma once

#include <string>
#include <vector>

#include "framework/effect.h"

namespace kfx::bench {

// One row of the table: an effect under one choice of settings.
struct Work {
    const Effect* effect;
    bool greatest;
    KernelInput input;
    std::string text;  // "45, 50"
};

// All effects in their order; a row with the greatest settings only where these differ.
std::vector<Work> ListWork();

// Whether the effect keeps tables from frame to frame, so that later frames of a build take less time.
bool KeepsTables(const Work& work);

}  // namespace kfx::bench
