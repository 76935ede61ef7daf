// SPDX-License-Identifier: MIT
// A DLL whose way to the user's folders is not known is told apart by what its file imports.
#include "stage/folder_answers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "stage/import_table.h"
#include "tests/stage/stage_process.h"

namespace kfx::test {
namespace {

using stage::AnswerFolderLookups;
using ::testing::HasSubstr;

std::uint8_t* BytesOf(HMODULE module) { return reinterpret_cast<std::uint8_t*>(module); }

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
        for (const stage::Import& import : stage::ImportsOf(module)) {
            if (import.function && std::strcmp(import.function, function) == 0)
                return &import.entry->u1.AddressOfData;
        }
        return nullptr;
    }

    // Writes bytes into the DLL's own memory; the result is their distance from its start.
    DWORD Scratch(size_t offset, const void* bytes, size_t size) const {
        std::uint8_t* scratch = nullptr;
        const FARPROC address = GetProcAddress(module, "kfxScratch");
        std::memcpy(&scratch, &address, sizeof scratch);
        std::memcpy(scratch + offset, bytes, size);
        return static_cast<DWORD>(scratch + offset - BytesOf(module));
    }
};

TEST_F(FolderAnswers, ALookupByNameIsAnswered) {
    EXPECT_TRUE(AnswerFolderLookups(module, &error)) << error;
    int answered = 0;
    for (const stage::Import& import : stage::ImportsOf(module)) {
        if (!import.function || std::strncmp(import.function, "SHGet", 5) != 0) continue;
        EXPECT_NE(*import.slot,
                  reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("shell32.dll"), import.function)))
            << import.function;
        ++answered;
    }
    EXPECT_EQ(answered, 2);
}

TEST_F(FolderAnswers, AnImportByNumberIsRefused) {
    Overwrite(NameEntry("SHGetPathFromIDListA"), ULONGLONG{1} << 63 | 241);
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("by number"));
}

TEST_F(FolderAnswers, AnotherFolderFunctionIsRefused) {
    const char name[] = "\0\0SHGetFolderPathW";
    Overwrite(NameEntry("SHGetPathFromIDListA"), ULONGLONG{Scratch(0, name, sizeof name)});
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("it imports SHGetFolderPathW"));
}

TEST_F(FolderAnswers, ADllThatNeverAsksForItsFolderIsRefused) {
    const char name[] = "\0\0SHStrDupA";
    Overwrite(NameEntry("SHGetSpecialFolderLocation"), ULONGLONG{Scratch(0, name, sizeof name)});
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("does not import SHGetSpecialFolderLocation"));
}

TEST_F(FolderAnswers, AFunctionThatIsLoadedLaterIsRefused) {
    const char library[] = "SHELL32.dll", name[] = "\0\0SHGetSpecialFolderLocation";
    const DWORD libraryAt = Scratch(0, library, sizeof library);
    const std::uint64_t names[] = {Scratch(16, name, sizeof name), 0};
    const DWORD delayed[16] = {1, libraryAt, 0, 0, Scratch(64, names, sizeof names)};
    const DWORD size = sizeof delayed;
    Overwrite(Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT),
              IMAGE_DATA_DIRECTORY{Scratch(128, delayed, size), size});
    EXPECT_FALSE(AnswerFolderLookups(module, &error));
    EXPECT_THAT(error, HasSubstr("only when it needs it"));
}

}  // namespace
}  // namespace kfx::test
