// SPDX-License-Identifier: MIT
// The functions that a loaded DLL imports, as its file lists them.
#pragma once

#include <vector>

#include <windows.h>

namespace kfx::driven {

struct Import {
    const char* library;   // the name of the DLL that it comes from
    const char* function;  // null: imported by its number
    void** slot;           // where the loaded DLL finds its address; null: looked up at the first call only
    IMAGE_THUNK_DATA64* entry;  // its place in the file's list of names and numbers; null: there is none
};

// Every function that the DLL imports. The names lie in the DLL itself and hold while it is loaded.
std::vector<Import> ImportsOf(HMODULE module);

// Lets the DLL call `address` instead. False: the system does not let the slot be written.
bool SetImport(const Import& import, void* address);

}  // namespace kfx::driven
