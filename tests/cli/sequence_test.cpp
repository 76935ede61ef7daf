// SPDX-License-Identifier: MIT
// Several files, or a pattern, to one animation.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/animation_writer.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

using Arguments = std::vector<std::string>;

struct SequenceCommand : ::testing::Test {
    const TemporaryFolder folder;

    SequenceCommand() {
        for (const int number : {9, 10, 100}) WriteStill("f-" + std::to_string(number) + ".png", number);
    }
    // One colour, from the number.
    void WriteStill(const std::string& name, int number) const {
        Picture picture;
        picture.width = 6;
        picture.height = 4;
        for (int i = 0; i < 24; ++i)
            picture.pixels.insert(picture.pixels.end(), {static_cast<uint8_t>(number), 50, 200, 255});
        std::string error;
        EXPECT_TRUE(WritePng(folder.path + name, picture, &error)) << error;
    }
    Arguments Command(const Arguments& inputs, const std::string& output, const Arguments& more = {}) const {
        Arguments arguments = {"apply"};
        for (const std::string& input : inputs) arguments.push_back(folder.path + input);
        arguments.insert(arguments.end(), {"-o", output});
        const Arguments same = UnchangedPictures();
        arguments.insert(arguments.end(), same.begin(), same.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    // The red values of a file's frames, which are the numbers that they were made with.
    std::vector<int> NumbersIn(const std::string& name) const {
        std::vector<int> numbers;
        for (const Frame& frame : ReadBack(folder.path + name).frames) numbers.push_back(frame.pixels[0]);
        return numbers;
    }
};

const std::vector<int> kOrdered = {9, 10, 100};

TEST_F(SequenceCommand, Each_way_to_name_the_stills_makes_the_same_animation) {
    const Arguments ways[] = {{"f-%d.png"}, {"f-*.png"}, {""}, {"f-10.png", "f-100.png", "f-9.png"}};
    for (const Arguments& inputs : ways) {
        const TemporaryFolder other;  // a folder as input must not have the result in it
        const std::string output = other.path + "out.webp";
        const ProgramResult result = RunKestrel(Command(inputs, output, {"--delay", "33"}));
        ASSERT_EQ(result.exitCode, 0) << result.err;
        const Animation animation = ReadBack(output);
        ASSERT_EQ(animation.frames.size(), 3u);
        EXPECT_EQ(animation.loopCount, kLoopForever);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(animation.frames[i].pixels[0], kOrdered[i]);
            EXPECT_EQ(animation.frames[i].milliseconds, 33);
        }
    }
}

TEST_F(SequenceCommand, Joined_stills_have_a_tenth_of_a_second_in_a_gif) {
    const ProgramResult result =
        RunKestrel(Command({"f-9.png", "f-100.png"}, folder.path + "out.gif", {"--join"}));
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const Animation animation = ReadBack(folder.path + "out.gif");
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(animation.frames[0].delay, 10);
    EXPECT_EQ(animation.loopCount, kLoopForever);
}

TEST_F(SequenceCommand, One_numbered_file_stays_one_picture) {
    const ProgramResult result = RunKestrel(Command({"f-9.png"}, folder.path + "out.gif"));
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(NumbersIn("out.gif"), std::vector<int>{9});
}

TEST_F(SequenceCommand, Several_files_are_not_joined_unasked) {
    for (const Arguments& inputs : {Arguments{"f-*.png"}, Arguments{"f-9.png", "f-10.png"}}) {
        const ProgramResult result = RunKestrel(Command(inputs, folder.path + "out.gif"));
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.err,
                    EndsWith("--join makes them one animation, -o FOLDER/ takes a result for each.\n"));
        EXPECT_FALSE(FileExists(folder.path + "out.gif"));
    }
}

TEST_F(SequenceCommand, No_file_of_the_sequence_is_written_over) {
    for (const int number : {0, 1, 2}) WriteStill("s-00" + std::to_string(number) + ".png", number);
    const std::string before = ReadText(folder.path + "s-002.png");
    const ProgramResult result = RunKestrel(Command({"s-%03d.png"}, folder.path + "s.png", {"--force"}));
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(ReadText(folder.path + "s-002.png"), before);
}

TEST_F(SequenceCommand, Missing_numbers_and_other_sizes_are_told) {
    const ProgramResult result = RunKestrel(Command({"f-%d.png"}, folder.path + "out.webp"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("f-%d.png: 89 of the numbers from 9 to 100 are missing."));
    WriteTestGif(folder.path + "f-11.gif", 1);
    const ProgramResult refused =
        RunKestrel(Command({"f-9.png", "f-11.gif"}, folder.path + "out.webp", {"--join", "--force"}));
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_THAT(refused.err, HasSubstr("f-11.gif: is 40 x 30 pixels large, but "));
}

TEST_F(SequenceCommand, Sheet_and_gallery_take_sequences) {
    const ProgramResult sheet = RunKestrel(
        {"sheet", folder.path + "f-%d.png", folder.path + "f-?.png", "-o", folder.path + "sheet.png"});
    EXPECT_EQ(sheet.exitCode, 0) << sheet.err;
    const ProgramResult gallery =
        RunKestrel({"gallery", folder.path + "f-*.png", "-o", folder.path + "gallery.png"});
    EXPECT_EQ(gallery.exitCode, 0) << gallery.err;
    EXPECT_EQ(gallery.err, "");
}

}  // namespace
}  // namespace kfx::test
