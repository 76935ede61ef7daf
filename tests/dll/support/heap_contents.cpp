// SPDX-License-Identifier: MIT
#include "tests/dll/support/heap_contents.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <iterator>

namespace kfx::test {

HeapContents CountHeaps() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(std::size(heaps)), heaps);
    EXPECT_GT(count, 0u);
    EXPECT_LE(count, std::size(heaps));
    HeapContents contents;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) {
            if (!(entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)) continue;
            ++contents.blocks;
            contents.bytes += entry.cbData;
        }
    }
    return contents;
}

}  // namespace kfx::test
