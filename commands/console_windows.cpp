// SPDX-License-Identifier: MIT
#include "commands/console.h"

#include <algorithm>

#include <windows.h>

#include "commands/text_windows.h"

namespace kfx::commands {
namespace {

// What is said of a pipe whose other end has gone; the last one by Wine.
bool IsGone(DWORD error) {
    return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED;
}

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

// A console takes wide text whatever its code page, which is its user's to choose.
bool WriteToConsole(HANDLE console, const std::wstring& text) {
    constexpr size_t kMostAtOnce = 8192;  // older systems refuse more than 64 KiB
    size_t written = 0;
    while (written < text.size()) {
        size_t part = std::min(kMostAtOnce, text.size() - written);
        const wchar_t last = text[written + part - 1];
        if (part > 1 && last >= 0xD800 && last < 0xDC00) --part;  // both halves of a letter belong together
        DWORD count = 0;
        if (!WriteConsoleW(console, text.data() + written, static_cast<DWORD>(part), &count, nullptr) ||
            count == 0)
            return false;
        written += count;
    }
    return true;
}

bool Write(DWORD stream, const std::string& text) {
    const HANDLE handle = GetStdHandle(stream);
    if (IsConsole(handle)) return WriteToConsole(handle, Widen(text));
    size_t written = 0;
    while (written < text.size()) {
        DWORD count = 0;
        if (!WriteFile(handle, text.data() + written, static_cast<DWORD>(text.size() - written), &count,
                       nullptr)) {
            return IsGone(GetLastError());
        }
        if (count == 0) return false;
        written += count;
    }
    return true;
}

constexpr size_t kMostInput = size_t{1} << 30;
constexpr DWORD kStep = 1 << 16;

}  // namespace

bool WriteStandardOutput(const uint8_t* data, size_t size, std::string* reason) {
    const HANDLE handle = GetStdHandle(STD_OUTPUT_HANDLE);
    while (size > 0) {
        DWORD count = 0;
        const DWORD step = size < kStep ? static_cast<DWORD>(size) : kStep;
        if (!WriteFile(handle, data, step, &count, nullptr) || count == 0) {
            const DWORD error = GetLastError();
            *reason = IsGone(error) ? "its reader has ended before it had everything"
                                    : "it cannot be written (" + SystemErrorText(error) + ")";
            return false;
        }
        data += count;
        size -= count;
    }
    return true;
}

bool ReadStandardInput(std::vector<uint8_t>* content, std::string* reason) {
    const HANDLE handle = GetStdHandle(STD_INPUT_HANDLE);
    size_t size = 0;
    while (size <= kMostInput) {
        DWORD count = 0;
        content->resize(size + kStep);
        // The end of a pipe whose writer has gone is an error in name only.
        const bool read = ReadFile(handle, content->data() + size, kStep, &count, nullptr) != 0;
        if (!read && !IsGone(GetLastError())) {
            *reason = "it cannot be read (" + SystemErrorText(GetLastError()) + ")";
            return false;
        }
        if (!read) count = 0;
        size += count;
        content->resize(size);
        if (count == 0) return true;
    }
    *reason = "it has more than 1 GiB";
    return false;
}

bool WriteStandardOutput(const std::string& text) { return Write(STD_OUTPUT_HANDLE, text); }
void WriteStandardError(const std::string& text) { Write(STD_ERROR_HANDLE, text); }

bool ErrorsAreWatched() { return IsConsole(GetStdHandle(STD_ERROR_HANDLE)); }

bool OutputIsTerminal() { return IsConsole(GetStdHandle(STD_OUTPUT_HANDLE)); }

size_t TerminalColumns() {
    constexpr size_t kUsual = 80;
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    const bool isKnown = GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &screen) != 0;
    return isKnown && screen.dwSize.X > 1 ? static_cast<size_t>(screen.dwSize.X) : kUsual;
}

}  // namespace kfx::commands
