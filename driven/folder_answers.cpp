// SPDX-License-Identifier: MIT
#include "driven/folder_answers.h"

#include <cstdint>
#include <cstring>

#include <objbase.h>
#include <shlobj.h>

#include "driven/import_table.h"

namespace kfx::driven {
namespace {

// Flags like "make it when it is missing" stand above the folder's number.
constexpr int kFolderNumber = 0xFF;

// A list of one item that no shell knows: what stands for our folder between the plug-in's two calls.
struct OwnItem {
    USHORT size;
    char mark[24];
    USHORT end;
};
constexpr OwnItem kOwnItem = {26, "kestrel settings", 0};

// Written before the plug-in runs, read on its thread.
char settingsFolder[MAX_PATH] = "";

HRESULT WINAPI AnswerLocation(HWND owner, int folder, LPITEMIDLIST* item) {
    if ((folder & kFolderNumber) == CSIDL_PERSONAL) return SHGetSpecialFolderLocation(owner, folder, item);
    *item = nullptr;
    if ((folder & kFolderNumber) != CSIDL_APPDATA || !settingsFolder[0]) return E_FAIL;
    void* memory = CoTaskMemAlloc(sizeof kOwnItem);
    if (!memory) return E_OUTOFMEMORY;
    std::memcpy(memory, &kOwnItem, sizeof kOwnItem);
    *item = static_cast<LPITEMIDLIST>(memory);
    return S_OK;
}

BOOL WINAPI AnswerPath(LPCITEMIDLIST item, LPSTR path) {
    if (!item || item->mkid.cb != kOwnItem.size || std::memcmp(item, &kOwnItem, sizeof kOwnItem) != 0) {
        return SHGetPathFromIDListA(item, path);
    }
    std::strcpy(path, settingsFolder);
    return TRUE;
}

FARPROC WINAPI AnswerAddress(HMODULE module, LPCSTR name);

template <typename Function>
void* AddressOf(Function* function) {
    return reinterpret_cast<void*>(function);
}

struct FolderFunction {
    const char* name;
    void* answer;  // null: not answered
};

// The system's functions that find a folder of the user's, and those that find functions that are not
// imported.
const FolderFunction kFolderFunctions[] = {
    {"SHGetSpecialFolderLocation", AddressOf(AnswerLocation)},
    {"SHGetPathFromIDListA", AddressOf(AnswerPath)},
    {"GetProcAddress", AddressOf(AnswerAddress)},
    {"SHGetSpecialFolderPathA", nullptr},
    {"SHGetSpecialFolderPathW", nullptr},
    {"SHGetFolderLocation", nullptr},
    {"SHGetFolderPathA", nullptr},
    {"SHGetFolderPathW", nullptr},
    {"SHGetFolderPathAndSubDirA", nullptr},
    {"SHGetFolderPathAndSubDirW", nullptr},
    {"SHGetKnownFolderPath", nullptr},
    {"SHGetKnownFolderIDList", nullptr},
    {"SHGetKnownFolderItem", nullptr},
    {"SHGetFolderPathEx", nullptr},
    {"LdrGetProcedureAddress", nullptr},
    {"LdrGetProcedureAddressEx", nullptr},
};

const FolderFunction* FindFunction(const char* name) {
    for (const FolderFunction& function : kFolderFunctions) {
        if (std::strcmp(function.name, name) == 0) return &function;
    }
    return nullptr;
}

// The libraries that hold the folder functions, where a number could stand for any of them.
bool IsShellLibrary(const char* library) {
    for (const char* known : {"shell32", "shfolder", "api-ms-win-shell", "ext-ms-win-shell"}) {
        if (_strnicmp(library, known, std::strlen(known)) == 0) return true;
    }
    return false;
}

// A name, or a number in place of the address of one.
FARPROC WINAPI AnswerAddress(HMODULE module, LPCSTR name) {
    if (reinterpret_cast<uintptr_t>(name) <= 0xFFFF) {
        return module == GetModuleHandleA("shell32.dll") ? nullptr : GetProcAddress(module, name);
    }
    const FolderFunction* known = FindFunction(name);
    if (!known) return GetProcAddress(module, name);
    FARPROC address = nullptr;
    static_assert(sizeof address == sizeof known->answer, "function pointers");
    std::memcpy(&address, &known->answer, sizeof address);
    return address;
}

bool CanBeAnswered(const Import& import, std::string* error) {
    const FolderFunction* known = import.function ? FindFunction(import.function) : nullptr;
    if (!import.function && IsShellLibrary(import.library)) {
        *error = std::string("it imports a function of ") + import.library + " by number";
    } else if (known && !known->answer) {
        *error = std::string("it imports ") + known->name;
    } else if (known && !import.slot) {
        *error = std::string("it looks up ") + known->name + " only when it needs it";
    } else {
        return true;
    }
    return false;
}

}  // namespace

bool AnswerFolderLookups(HMODULE module, std::string* error) {
    const auto imports = ImportsOf(module);
    bool asksForFolders = false;
    for (const Import& import : imports) {
        if (!CanBeAnswered(import, error)) return false;
        if (import.function && std::strcmp(import.function, kFolderFunctions[0].name) == 0) {
            asksForFolders = true;
        }
    }
    // Its settings must be somewhere: when it does not ask in the one known way, it finds them in another.
    if (!asksForFolders) {
        *error = std::string("it does not import ") + kFolderFunctions[0].name;
        return false;
    }
    for (const Import& import : imports) {
        const FolderFunction* known = import.function ? FindFunction(import.function) : nullptr;
        if (known && !SetImport(import, known->answer)) {
            *error = std::string("its import of ") + known->name + " cannot be answered";
            return false;
        }
    }
    return true;
}

void SetAnsweredSettingsFolder(const std::string& folder) {
    std::memset(settingsFolder, 0, sizeof settingsFolder);
    std::memcpy(settingsFolder, folder.data(),
                folder.size() < sizeof settingsFolder ? folder.size() : sizeof settingsFolder - 1);
}

}  // namespace kfx::driven
