// SPDX-License-Identifier: MIT
// The plug-in as a file: loading it and finding its entry points.
#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

#include "host/host_records.h"

namespace kfx::driven {

struct PluginLibrary {
    PluginLibrary() = default;
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    HMODULE module = nullptr;
    std::string path;
    std::string name;  // as the plug-in calls itself
    uint64_t(WINAPI* doBuild)(HWND parent, const HostContext* host) = nullptr;
};

// The DLL beside this program.
std::string DefaultPluginPath();

// Looks at the loaded DLL before any function of it is called. False: the clause `*error` says why it is not
// to be used.
using PluginCheck = bool (*)(HMODULE module, std::string* error);

// Loads the DLL and asks it for its name. `check` may be null. False: `*error` is one sentence.
bool LoadPlugin(const std::string& path, PluginCheck check, PluginLibrary* library, std::string* error);

}  // namespace kfx::driven
