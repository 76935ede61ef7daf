// SPDX-License-Identifier: MIT
#include "stage/command_settings.h"

#include "stage/folder_answers.h"
#include "stage/text_windows.h"

namespace kfx::stage {
namespace {

// What the plug-in puts after its folder.
constexpr char kSettingsName[] = "\\Quorvane Labs\\kfxplug1.ini";

// All the lines fit at once, so that writing does not wait for the reader.
constexpr DWORD kPipeBytes = 4096;

DWORD WINAPI Serve(void* parameter) {
    auto* settings = static_cast<CommandSettings*>(parameter);
    OVERLAPPED work = {};
    work.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (!work.hEvent) return 0;
    bool opened = ConnectNamedPipe(settings->pipe, &work) != 0;
    const DWORD state = opened ? ERROR_PIPE_CONNECTED : GetLastError();
    if (state == ERROR_IO_PENDING) {
        const HANDLE either[] = {work.hEvent, settings->stop};
        opened = WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0;
        if (!opened) CancelIo(settings->pipe);
        DWORD none = 0;
        GetOverlappedResult(settings->pipe, &work, &none, TRUE);
    } else {
        opened = state == ERROR_PIPE_CONNECTED;
    }
    if (opened) {
        settings->taken = true;
        DWORD written = 0;
        const DWORD size = static_cast<DWORD>(settings->text.size());
        if (WriteFile(settings->pipe, settings->text.data(), size, nullptr, &work) ||
            GetLastError() == ERROR_IO_PENDING) {
            GetOverlappedResult(settings->pipe, &work, &written, TRUE);
        }
    }
    CloseHandle(work.hEvent);
    // The reader gets what was written, and then the end of the file.
    CloseHandle(settings->pipe);
    settings->pipe = INVALID_HANDLE_VALUE;
    return 0;
}

}  // namespace

CommandSettings::CommandSettings(const std::string& settingsText) : text(settingsText) {
    taken = text.empty();
    if (text.empty()) return;
    const std::string folder = "\\\\.\\pipe\\kestrel-stage-" + std::to_string(GetCurrentProcessId());
    pipe = CreateNamedPipeA((folder + kSettingsName).c_str(),
                            PIPE_ACCESS_OUTBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                            PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeBytes, 0, 0, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) stop = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (stop) thread = CreateThread(nullptr, 0, Serve, this, 0, nullptr);
    if (!thread) {
        error = "the plug-in's settings cannot be offered: " + SystemErrorText(GetLastError()) + ".";
        return;
    }
    SetAnsweredSettingsFolder(folder);
}

CommandSettings::~CommandSettings() {
    SetAnsweredSettingsFolder("");
    if (thread) {
        SetEvent(stop);
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    if (stop) CloseHandle(stop);
    if (pipe != INVALID_HANDLE_VALUE) CloseHandle(pipe);
}

}  // namespace kfx::stage
