// SPDX-License-Identifier: MIT
#include "stage/report.h"

#include <windows.h>

namespace kfx::stage {
namespace {

constexpr ULONGLONG kProgressMilliseconds = 100;

// What the progress line shows, so that it is neither drawn too often nor left behind.
std::string progressLine;
ULONGLONG progressTime = 0;

bool IsTerminal(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

void Write(DWORD stream, const std::string& text) {
    const HANDLE handle = GetStdHandle(stream);
    size_t written = 0;
    while (written < text.size()) {
        DWORD count = 0;
        if (!WriteFile(handle, text.data() + written, static_cast<DWORD>(text.size() - written), &count,
                       nullptr))
            return;
        if (count == 0) return;
        written += count;
    }
}

}  // namespace

Report FailedReport(ExitCode exitCode, const std::string& error) {
    Report report;
    report.exitCode = exitCode;
    report.error = error;
    return report;
}

void WriteStandardOutput(const std::string& text) { Write(STD_OUTPUT_HANDLE, text); }

void PrintReport(const Report& report, bool json, bool quiet) {
    ClearProgressLine();
    if (json) {
        nlohmann::ordered_json object = {{"ok", report.exitCode == kExitDone}, {"exitCode", report.exitCode}};
        if (!report.error.empty()) object["error"] = report.error;
        object["notes"] = report.notes;
        object.update(report.result);
        // Bytes that are no UTF-8, from a damaged comment say, must not stop the output.
        WriteStandardOutput(object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
                            "\n");
        return;
    }
    WriteStandardOutput(report.text);
    if (!quiet) {
        for (const std::string& note : report.notes)
            Write(STD_ERROR_HANDLE, "kestrel-stage: note: " + note + "\n");
    }
    if (!report.error.empty()) Write(STD_ERROR_HANDLE, "kestrel-stage: " + report.error + "\n");
}

void ShowProgressLine(const HostSession& session) {
    const ULONGLONG now = GetTickCount64();
    if (now - progressTime < kProgressMilliseconds || !IsTerminal(STD_ERROR_HANDLE)) return;
    progressTime = now;
    std::string line;
    {
        const std::lock_guard<std::mutex> lock(session.statusLock);
        line = session.status;
    }
    const int total = session.progressTotal;
    if (total > 0)
        line += "  " + std::to_string(session.progressCurrent + 1) + " of " + std::to_string(total);
    if (line == progressLine) return;
    const std::string rest(progressLine.size() > line.size() ? progressLine.size() - line.size() : 0, ' ');
    Write(STD_ERROR_HANDLE, "\r" + line + rest);
    progressLine = line;
}

void ClearProgressLine() {
    if (progressLine.empty()) return;
    Write(STD_ERROR_HANDLE, "\r" + std::string(progressLine.size(), ' ') + "\r");
    progressLine.clear();
}

void LeaveUnfinishedLine() {
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    const HANDLE terminal = GetStdHandle(STD_ERROR_HANDLE);
    if (GetConsoleScreenBufferInfo(terminal, &screen) && screen.dwCursorPosition.X > 0) {
        Write(STD_ERROR_HANDLE, "\n");
    }
}

}  // namespace kfx::stage
