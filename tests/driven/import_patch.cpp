// SPDX-License-Identifier: MIT
#include "tests/driven/import_patch.h"

#include <cstring>

namespace kfx::test {

ImportPatch::ImportPatch(HMODULE module, const char* function, void* replacement) {
    for (const driven::Import& found : driven::ImportsOf(module)) {
        if (!found.slot || !found.function || std::strcmp(found.function, function) != 0) continue;
        void* const before = *found.slot;
        if (!driven::SetImport(found, replacement)) return;
        import = found;
        original = before;
        return;
    }
}

ImportPatch::~ImportPatch() {
    if (original) driven::SetImport(import, original);
}

}  // namespace kfx::test
