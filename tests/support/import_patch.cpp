// SPDX-License-Identifier: MIT
#include "tests/support/import_patch.h"

#include <cstdint>
#include <cstring>

namespace kfx::test {
namespace {

template <typename T>
T* At(HMODULE module, size_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<uint8_t*>(module) + offset);
}

}  // namespace

std::vector<ImportSlot> ImportSlots(HMODULE module) {
    std::vector<ImportSlot> slots;
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS64>(module, static_cast<size_t>(dos->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports); library->Name; ++library) {
        const auto* names = At<IMAGE_THUNK_DATA64>(module, library->OriginalFirstThunk);
        auto* addresses = At<IMAGE_THUNK_DATA64>(module, library->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL64(names->u1.Ordinal)) continue;
            const auto* name = At<IMAGE_IMPORT_BY_NAME>(module, static_cast<size_t>(names->u1.AddressOfData));
            slots.push_back({reinterpret_cast<const char*>(name->Name),
                             reinterpret_cast<void**>(&addresses->u1.Function)});
        }
    }
    return slots;
}

void WriteSlot(void** slot, void* address) {
    DWORD before = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &before);
    *slot = address;
    VirtualProtect(slot, sizeof *slot, before, &before);
}

ImportPatch::ImportPatch(HMODULE module, const char* function, void* replacement) {
    for (const ImportSlot& import : ImportSlots(module)) {
        if (std::strcmp(import.function, function) != 0) continue;
        original = *import.slot;
        WriteSlot(import.slot, replacement);
        slots.push_back(import.slot);
    }
}

ImportPatch::~ImportPatch() {
    for (void** slot : slots) WriteSlot(slot, original);
}

}  // namespace kfx::test
