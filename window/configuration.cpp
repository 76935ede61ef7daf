// SPDX-License-Identifier: MIT
#include "window/configuration.h"

#include <shlobj.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <ctime>

#include "window/configuration_text.h"
#include "window/shell_folder.h"

namespace kfx {
namespace {

// Opens the file in text mode; null when there is no folder or no file.
std::FILE* OpenConfiguration(const char* mode) {
    char path[MAX_PATH + 1];
    if (!FindShellFolder(CSIDL_APPDATA, path, sizeof path)) return nullptr;
    const size_t folderLength = std::strlen(path);
    std::snprintf(path + folderLength, sizeof path - folderLength, "Quorvane Labs\\kfxplug1.ini");
    return std::fopen(path, mode);
}

}  // namespace

bool IsShiftHeld() { return GetKeyState(VK_SHIFT) < 0; }

void ReadConfiguration(bool shiftHeld) {
    std::FILE* file = OpenConfiguration("rt");
    if (!file) return;
    ReadConfigurationText(file, shiftHeld);
    std::fclose(file);
}

void WriteConfiguration() {
    std::FILE* file = OpenConfiguration("wt");
    if (!file) return;
    WriteConfigurationText(file, std::time(nullptr));
    std::fclose(file);
}

}  // namespace kfx
