// SPDX-License-Identifier: MIT
// Puts a test's own function in place of one that a loaded module imports.
#pragma once

#include "driven/import_table.h"

namespace kfx::test {

// For its scope the module calls `replacement`. A function that it does not import leaves `original` null.
struct ImportPatch {
    ImportPatch(HMODULE module, const char* function, void* replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    driven::Import import = {};
    void* original = nullptr;
};

template <typename Function>
void* AddressOfFunction(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace kfx::test
