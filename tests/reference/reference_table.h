// SPDX-License-Identifier: MIT
// For every effect the slow, obvious kernel, which defines its result to the byte: written from the effect's
// rules through the pixel accessors, in the order in which the rules stand. The product's kernels must give
// the same bytes, and benchmarks time both.
#pragma once

#include "effects/effects.h"

namespace kfx::test {

// ReferenceSwirl and so on, with the values that the effect's own kernel gets.
#define KFX_DECLARE_REFERENCE(name) ImageHandle Reference##name(ImageHandle source, const KernelInput& input);
KFX_FOR_EACH_EFFECT(KFX_DECLARE_REFERENCE)
#undef KFX_DECLARE_REFERENCE

// The reference of the effect with this name; null when it has none.
EffectKernel ReferenceOf(const char* effect);

}  // namespace kfx::test
