// SPDX-License-Identifier: MIT
// Commands that fail: one sentence, an exit code, and nothing left behind.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/cli/program.h"
#include "tests/cli/test_files.h"

namespace kfx::test {

struct FailingCommands : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";

    void SetUp() override;

    // What the command says when it fails with this exit code. Expects one line, and no change in the folder.
    std::string Failing(int exitCode, const std::vector<std::string>& arguments) const;

    // `apply` from the input to out.gif, with more words.
    std::vector<std::string> Apply(const std::vector<std::string>& more) const;
};

}  // namespace kfx::test
