// SPDX-License-Identifier: MIT
#include "window/shell_folder.h"

#include <shlobj.h>
#include <windows.h>

#include <cstring>

#include "window/paths.h"

namespace kfx {

bool FindShellFolder(int folder, char* path, size_t bytes) {
    path[0] = 0;
    LPITEMIDLIST item = nullptr;
    if (FAILED(SHGetSpecialFolderLocation(nullptr, folder, &item)) || !item) return false;
    char found[MAX_PATH] = "";
    const bool known = SHGetPathFromIDListA(item, found) != FALSE;
    CoTaskMemFree(item);
    const size_t length = std::strlen(found);
    if (!known || length == 0 || length + 2 > bytes) return false;
    std::memcpy(path, found, length + 1);
    if (!EndsInBackslash(path)) std::memcpy(path + length, "\\", 2);
    return true;
}

}  // namespace kfx
