// SPDX-License-Identifier: MIT
// How much memory a piece of work takes. A program that has counted_memory.cpp among its sources counts all
// that it allocates by new.
#pragma once

#include <cstddef>
#include <functional>

namespace kfx::test {

// The bytes that `work` has at a time beyond those before.
size_t PeakOf(const std::function<void()>& work);

}  // namespace kfx::test
