// SPDX-License-Identifier: MIT
// Variations of an effect: settings that are worth a look, one after another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stage/wall_settings.h"

namespace kfx::stage {

// A range of values, as the plug-in's window shows them, all of which look well.
struct CuratedRange {
    const char* parameter = nullptr;  // by its name in the panel; null: behind the last one
    int least = 0;
    int most = 0;
};

// One way in which an effect looks well. Parameters that are not named keep their defaults.
struct CuratedLook {
    const char* effect;  // as the effect list has it
    CuratedRange ranges[kMostControls];
};

// All looks. Variations of an effect go through its looks in this order.
const CuratedLook* CuratedLooks(size_t* count);

// Whether the effect has any variation beside its defaults.
bool HasVariations(const EffectDescription& effect);

// The variation with this number; 0 is the defaults. The same for the same seed, so that the numbers are a
// walk that can be gone back. Each differs clearly from the one before. Within a look, each parameter goes
// through its range by steps of an irrational part of it, which come near to every place but never back to
// one (the additive recurrence of low discrepancy with the roots of x^(d+1) = x + 1 for d parameters). An
// effect without variations always has its defaults.
EffectSettings VariationAt(const std::vector<EffectDescription>& effects, size_t effect, uint64_t seed,
                           uint64_t number);

}  // namespace kfx::stage
