// SPDX-License-Identifier: MIT
// What is written down when the plug-in has crashed or hangs, for those who mend it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <windows.h>

#include "stage/plugin_opening.h"

namespace kfx::stage {

constexpr size_t kMostCalls = 40;

struct CrashFacts {
    DWORD code = 0;                   // of the exception; 0: it hangs
    uint64_t calls[kMostCalls] = {};  // where it happened, and who called that
    size_t callCount = 0;
};

// Reads the exception's code and its stack; allocates nothing.
void NoteCrash(const EXCEPTION_POINTERS& exception, CrashFacts* facts);

// Reads the stack of a thread that stands still. What a thread has that moves may be wrong, and a crash is
// possible: to be called guarded.
void NoteHang(HANDLE thread, CrashFacts* facts);

// Writes a folder of its own with the report and the plug-in's settings. Returns its path; empty when it
// could not be written. What has crashed or hangs may have left anything behind, so the writing is guarded.
std::string WriteReportGuarded(const PluginOpening& opening, const CrashFacts& facts);

}  // namespace kfx::stage
