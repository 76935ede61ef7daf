// SPDX-License-Identifier: MIT
// A batch through the plug-in: each file has a window of its own.
#include <gtest/gtest.h>

#include <filesystem>

#include <windows.h>

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

// As pictures that come from a disk, or results that are to be kept.
TEST(WriteProtected, Sources_are_no_obstacle_and_a_result_refuses_no_other) {
    const TemporaryFolder folder;
    const std::string in = folder.path + "in/", out = in + "out/";
    std::filesystem::create_directory(PathOf(in));
    const auto protect = [](const std::string& path, DWORD attributes) {
        EXPECT_TRUE(SetFileAttributesW(PathOf(path).c_str(), attributes)) << path;
    };
    for (const char* name : {"a.gif", "b.gif"}) {
        WriteTestGif(in + name, 2);
        protect(in + name, FILE_ATTRIBUTE_READONLY);
    }
    const Words apply = {"apply", in, "-o", out, "--effect", "Bump"};
    EXPECT_EQ(RunKestrel(apply).err, "kestrel: 2 done.\n");
    protect(out + "a.gif", FILE_ATTRIBUTE_READONLY);
    const auto run = [&](const std::string& option) {
        Words words = apply;
        words.push_back(option);
        return RunKestrel(words).err;
    };
    EXPECT_EQ(run("--force"), "kestrel: " + out + "a.gif: is write-protected.\n");
    EXPECT_EQ(run("--skip-done"), "kestrel: 0 done, 2 there before.\n");
    for (const char* name : {"in/a.gif", "in/b.gif", "in/out/a.gif"})
        protect(folder.path + name, FILE_ATTRIBUTE_NORMAL);
}

}  // namespace
}  // namespace kfx::test
