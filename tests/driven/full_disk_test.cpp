// SPDX-License-Identifier: MIT
// What a full disk is called.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "media/file_io.h"
#include "tests/cli/test_files.h"
#include "tests/driven/import_patch.h"

namespace kfx::test {
namespace {

// What still fits on the disk that the C library writes to.
DWORD freeBytes = 0;

// As a system does that fills the disk to its last byte: a request that fits in part succeeds with that part
// and leaves the last error as it was, the next one fails.
BOOL WINAPI WriteToFullDisk(HANDLE file, const void* bytes, DWORD size, DWORD* written,
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

TEST(FullDisk, Is_the_reason_that_is_given) {
    const TemporaryFolder folder;
    const std::string full = " (the disk is full).";
    for (const size_t size : {100u, 5000u, 300000u}) {
        for (const DWORD fits : {DWORD{0}, static_cast<DWORD>(size / 2), static_cast<DWORD>(size - 1)}) {
            std::string error;
            bool written = false;
            {
                freeBytes = fits;
                const ImportPatch disk(GetModuleHandleA("msvcrt.dll"), "WriteFile",
                                       AddressOfFunction(WriteToFullDisk));
                ASSERT_NE(disk.original, nullptr);
                written = WriteWholeFile(folder.path + "out.gif", std::vector<uint8_t>(size), &error);
            }
            EXPECT_FALSE(written);
            EXPECT_EQ(error, folder.path + "out.gif: the file cannot be written" + full)
                << size << ", " << fits;
            EXPECT_EQ(FilesIn(folder.path), std::vector<std::string>{});
        }
    }
}

}  // namespace
}  // namespace kfx::test
