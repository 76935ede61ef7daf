// SPDX-License-Identifier: MIT
// Blocks of movable memory that end, or begin, at a page which must not be touched: reading or writing a
// single byte outside ends the program, whatever code does it.
#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

#include <cstddef>
#include <string>

namespace kfx::test {

enum class GuardSide {
    Behind,  // at the block's last byte; bytes before it are checked for writes when it is freed
    Before,  // at its first byte; bytes behind it are checked so
};

const char* NameOf(GuardSide side);

// While it lives, every block that is allocated has its guard pages: natively by the allocator itself, under
// Windows by taking the program's imports of the system's functions.
class GuardedMemory {
public:
    explicit GuardedMemory(GuardSide side);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
};

#ifdef _WIN32
// The library learns the sizes of guarded blocks. Its other calls for memory have to go through functions of
// the program, as a memory ledger's are. The change stays as long as the library.
void GuardSizesOf(HMODULE library);
#endif

// Bytes beside guarded blocks that were found written when the blocks were freed, and how many blocks that
// were, since the program began.
size_t CountSpoiledBytes();
size_t CountGuardedBlocks();

// Whether the program may read the byte.
bool IsReadable(const void* address);

// What the program does from now on. It is printed when a guard page is touched.
void SayWhatRuns(const std::string& what);

}  // namespace kfx::test
