// SPDX-License-Identifier: MIT
// The widths of codes in a GIF file.
#pragma once

#include <cstddef>

namespace kfx {

// The bits of the n-th code (from 1) after a clear code: a reader makes a dictionary entry with each code but
// the first, and takes one more bit as soon as the next entry would not fit.
int LzwCodeWidth(size_t n, int minimumCodeSize);

}  // namespace kfx
