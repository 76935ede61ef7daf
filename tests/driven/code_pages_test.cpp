// SPDX-License-Identifier: MIT
// Names of files and folders in characters of the system's code page, and in such as it does not have,
// through both engines of kestrel.exe: as it is, and as on an older Windows, where it has the system's code
// page.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

#include <windows.h>

#include "commands/text_windows.h"
#include "media/utf8_path.h"
#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/older_windows.h"
#include "tests/driven/user_settings.h"
#include "tests/support/page_words.h"

namespace kfx::test {
namespace {

using ::testing::StartsWith;
using Words = std::vector<std::string>;

struct CodePages : ::testing::Test {
    const UserSettings user;
    const TemporaryFolder folder;
    const std::string place = folder.path + NameInside("") + "\\";
    const std::string older = CopyForOlderWindows("kestrel.exe", folder.path);
    const Words names = {NameInside(".gif"), std::string(WordsOfPage().outside) + ".gif"};

    void SetUp() override {
        std::filesystem::create_directory(PathOf(place));
        for (const std::string& name : names) WriteTestGif(place + name, 2);
        // What the other file's name may be taken for.
        WriteTestGif(place + WordsOfPage().likeness + ".gif", 1);
    }

    // Runs it in both ways, which must say the same.
    ProgramResult Run(const Words& words) const {
        const ProgramResult result = RunProgram(FileBesideTest("kestrel.exe"), words);
        EXPECT_EQ(RunProgram(older, words).err, result.err);
        return result;
    }
};

const Words kEngines[] = {{}, {"--through-plugin"}};

Words Apply(const std::string& from, const std::string& to, const Words& more) {
    Words words = {"apply", from, "-o", to, "--effect", "Emboss", "--force"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

TEST_F(CodePages, A_file_of_any_name_is_built_under_any_name) {
    for (const Words& engine : kEngines) {
        for (const std::string& name : names) {
            const std::string result = place + "made " + name;
            for (const std::string& program : {FileBesideTest("kestrel.exe"), older}) {
                DeleteFileAt(result);
                const ProgramResult run = RunProgram(program, Apply(place + name, result, engine));
                EXPECT_EQ(run.exitCode, 0) << run.err;
                EXPECT_EQ(run.err, "");
                EXPECT_THAT(run.out, StartsWith(result + ": 2 frames, 40 x 30"));
                EXPECT_EQ(ReadBack(result).frames.size(), 2u)
                    << "the file of this name, not one that looks like it";
            }
        }
    }
}

TEST_F(CodePages, A_batch_names_its_results_as_the_files) {
    for (const Words& engine : kEngines) {
        const std::string results = folder.path + "made " + NameInside("") + "/";
        for (const std::string& program : {FileBesideTest("kestrel.exe"), older}) {
            const ProgramResult run = RunProgram(program, Apply(place, results, engine));
            EXPECT_EQ(run.exitCode, 0);
            EXPECT_EQ(run.err, "kestrel: 3 done.\n");
            EXPECT_EQ(FilesIn(results), FilesIn(place));
            for (const std::string& name : names) EXPECT_EQ(ReadBack(results + name).frames.size(), 2u);
            std::filesystem::remove_all(PathOf(results));
        }
    }
}

TEST_F(CodePages, Documents_are_read_under_any_name) {
    for (const std::string& name : names) {
        const std::string document = place + name + ".kx1", result = folder.path + "out.gif";
        ASSERT_EQ(RunKestrel(Apply(place + name, result, {"--set", "Radius=18"})).exitCode, 0);
        WriteText(document, RunKestrel({"recipe", result}).out);
        const Animation whole = ReadBack(result);
        for (const std::string& program : {FileBesideTest("kestrel.exe"), older}) {
            const ProgramResult run =
                RunProgram(program, {"apply", place + name, "-o", result, "--settings", document, "--force"});
            EXPECT_EQ(run.exitCode, 0) << run.err;
            ExpectSamePictures(ReadBack(result), whole);
        }
    }
}

TEST_F(CodePages, Messages_show_names_as_they_are) {
    for (const Words& engine : kEngines) {
        for (const std::string& name : names) {
            const std::string missing = place + "no " + name, nowhere = place + "no " + name + "\\";
            EXPECT_EQ(
                Run(Apply(missing, folder.path + "out.gif", engine)).err,
                "kestrel: " + missing + ": the file cannot be opened (there is no such file or folder).\n");
            EXPECT_EQ(Run(Apply(place + name, nowhere + "out.gif", engine)).err,
                      "kestrel: " + nowhere + "out.gif: cannot be written: the folder " + nowhere +
                          " does not exist.\n");
        }
    }
    const std::string missing = place + "no " + names[0];
    const auto object = nlohmann::json::parse(Run({"info", missing, "--json"}).out, nullptr, false);
    ASSERT_TRUE(object.is_object());
    EXPECT_EQ(object["error"], missing + ": the file cannot be opened (there is no such file or folder).");
}

// A plug-in that is given the name of another file would open that one.
TEST(PluginText, What_the_code_page_does_not_have_is_not_taken_for_what_looks_like_it) {
    const PageWords& words = WordsOfPage();
    EXPECT_EQ(commands::FromPluginText(commands::ToPluginText(words.inside)), words.inside);
    if (std::string(words.outside) == words.likeness) return;
    EXPECT_EQ(commands::ToPluginText(words.outside), "b?r");
}

}  // namespace
}  // namespace kfx::test
