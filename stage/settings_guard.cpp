// SPDX-License-Identifier: MIT
#include "stage/settings_guard.h"

#include <mutex>
#include <vector>

#include <windows.h>
#include <shlobj.h>

#include "media/file_io.h"
#include "stage/text_windows.h"

namespace kfx::stage {
namespace {

// The user's file while it is aside; or, when there was none, an empty file that says so.
constexpr char kFileName[] = "kfxplug1.ini";
constexpr char kAsideName[] = "kfxplug1.ini.aside";
constexpr char kAbsentName[] = "kfxplug1.ini.absent";

// Commands of one user take turns; a command may take long, so a waiting one gives up after this.
constexpr DWORD kTurnMilliseconds = 600000;

// Written by the guard of the running command; read by the handler that a console interrupt runs on its own
// thread.
std::mutex restoreLock;
std::wstring asideFolder;
HANDLE turn = nullptr;

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

bool Rename(const std::wstring& from, const std::wstring& to) {
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

void PutBack(const std::wstring& folder) {
    const std::wstring file = folder + Widen(kFileName);
    const std::wstring aside = folder + Widen(kAsideName);
    const std::wstring absent = folder + Widen(kAbsentName);
    if (Exists(aside)) {
        Rename(aside, file);
        DeleteFileW(absent.c_str());
    } else if (Exists(absent)) {
        DeleteFileW(file.c_str());
        DeleteFileW(absent.c_str());
    }
}

bool PutAside(const std::wstring& folder) {
    const std::wstring file = folder + Widen(kFileName);
    if (Exists(file)) return Rename(file, folder + Widen(kAsideName));
    const HANDLE marker = CreateFileW((folder + Widen(kAbsentName)).c_str(), GENERIC_WRITE, 0, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (marker == INVALID_HANDLE_VALUE) return false;
    CloseHandle(marker);
    return true;
}

bool WaitForTurn() {
    turn = CreateMutexW(nullptr, FALSE, L"KestrelStageSettings");
    if (!turn) return false;
    const DWORD answer = WaitForSingleObject(turn, kTurnMilliseconds);
    if (answer == WAIT_OBJECT_0 || answer == WAIT_ABANDONED) return true;
    CloseHandle(turn);
    turn = nullptr;
    return false;
}

void EndTurn() {
    if (!turn) return;
    ReleaseMutex(turn);
    CloseHandle(turn);
    turn = nullptr;
}

}  // namespace

std::string SettingsFolder() {
    wchar_t path[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                                path))) {
        return "";
    }
    const std::wstring folder = std::wstring(path) + L"\\Quorvane Labs\\";
    CreateDirectoryW(folder.c_str(), nullptr);
    return Narrow(folder);
}

SettingsGuard::SettingsGuard(const std::string& content) {
    const std::string folder = SettingsFolder();
    if (folder.empty()) {
        error = "the system names no application-data folder.";
        return;
    }
    if (!WaitForTurn()) {
        error = "another kestrel-stage command is still using the plug-in's settings.";
        return;
    }
    const std::lock_guard<std::mutex> lock(restoreLock);
    const std::wstring wide = Widen(folder);
    PutBack(wide);
    if (!PutAside(wide)) {
        error = folder + kFileName + ": cannot be put aside: " + SystemErrorText(GetLastError()) + ".";
        EndTurn();
        return;
    }
    asideFolder = wide;
    if (!WriteWholeFile(folder + kFileName, std::vector<uint8_t>(content.begin(), content.end()), &error)) {
        PutBack(wide);
        asideFolder.clear();
        EndTurn();
    }
}

SettingsGuard::~SettingsGuard() {
    RestoreSettingsNow();
    EndTurn();
}

void RestoreSettingsNow() {
    const std::lock_guard<std::mutex> lock(restoreLock);
    if (asideFolder.empty()) return;
    PutBack(asideFolder);
    asideFolder.clear();
}

}  // namespace kfx::stage
