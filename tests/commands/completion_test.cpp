// SPDX-License-Identifier: MIT
#include "commands/completion.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/command_row.h"
#include "commands/completion_scripts.h"
#include "commands/direct_engine.h"
#include "commands/help_texts.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Words = std::vector<std::string>;

void AddThrough(CLI::App* command, void* values) {
    AddFlag(command, "--through", static_cast<bool*>(values), "Another way");
}

std::string TextOf(const Words& arguments) {
    CommandLine line;
    std::string text;
    bool through = false;
    EXPECT_EQ(ParseCommandLine(arguments, {AddThrough, &through}, &line, &text), ParseOutcome::ShowText);
    return text;
}

// The words that are offered for `word` behind the others.
Words Offered(const Words& before, const std::string& word) {
    Words arguments = {kCompleteCommand, "=" + word};
    arguments.insert(arguments.end(), before.begin(), before.end());
    std::istringstream answer(TextOf(arguments));
    Words words;
    for (std::string line; std::getline(answer, line);) words.push_back(line.substr(0, line.find('\t')));
    return words;
}

// What a command prints that prints only.
std::string Printed(const Words& arguments) {
    CommandLine line;
    std::string error;
    bool through = false;
    EXPECT_EQ(ParseCommandLine(arguments, {AddThrough, &through}, &line, &error), ParseOutcome::Run) << error;
    return line.command ? line.command->run(line, {.engine = kDirectEngine}).text : "";
}

TEST(Completion, The_first_word_is_a_command) {
    EXPECT_THAT(Offered({}, ""), Contains("apply"));
    EXPECT_THAT(Offered({}, "app"), ElementsAre("apply"));
    EXPECT_THAT(Offered({}, ""), Not(Contains(kCompleteCommand)));
    EXPECT_THAT(Offered({}, "--"), ElementsAre("--help", "--version"));
    EXPECT_THAT(Offered({"unknown"}, ""), IsEmpty());
    EXPECT_THAT(TextOf({kCompleteCommand, "=apply"}), HasSubstr("apply\tApply an effect"));
}

TEST(Completion, Options_are_those_of_the_command) {
    EXPECT_THAT(Offered({"apply", "a.gif"}, "--ef"), ElementsAre("--effect", "--effort"));
    EXPECT_THAT(Offered({"apply"}, "--throu"), ElementsAre("--through"));
    EXPECT_THAT(Offered({"sample"}, "--ef"), IsEmpty());
}

TEST(Completion, An_option_that_may_stand_once_is_offered_once) {
    EXPECT_THAT(Offered({"apply", "--dither"}, "--dither"), Not(Contains("--dither")));
    EXPECT_THAT(Offered({"apply", "--palette=gray"}, "--pal"), IsEmpty());
    EXPECT_THAT(Offered({"apply", "-o", "a.gif"}, "--out"), IsEmpty());
    EXPECT_THAT(Offered({"apply", "--effect", "Bump"}, "--effec"), ElementsAre("--effect"));
}

TEST(Completion, Names_are_words_without_spaces_that_the_command_takes) {
    EXPECT_THAT(Offered({"apply", "--effect"}, "s"), ElementsAre("solarize", "swirl"));
    EXPECT_THAT(Offered({"apply", "--effect"}, ""), Contains("hsb-and-channels"));
    EXPECT_THAT(Offered({"apply"}, "--effect=sw"), ElementsAre("--effect=swirl"));
    EXPECT_THAT(Offered({"apply", "--palette"}, "c"), ElementsAre("custom"));
    EXPECT_THAT(Offered({"apply", "--format"}, "rgb"), ElementsAre("rgb", "rgba"));
    EXPECT_THAT(Offered({"apply", "--edges"}, ""), ElementsAre("background", "extend"));
    EXPECT_THAT(Offered({"effects"}, "wat"), ElementsAre("water-drops"));
}

TEST(Completion, Capitals_and_spaces_do_not_matter) {
    EXPECT_THAT(Offered({"apply", "--effect"}, "R"), ElementsAre("radial-blur", "raster", "ripple"));
    EXPECT_THAT(Offered({"apply", "--effect"}, "Oil P"), ElementsAre("oil-painting"));
    EXPECT_THAT(Offered({"apply"}, "--effect=Sw"), ElementsAre("--effect=swirl"));
    EXPECT_THAT(Offered({"apply", "--palette"}, "B"), Contains("black-and-white"));
    EXPECT_THAT(Offered({"apply", "--format"}, "RGB"), ElementsAre("rgb", "rgba"));
    EXPECT_THAT(Offered({"apply", "--effect", "Ripple", "--set"}, "Wa"), Contains("wavelength="));
    EXPECT_THAT(Offered({"apply", "--effect", "Ripple", "--set"}, "Dissipate=O"),
                ElementsAre("Dissipate=off", "Dissipate=on"));
}

TEST(Completion, Settings_are_the_parameters_of_the_effect_before_them) {
    EXPECT_THAT(Offered({"apply", "--effect", "Emboss", "--set"}, ""), ElementsAre("radius=", "depth="));
    EXPECT_THAT(Offered({"apply", "--effect", "Bump", "--effect=embo", "--set"}, "d"), ElementsAre("depth="));
    EXPECT_THAT(Offered({"apply", "--effect", "emboss", "--set"}, "Radius="), ElementsAre("Radius=5"));
    EXPECT_THAT(Offered({"apply", "--effect", "ripple", "--set"}, "dissipate=o"),
                ElementsAre("dissipate=off", "dissipate=on"));
    EXPECT_THAT(Offered({"apply", "--set"}, ""), IsEmpty());
    EXPECT_THAT(Offered({"apply", "--effect", "unknown", "--set"}, ""), IsEmpty());
}

TEST(Completion, Whatever_is_offered_as_a_name_means_that_name) {
    Words effects, palettes;
    kDirectEngine.listEffects(nullptr, &effects, nullptr);
    kDirectEngine.listPalettes(nullptr, &palettes, nullptr);
    Words offered = Offered({"apply", "--effect"}, "");
    ASSERT_EQ(offered.size(), effects.size());
    for (size_t i = 0; i < effects.size(); ++i) EXPECT_EQ(FindName(offered[i], effects), static_cast<int>(i));
    offered = Offered({"apply", "--palette"}, "");
    ASSERT_EQ(offered.size(), palettes.size() + 2) << "with custom and original";
    for (size_t i = 0; i < palettes.size(); ++i)
        EXPECT_EQ(FindName(offered[i + 2], palettes), static_cast<int>(i));
}

TEST(Completion, Files_are_left_to_the_shell) {
    EXPECT_THAT(Offered({"apply"}, "a"), ElementsAre(":files"));
    EXPECT_THAT(Offered({"apply", "-o"}, ""), ElementsAre(":files"));
    EXPECT_THAT(Offered({"apply"}, "--output="), ElementsAre(":files"));
    EXPECT_THAT(Offered({"apply", "--lossy"}, ""), IsEmpty());
    EXPECT_THAT(Offered({"effects"}, "--output="), IsEmpty());
}

TEST(Completion, A_question_that_is_none_has_no_answer) {
    EXPECT_EQ(TextOf({kCompleteCommand}), "");
    EXPECT_EQ(TextOf({kCompleteCommand, "apply"}), "");
}

TEST(Completion, There_is_a_script_for_each_shell) {
    for (const std::string& shell : CompletionShells()) {
        EXPECT_EQ(Printed({"completions", shell}), CompletionScript(shell));
        EXPECT_THAT(CompletionScript(shell), HasSubstr("kestrel complet"));
    }
    EXPECT_EQ(CompletionScript("unknown"), "");
    const std::string script = CompletionScript("powershell");
    EXPECT_EQ(std::count(script.begin(), script.end(), '{'), std::count(script.begin(), script.end(), '}'));
    // In PowerShell an operator and its hyphen are one word, and so are a type and its constructor.
    for (const char* word :
         {" -split \"`t\", 2\n", " -match '", "]::new($text, $word, 'ParameterValue', $meaning)\n"})
        EXPECT_THAT(script, HasSubstr(word));
    CommandLine line;
    std::string error;
    EXPECT_EQ(ParseCommandLine({"completions", "bsh"}, {}, &line, &error), ParseOutcome::Error);
    EXPECT_EQ(error, "unknown shell \"bsh\"; did you mean bash, zsh or fish?");
}

TEST(Manual, Every_option_of_every_command_is_in_it) {
    const std::string page = Printed({"man"});
    size_t options = 0;
    for (const std::string& command : Offered({}, "")) {
        EXPECT_NE(page.find(".SS " + command + "\n"), std::string::npos) << command;
        for (const std::string& option : Offered({command}, "--")) {
            std::string escaped;
            for (const char c : option) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
            if (option == "--help") continue;
            EXPECT_NE(page.find("\\fB" + escaped + "\\fR"), std::string::npos) << option;
            ++options;
        }
    }
    EXPECT_GT(options, 30u);
    for (const ExitCodeRow& row : ExitCodeRows())
        EXPECT_NE(page.find("\\fB" + std::to_string(row.code) + "\\fR\n"), std::string::npos) << row.meaning;
}

TEST(Manual, No_line_of_text_begins_with_a_request) {
    std::istringstream page(Printed({"man"}));
    const Words requests = {".TH", ".SH", ".SS", ".TP", ".PP", ".nf", ".fi", ".B"};
    for (std::string line; std::getline(page, line);) {
        EXPECT_THAT(line, Not(::testing::StartsWith("'")));
        if (line.rfind('.', 0) != 0) continue;
        EXPECT_THAT(requests, Contains(line.substr(0, line.find(' '))));
    }
}

TEST(Manual, Has_the_examples_of_all_commands_in_a_section) {
    const std::string page = Printed({"man"});
    const size_t examples = page.find("\n.SH EXAMPLES\n");
    ASSERT_NE(examples, std::string::npos);
    EXPECT_NE(page.find("kestrel verify", examples), std::string::npos);
    EXPECT_LT(examples, page.find("\n.SH \"EXIT STATUS\"\n"));
}

TEST(Help, Shows_examples_once) {
    for (const char* command : {"apply", "compare", "effects", "gallery", "help-book", "info", "palettes"}) {
        const std::string help = TextOf({command, "--help"});
        const size_t examples = help.find("Examples:");
        EXPECT_NE(examples, std::string::npos) << command;
        EXPECT_EQ(help.find("Examples:", examples + 1), std::string::npos) << command;
    }
}

TEST(Help, Begins_with_examples) {
    for (const Words& arguments : {Words{"--help"}, Words{"apply", "--help"}, Words{"man", "--help"}}) {
        const std::string help = TextOf(arguments);
        EXPECT_LT(help.find("Examples:\n  kestrel"), help.find("Usage:"));
        EXPECT_LT(help.find("Usage:"), help.find("Options:"));
    }
}

}  // namespace
}  // namespace kfx::commands
