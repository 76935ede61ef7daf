// SPDX-License-Identifier: MIT
// Surveys, parts and joined files of small animations, made in the test's own process.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "commands/commands.h"
#include "tests/cli/test_files.h"

namespace kfx::commands {

using Arguments = std::vector<std::string>;

constexpr int kFrames = 9;  // of each source

// In a folder of its own: plain.gif (opaque), holes.gif, soft.apng (half-transparent pixels) and late.apng,
// whose last two frames alone are transparent.
struct Split : ::testing::Test {
    test::TemporaryFolder folder;

    std::string Path(const std::string& name) const { return folder.path + name; }

    void SetUp() override;

    // What the command reports.
    static Report Run(const Arguments& arguments);
    // Fails the test when the command fails.
    static void Succeed(const Arguments& arguments);

    // Makes the survey of a source for a format, as whole.survey.
    void Survey(const std::string& source, const std::string& format, const Arguments& options) const;

    // The arguments that make a part as NAME.kpart.
    Arguments Part(const std::string& source, const std::string& name, const std::string& frames) const;

    // Makes parts that begin at these frames, and joins them in another order.
    void MakeAndJoin(const std::string& source, const std::vector<int>& starts, int frames,
                     const std::string& output) const;
};

}  // namespace kfx::commands
