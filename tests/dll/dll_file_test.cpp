// SPDX-License-Identifier: MIT
// The DLL as a host finds it on disk. Its path is the program's only argument.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "tests/dll/pe_file.h"

namespace kfx {
namespace {

const char* dllPath = nullptr;

// What every Windows since 7 has in its system folder.
const std::set<std::string> kSystemLibraries = {"advapi32.dll", "comctl32.dll", "comdlg32.dll",
                                                "gdi32.dll",    "kernel32.dll", "msvcrt.dll",
                                                "ole32.dll",    "shell32.dll",  "user32.dll"};

PeFile ReadDll() {
    PeFile file;
    EXPECT_TRUE(ReadPeFile(dllPath, file)) << dllPath;
    return file;
}

TEST(DllFile, Is_a_library_of_64_bits) {
    const PeFile file = ReadDll();
    EXPECT_EQ(file.machine, IMAGE_FILE_MACHINE_AMD64);
    EXPECT_TRUE(file.characteristics & IMAGE_FILE_DLL);
}

TEST(DllFile, Exports_exactly_the_three_entry_points_undecorated) {
    const PeFile file = ReadDll();
    EXPECT_THAT(file.exportedNames,
                testing::UnorderedElementsAre("DllMain", "PLUGIN16DoBuild", "PLUGIN16GetPluginParams"));
    EXPECT_EQ(file.exportedFunctions, 3u);
}

TEST(DllFile, Imports_nothing_but_the_systems_libraries) {
    const PeFile file = ReadDll();
    EXPECT_FALSE(file.importedLibraries.empty());
    for (std::string library : file.importedLibraries) {
        std::transform(library.begin(), library.end(), library.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_TRUE(kSystemLibraries.count(library)) << library;
    }
}

// Explorer and installers read the numbers; a person reads the texts.
TEST(DllFile, Version_resource_is_filled_in) {
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeA(dllPath, &unused);
    ASSERT_GT(size, 0u);
    std::string data(size, '\0');
    ASSERT_TRUE(GetFileVersionInfoA(dllPath, 0, size, data.data()));

    VS_FIXEDFILEINFO* numbers = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(data.data(), "\\", reinterpret_cast<void**>(&numbers), &length));
    EXPECT_EQ(HIWORD(numbers->dwFileVersionMS), 16);
    EXPECT_EQ(LOWORD(numbers->dwFileVersionMS), 0);
    EXPECT_EQ(LOWORD(numbers->dwFileVersionLS), 1) << "the revision";
    EXPECT_EQ(numbers->dwFileType, static_cast<DWORD>(VFT_DLL));

    WORD* translation = nullptr;
    ASSERT_TRUE(VerQueryValueA(data.data(), "\\VarFileInfo\\Translation",
                               reinterpret_cast<void**>(&translation), &length));
    for (const char* name : {"CompanyName", "FileDescription", "FileVersion", "LegalCopyright",
                             "OriginalFilename", "ProductName", "ProductVersion"}) {
        char path[100];
        wsprintfA(path, "\\StringFileInfo\\%04x%04x\\%s", translation[0], translation[1], name);
        char* text = nullptr;
        EXPECT_TRUE(VerQueryValueA(data.data(), path, reinterpret_cast<void**>(&text), &length)) << name;
        EXPECT_TRUE(text != nullptr && text[0] != '\0') << name;
    }
}

}  // namespace
}  // namespace kfx

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2) {
        fprintf(stderr, "usage: dll_file_test DLL\n");
        return 2;
    }
    kfx::dllPath = argv[1];
    return RUN_ALL_TESTS();
}
