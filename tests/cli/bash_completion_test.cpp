// SPDX-License-Identifier: MIT
// The script for bash, in bash.
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

namespace fs = std::filesystem;

// Types the words into a bash that has loaded the script, in `folder`, and returns what it offers, each in
// angle brackets. bash itself has taken the words apart.
std::string Completed(const std::string& words, const std::string& folder = "/") {
    const std::string programs = fs::read_symlink("/proc/self/exe").parent_path().string();
    const std::string script =
        "cd " + folder + "; PATH=" + programs + ":$PATH; source <(kestrel completions bash); COMP_WORDS=(" +
        words +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kestrel 2>/dev/null; printf \"<%s>\" \"${COMPREPLY[@]}\"";
    FILE* const pipe = popen(("bash -c '" + script + "'").c_str(), "r");
    if (!pipe) return "bash did not start";
    std::string offered;
    char part[256];
    while (std::fgets(part, sizeof part, pipe)) offered += part;
    return pclose(pipe) == 0 ? offered : "bash failed: " + offered;
}

TEST(BashCompletion, Words_are_completed) {
    EXPECT_EQ(Completed("kestrel app"), "<apply>");
    EXPECT_EQ(Completed("kestrel apply --effect s"), "<solarize><swirl>");
}

TEST(BashCompletion, A_word_that_bash_has_taken_apart_is_completed_behind_its_last_sign) {
    EXPECT_EQ(Completed("kestrel apply --effect = s"), "<solarize><swirl>");
    EXPECT_EQ(Completed("kestrel apply --effect = \"\""), Completed("kestrel apply --effect \"\""));
    EXPECT_EQ(Completed("kestrel apply --effect emboss --set radius ="), "<5>");
    EXPECT_EQ(Completed("kestrel apply --effect ripple --set dissipate = of"), "<off>");
}

TEST(BashCompletion, Capitals_and_an_open_quote_do_not_matter) {
    EXPECT_EQ(Completed("kestrel apply --effect S"), "<solarize><swirl>");
    EXPECT_EQ(Completed("kestrel apply --effect = Sw"), "<swirl>");
    EXPECT_EQ(Completed("kestrel apply --effect \\\"Oil"), "<oil-painting>");
    EXPECT_EQ(Completed("kestrel apply --effect = \\\"Oil"), "<oil-painting>");
    EXPECT_EQ(Completed("kestrel apply --effect Emboss --set Rad"), "<radius=>");
}

TEST(BashCompletion, Files_are_those_of_the_folder) {
    const TemporaryFolder folder;
    WriteText(folder.path + "a b.gif", "x");
    EXPECT_EQ(Completed("kestrel apply a", folder.path), "<a b.gif>");
    EXPECT_EQ(Completed("kestrel apply --effect Bump b", folder.path), "<>");
}

}  // namespace
}  // namespace kfx::test
