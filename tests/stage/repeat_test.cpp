// SPDX-License-Identifier: MIT
// Effects that are repeated, and the recipes of results that Stage has saved.
#include "commands/fingerprint.h"
#include "tests/cli/colorful_animation.h"
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

struct Repeating : StageWindow {
    std::string built = folder.path + "built.gif", repeated = folder.path + "repeated.gif";

    void Save(const std::string& path) const {
        Run(kSave);
        ASSERT_NO_FATAL_FAILURE(ChooseFile(path));
        ASSERT_TRUE(WaitForText(kStatusText, "Saved " + path.substr(folder.path.size())));
    }

    void WriteSettings(const std::string& lines) const {
        CreateDirectoryA(user.folder.c_str(), nullptr);
        WriteText(user.path, "[PlugIn]\n" + lines);
    }

    // What kestrel recipe prints.
    std::string RecipeOf(const std::string& path) const {
        const std::string text = folder.path + "how.kx1";
        RunningProgram kestrel;
        EXPECT_TRUE(
            StartProgram(FileBesideTest("kestrel.exe"), {"recipe", path, "-o", text, "--force"}, &kestrel));
        EXPECT_EQ(WaitForEnd(&kestrel), 0);
        return ReadText(text);
    }
};

TEST_F(Repeating, The_effect_gives_the_bytes_of_its_build_once_more) {
    WriteSettings(
        "Truecolour = 0\nMainPalette = 0\nMainDither = 1\nDitherBrightness = 120\nDitherContrast = 90\n"
        "FastRemap = 1\n");
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    ASSERT_NO_FATAL_FAILURE(Save(built));
    const std::string recipe = RecipeOf(built);
    for (const char* option : {"--effect=Solarize", "--palette=Black and white", "--dither\n", "--fast-remap",
                               "--dither-brightness=120", "--dither-contrast=90"})
        EXPECT_NE(recipe.find(option), std::string::npos) << option << "\n" << recipe;
    Run(kUndo);
    ASSERT_TRUE(WaitFor([this] { return !IsPossible(kUndo); }));
    Run(kRepeatEffect);
    ASSERT_TRUE(WaitForText(kUndo, "Undo Solarize"));
    ASSERT_NO_FATAL_FAILURE(Save(repeated));
    EXPECT_EQ(ReadText(built), ReadText(repeated));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(Repeating, What_cannot_be_repeated_is_told_without_words_of_the_command_line) {
    WriteSettings("Truecolour = 0\nMainPalette = 9\n");
    const std::string colorful = folder.path + "colourful.apng";
    WriteColorful(colorful, 2, false);
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    ASSERT_NO_FATAL_FAILURE(Save(built));
    ASSERT_NE(RecipeOf(built).find("--palette=Match original"), std::string::npos) << RecipeOf(built);
    Run(kOpen);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(colorful));
    ASSERT_TRUE(WaitForTitle("colourful.apng - Kestrel Stage"));
    Run(kRepeatEffect);
    const std::string text = MessageText();
    EXPECT_EQ(text.find("Solarize cannot be repeated"), 0u) << text;
    EXPECT_EQ(text.find("--"), std::string::npos) << text;
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(Repeating, A_saved_result_tells_its_last_step_and_the_source_of_that) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    const std::string first = folder.path + "first.apng", second = folder.path + "second.webp";
    ASSERT_NO_FATAL_FAILURE(Save(first));
    ASSERT_NO_FATAL_FAILURE(Build("Emboss"));
    ASSERT_NO_FATAL_FAILURE(Save(second));
    const std::string one = RecipeOf(first), two = RecipeOf(second);
    EXPECT_NE(one.find("--effect=Solarize"), std::string::npos) << one;
    EXPECT_NE(one.find("source fingerprint " + commands::FingerprintOf(ReadBack(input))), std::string::npos)
        << one;
    EXPECT_NE(two.find("--effect=Emboss"), std::string::npos) << two;
    EXPECT_EQ(two.find("Solarize"), std::string::npos) << two;
    EXPECT_NE(two.find("source fingerprint " + commands::FingerprintOf(ReadBack(first))), std::string::npos)
        << two;
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
