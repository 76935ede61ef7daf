// SPDX-License-Identifier: MIT
#include "commands/console.h"

#include <windows.h>

namespace kfx::commands {
namespace {

bool Write(DWORD stream, const std::string& text) {
    const HANDLE handle = GetStdHandle(stream);
    size_t written = 0;
    while (written < text.size()) {
        DWORD count = 0;
        if (!WriteFile(handle, text.data() + written, static_cast<DWORD>(text.size() - written), &count,
                       nullptr)) {
            const DWORD error = GetLastError();
            return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA;
        }
        if (count == 0) return false;
        written += count;
    }
    return true;
}

}  // namespace

bool WriteStandardOutput(const std::string& text) { return Write(STD_OUTPUT_HANDLE, text); }
void WriteStandardError(const std::string& text) { Write(STD_ERROR_HANDLE, text); }

bool ErrorsAreWatched() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

void LeaveUnfinishedLine() {
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    const HANDLE terminal = GetStdHandle(STD_ERROR_HANDLE);
    if (GetConsoleScreenBufferInfo(terminal, &screen) && screen.dwCursorPosition.X > 0) {
        WriteStandardError("\n");
    }
}

}  // namespace kfx::commands
