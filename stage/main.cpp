// SPDX-License-Identifier: MIT
#include <string>

#include <windows.h>
#include <shellapi.h>

#include "commands/text_windows.h"
#include "stage/stage_window.h"

// The first argument is an animation to open; there are no others.
int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::string path = arguments && count > 1 ? kfx::commands::Narrow(arguments[1]) : "";
    LocalFree(arguments);
    return kfx::stage::RunStageWindow(path.empty() ? "" : kfx::commands::SystemPath(path));
}
