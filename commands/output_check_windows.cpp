// SPDX-License-Identifier: MIT
#include "commands/output_check.h"

#include <windows.h>

#include "commands/text_windows.h"

namespace kfx::commands {

bool CheckWritable(const std::string& path, std::string* error) {
    const std::string system = SystemPath(path);
    const DWORD attributes = GetFileAttributesW(Widen(system).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        *error = path + ": is a folder.";
        return false;
    }
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
        *error = path + ": is write-protected.";
        return false;
    }
    return CheckFolder(path, FolderOf(path), error);
}

bool CheckFolder(const std::string& path, const std::string& folder, std::string* error) {
    const std::string system = SystemPath(folder + FileNameOf(path));
    const std::wstring trial = Widen(system + ".trial-" + std::to_string(GetCurrentProcessId()));
    const HANDLE file = CreateFileW(trial.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD reason = GetLastError();
        const std::string named = folder.empty() ? "this folder" : "the folder " + folder;
        if (reason == ERROR_PATH_NOT_FOUND || reason == ERROR_FILE_NOT_FOUND) {
            *error = path + ": cannot be written: " + named + " does not exist.";
        } else if (reason == ERROR_ACCESS_DENIED || reason == ERROR_WRITE_PROTECT) {
            *error = path + ": cannot be written: you may not write to " + named + ".";
        } else {
            *error = path + ": cannot be written: " + SystemErrorText(reason) + ".";
        }
        return false;
    }
    CloseHandle(file);
    return true;
}

}  // namespace kfx::commands
