// SPDX-License-Identifier: MIT
#include "driven/settings_folder.h"

#include <windows.h>
#include <shlobj.h>

#include "commands/text_windows.h"

namespace kfx::driven {

using namespace commands;

namespace {

// The user's file under its own name, as it was renamed, and the empty file that stood for none.
constexpr char kFileName[] = "kfxplug1.ini";
constexpr char kAsideName[] = "kfxplug1.ini.aside";
constexpr char kAbsentName[] = "kfxplug1.ini.absent";

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// An old marker would make an old version remove the user's file. Whoever has written something into it keeps
// it: while its size is looked at nobody can.
void RemoveMarker(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | DELETE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    LARGE_INTEGER size = {};
    if (GetFileSizeEx(file, &size) && size.QuadPart == 0) {
        FILE_DISPOSITION_INFO remove = {TRUE};
        SetFileInformationByHandle(file, FileDispositionInfo, &remove, sizeof remove);
    }
    CloseHandle(file);
}

// The user's file itself is neither opened nor removed, whatever is in it: a host may be saving it.
std::string PutBackIn(const std::string& folder) {
    const std::wstring file = Widen(folder + kFileName);
    const std::wstring aside = Widen(folder + kAsideName);
    RemoveMarker(Widen(folder + kAbsentName));
    if (!Exists(aside)) return "";
    // Moves without replacing: whoever saves a file meanwhile keeps it.
    if (MoveFileExW(aside.c_str(), file.c_str(), 0)) return "";
    const std::string reason = SystemErrorText(GetLastError());
    if (!Exists(aside)) return "";
    if (!Exists(file)) return folder + kAsideName + ": cannot get its name back: " + reason + ".";
    return folder + kAsideName +
           ": an interrupted command of an earlier version left these settings of the plug-in, and " +
           folder + kFileName +
           " stands, so both are kept; to have the old ones back, close the plug-in, delete " + kFileName +
           " and rename " + kAsideName + " to " + kFileName + ", else delete " + kAsideName + ".";
}

}  // namespace

std::string SettingsFolder() {
    wchar_t path[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path))) return "";
    return Narrow(path) + "\\Quorvane Labs\\";
}

void MakeSettingsFolder() {
    wchar_t path[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                                path))) {
        return;
    }
    CreateDirectoryW(Widen(SettingsFolder()).c_str(), nullptr);
}

std::string PutBackLeftSettings() {
    const std::string folder = SettingsFolder();
    if (folder.empty() || !Exists(Widen(folder))) return "";
    // A command of an earlier version that still runs holds this for as long as the file is aside.
    const HANDLE turn = CreateMutexW(nullptr, FALSE, L"KestrelStageSettings");
    if (!turn) return "";
    const DWORD answer = WaitForSingleObject(turn, 0);
    std::string sentence;
    if (answer == WAIT_OBJECT_0 || answer == WAIT_ABANDONED) {
        sentence = PutBackIn(folder);
        ReleaseMutex(turn);
    }
    CloseHandle(turn);
    return sentence;
}

}  // namespace kfx::driven
