// SPDX-License-Identifier: MIT
// Memory that runs out, in C and in C++. A program that links kfx_refused_allocations has its own operator
// new and delete, and its own malloc, calloc and realloc for all that is linked statically, as the image
// libraries.
#pragma once

#include <cstddef>
#include <functional>

namespace kfx::test {

struct Refusal {
    size_t first = 0;         // refused, counted from 1; 0: none is
    bool fromThenOn = false;  // so is what comes later
    size_t smallest = 0;      // bytes; what is smaller is not counted
};

// Runs `work` while allocations of this thread are refused. Returns how many were counted.
size_t WithRefusal(const Refusal& refusal, const std::function<void()>& work);

}  // namespace kfx::test
