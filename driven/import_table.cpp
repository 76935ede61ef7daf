// SPDX-License-Identifier: MIT
// Layout: Microsoft, "PE Format", the sections on the import and the delay-load directory.
#include "driven/import_table.h"

#include <cstdint>

namespace kfx::driven {
namespace {

// The head of a delay-load entry; all fields are offsets from the start of the module when bit 0 is set.
struct DelayedLibrary {
    DWORD attributes;
    DWORD name;
    DWORD moduleHandle;
    DWORD addresses;
    DWORD names;
    DWORD boundAddresses;
    DWORD unloadAddresses;
    DWORD timestamp;
};

template <typename T>
T* At(HMODULE module, uint64_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<uint8_t*>(module) + offset);
}

// The first entry of one of the image's directories; null: it has none.
template <typename T>
T* Directory(HMODULE module, int index) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS64>(module, static_cast<uint64_t>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& entry = headers->OptionalHeader.DataDirectory[index];
    return entry.VirtualAddress && entry.Size ? At<T>(module, entry.VirtualAddress) : nullptr;
}

const char* FunctionName(HMODULE module, const IMAGE_THUNK_DATA64& entry) {
    if (IMAGE_SNAP_BY_ORDINAL64(entry.u1.Ordinal)) return nullptr;
    return reinterpret_cast<const char*>(At<IMAGE_IMPORT_BY_NAME>(module, entry.u1.AddressOfData)->Name);
}

void AddLoaded(HMODULE module, std::vector<Import>* imports) {
    const auto* library = Directory<IMAGE_IMPORT_DESCRIPTOR>(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
    for (; library && library->Name; ++library) {
        // Some linkers write one list only; loading has then put addresses in place of the names.
        if (!library->OriginalFirstThunk) {
            imports->push_back({At<char>(module, library->Name), nullptr, nullptr, nullptr});
            continue;
        }
        auto* entry = At<IMAGE_THUNK_DATA64>(module, library->OriginalFirstThunk);
        auto* address = At<IMAGE_THUNK_DATA64>(module, library->FirstThunk);
        for (; entry->u1.AddressOfData; ++entry, ++address) {
            imports->push_back({At<char>(module, library->Name), FunctionName(module, *entry),
                                reinterpret_cast<void**>(&address->u1.Function), entry});
        }
    }
}

void AddDelayed(HMODULE module, std::vector<Import>* imports) {
    const auto* library = Directory<DelayedLibrary>(module, IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT);
    for (; library && library->name; ++library) {
        if (!(library->attributes & 1)) continue;  // 32-bit addresses: not in a 64-bit file
        auto* entry = At<IMAGE_THUNK_DATA64>(module, library->names);
        for (; entry->u1.AddressOfData; ++entry) {
            imports->push_back(
                {At<char>(module, library->name), FunctionName(module, *entry), nullptr, entry});
        }
    }
}

}  // namespace

std::vector<Import> ImportsOf(HMODULE module) {
    std::vector<Import> imports;
    AddLoaded(module, &imports);
    AddDelayed(module, &imports);
    return imports;
}

bool SetImport(const Import& import, void* address) {
    DWORD before = 0;
    if (!VirtualProtect(import.slot, sizeof *import.slot, PAGE_READWRITE, &before)) return false;
    *import.slot = address;
    VirtualProtect(import.slot, sizeof *import.slot, before, &before);
    return true;
}

}  // namespace kfx::driven
