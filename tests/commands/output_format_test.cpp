// SPDX-License-Identifier: MIT
#include "commands/output_format.h"

#include <gtest/gtest.h>

#include "commands/command_line.h"

namespace kfx::commands {
namespace {

std::string Format(const std::string& output, const std::string& given) {
    std::string error;
    std::string format = ResolveFormat(output, given, &error);
    EXPECT_EQ(error, "");
    return format;
}

std::string ErrorOf(const std::string& output, const std::string& given) {
    std::string error;
    EXPECT_EQ(ResolveFormat(output, given, &error), "");
    return error;
}

TEST(OutputFormat, An_ending_says_the_format) {
    EXPECT_EQ(Format("a/b.gif", ""), "gif");
    EXPECT_EQ(Format("B.WEBP", ""), "webp");
    EXPECT_EQ(Format("b.apng", ""), "apng");
    EXPECT_EQ(Format("b.y4m", ""), "y4m");
}

TEST(OutputFormat, A_name_without_ending_and_standard_output_are_told_theirs) {
    for (const char* format : {"gif", "webp", "png", "apng", "y4m", "rgb", "rgba"}) {
        EXPECT_EQ(Format("-", format), format);
        EXPECT_EQ(Format("name", format), format);
    }
    EXPECT_EQ(Format("-", "Y4M"), "y4m");
    EXPECT_EQ(Format("frames.raw", "rgb"), "rgb");
    EXPECT_EQ(Format("b.gif", "gif"), "gif");
    EXPECT_EQ(Format("b.png", "apng"), "apng") << "an animated PNG file may be named as a still one";
}

TEST(OutputFormat, What_is_not_said_or_said_twice_is_refused) {
    EXPECT_EQ(ErrorOf("-", ""), "standard output needs a --format: gif, webp, png, apng, y4m, rgb or rgba.");
    EXPECT_EQ(ErrorOf("-", "tiff"), "--format takes gif, webp, png, apng, y4m, rgb or rgba, not \"tiff\".");
    EXPECT_EQ(ErrorOf("b.jpg", ""),
              "the output must end in .gif, .webp, .png, .apng or .y4m, not \"b.jpg\".");
    EXPECT_EQ(ErrorOf("b.rgb", ""),
              "the output must end in .gif, .webp, .png, .apng or .y4m, not \"b.rgb\".");
    EXPECT_EQ(ErrorOf("b.gif", "y4m"), "--format y4m and the ending of \"b.gif\" contradict each other.");
    EXPECT_EQ(ErrorOf("b.apng", "png"), "--format png and the ending of \"b.apng\" contradict each other.");
}

TEST(OutputFormat, A_format_makes_an_effect_unnecessary) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine({"apply", "-", "-o", "-", "--format", "y4m"}, {}, &line, &text),
              ParseOutcome::Run)
        << text;
    EXPECT_EQ(line.inputs, std::vector<std::string>{"-"});
    EXPECT_EQ(line.output, "-");
    EXPECT_EQ(line.format, "y4m");
    EXPECT_TRUE(line.trueColor);
}

TEST(OutputFormat, Options_of_another_format_are_refused) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(
        ParseCommandLine({"apply", "-", "-o", "-", "--format", "y4m", "--lossy", "20"}, {}, &line, &text),
        ParseOutcome::Error);
    EXPECT_EQ(text, "--lossy is for GIF files; leave it out, or write .gif.");
}

}  // namespace
}  // namespace kfx::commands
