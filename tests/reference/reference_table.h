// SPDX-License-Identifier: MIT
// For every effect the slow, obvious kernel: written from the effect's rules through the pixel accessors, in
// the order in which the rules stand. The product's kernels must give the same bytes, and benchmarks time
// both.
#pragma once

#include "framework/effect_record.h"

namespace kfx::test {

// The reference of the effect with this name; null when it has none.
EffectKernel ReferenceOf(const char* effect);

}  // namespace kfx::test
