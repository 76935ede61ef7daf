// SPDX-License-Identifier: MIT
// Settings documents read as the window reads them, and written as it would.
#include "commands/settings_file.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/command_row.h"
#include "documents/document_text.h"
#include "media/recipe_note.h"

namespace kfx::commands {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Texts = std::vector<std::string>;

// What the options of a document with these lines are, or why there are none.
Texts WordsOf(const std::string& lines, const Texts& effects = {}) {
    SettingsDocument document;
    OptionWords words;
    std::string error;
    EXPECT_TRUE(ReadSettings(kDocumentStart + lines + kDocumentEnd, &document));
    if (!WordsOfSettings(document, effects, &words, &error)) return {error};
    Texts texts;
    for (const OptionWord& word : words) texts.push_back(TextOf(word));
    return texts;
}

TEST(SettingsFile, The_selected_effect_has_the_parameters_of_its_panel) {
    EXPECT_THAT(WordsOf("SCROLL100=18\nSCROLL103=30\nSCROLL193=1485\nCMBBOX50=1\n"),
                ElementsAre("--effect=Emboss", "--set=Radius=18", "--set=Depth=30"));
    EXPECT_THAT(WordsOf("CMBBOX50=1\n"), ElementsAre("--effect=Emboss")) << "the others stay";
    EXPECT_THAT(WordsOf("SCROLL100=18\nSCROLL193=1530\nCMBBOX50=1\n", {"swirl"}),
                ElementsAre("--effect=Swirl", "--set=Angle=90"));
    EXPECT_THAT(WordsOf("CMBBOX50=20\n"),
                ElementsAre("selects effect 20, and there are 20 (counted from 0)"));
    EXPECT_THAT(WordsOf("CMBBOX50=-1\n"), ElementsAre(HasSubstr("selects effect -1")));
}

TEST(SettingsFile, Lines_are_read_as_the_window_reads_them) {
    const auto radius = [](const std::string& lines) { return WordsOf("CMBBOX50=1\r\n" + lines); };
    EXPECT_THAT(radius("SCROLL100= =18\r\n"), Contains("--set=Radius=18"));
    EXPECT_THAT(radius("scroll100=18"), Contains("--set=Radius=18"));
    EXPECT_THAT(radius("SCROLL100=5\nSCROLL100=18"), Contains("--set=Radius=18"));
    EXPECT_THAT(radius(";End of document\nSCROLL100=18\n"), Contains("--set=Radius=18"));
    EXPECT_THAT(radius("SCROLL100=x\n"), Contains("--set=Radius=4")) << "no number is 0, and 0 is moved to 4";
    EXPECT_THAT(radius("SCROLL100=99999\n"), Contains("--set=Radius=45"));
    EXPECT_THAT(radius("SCROLL100=-7\n"), Contains("--set=Radius=4"));
    for (const char* ignored :
         {";SCROLL100=18\n", "CHKBOX100=18\n", "SCROLL100\n", "SCROLL\n", "TRACKB9999=4\n"})
        EXPECT_THAT(radius(ignored), ElementsAre("--effect=Emboss")) << ignored;
}

TEST(SettingsFile, Boxes_and_lists_are_read_too) {
    const Texts words =
        WordsOf("CMBBOX50=4\nSCROLL161=90\nCHKBOX170=0\nSCROLL171=1\nCMBBOX172=3\nCHKBOX174=7\nCMBBOX50=5\n");
    const Texts effect =
        WordsOf("CMBBOX172=3\nCHKBOX174=7\nCHKBOX170=0\nSCROLL171=1\nCMBBOX172=9\n", {"HSB"});
    EXPECT_THAT(effect, Contains("--set=Enable channels=on"));
    EXPECT_THAT(effect, Contains("--set=Enable HSB=off"));
    EXPECT_THAT(effect, Contains("--set=Channels=Red - Blue")) << "a row that there is not";
    EXPECT_THAT(effect, Not(Contains(HasSubstr("Invert")))) << "documents do not set this box";
    EXPECT_EQ(words[0], "--effect=HSB and Channels") << "the last line counts";
}

TEST(SettingsFile, Settings_of_the_window_itself_have_the_box_that_files_leave_out) {
    SettingsDocument document;
    OptionWords words;
    std::string error;
    document.lines = {{.id = 50, .text = "CMBBOX50=5"}, {.id = 171, .text = "CHKBOX171=1"}};
    for (const bool hasEveryBox : {false, true}) {
        document.hasEveryBox = hasEveryBox;
        ASSERT_TRUE(WordsOfSettings(document, {}, &words, &error)) << error;
        const bool inverts = std::any_of(words.begin(), words.end(), [](const OptionWord& word) {
            return word.name == "set" && word.value == "Invert colors=on";
        });
        EXPECT_EQ(inverts, hasEveryBox);
    }
}

TEST(SettingsFile, Output_options_follow_the_windows_controls) {
    EXPECT_THAT(WordsOf("CHKBOX10=1\nCHKBOX14=1\nCHKBOX15=1\nCHKBOX19=1\nCMBBOX13=2\n"),
                ElementsAre("--true-color"));
    EXPECT_THAT(WordsOf("CHKBOX10=0\nCHKBOX14=1\nCHKBOX15=1\nCMBBOX13=2\n"),
                ElementsAre("--palette=custom", "--dither"));
    EXPECT_THAT(WordsOf("CHKBOX10=0\nCHKBOX14=0\nCHKBOX19=1\nCMBBOX13=5\nCHKBOX20=1\n"),
                ElementsAre("--palette=216-color safe", "--supercompress", "--comment"));
    EXPECT_THAT(WordsOf("CMBBOX13=9\n"), ElementsAre("--palette=Match original"));
    EXPECT_THAT(WordsOf("CMBBOX13=-1\n"), ElementsAre("--palette=256-color orthogonal"));
    EXPECT_THAT(WordsOf("CHKBOX53=0\nCLRBTN54=255\n"), ElementsAre("--local-background=none"));
    EXPECT_THAT(WordsOf("CHKBOX53=1\nCLRBTN54=255\n"), ElementsAre("--local-background=FF0000"));
    EXPECT_THAT(WordsOf("CHKBOX53=1\nCLRBTN54=8355711\n"), IsEmpty()) << "is so by itself";
    EXPECT_THAT(WordsOf("TXTFLD41=C:\\private\\holiday.gif\n"), IsEmpty());
}

TEST(SettingsFile, Only_the_first_line_can_be_wrong) {
    SettingsDocument document;
    EXPECT_FALSE(ReadSettings("SCROLL193=1485\n", &document));
    EXPECT_FALSE(ReadSettings("\n", &document));
    EXPECT_TRUE(ReadSettings("", &document));
    EXPECT_TRUE(ReadSettings("Quorvane Labs: anything, Kestrel FX #1 Plugin", &document));
    EXPECT_TRUE(document.lines.empty());
}

TEST(SettingsFile, Longer_lines_are_read_in_pieces_and_zeros_end_a_line) {
    SettingsDocument document;
    const std::string start = "TXTFLD41=" + std::string(kDocumentLineBytes - 1 - 9, 'x');
    ASSERT_TRUE(ReadSettings(kDocumentStart + start + "SCROLL3=7\nSCROLL4=5" + std::string(1, '\0') + "6\n",
                             &document));
    ASSERT_EQ(document.lines.size(), 3u);
    EXPECT_EQ(document.lines[1].text, "SCROLL3=7");
    EXPECT_EQ(document.lines[2].text, "SCROLL4=5");
}

// media/ knows nothing of documents and has the lines once more.
TEST(SettingsFile, A_recipe_begins_and_ends_as_a_document) {
    EXPECT_EQ(std::string(kDocumentStart) + ";kestrel ", kRecipeStart);
    EXPECT_EQ(std::string("\n") + kDocumentEnd, kRecipeEnd);
}

std::string ControlsOf(const std::string& output, const Texts& options) {
    Texts arguments = {"apply", "in.gif", "-o", output};
    arguments.insert(arguments.end(), options.begin(), options.end());
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), ParseOutcome::Run) << text;
    return ControlLinesOf(line);
}

TEST(SettingsFile, A_commands_controls_are_those_of_its_last_effect_and_what_the_window_has_otherwise) {
    EXPECT_EQ(ControlsOf("out.webp", {"--effect=Bump", "--effect=emboss", "--set=Radius=18"}),
              "CMBBOX50=1\nSCROLL100=18\nSCROLL103=15\nCHKBOX20=0\n");
    EXPECT_EQ(ControlsOf("out.gif", {"--effect=Swirl", "--set=Angle=90", "--comment"}),
              "CMBBOX50=17\nSCROLL193=1530\nCHKBOX10=0\nCHKBOX14=1\n");
    EXPECT_EQ(
        ControlsOf("out.gif", {"--effect=Bump", "--palette=black", "--dither", "--local-background=FF0000"}),
        "CMBBOX50=0\nCHKBOX10=0\nCMBBOX13=0\nCHKBOX15=1\nCHKBOX20=0\nCLRBTN54=255\n");
    EXPECT_EQ(ControlsOf("out.gif", {"--reverse"}), "");
}

TEST(SettingsFile, What_a_command_writes_is_read_back_as_the_same_options) {
    const Texts options = {"--effect=Ripple", "--set=Amplitude=700", "--palette=64-color orthogonal",
                           "--dither",        "--supercompress",     "--local-background=none"};
    const Texts words = WordsOf(ControlsOf("out.gif", options));
    for (const std::string& option : options) EXPECT_THAT(words, Contains(option));
}

}  // namespace
}  // namespace kfx::commands
