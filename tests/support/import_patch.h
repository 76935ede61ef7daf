// SPDX-License-Identifier: MIT
// Puts a test's own function in place of one that a loaded module imports, so that the test sees
// the calls and gives the answers: the clock, folders, dialogs, memory.
#pragma once

#include <windows.h>

#include <vector>

namespace kfx::test {

// One place in a module's import table: what the module calls when it calls the function.
struct ImportSlot {
    const char* function;
    void** slot;
};

// All of them but those imported by number.
std::vector<ImportSlot> ImportSlots(HMODULE module);

void WriteSlot(void** slot, void* address);

// Replaces every import slot of `module` for the function of this name; puts the old addresses back at the
// end of its life unless the module is gone by then. A function that the module does not import leaves
// nothing to do.
struct ImportPatch {
    ImportPatch(HMODULE module, const char* function, void* replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    std::vector<void**> slots;
    void* original = nullptr;
};

template <typename Function>
void* AddressOfFunction(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace kfx::test
