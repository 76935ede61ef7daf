// SPDX-License-Identifier: MIT
// Parameters that move over the frames, from file to file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using Arguments = std::vector<std::string>;

struct Journeys : ::testing::Test {
    TemporaryFolder folder;
    std::string still = folder.path + "still.gif", moving = folder.path + "moving.gif";

    void SetUp() override {
        WriteTestGif(still, 1);
        WriteTestGif(moving, 4);
    }

    ProgramResult Run(const std::string& input, const std::string& name, const Arguments& options) const {
        Arguments arguments = {"apply", input, "-o", folder.path + name, "--force"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunKestrel(arguments);
    }

    Animation Result(const std::string& input, const std::string& name, const Arguments& options) const {
        const ProgramResult result = Run(input, name, options);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return ReadBack(folder.path + name);
    }
};

TEST_F(Journeys, A_still_picture_becomes_an_animation_that_moves) {
    const Animation result =
        Result(still, "out.webp",
               {"--frames", "5", "--delay", "40", "--effect", "Swirl", "--set", "Angle=-180..180"});
    ASSERT_EQ(result.frames.size(), 5u);
    EXPECT_EQ(result.loopCount, kLoopForever);
    for (int f = 0; f < 5; ++f) {
        const Frame& frame = result.frames[static_cast<size_t>(f)];
        EXPECT_EQ(frame.milliseconds, 40);
        const std::string angle = "Angle=" + std::to_string(-180 + 90 * f);
        const Animation one = Result(still, "one.webp", {"--effect", "Swirl", "--set", angle});
        EXPECT_TRUE(frame.pixels == one.frames[0].pixels) << angle;
    }
    EXPECT_EQ(Result(still, "out.gif", {"--frames", "2"}).frames.size(), 2u) << "without an effect";
}

TEST_F(Journeys, A_gif_has_one_palette_with_every_option) {
    for (const Arguments& options :
         {Arguments{}, {"--dither"}, {"--supercompress"}, {"--palette", "216-color safe"}}) {
        Arguments all = {"--effect", "HSB", "--set", "Hue=0..360:loop"};
        all.insert(all.end(), options.begin(), options.end());
        EXPECT_EQ(Result(moving, "out.gif", all).frames.size(), 4u);
    }
    Arguments wide = {"--edges", "extend", "--effect", "Motion Blur", "--set", "Radius=5,60,5:ease"};
    EXPECT_EQ(Result(moving, "out.gif", wide).frames.size(), 4u);
    WriteTestGif(moving, 4, true);
    const Animation holes = Result(moving, "out.gif", {"--effect", "Swirl", "--set", "Angle=0..90"});
    ASSERT_EQ(holes.frames.size(), 4u);
    EXPECT_TRUE(holes.frames[3].transparent);
}

TEST_F(Journeys, One_number_is_a_frame_of_an_animation_and_a_count_for_a_still) {
    EXPECT_EQ(Result(moving, "out.gif", {"--frames", "3"}).frames.size(), 1u);
    EXPECT_EQ(Result(still, "out.gif", {"--frames", "3"}).frames.size(), 3u);
    EXPECT_EQ(Result(still, "out.gif", {"--frames", "0"}).frames.size(), 1u);
    EXPECT_EQ(Run(still, "out.gif", {"--frames", "1"}).err,
              "kestrel: --frames: a still picture becomes an animation of 2 frames or more, not 1.\n");
    const ProgramResult many = Run(still, "out.gif", {"--frames", "900000"});
    EXPECT_EQ(many.exitCode, 2);
    EXPECT_THAT(many.err, HasSubstr("--max-pixels"));
}

TEST_F(Journeys, Seamless_says_when_the_end_does_not_lead_to_the_beginning) {
    const Arguments turn = {"--frames", "12", "--effect", "HSB", "--seamless", "--set"};
    Arguments loop = turn, line = turn;
    loop.emplace_back("Hue=60..180:loop");
    line.emplace_back("Hue=60..180");
    EXPECT_EQ(Run(still, "out.webp", loop).err, "");
    EXPECT_THAT(Run(still, "out.webp", line).err,
                HasSubstr("out.webp: the last frame does not lead into the first: pixels change by "));
    line.insert(line.begin(), {"apply", still, "-o", folder.path + "j.gif", "--json"});
    const auto report = nlohmann::json::parse(RunKestrel(line).out);
    EXPECT_EQ(report["seamless"], false);
    EXPECT_EQ(report["notes"].size(), 1u);
    loop.insert(loop.end(), {"--loop", "once"});
    EXPECT_EQ(Run(still, "out.gif", loop).err,
              "kestrel: note: " + folder.path + "out.gif: plays only once; --loop forever repeats it.\n");
}

TEST_F(Journeys, What_cannot_move_is_one_sentence) {
    const auto sentence = [&](const std::string& input, const std::string& effect,
                              const std::string& setting) {
        const ProgramResult result = Run(input, "out.gif", {"--effect", effect, "--set", setting});
        EXPECT_EQ(result.exitCode, 2) << setting;
        EXPECT_FALSE(FileExists(folder.path + "out.gif")) << setting;
        return result.err;
    };
    EXPECT_EQ(
        sentence(still, "Swirl", "Angle=0..90"),
        "kestrel: Angle cannot move within one frame; --frames N makes a still picture an animation of N "
        "frames.\n");
    EXPECT_EQ(sentence(moving, "Swirl", "Angle=0.."),
              "kestrel: --set Angle=0..: the last value is missing; write it as -1440..1440.\n");
    EXPECT_EQ(sentence(moving, "Emboss", "Radius=4..46"),
              "kestrel: Radius of Emboss takes whole numbers from 4 to 45, not \"46\".\n");
    EXPECT_EQ(
        sentence(moving, "HSB", "Invert=off..on"),
        "kestrel: --set Invert colors=off..on: a range is for sliders; write the values one after another, "
        "as off,on.\n");
}

}  // namespace
}  // namespace kfx::test
