// SPDX-License-Identifier: MIT
#include "tests/driven/older_windows.h"

#include <gtest/gtest.h>

#include "tests/cli/test_files.h"

namespace kfx::test {

std::string CopyForOlderWindows(const std::string& program, const std::string& folder) {
    const std::string last = "</activeCodePage>";
    std::string bytes = ReadText(FileBesideTest(program));
    const size_t start = bytes.find("<activeCodePage "), end = bytes.find(last, start);
    EXPECT_NE(end, std::string::npos) << program;
    if (end != std::string::npos)
        bytes.replace(start, end + last.size() - start, end + last.size() - start, ' ');
    WriteText(folder + program, bytes);
    WriteText(folder + "kfxplug1.dll", ReadText(FileBesideTest("kfxplug1.dll")));
    return folder + program;
}

}  // namespace kfx::test
