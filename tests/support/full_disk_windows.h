// SPDX-License-Identifier: MIT
// A disk that fills up, in place of the system's WriteFile.
#pragma once

#include <windows.h>

namespace kfx::test {

// What still fits on the disk.
inline DWORD freeBytes = 0;

// As a system does that fills the disk to its last byte: a request that fits in part succeeds with that part
// and says nothing of the disk, the next one fails.
inline BOOL WINAPI WriteToFullDisk(HANDLE file, const void* bytes, DWORD size, DWORD* written,
                                   OVERLAPPED* overlapped) {
    if (freeBytes == 0 && size > 0) {
        *written = 0;
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }
    const DWORD part = size < freeBytes ? size : freeBytes;
    freeBytes -= part;
    if (!WriteFile(file, bytes, part, written, overlapped)) return FALSE;
    if (part < size) SetLastError(ERROR_INVALID_PARAMETER);
    return TRUE;
}

}  // namespace kfx::test
