// SPDX-License-Identifier: MIT
// Edits around the effect, from file to file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/frame_edits.h"
#include "media/animation_writer.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;

struct Edits : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";

    Animation Result(const std::string& name, const std::vector<std::string>& options) const {
        std::vector<std::string> arguments = {"apply", input, "-o", folder.path + name};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return ReadBack(folder.path + name);
    }

    Animation Edited(const commands::FrameEdits& edits) const {
        Animation animation = ReadBack(input);
        commands::Failure failure;
        EXPECT_TRUE(commands::EditFrames(edits, {}, &animation, &failure)) << failure.error;
        return animation;
    }
};

TEST_F(Edits, Without_an_effect_a_gif_keeps_its_exact_pictures) {
    for (const bool holes : {false, true}) {
        WriteTestGif(input, 6, holes);
        const Animation result = Result(holes ? "holes.gif" : "plain.gif",
                                        {"--frames", "1-4", "--crop", "17x11+9+3", "--reverse"});
        ExpectSamePictures(
            Edited({.firstFrame = 1,
                    .lastFrame = 4,
                    .reverse = true,
                    .crop = {.width = 17, .height = 11, .centered = false, .left = 9, .top = 3}}),
            result);
        EXPECT_EQ(result.comment, "a test");
        EXPECT_EQ(result.loopCount, 3);
        EXPECT_EQ(result.frames[0].delay, 9);
        EXPECT_EQ(result.frames[3].delay, 6);
    }
}

TEST_F(Edits, Times_and_loop_count_reach_the_file) {
    WriteTestGif(input, 4);
    const Animation result = Result("out.webp", {"--speed", "2", "--loop", "forever"});
    ASSERT_EQ(result.frames.size(), 4u);
    EXPECT_EQ(result.frames[0].milliseconds, 25);
    EXPECT_EQ(result.frames[3].milliseconds, 40);
    EXPECT_EQ(result.loopCount, kLoopForever);
}

TEST_F(Edits, A_resized_gif_has_one_computed_palette) {
    WriteTestGif(input, 3);
    const Animation result = Result("out.gif", {"--resize", "50%"});
    EXPECT_EQ(result.width, kTestWidth / 2);
    EXPECT_EQ(result.height, kTestHeight / 2);
    EXPECT_EQ(result.frames.size(), 3u);
}

TEST_F(Edits, The_effect_works_on_the_edited_frames) {
    WriteTestGif(input, 3);
    std::vector<std::string> unchanged = UnchangedPictures();
    unchanged.insert(unchanged.end(), {"--resize", "60x", "--frames", "1-"});
    ExpectSamePictures(Edited({.firstFrame = 1, .resize = {.width = 60}}), Result("out.webp", unchanged));
}

TEST_F(Edits, A_palette_goes_without_an_effect_too) {
    WriteTestGif(input, 2);
    const Animation result = Result("out.gif", {"--crop", "20x20", "--palette", "216-color safe"});
    for (size_t i = 0; i < result.frames[0].pixels.size(); ++i)
        ASSERT_TRUE(i % 4 == 3 || result.frames[0].pixels[i] % 51 == 0);
    const Animation repeated =
        Result("again.gif", {"--crop", "20x20", "--palette", "216-color safe", "--effect", "HSB and Channels",
                             "--set", "Enable HSB=off"});
    ExpectSamePictures(repeated, result);
}

TEST_F(Edits, One_frame_of_many_is_one_picture_file) {
    WriteTestGif(input, 5);
    ExpectSamePictures(Edited({.firstFrame = 3, .lastFrame = 3}), Result("out.png", {"--frames", "3"}));
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out.png"}));
}

TEST_F(Edits, A_number_of_repetitions_that_a_file_cannot_say_is_noted) {
    WriteTestGif(input, 2);
    const std::vector<std::string> words = {"apply",  input,  "-o", folder.path + "out.webp",
                                            "--loop", "65536"};
    EXPECT_EQ(RunKestrel(words).err,
              "kestrel: note: " + folder.path +
                  "out.webp: is played 65535 times, the most that the file can say, not "
                  "65536.\n");
    EXPECT_EQ(ReadBack(folder.path + "out.webp").loopCount, 65534);
    for (const char* name : {"out.gif", "out.apng"}) {
        EXPECT_EQ(RunKestrel({"apply", input, "-o", folder.path + name, "--loop", "65536"}).err, "");
        EXPECT_EQ(ReadBack(folder.path + name).loopCount, 65535);
    }
    Animation often = ReadBack(folder.path + "out.apng");
    std::string error;
    often.loopCount = 99999;
    ASSERT_TRUE(WriteApng(folder.path + "often.apng", often, &error)) << error;
    EXPECT_THAT(
        RunKestrel({"apply", folder.path + "often.apng", "-o", folder.path + "often.gif", "--effect", "Bump"})
            .err,
        HasSubstr("often.gif: is played 65536 times, the most that the file can say, not 100000."));
}

TEST_F(Edits, What_does_not_fit_the_animation_is_a_wrong_command) {
    WriteTestGif(input, 5);
    const ProgramResult result =
        RunKestrel({"apply", input, "-o", folder.path + "out.gif", "--frames", "3-5"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, "kestrel: --frames: there is no frame 5; the animation has frames 0 to 4.\n");
    EXPECT_EQ(FilesIn(folder.path), std::vector<std::string>{"in.gif"});
}

}  // namespace
}  // namespace kfx::test
