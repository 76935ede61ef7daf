// SPDX-License-Identifier: MIT
#include "driven/command_settings.h"

#include <ntsecapi.h>

#include "commands/text_windows.h"
#include "driven/folder_answers.h"

namespace kfx::driven {

using namespace commands;

namespace {

// What the plug-in puts after its folder.
constexpr char kSettingsName[] = "\\Quorvane Labs\\kfxplug1.ini";

// All the lines fit at once, so that writing does not wait for the reader.
constexpr DWORD kPipeBytes = 4096;

// Waits for a reader. False: the scope ends first.
bool WaitForReader(CommandSettings* settings, OVERLAPPED* work) {
    if (WaitForSingleObject(settings->stop, 0) == WAIT_OBJECT_0) return false;
    bool opened = ConnectNamedPipe(settings->pipe, work) != 0;
    const DWORD state = opened ? ERROR_PIPE_CONNECTED : GetLastError();
    if (state != ERROR_IO_PENDING) return state == ERROR_PIPE_CONNECTED || state == ERROR_NO_DATA;
    const HANDLE either[] = {work->hEvent, settings->stop};
    opened = WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0;
    if (!opened) CancelIo(settings->pipe);
    DWORD none = 0;
    return GetOverlappedResult(settings->pipe, work, &none, TRUE) && opened;
}

// The plug-in runs in this process; another one may have come across the name.
bool IsOwnReader(HANDLE pipe) {
    ULONG reader = 0;
    return GetNamedPipeClientProcessId(pipe, &reader) && reader == GetCurrentProcessId();
}

// False: the reader has not read all of it.
bool Hand(CommandSettings* settings, OVERLAPPED* work) {
    DWORD written = 0;
    const DWORD size = static_cast<DWORD>(settings->text.size());
    const bool begun = WriteFile(settings->pipe, settings->text.data(), size, nullptr, work) ||
                       GetLastError() == ERROR_IO_PENDING;
    // Flushing waits for the reader; what ends the scope disconnects it.
    return begun && GetOverlappedResult(settings->pipe, work, &written, TRUE) && written == size &&
           FlushFileBuffers(settings->pipe);
}

DWORD WINAPI Serve(void* parameter) {
    auto* settings = static_cast<CommandSettings*>(parameter);
    OVERLAPPED work = {};
    work.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (!work.hEvent) return 0;
    while (!settings->taken && WaitForReader(settings, &work)) {
        if (IsOwnReader(settings->pipe) && Hand(settings, &work)) {
            settings->taken = true;
        } else {
            DisconnectNamedPipe(settings->pipe);
        }
    }
    CloseHandle(work.hEvent);
    // The reader has got what was written, and now the end of the file.
    AcquireSRWLockExclusive(&settings->closing);
    CloseHandle(settings->pipe);
    settings->pipe = INVALID_HANDLE_VALUE;
    ReleaseSRWLockExclusive(&settings->closing);
    return 0;
}

// Lets the user of this process open what is made with it, and nobody else.
struct UserOnly {
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    SECURITY_DESCRIPTOR descriptor = {};
    alignas(8) BYTE user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE] = {};
    alignas(8) BYTE list[sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE] = {};
};

bool FillUserOnly(UserOnly* only) {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
    DWORD size = 0;
    const BOOL known = GetTokenInformation(token, TokenUser, only->user, sizeof only->user, &size);
    CloseHandle(token);
    auto* list = reinterpret_cast<ACL*>(only->list);
    return known && InitializeAcl(list, sizeof only->list, ACL_REVISION) &&
           AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL,
                               reinterpret_cast<TOKEN_USER*>(only->user)->User.Sid) &&
           InitializeSecurityDescriptor(&only->descriptor, SECURITY_DESCRIPTOR_REVISION) &&
           SetSecurityDescriptorDacl(&only->descriptor, TRUE, list, FALSE);
}

// A folder that nobody can guess. Empty: the system gives no random number.
std::string OwnFolder() {
    ULONGLONG number = 0;
    if (!RtlGenRandom(&number, sizeof number)) return "";
    char text[64];
    wsprintfA(text, "\\\\.\\pipe\\kestrel-%lu-%08lx%08lx", GetCurrentProcessId(),
              static_cast<ULONG>(number >> 32), static_cast<ULONG>(number));
    return text;
}

}  // namespace

CommandSettings::CommandSettings(const std::string& settingsText) : text(settingsText) {
    taken = text.empty();
    if (text.empty()) return;
    const std::string folder = OwnFolder();
    UserOnly only;
    path = folder + kSettingsName;
    if (!folder.empty() && FillUserOnly(&only)) {
        pipe = CreateNamedPipeA(
            path.c_str(), PIPE_ACCESS_OUTBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
            PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeBytes, 0, 0, &only.attributes);
    }
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
        AcquireSRWLockExclusive(&closing);
        if (pipe != INVALID_HANDLE_VALUE) DisconnectNamedPipe(pipe);
        ReleaseSRWLockExclusive(&closing);
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    if (stop) CloseHandle(stop);
    if (pipe != INVALID_HANDLE_VALUE) CloseHandle(pipe);
}

}  // namespace kfx::driven
