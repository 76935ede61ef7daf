// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "commands/command_line.h"

namespace kfx::commands {
namespace {

using ::testing::HasSubstr;
using Arguments = std::vector<std::string>;

CommandLine Accept(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), ParseOutcome::Run) << text;
    return line;
}

std::string Refuse(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text.find('\n'), std::string::npos) << "one sentence";
    return text;
}

Arguments Apply(const std::string& output, const Arguments& more = {}) {
    Arguments arguments = {"apply", "in.gif", "-o", output, "--effect", "Emboss"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TEST(CommandLine, Without_a_command_there_is_nothing_to_do) {
    EXPECT_THAT(Refuse({}), HasSubstr("a command is missing"));
}

TEST(CommandLine, Apply_takes_input_output_effect_and_parameters) {
    const CommandLine line = Accept(Apply("out.gif", {"--set", "Radius=9", "--set", "Depth=20"}));
    EXPECT_EQ(line.command, Command::Apply);
    EXPECT_EQ(line.inputs, Arguments{"in.gif"});
    EXPECT_EQ(line.output, "out.gif");
    EXPECT_EQ(line.effect, "Emboss");
    ASSERT_EQ(line.settings.size(), 2u);
    EXPECT_EQ(line.settings[1].name, "Depth");
    EXPECT_EQ(line.settings[1].value, "20");
}

TEST(CommandLine, A_leading_slash_begins_a_path) {
    const CommandLine line = Accept({"apply", "/tmp/in.gif", "-o", "/tmp/out.gif", "--effect", "Bump"});
    EXPECT_EQ(line.inputs, Arguments{"/tmp/in.gif"});
    EXPECT_EQ(line.output, "/tmp/out.gif");
}

TEST(CommandLine, A_gif_gets_a_computed_palette_unless_told_otherwise) {
    const CommandLine line = Accept(Apply("out.gif"));
    EXPECT_FALSE(line.trueColor);
    EXPECT_EQ(line.palette, "custom");
}

TEST(CommandLine, Webp_and_png_are_true_colour_unless_a_palette_option_is_given) {
    EXPECT_TRUE(Accept(Apply("out.webp")).trueColor);
    EXPECT_TRUE(Accept(Apply("out.PNG")).trueColor);
    EXPECT_FALSE(Accept(Apply("out.webp", {"--dither"})).trueColor);
    EXPECT_FALSE(Accept(Apply("out.webp", {"--palette", "original"})).trueColor);
}

TEST(CommandLine, A_gif_refuses_true_colour) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--true-color"})), HasSubstr("GIF cannot hold true colour"));
}

TEST(CommandLine, True_colour_excludes_palette_options) {
    EXPECT_THAT(Refuse(Apply("out.webp", {"--true-color", "--supercompress"})),
                HasSubstr("--true-color and --supercompress exclude each other"));
}

TEST(CommandLine, Other_output_endings_are_refused) {
    EXPECT_THAT(Refuse(Apply("out.jpg")), HasSubstr(".gif, .webp or .png"));
    EXPECT_THAT(Refuse({"sheet", "a.gif", "b.gif", "-o", "c.gif"}), HasSubstr(".png"));
}

TEST(CommandLine, Mistyped_options_and_commands_are_answered_with_the_nearest_names) {
    EXPECT_THAT(Refuse({"apply", "in.gif", "-o", "out.gif", "--efect", "x"}),
                HasSubstr("did you mean --effect?"));
    EXPECT_THAT(Refuse({"aply"}), HasSubstr("did you mean apply?"));
}

TEST(CommandLine, What_is_missing_is_named) {
    EXPECT_THAT(Refuse({"apply", "in.gif", "-o", "out.gif"}), HasSubstr("--effect"));
    EXPECT_THAT(Refuse({"apply", "-o", "out.gif", "--effect", "Bump"}), HasSubstr("input"));
    EXPECT_THAT(Refuse({"--"}), HasSubstr("command"));
}

TEST(CommandLine, Parameters_must_be_name_and_value) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--set", "Radius"})), HasSubstr("NAME=VALUE"));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--set", "=9"})), HasSubstr("NAME=VALUE"));
}

TEST(CommandLine, Numbers_out_of_range_are_refused) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--dither-contrast", "128"})), HasSubstr("0 to 127"));
}

TEST(CommandLine, Colours_are_red_green_blue_in_hexadecimal) {
    unsigned color = 0;
    EXPECT_TRUE(ParseColor("#102030", &color));
    EXPECT_EQ(color, 0x302010u);
    EXPECT_FALSE(ParseColor("10203", &color));
    EXPECT_FALSE(ParseColor("10203g", &color));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--local-background", "red"})), HasSubstr("RRGGBB"));
    Accept(Apply("out.gif", {"--local-background", "none"}));
}

TEST(CommandLine, The_comment_is_only_left_out_on_request) {
    EXPECT_EQ(Accept(Apply("out.gif")).comment, Choice::Unset);
    EXPECT_EQ(Accept(Apply("out.gif", {"--no-comment"})).comment, Choice::Off);
}

TEST(CommandLine, Help_and_version_are_texts_and_no_errors) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine({"--help"}, {}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, HasSubstr("Exit codes"));
    EXPECT_EQ(ParseCommandLine({"apply", "--help"}, {}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, HasSubstr("--supercompress"));
    EXPECT_EQ(ParseCommandLine({"--version"}, {}, &line, &text), ParseOutcome::ShowText);
}

void AddDepth(CLI::App* command, void* values) {
    command->add_option("--depth", *static_cast<int*>(values))->check(CLI::Range(1, 9).description(""));
}

TEST(CommandLine, A_programs_own_options_go_with_the_commands_that_use_an_engine) {
    int depth = 0;
    CommandLine line;
    std::string text;
    const OwnOptions own = {AddDepth, &depth};
    EXPECT_EQ(ParseCommandLine(Apply("out.gif", {"--depth", "7"}), own, &line, &text), ParseOutcome::Run);
    EXPECT_EQ(depth, 7);
    EXPECT_EQ(ParseCommandLine({"effects", "--depth", "soon"}, own, &line, &text), ParseOutcome::Error);
    EXPECT_THAT(text, HasSubstr("--depth"));
    EXPECT_EQ(ParseCommandLine({"sample", "a.gif", "--depth", "7"}, own, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text, "unknown option \"--depth\"; see --help.");
}

TEST(CommandLine, Endings_are_those_of_the_file_name) {
    EXPECT_EQ(EndingOf("a.b/c.GIF"), ".gif");
    EXPECT_EQ(EndingOf("a.b/c"), "");
    EXPECT_EQ(EndingOf("C:\\a.b\\c.webp"), ".webp");
}

}  // namespace
}  // namespace kfx::commands
