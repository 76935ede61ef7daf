// SPDX-License-Identifier: MIT
// What a process of a batch has executed is written when it ends: it does not return from main().
#include "commands/exit_codes.h"

extern "C" {
int __llvm_profile_write_file(void);
[[noreturn]] void __real__exit(int status);

// The linker's --wrap turns every use of _exit into one of this.
[[noreturn]] void __wrap__exit(int status) {
    // An interrupt stands anywhere, also in the middle of an allocation, which writing needs.
    if (status != kfx::commands::kExitInterrupted) __llvm_profile_write_file();
    __real__exit(status);
}
}
