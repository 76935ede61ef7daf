// SPDX-License-Identifier: MIT
// A batch through the plug-in: each file has a window of its own.
#include <gtest/gtest.h>

#include <filesystem>

#include "media/utf8_path.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/user_settings.h"

namespace kfx::test {
namespace {

using Words = std::vector<std::string>;

TEST(PluginBatch, Several_windows_at_a_time_give_the_bytes_of_the_other_engine) {
    const UserSettings user;
    const TemporaryFolder folder;
    const std::string in = folder.path + "in/";
    std::filesystem::create_directory(PathOf(in));
    for (const char* name : {"a.gif", "b.gif", "c.gif", "d.gif"}) WriteTestGif(in + name, 2);
    const auto apply = [&](const std::string& output, const Words& more) {
        Words words = {"apply", in, "-o", output, "--effect", "Emboss", "--set", "Radius=7"};
        words.insert(words.end(), more.begin(), more.end());
        const ProgramResult result = RunKestrel(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "kestrel: 4 done.\n");
    };
    apply(folder.path + "direct/", {});
    apply(folder.path + "driven/", {"--through-plugin", "--jobs", "3"});
    for (const char* name : {"a.gif", "b.gif", "c.gif", "d.gif"})
        EXPECT_TRUE(ReadText(folder.path + "direct/" + name) == ReadText(folder.path + "driven/" + name));
}

}  // namespace
}  // namespace kfx::test
