// SPDX-License-Identifier: MIT
#include "tests/driven/own_console.h"

#include <windows.h>

namespace kfx::test {
namespace {

BOOL WINAPI Ignore(DWORD) { return TRUE; }

}  // namespace

bool OpenOwnConsole() {
    static bool open = false;
    if (open) return true;
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE), error = GetStdHandle(STD_ERROR_HANDLE);
    FreeConsole();
    open = AllocConsole() && SetConsoleCtrlHandler(Ignore, TRUE);
    SetStdHandle(STD_OUTPUT_HANDLE, output);
    SetStdHandle(STD_ERROR_HANDLE, error);
    return open;
}

}  // namespace kfx::test
