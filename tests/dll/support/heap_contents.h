// SPDX-License-Identifier: MIT
// What is allocated in all heaps of the process: the C runtime's may be one of its own.
#pragma once

#include <cstddef>

namespace kfx::test {

struct HeapContents {
    size_t blocks = 0;
    size_t bytes = 0;
};

HeapContents CountHeaps();

}  // namespace kfx::test
