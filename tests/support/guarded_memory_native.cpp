// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "framework/movable_memory_native.h"
#include "tests/support/guarded_memory.h"

namespace kfx::test {
namespace {

char running[300];             // read by the signal's handler
struct sigaction before = {};  // what happened on a fault before

// Says what ran; the instruction then faults once more, for whoever came before.
void OnFault(int number) {
    const char head[] = "A page beside a block was touched: ";
    (void)!write(STDERR_FILENO, head, sizeof head - 1);
    (void)!write(STDERR_FILENO, running, std::strlen(running));
    (void)!write(STDERR_FILENO, "\n", 1);
    sigaction(number, &before, nullptr);
}

}  // namespace

const char* NameOf(GuardSide side) { return side == GuardSide::Behind ? "behind" : "before"; }

GuardedMemory::GuardedMemory(GuardSide side) {
    struct sigaction action = {};
    action.sa_handler = OnFault;
    sigaction(SIGSEGV, &action, &before);
    GuardMemory(side == GuardSide::Behind ? GuardPages::Behind : GuardPages::Before);
}

GuardedMemory::~GuardedMemory() {
    GuardMemory(GuardPages::None);
    sigaction(SIGSEGV, &before, nullptr);
}

size_t CountSpoiledBytes() { return CountMemory().spoiledSlack; }
size_t CountGuardedBlocks() { return CountMemory().guardedBlocks; }

bool IsReadable(const void* address) {
    int ends[2];
    if (pipe(ends) != 0) return false;
    const bool readable = write(ends[1], address, 1) == 1;
    close(ends[0]);
    close(ends[1]);
    return readable;
}

void SayWhatRuns(const std::string& what) { std::snprintf(running, sizeof running, "%s", what.c_str()); }

}  // namespace kfx::test
