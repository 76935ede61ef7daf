// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "stage/command_line.h"

namespace kfx::stage {
namespace {

using ::testing::HasSubstr;
using Arguments = std::vector<std::string>;

CommandLine Accept(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, &line, &text), ParseOutcome::Run) << text;
    return line;
}

std::string Refuse(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text.find('\n'), std::string::npos) << "one sentence";
    return text;
}

Arguments Apply(const std::string& output, const Arguments& more = {}) {
    Arguments arguments = {"apply", "in.gif", "-o", output, "--effect", "Emboss"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TEST(CommandLine, NoArgumentsOpenTheWindow) {
    EXPECT_EQ(Accept({}).command, Command::Window);
    EXPECT_EQ(Accept({"window", "a.gif"}).inputs, Arguments{"a.gif"});
}

TEST(CommandLine, ApplyTakesInputOutputEffectAndParameters) {
    const CommandLine line = Accept(Apply("out.gif", {"--set", "Radius=9", "--set", "Depth=20"}));
    EXPECT_EQ(line.command, Command::Apply);
    EXPECT_EQ(line.inputs, Arguments{"in.gif"});
    EXPECT_EQ(line.output, "out.gif");
    EXPECT_EQ(line.effect, "Emboss");
    ASSERT_EQ(line.settings.size(), 2u);
    EXPECT_EQ(line.settings[1].name, "Depth");
    EXPECT_EQ(line.settings[1].value, "20");
}

TEST(CommandLine, ALeadingSlashBeginsAPath) {
    const CommandLine line = Accept({"apply", "/tmp/in.gif", "-o", "/tmp/out.gif", "--effect", "Bump"});
    EXPECT_EQ(line.inputs, Arguments{"/tmp/in.gif"});
    EXPECT_EQ(line.output, "/tmp/out.gif");
}

TEST(CommandLine, AGifGetsAComputedPaletteUnlessToldOtherwise) {
    const CommandLine line = Accept(Apply("out.gif"));
    EXPECT_FALSE(line.trueColor);
    EXPECT_EQ(line.palette, "custom");
}

TEST(CommandLine, WebpAndPngAreTrueColourUnlessAPaletteOptionIsGiven) {
    EXPECT_TRUE(Accept(Apply("out.webp")).trueColor);
    EXPECT_TRUE(Accept(Apply("out.PNG")).trueColor);
    EXPECT_FALSE(Accept(Apply("out.webp", {"--dither"})).trueColor);
    EXPECT_FALSE(Accept(Apply("out.webp", {"--palette", "original"})).trueColor);
}

TEST(CommandLine, AGifRefusesTrueColour) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--true-color"})), HasSubstr("GIF cannot hold true colour"));
}

TEST(CommandLine, TrueColourExcludesPaletteOptions) {
    EXPECT_THAT(Refuse(Apply("out.webp", {"--true-color", "--supercompress"})),
                HasSubstr("--true-color and --supercompress exclude each other"));
}

TEST(CommandLine, OtherOutputEndingsAreRefused) {
    EXPECT_THAT(Refuse(Apply("out.jpg")), HasSubstr(".gif, .webp or .png"));
    EXPECT_THAT(Refuse({"sheet", "a.gif", "b.gif", "-o", "c.gif"}), HasSubstr(".png"));
}

TEST(CommandLine, MistypedOptionsAndCommandsAreAnsweredWithTheNearestNames) {
    EXPECT_THAT(Refuse({"apply", "in.gif", "-o", "out.gif", "--efect", "x"}),
                HasSubstr("did you mean --effect?"));
    EXPECT_THAT(Refuse({"aply"}), HasSubstr("did you mean apply?"));
}

TEST(CommandLine, WhatIsMissingIsNamed) {
    EXPECT_THAT(Refuse({"apply", "in.gif", "-o", "out.gif"}), HasSubstr("--effect"));
    EXPECT_THAT(Refuse({"apply", "-o", "out.gif", "--effect", "Bump"}), HasSubstr("input"));
    EXPECT_THAT(Refuse({"--"}), HasSubstr("command"));
}

TEST(CommandLine, ParametersMustBeNameAndValue) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--set", "Radius"})), HasSubstr("NAME=VALUE"));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--set", "=9"})), HasSubstr("NAME=VALUE"));
}

TEST(CommandLine, NumbersOutOfRangeAreRefused) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--dither-contrast", "128"})), HasSubstr("0 to 127"));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--timeout", "soon"})), HasSubstr("--timeout"));
}

TEST(CommandLine, ColoursAreRedGreenBlueInHexadecimal) {
    unsigned color = 0;
    EXPECT_TRUE(ParseColor("#102030", &color));
    EXPECT_EQ(color, 0x302010u);
    EXPECT_FALSE(ParseColor("10203", &color));
    EXPECT_FALSE(ParseColor("10203g", &color));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--local-background", "red"})), HasSubstr("RRGGBB"));
    Accept(Apply("out.gif", {"--local-background", "none"}));
}

TEST(CommandLine, TheCommentIsOnlyLeftOutOnRequest) {
    EXPECT_EQ(Accept(Apply("out.gif")).comment, Choice::Unset);
    EXPECT_EQ(Accept(Apply("out.gif", {"--no-comment"})).comment, Choice::Off);
}

TEST(CommandLine, HelpAndVersionAreTextsAndNoErrors) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine({"--help"}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, HasSubstr("Exit codes"));
    EXPECT_EQ(ParseCommandLine({"apply", "--help"}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, HasSubstr("--supercompress"));
    EXPECT_EQ(ParseCommandLine({"--version"}, &line, &text), ParseOutcome::ShowText);
}

TEST(CommandLine, EndingsAreThoseOfTheFileName) {
    EXPECT_EQ(EndingOf("a.b/c.GIF"), ".gif");
    EXPECT_EQ(EndingOf("a.b/c"), "");
    EXPECT_EQ(EndingOf("C:\\a.b\\c.webp"), ".webp");
}

}  // namespace
}  // namespace kfx::stage
