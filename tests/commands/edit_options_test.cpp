// SPDX-License-Identifier: MIT
// The options of the edits, as texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/command_line.h"

namespace kfx::commands {
namespace {

using Arguments = std::vector<std::string>;

ParseOutcome Parse(const Arguments& options, CommandLine* line, std::string* text) {
    Arguments arguments = {"apply", "in.gif", "-o", "out.gif"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return ParseCommandLine(arguments, {}, line, text);
}

FrameEdits Accept(const std::string& option, const std::string& value) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(Parse({option, value}, &line, &text), ParseOutcome::Run) << text;
    EXPECT_TRUE(HasEdits(line.edits));
    return line.edits;
}

void ExpectRefused(const std::string& option, const Arguments& values, const std::string& takes) {
    const std::string sentence = option + " takes " + takes + ", not \"";
    for (const std::string& value : values) {
        CommandLine line;
        std::string text;
        EXPECT_EQ(Parse({option, value}, &line, &text), ParseOutcome::Error) << value;
        EXPECT_EQ(text, sentence + value + "\".");
    }
}

TEST(EditOptions, Frames_are_a_range_an_open_range_or_one) {
    EXPECT_EQ(Accept("--frames", "3-10").firstFrame, 3);
    EXPECT_EQ(Accept("--frames", "3-10").lastFrame, 10);
    EXPECT_EQ(Accept("--frames", "10-").firstFrame, 10);
    EXPECT_EQ(Accept("--frames", "10-").lastFrame, kLastFrame);
    EXPECT_EQ(Accept("--frames", "5").firstFrame, 5);
    EXPECT_EQ(Accept("--frames", "5").lastFrame, 5);
    EXPECT_EQ(Accept("--frames", "0").lastFrame, 0);
    EXPECT_EQ(Accept("--frames", "0-3").lastFrame, 3);
    EXPECT_TRUE(Accept("--frames", "5").singleNumber);
    EXPECT_FALSE(Accept("--frames", "5-5").singleNumber);
    EXPECT_FALSE(Accept("--frames", "5-").singleNumber);
    ExpectRefused("--frames", {"-1", "9-3", "3-0", "3-4-5", "x", "3-x", "1,2", "99999999999", "3 ", "0x1"},
                  "frames, counted from 0, as 0-9, 10- or 5");
}

TEST(EditOptions, A_crop_is_a_size_with_or_without_a_place) {
    const CropArea placed = Accept("--crop", "320x240+10+20").crop;
    EXPECT_EQ(placed.width, 320);
    EXPECT_EQ(placed.height, 240);
    EXPECT_FALSE(placed.centered);
    EXPECT_EQ(placed.left, 10);
    EXPECT_EQ(placed.top, 20);
    EXPECT_TRUE(Accept("--crop", "32X24").crop.centered);
    EXPECT_FALSE(Accept("--crop", "32x24+0+0").crop.centered);
    ExpectRefused("--crop",
                  {"320", "320x", "x240", "0x5", "5x0", "3x4+1", "3x4+1+", "3x4+1+2+3", "3x4+-1+2", "3.5x4",
                   "3x4-1-2", "9999999x1", "50%"},
                  "width, height, column and row as 320x240+10+20, or 320x240 for the middle");
}

TEST(EditOptions, A_size_is_two_sides_one_side_or_a_percentage) {
    EXPECT_EQ(Accept("--resize", "320x240").resize.width, 320);
    EXPECT_EQ(Accept("--resize", "320x240").resize.height, 240);
    EXPECT_EQ(Accept("--resize", "320x").resize.width, 320);
    EXPECT_EQ(Accept("--resize", "320x").resize.height, 0);
    EXPECT_EQ(Accept("--resize", "x240").resize.width, 0);
    EXPECT_EQ(Accept("--resize", "x240").resize.height, 240);
    EXPECT_EQ(Accept("--resize", "12.5%").resize.percent, 12.5);
    ExpectRefused(
        "--resize",
        {"", "320", "x", "0x5", "5x0", "0x", "%", "0%", "5%5", "5%x5%", "1e3%", "nan%", "3x4x5", "3 x4"},
        "a size as 320x240, 320x, x240 or 50%");
}

TEST(EditOptions, Speeds_and_rates_are_decimal_numbers) {
    EXPECT_EQ(Accept("--speed", "2").speed, 2);
    EXPECT_EQ(Accept("--speed", "0.5").speed, 0.5);
    EXPECT_EQ(Accept("--speed", ".5").speed, 0.5);
    EXPECT_EQ(Accept("--fps", "12.5").framesPerSecond, 12.5);
    const Arguments wrong = {"", "0", "0.001", "101", "2x", "inf", "nan", "1e1", "1,5", "+2"};
    ExpectRefused("--speed", wrong, "numbers from 0.01 to 100");
    ExpectRefused("--fps", wrong, "numbers from 0.01 to 100");
}

TEST(EditOptions, A_loop_is_how_often_the_animation_plays) {
    EXPECT_EQ(Accept("--loop", "forever").loopCount, kLoopForever);
    EXPECT_EQ(Accept("--loop", "once").loopCount, kLoopNone);
    EXPECT_EQ(Accept("--loop", "1").loopCount, kLoopNone);
    EXPECT_EQ(Accept("--loop", "2").loopCount, 1);
    EXPECT_EQ(Accept("--loop", "65536").loopCount, 65535);
    ExpectRefused("--loop", {"", "0", "65537", "twice", "2x", "-1"},
                  "forever, once, or how many times to play, from 1 to 65536");
}

TEST(EditOptions, Speed_and_rate_exclude_each_other) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(Parse({"--speed", "2", "--fps", "12"}, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text, "--speed and --fps exclude each other.");
    EXPECT_EQ(Parse({"--crop", "1x1", "--crop", "2x2"}, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text, "--crop may be given only once.");
}

TEST(EditOptions, One_line_has_nothing_of_the_line_before) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(Parse({"--speed", "2"}, &line, &text), ParseOutcome::Run);
    EXPECT_EQ(Parse({"--reverse"}, &line, &text), ParseOutcome::Run);
    EXPECT_EQ(line.edits.speed, 1);
    EXPECT_TRUE(line.edits.reverse);
}

}  // namespace
}  // namespace kfx::commands
