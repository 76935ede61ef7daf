// SPDX-License-Identifier: MIT
// How much a test program has tried: sums that it prints when it ends, and leaves in its report.
#pragma once

#include <cstddef>
#include <string>

namespace kfx::test {

// Adds to the sum of that name, as "refused allocations". Any thread may call it.
void AddTried(const std::string& what, size_t count = 1);

}  // namespace kfx::test
