// SPDX-License-Identifier: MIT
#include "driven/plugin_library.h"

#include <cstring>

#include "commands/text_windows.h"

namespace kfx::driven {

using namespace commands;

namespace {

template <typename Function>
bool FindExport(HMODULE module, const char* name, Function* function) {
    const FARPROC address = GetProcAddress(module, name);
    static_assert(sizeof *function == sizeof address, "function pointers");
    std::memcpy(function, &address, sizeof *function);
    return address != nullptr;
}

std::string AskName(uint64_t(WINAPI* getParams)(PluginInfo*)) {
    alignas(PluginInfo) char record[1024] = {};
    auto* info = reinterpret_cast<PluginInfo*>(record);
    info->size = sizeof record;
    if (!getParams(info)) return "";
    info->name[sizeof info->name - 1] = '\0';
    return FromPluginText(info->name);
}

void Unload(PluginLibrary* library) {
    FreeLibrary(library->module);
    library->module = nullptr;
    library->doBuild = nullptr;
}

}  // namespace

PluginLibrary::~PluginLibrary() {
    if (module) FreeLibrary(module);
}

std::string DefaultPluginPath() {
    wchar_t program[32768];
    const DWORD length = GetModuleFileNameW(nullptr, program, 32768);
    return FolderOf(Narrow(std::wstring(program, length))) + "kfxplug1.dll";
}

bool LoadPlugin(const std::string& path, PluginCheck check, PluginLibrary* library, std::string* error) {
    library->path = AbsolutePath(path);
    if (GetFileAttributesW(Widen(library->path).c_str()) == INVALID_FILE_ATTRIBUTES) {
        *error = path + ": there is no such plug-in.";
        return false;
    }
    // What it needs itself comes from its own folder or the system's.
    library->module = LoadLibraryExW(Widen(library->path).c_str(), nullptr,
                                     LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!library->module) {
        const DWORD reason = GetLastError();
        *error = path + (reason == ERROR_BAD_EXE_FORMAT
                             ? ": is not a 64-bit Windows plug-in."
                             : ": cannot be loaded as a plug-in: " + SystemErrorText(reason) + ".");
        return false;
    }
    uint64_t(WINAPI * getParams)(PluginInfo*) = nullptr;
    if (!FindExport(library->module, "PLUGIN16GetPluginParams", &getParams) ||
        !FindExport(library->module, "PLUGIN16DoBuild", &library->doBuild)) {
        *error = path + ": is a DLL, but not a plug-in of version 16.";
        Unload(library);
        return false;
    }
    std::string reason;
    if (check && !check(library->module, &reason)) {
        *error =
            path + ": is not used by commands, because your settings of it could be changed: " + reason + ".";
        Unload(library);
        return false;
    }
    library->name = AskName(getParams);
    return true;
}

}  // namespace kfx::driven
