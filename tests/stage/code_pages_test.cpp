// SPDX-License-Identifier: MIT
// Files in Stage whose names the system's code page has, and such as it does not have: Stage as it is, and as
// on an older Windows, where it has the system's code page.
#include "commands/text_windows.h"
#include "media/utf8_path.h"
#include "tests/driven/older_windows.h"
#include "tests/stage/stage_program.h"
#include "tests/support/page_words.h"

#include <filesystem>

namespace kfx::test {
namespace {

using namespace stage;

constexpr int kPluginPath = 41;

struct StagePages : StageWindow {
    const std::string place = folder.path + NameInside("") + "\\";
    const std::string older = CopyForOlderWindows("kestrel-stage.exe", folder.path);
    const std::vector<std::string> names = {NameInside(".gif"), std::string(WordsOfPage().outside) + ".gif"};

    void SetUp() override {
        std::filesystem::create_directory(PathOf(place));
        for (const std::string& name : names) WriteTestGif(place + name, 3);
    }

    // What the plug-in shows of a path: its text has the code page of the program that it is in.
    static std::string Shown(const std::string& path, bool isOlder) {
        return isOlder ? commands::FromPluginText(commands::ToPluginText(path)) : path;
    }

    void BuildAndSave(const std::string& program, const std::string& name) {
        const std::string output = place + "made " + name;
        ASSERT_NO_FATAL_FAILURE(Open({place + name}, program));
        ASSERT_TRUE(WaitForTitle(name + " - Kestrel Stage"));
        HWND plugin = nullptr;
        ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
        EXPECT_EQ(TextOf(GetDlgItem(plugin, kPluginPath)), Shown(place + name, program == older));
        SelectEffect(plugin, "Solarize");
        Press(plugin, kPluginBuild);
        ASSERT_TRUE(WaitForText(kUndo, "Undo Solarize"));
        ASSERT_TRUE(WaitForPossible(kUndo));
        Run(kSave);
        ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
        EXPECT_TRUE(WaitForText(kStatusText, "Saved made " + name));
        EXPECT_EQ(ReadBack(output).frames.size(), 3u);
        ASSERT_NO_FATAL_FAILURE(Close(false));
        DeleteFileAt(output);
    }
};

TEST_F(StagePages, A_file_of_any_name_is_opened_built_and_saved) {
    for (const std::string& program : {FileBesideTest("kestrel-stage.exe"), older}) {
        for (const std::string& name : names) ASSERT_NO_FATAL_FAILURE(BuildAndSave(program, name));
    }
}

TEST_F(StagePages, A_file_of_any_name_is_offered_at_the_next_start) {
    for (const std::string& program : {FileBesideTest("kestrel-stage.exe"), older}) {
        // Each has a code page of its own.
        DeleteFileAt(user.folder + "kestrel-stage.ini");
        for (const std::string& name : names) {
            SCOPED_TRACE(program + ", " + name);
            ASSERT_NO_FATAL_FAILURE(Open({place + name}, program));
            ASSERT_TRUE(WaitForTitle(name + " - Kestrel Stage"));
            ASSERT_NO_FATAL_FAILURE(Close(false));
            ASSERT_NO_FATAL_FAILURE(Open({}, program));
            Run(kFirstRecent);
            EXPECT_TRUE(WaitForTitle(name + " - Kestrel Stage"));
            ASSERT_NO_FATAL_FAILURE(Close(false));
        }
    }
}

TEST_F(StagePages, A_message_shows_the_name_as_it_is) {
    for (const std::string& program : {FileBesideTest("kestrel-stage.exe"), older}) {
        for (const std::string& name : names) {
            const std::string missing = place + "no " + name;
            ASSERT_NO_FATAL_FAILURE(Open({missing}, program));
            EXPECT_EQ(MessageText(),
                      missing + ": the file cannot be opened (there is no such file or folder).");
            ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
            ASSERT_NO_FATAL_FAILURE(Close(false));
        }
    }
}

}  // namespace
}  // namespace kfx::test
