// SPDX-License-Identifier: MIT
// A DLL whose way to the user's folders is not known is told apart by what its file imports.
#include "driven/folder_answers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "driven/import_table.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using driven::AnswerFolderLookups;
using ::testing::HasSubstr;

uint8_t* BytesOf(HMODULE module) { return reinterpret_cast<uint8_t*>(module); }

// The plug-in of the tests, loaded; its headers and import lists can be written to.
struct FolderAnswers : ::testing::Test {
    HMODULE module = LoadLibraryA(FileBesideTest("misbehaving_plugin.dll").c_str());
    std::string error;

    ~FolderAnswers() override { FreeLibrary(module); }

    IMAGE_DATA_DIRECTORY* Directory(int index) const {
        const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(module);
        auto* headers = reinterpret_cast<IMAGE_NT_HEADERS64*>(BytesOf(module) + dos->e_lfanew);
        return &headers->OptionalHeader.DataDirectory[index];
    }

    template <typename T>
    static void Overwrite(T* place, const T& value) {
        DWORD before = 0;
        ASSERT_TRUE(VirtualProtect(place, sizeof value, PAGE_READWRITE, &before));
        std::memcpy(place, &value, sizeof value);
        VirtualProtect(place, sizeof value, before, &before);
    }

    // The entry of the import list that names the function.
    ULONGLONG* NameEntry(const char* function) const {
        for (const driven::Import& import : driven::ImportsOf(module)) {
            if (import.function && std::strcmp(import.function, function) == 0)
                return &import.entry->u1.AddressOfData;
        }
        return nullptr;
    }

    // Writes bytes into the DLL's own memory; the result is their distance from its start.
    DWORD Scratch(size_t offset, const void* bytes, size_t size) const {
        uint8_t* scratch = nullptr;
        const FARPROC address = GetProcAddress(module, "kfxScratch");
        std::memcpy(&scratch, &address, sizeof scratch);
        std::memcpy(scratch + offset, bytes, size);
        return static_cast<DWORD>(scratch + offset - BytesOf(module));
    }
};

TEST_F(FolderAnswers, A_lookup_by_name_is_answered) {
    EXPECT_TRUE(AnswerFolderLookups(module, &error)) << error;
    int answered = 0;
    for (const driven::Import& import : driven::ImportsOf(module)) {
        if (!import.function || std::strncmp(import.function, "SHGet", 5) != 0) continue;
        EXPECT_NE(*import.slot,
                  reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("shell32.dll"), import.function)))
            << import.function;
        ++answered;
    }
    EXPECT_EQ(answered, 2);
}

TEST_F(FolderAnswers, An_import_by_number_is_refused) {
    Overwrite(NameEntry("SHGetPathFromIDListA"), ULONGLONG{1} << 63 | 241);
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("by number"));
}

TEST_F(FolderAnswers, Another_folder_function_is_refused) {
    const char name[] = "\0\0SHGetFolderPathW";
    Overwrite(NameEntry("SHGetPathFromIDListA"), ULONGLONG{Scratch(0, name, sizeof name)});
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("it imports SHGetFolderPathW"));
}

TEST_F(FolderAnswers, A_dll_that_never_asks_for_its_folder_is_refused) {
    const char name[] = "\0\0SHStrDupA";
    Overwrite(NameEntry("SHGetSpecialFolderLocation"), ULONGLONG{Scratch(0, name, sizeof name)});
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("does not import SHGetSpecialFolderLocation"));
}

TEST_F(FolderAnswers, A_function_that_is_loaded_later_is_refused) {
    const char library[] = "SHELL32.dll", name[] = "\0\0SHGetSpecialFolderLocation";
    const DWORD libraryAt = Scratch(0, library, sizeof library);
    const uint64_t names[] = {Scratch(16, name, sizeof name), 0};
    const DWORD delayed[16] = {1, libraryAt, 0, 0, Scratch(64, names, sizeof names)};
    const DWORD size = sizeof delayed;
    Overwrite(Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT),
              IMAGE_DATA_DIRECTORY{Scratch(128, delayed, size), size});
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("only when it needs it"));
}

}  // namespace
}  // namespace kfx::test
