// SPDX-License-Identifier: MIT
// C++ allocations that fail on request. A program that links this has its own operator new.
#pragma once

#include <atomic>

namespace kfx::test {

// The allocation with this number, counted from 1 after now, is refused, once; 0 refuses none. The calling
// thread's own allocations are neither counted nor refused from the first call on.
void RefuseNewOfOtherThreads(long number);

// How many were refused since the last call.
extern std::atomic<long> newRefusals;

}  // namespace kfx::test
