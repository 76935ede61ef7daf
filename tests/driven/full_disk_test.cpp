// SPDX-License-Identifier: MIT
// What a full disk is called.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "media/file_io.h"
#include "tests/cli/test_files.h"
#include "tests/driven/import_patch.h"
#include "tests/support/full_disk_windows.h"

namespace kfx::test {
namespace {

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
