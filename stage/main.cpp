// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <windows.h>
#include <shellapi.h>

#include "commands/text_windows.h"
#include "stage/stage_window.h"

// The arguments are files to open; there are no others.
int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    // A library that is missing from the system's folder is looked for in the program's, and nowhere else.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    // Long work never blocks the window; a moment's delay on a loaded machine need not look like a failure.
    DisableProcessWindowsGhosting();
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> paths;
    for (int i = 1; arguments && i < count; ++i) {
        const std::string path = kfx::commands::Narrow(arguments[i]);
        if (!path.empty()) paths.push_back(kfx::commands::SystemPath(path));
    }
    LocalFree(arguments);
    return kfx::stage::RunStageWindow(paths);
}
