// SPDX-License-Identifier: MIT
// The effects as a table, in the order of the effect list. The configuration file stores a row's number.
#pragma once

#include <cstddef>

#include "framework/effect_operations.h"

namespace kfx {

// The record of row `index`; null outside the table.
const Effect* EffectAt(size_t index);

// The table row of the same number, with its operations; null outside the table.
const EffectDescriptor* DescriptorAt(size_t index);

size_t EffectCount();

}  // namespace kfx
