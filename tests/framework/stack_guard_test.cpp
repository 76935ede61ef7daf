// SPDX-License-Identifier: MIT
// A program that has written past its own arrays ends at once. The program runs itself for this: see main.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>

namespace kfx {
namespace {

constexpr const char* kArray = "overrun-array";
constexpr const char* kBuffer = "overrun-buffer";
constexpr const char* kNothing = "overrun-nothing";
constexpr DWORD kAtItsEnd = 3;
constexpr DWORD kOverrun = EXCEPTION_ILLEGAL_INSTRUCTION;

// So that the compiler cannot know it.
volatile size_t written = 0;

constexpr size_t kRoom = 16;

char buffer[kRoom];

[[gnu::noinline]] void FillArray() {
    char array[kRoom];
    volatile char* const bytes = array;
    for (size_t i = 0; i < written; ++i) bytes[i] = 'x';
}

[[gnu::noinline]] void FillBuffer(const char* text) { std::memcpy(buffer, text, written); }

// In place of the system's message or debugger.
LONG WINAPI EndWithCode(EXCEPTION_POINTERS* exception) {
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

DWORD EndOf(const char* word) {
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, sizeof path);
    std::string line = '"' + std::string(path) + "\" " + word;
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION child = {};
    if (!CreateProcessA(path, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &child))
        return 0;
    WaitForSingleObject(child.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(child.hProcess, &code);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    return code;
}

TEST(StackGuard, A_program_that_stays_within_its_arrays_comes_to_its_end) {
    EXPECT_EQ(EndOf(kNothing), kAtItsEnd);
}

TEST(StackGuard, A_function_that_overran_its_array_does_not_return) { EXPECT_EQ(EndOf(kArray), kOverrun); }

TEST(StackGuard, A_buffer_of_known_size_is_not_overrun) { EXPECT_EQ(EndOf(kBuffer), kOverrun); }

}  // namespace
}  // namespace kfx

int main(int argc, char** argv) {
    using namespace kfx;
    const std::string word = argc == 2 ? argv[1] : "";
    const std::string text(100, 'x');
    if (!word.empty()) SetUnhandledExceptionFilter(EndWithCode);
    written = word == kNothing ? kRoom : text.size();
    if (word == kArray || word == kNothing) FillArray();
    if (word == kBuffer || word == kNothing) FillBuffer(text.c_str());
    if (word == kNothing || word == kArray || word == kBuffer) return kAtItsEnd;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
