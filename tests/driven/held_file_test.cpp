// SPDX-License-Identifier: MIT
// Files that another program has open when they are to be replaced.
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <windows.h>

#include "commands/text_windows.h"
#include "media/file_io.h"
#include "tests/cli/test_files.h"
#include "tests/driven/import_patch.h"

namespace kfx::test {
namespace {

using MoveFunction = BOOL(WINAPI*)(LPCWSTR, LPCWSTR, DWORD);

HANDLE refused = nullptr;
MoveFunction move = nullptr;  // the system's
int renames = 0;

BOOL WINAPI MoveAndTellRefusal(LPCWSTR from, LPCWSTR to, DWORD flags) {
    ++renames;
    const BOOL moved = move(from, to, flags);
    const DWORD error = GetLastError();
    if (!moved) SetEvent(refused);
    SetLastError(error);
    return moved;
}

HANDLE OpenAlone(const std::string& path) {
    return CreateFileW(commands::Widen(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

struct HeldFile : ::testing::Test {
    const TemporaryFolder folder;
    const std::string path = folder.path + "a.gif";
    std::string error;

    void SetUp() override {
        refused = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        renames = 0;
        WriteText(path, "earlier");
    }
    void TearDown() override { CloseHandle(refused); }
};

TEST_F(HeldFile, Is_replaced_once_the_other_program_has_closed_it) {
    const ImportPatch moves(GetModuleHandleW(nullptr), "MoveFileExW", AddressOfFunction(MoveAndTellRefusal));
    ASSERT_NE(moves.original, nullptr);
    move = reinterpret_cast<MoveFunction>(moves.original);
    const HANDLE held = OpenAlone(path);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    std::thread other([held] {
        WaitForSingleObject(refused, INFINITE);
        CloseHandle(held);
    });
    EXPECT_TRUE(WriteWholeFile(path, {'n', 'e', 'w'}, &error)) << error;
    SetEvent(refused);
    other.join();
    EXPECT_GT(renames, 1);
    EXPECT_EQ(ReadText(path), "new");
}

// As a scanner does, which looks into each new file.
BOOL WINAPI MoveAtTheSecondTry(LPCWSTR from, LPCWSTR to, DWORD flags) {
    if (++renames > 1) return move(from, to, flags);
    SetLastError(ERROR_SHARING_VIOLATION);
    return FALSE;
}

TEST_F(HeldFile, Gets_a_new_name_once_the_other_program_has_closed_it) {
    const ImportPatch moves(GetModuleHandleW(nullptr), "MoveFileExW", AddressOfFunction(MoveAtTheSecondTry));
    ASSERT_NE(moves.original, nullptr);
    move = reinterpret_cast<MoveFunction>(moves.original);
    const std::string fresh = folder.path + "new.gif";
    ASSERT_TRUE(MayWriteFile(fresh, {}, false, &error)) << error;
    EXPECT_TRUE(WriteWholeFile(fresh, {'n', 'e', 'w'}, &error)) << error;
    EXPECT_EQ(renames, 2);
    EXPECT_EQ(ReadText(fresh), "new");
}

TEST_F(HeldFile, Is_left_as_it_is_when_it_stays_open) {
    const HANDLE held = OpenAlone(path);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(WriteWholeFile(path, {'n', 'e', 'w'}, &error));
    EXPECT_EQ(error, path + ": the file cannot be written (it is protected, or another program uses it).");
    CloseHandle(held);
    EXPECT_EQ(ReadText(path), "earlier");
    EXPECT_EQ(FilesIn(folder.path), std::vector<std::string>{"a.gif"});
}

}  // namespace
}  // namespace kfx::test
