// SPDX-License-Identifier: MIT
// A settings document that the plug-in's window has saved gives kestrel the bytes that the window builds.
#include <gtest/gtest.h>

#include "commands/commands.h"
#include "commands/direct_engine.h"
#include "commands/report.h"
#include "commands/result_files.h"
#include "commands/text_windows.h"
#include "driven/command_settings.h"
#include "driven/folder_answers.h"
#include "driven/plugin_run.h"
#include "resources/resource_ids.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/user_settings.h"

namespace kfx::test {
namespace {

using commands::kDirectEngine;

// What a user sets in the window, and what he writes.
struct Choice {
    const char* name;
    int effect;
    std::vector<std::pair<std::string, int>> values;
    std::vector<std::pair<std::string, bool>> options;
    int palette;  // row; -1: none is chosen
    std::string output;
};

const Choice kChoices[] = {
    {.name = "ListedPalette",
     .effect = 1,
     .values = {{"Radius", 18}, {"Depth", 40}},
     .options = {{"True color", false}, {"Dither", true}, {"Add comment", false}},
     .palette = 5,
     .output = "out.gif"},
    {.name = "ComputedPalette",
     .effect = 5,
     .values = {{"Hue", 90}, {"Enable channels", 1}, {"Channels", 3}},
     .options =
         {{"True color", false}, {"Custom palette", true}, {"Supercompress", true}, {"Add comment", true}},
     .palette = -1,
     .output = "out.gif"},
    {.name = "TrueColor",
     .effect = 17,
     .values = {{"Angle", -300}},
     .options = {{"True color", true}, {"Local background", false}, {"Add comment", false}},
     .palette = -1,
     .output = "out.webp"},
};

class SavedDocuments : public ::testing::TestWithParam<Choice> {
protected:
    UserSettings user;
    TemporaryFolder folder;
    Animation source;
    commands::HostSession session;
    driven::PluginLibrary library;
    driven::PluginRun run;

    void OpenWindow() {
        session.source = &source;
        BeginSession(&session, kHostTakesSupercompressed | kHostTakesTrueColor);
        run.library = &library;
        run.session = &session;
        std::string error;
        ASSERT_TRUE(
            driven::LoadPlugin(FileBesideTest("kfxplug1.dll"), driven::AnswerFolderLookups, &library, &error))
            << error;
        ASSERT_TRUE(OpenPluginWindow(&run)) << run.failure.error;
    }

    void Set(const Choice& choice) {
        ASSERT_TRUE(ChooseRow(&run, driven::kEffectList, choice.effect)) << run.failure.error;
        for (const commands::Parameter& parameter : driven::ReadParameters(run.window)) {
            for (const auto& [name, value] : choice.values) {
                if (parameter.name != name) continue;
                EXPECT_TRUE(driven::SetParameterValue(run.window, parameter, value)) << name;
            }
        }
        for (const auto& [name, on] : choice.options)
            ASSERT_TRUE(SetOption(&run, name, on)) << run.failure.error;
        ASSERT_TRUE(SelectSource(&run)) << run.failure.error;
        if (choice.palette < 0) return;
        ASSERT_TRUE(SetOption(&run, "Custom palette", true));
        ASSERT_TRUE(ChooseRow(&run, driven::kPaletteList, choice.palette));
        ASSERT_TRUE(SetOption(&run, "Custom palette", false));
    }
};

TEST_P(SavedDocuments, Give_the_bytes_that_the_window_builds) {
    const Choice& choice = GetParam();
    const std::string input = folder.path + "in.gif", document = folder.path + "look.kx1";
    WriteTestGif(input, 3);
    source = ReadBack(input);
    std::string built;
    {
        const driven::CommandSettings settings("[PlugIn]\r\nCurrentFileName = " + document + "\r\n");
        OpenWindow();
        Set(choice);
        driven::Send(run.window, WM_COMMAND, IDM_DOCUMENT_SAVE);
        ASSERT_TRUE(PressBuild(&run)) << run.failure.error;
        ASSERT_TRUE(ClosePluginWindow(&run));
        commands::EndSession();
        commands::WrittenResult written;
        std::string error;
        ASSERT_TRUE(WriteResult(folder.path + choice.output, std::move(session.built), session.record, {},
                                &written, &error))
            << error;
        built = ReadText(folder.path + choice.output);
    }
    ASSERT_TRUE(FileExists(document));
    commands::CommandLine line;
    std::string text;
    ASSERT_EQ(ParseCommandLine({"apply", input, "-o", folder.path + choice.output, "--force", "--no-recipe",
                                "--settings", document},
                               {}, &line, &text),
              commands::ParseOutcome::Run)
        << text;
    const commands::Report report = RunCommand(line, {kDirectEngine});
    ASSERT_EQ(report.exitCode, commands::kExitDone) << report.error;
    EXPECT_TRUE(ReadText(folder.path + choice.output) == built) << ReadText(document);
}

INSTANTIATE_TEST_SUITE_P(Windows, SavedDocuments, ::testing::ValuesIn(kChoices),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace kfx::test
