// SPDX-License-Identifier: MIT
// How the DLL and the programs are protected, read from the files that users get. Their paths are the
// arguments.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "tests/dll/pe_file.h"

namespace kfx {
namespace {

std::span<char*> paths;

template <typename Check>
void InEachFile(const Check& check) {
    ASSERT_FALSE(paths.empty());
    for (const char* path : paths) {
        SCOPED_TRACE(path);
        PeFile file;
        ASSERT_TRUE(ReadPeFile(path, file));
        check(file);
    }
}

TEST(ShippedFiles, May_be_loaded_at_any_address_of_64_bits) {
    InEachFile([](const PeFile& file) {
        EXPECT_TRUE(file.dllCharacteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
        EXPECT_TRUE(file.dllCharacteristics & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
        EXPECT_FALSE(file.characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    });
}

TEST(ShippedFiles, Are_for_Windows_7_and_later) {
    InEachFile([](const PeFile& file) {
        EXPECT_EQ(file.subsystemMajor, 6);
        EXPECT_EQ(file.subsystemMinor, 1);
    });
}

TEST(ShippedFiles, Run_no_data_and_write_no_code) {
    InEachFile([](const PeFile& file) {
        EXPECT_TRUE(file.dllCharacteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
        EXPECT_GT(file.sections.size(), 4u);
        for (const PeSection& section : file.sections)
            EXPECT_FALSE((section.characteristics & IMAGE_SCN_MEM_WRITE) &&
                         (section.characteristics & IMAGE_SCN_MEM_EXECUTE))
                << section.name;
    });
}

TEST(ShippedFiles, Resources_and_constants_can_only_be_read) {
    InEachFile([](const PeFile& file) {
        int found = 0;
        for (const PeSection& section : file.sections) {
            if (section.name != ".rsrc" && section.name != ".rdata") continue;
            ++found;
            EXPECT_FALSE(section.characteristics & (IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE))
                << section.name;
        }
        EXPECT_EQ(found, 2);
    });
}

// Users need no symbols; they are kept in a file beside each. Equal sources make equal files.
TEST(ShippedFiles, Carry_neither_symbols_nor_the_time_of_their_linking) {
    InEachFile([](const PeFile& file) {
        EXPECT_EQ(file.symbols, 0u);
        EXPECT_EQ(file.time, 0u);
        for (const PeSection& section : file.sections)
            EXPECT_FALSE(section.name.starts_with(".debug")) << section.name;
    });
}

// How often the code of a file calls or jumps to the function that begins with these bytes.
int CallsOf(const PeFile& file, std::string_view beginning) {
    int calls = 0;
    for (const PeSection& section : file.sections) {
        if (!(section.characteristics & IMAGE_SCN_MEM_EXECUTE)) continue;
        const size_t function = section.bytes.find(beginning);
        if (function == std::string::npos) continue;
        for (size_t at = 0; at + 5 <= section.bytes.size(); ++at) {
            const auto instruction = static_cast<uint8_t>(section.bytes[at]);
            if (instruction != 0xe8 && instruction != 0xe9) continue;
            int32_t distance;
            std::memcpy(&distance, section.bytes.data() + at + 1, sizeof distance);
            if (static_cast<int64_t>(at) + 5 + distance == static_cast<int64_t>(function)) ++calls;
        }
    }
    return calls;
}

// The compiler's calls to framework/stack_guard_windows.cpp: one in each function with arrays of its own, and
// fewer where the size of a buffer is known.
TEST(ShippedFiles, Find_out_when_a_function_overruns_its_arrays) {
    InEachFile([](const PeFile& file) {
        EXPECT_GT(CallsOf(file, std::string_view("\xb9\x02\0\0\0\x0f\x0b", 7)), 50);
        EXPECT_GT(CallsOf(file, std::string_view("\xb9\x08\0\0\0\x0f\x0b", 7)), 0);
    });
}

}  // namespace
}  // namespace kfx

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    kfx::paths = std::span(argv, static_cast<size_t>(argc)).subspan(1);
    return RUN_ALL_TESTS();
}
