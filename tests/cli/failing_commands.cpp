// SPDX-License-Identifier: MIT
#include "tests/cli/failing_commands.h"

#include <algorithm>

#include "tests/cli/test_animations.h"

namespace kfx::test {

void FailingCommands::SetUp() { WriteTestGif(input, 2); }

std::string FailingCommands::Failing(int exitCode, const std::vector<std::string>& arguments) const {
    const auto before = FilesIn(folder.path);
    const ProgramResult result = RunKestrel(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(FilesIn(folder.path), before) << "nothing is left behind";
    return result.err;
}

std::vector<std::string> FailingCommands::Apply(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {"apply", input, "-o", folder.path + "out.gif"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

}  // namespace kfx::test
