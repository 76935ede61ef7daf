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

// False: the shell knows no folder for it.
bool FindConfiguration(char (&path)[MAX_PATH + 1]) {
    if (!FindShellFolder(CSIDL_APPDATA, path, sizeof path)) return false;
    const size_t folderLength = std::strlen(path);
    std::snprintf(path + folderLength, sizeof path - folderLength, "Quorvane Labs\\kfxplug1.ini");
    return true;
}

// Whether there is no file of this name. A file that is locked, or in a folder that the user may not read, is
// there.
bool IsMissing(const char* path) {
    if (GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES) return false;
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace

bool IsShiftHeld() { return GetKeyState(VK_SHIFT) < 0; }

bool ReadConfiguration(bool shiftHeld) {
    char path[MAX_PATH + 1];
    if (!FindConfiguration(path)) return shiftHeld;
    std::FILE* file = std::fopen(path, "rt");  // t: text whatever the host's _fmode says
    if (!file) return shiftHeld || IsMissing(path);
    ReadConfigurationText(file, shiftHeld);
    const bool read = std::ferror(file) == 0;
    std::fclose(file);
    return shiftHeld || read;
}

void WriteConfiguration() {
    char path[MAX_PATH + 1];
    // t: text whatever the host's _fmode says
    std::FILE* file = FindConfiguration(path) ? std::fopen(path, "wt") : nullptr;
    if (!file) return;
    WriteConfigurationText(file, std::time(nullptr));
    std::fclose(file);
}

}  // namespace kfx
