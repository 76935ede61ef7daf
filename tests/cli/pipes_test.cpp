// SPDX-License-Identifier: MIT
// Standard input and standard output in the place of files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Pipes : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";

    void SetUp() override { WriteTestGif(input, 3); }
};

TEST_F(Pipes, Standard_output_gets_the_bytes_of_the_file) {
    for (const char* format : {"gif", "webp", "apng", "y4m"}) {
        const std::string file = folder.path + "out." + format;
        ASSERT_EQ(RunKestrel({"apply", input, "-o", file, "--effect", "Bump"}).exitCode, 0);
        const ProgramResult result =
            RunKestrel({"apply", input, "-o", "-", "--format", format, "--effect", "Bump"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(result.out == ReadText(file)) << format;
        EXPECT_THAT(result.err, StartsWith("standard output: 3 frames, 40 x 30, "));
        EXPECT_THAT(result.err, HasSubstr(" " + std::to_string(result.out.size()) + " bytes"));
    }
}

TEST_F(Pipes, Standard_input_is_read_as_the_file_is) {
    const ProgramResult result =
        RunKestrel({"apply", "-", "-o", folder.path + "piped.gif", "--effect", "Bump"}, input);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    ASSERT_EQ(RunKestrel({"apply", input, "-o", folder.path + "file.gif", "--effect", "Bump"}).exitCode, 0);
    EXPECT_TRUE(ReadText(folder.path + "piped.gif") == ReadText(folder.path + "file.gif"));
}

TEST_F(Pipes, Video_frames_come_back_within_rounding_with_their_rate) {
    const std::string video = folder.path + "video";
    const ProgramResult out = RunKestrel({"apply", input, "-o", "-", "--format", "y4m", "--fps", "24"});
    ASSERT_EQ(out.exitCode, 0) << out.err;
    EXPECT_THAT(out.out, StartsWith("YUV4MPEG2 W40 H30 F24:1 Ip A1:1 C444 XCOLORRANGE=LIMITED\n"));
    WriteText(video, out.out);
    ASSERT_EQ(
        RunKestrel({"apply", "-", "-o", folder.path + "back.webp", "--loop", "forever"}, video).exitCode, 0);
    const Animation source = ReadBack(input), back = ReadBack(folder.path + "back.webp");
    ASSERT_EQ(back.frames.size(), 3u);
    EXPECT_EQ(back.loopCount, kLoopForever);
    for (size_t f = 0; f < 3; ++f) {
        EXPECT_EQ(back.frames[f].milliseconds, f == 1 ? 41 : 42);
        int largest = 0;
        for (size_t i = 0; i < back.frames[f].pixels.size(); ++i)
            largest = std::max(largest, std::abs(back.frames[f].pixels[i] - source.frames[f].pixels[i]));
        EXPECT_LE(largest, 2);
    }
    EXPECT_TRUE(RunKestrel({"apply", "-", "-o", "-", "--format", "y4m"}, video).out.substr(0, 60) ==
                out.out.substr(0, 60));
}

TEST_F(Pipes, Frames_without_headers_are_described_beside_the_result) {
    const ProgramResult rgb = RunKestrel({"apply", input, "-o", "-", "--format", "rgb", "--fps", "10"});
    EXPECT_EQ(rgb.out.size(), 3u * 3 * 40 * 30);
    EXPECT_THAT(rgb.err, HasSubstr("standard output: rgb24 frames of 40x30, 10 a second."));
    const Animation source = ReadBack(input);
    EXPECT_EQ(static_cast<uint8_t>(rgb.out[3 * 41]), source.frames[0].pixels[4 * 41]);
    EXPECT_EQ(RunKestrel({"apply", input, "-o", "-", "--format", "rgba"}).out.substr(0, 4 * 1200),
              std::string(source.frames[0].pixels.begin(), source.frames[0].pixels.end()));
}

TEST_F(Pipes, What_video_cannot_keep_is_said) {
    WriteTestGif(input, 3, true);
    const ProgramResult result =
        RunKestrel({"apply", input, "-o", "-", "--format", "y4m", "--frames", "0-1", "--speed", "0.1"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err,
                HasSubstr("standard output: repeated to 11 frames, because video has one rate, 10 a "
                          "second; transparent pixels are shown over white."));
}

TEST_F(Pipes, With_json_the_object_goes_to_standard_error) {
    const ProgramResult result =
        RunKestrel({"apply", input, "-o", "-", "--format", "gif", "--effect", "Bump", "--json"});
    EXPECT_THAT(result.out, StartsWith("GIF89a"));
    const auto object = nlohmann::json::parse(result.err, nullptr, false);
    ASSERT_TRUE(object.is_object()) << result.err;
    EXPECT_EQ(object["bytes"], result.out.size());
    EXPECT_EQ(object["output"], "-");
}

TEST_F(Pipes, A_wrong_command_leaves_standard_output_empty_with_json_too) {
    for (const std::vector<std::string>& output : {std::vector<std::string>{"-o", "-"}, {"--output=-"}}) {
        std::vector<std::string> arguments = {"apply", input, "--effekt", "Bump", "--json"};
        arguments.insert(arguments.end(), output.begin(), output.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(nlohmann::json::parse(result.err, nullptr, false).is_object()) << result.err;
    }
}

TEST_F(Pipes, What_cannot_be_done_is_said_on_standard_error) {
    ProgramResult result = RunKestrel({"apply", input, "-o", "-", "--effect", "Bump"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, StartsWith("kestrel: standard output needs a --format: "));
    result = RunKestrel({"apply", input, "-o", "-", "--format", "png"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err,
              "kestrel: standard output takes one PNG picture, and there are 3 frames; choose one with "
              "--frames, or "
              "write --format apng.\n");
    EXPECT_EQ(result.out, "");
    WriteText(folder.path + "empty", "");
    result =
        RunKestrel({"apply", "-", "-o", folder.path + "out.gif", "--effect", "Bump"}, folder.path + "empty");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "kestrel: standard input: the file is empty.\n");
    WriteText(folder.path + "text", "no picture");
    result =
        RunKestrel({"apply", "-", "-o", folder.path + "out.gif", "--effect", "Bump"}, folder.path + "text");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, StartsWith("kestrel: standard input: the file is not a "));
}

TEST_F(Pipes, Standard_input_is_called_so) {
    const std::string out = folder.path + "out.gif", still = folder.path + "in.webp";
    ASSERT_EQ(RunKestrel({"apply", input, "-o", still, "--frames", "0"}).exitCode, 0);
    ProgramResult result =
        RunKestrel({"apply", "-", "-o", out, "--effect", "Bump", "--palette", "original"}, still);
    EXPECT_EQ(result.err, "kestrel: standard input: has no palette of its own; choose another --palette.\n");
    WriteTestGif(input, 3, true);
    result = RunKestrel({"apply", "-", "-o", out, "--effect", "Bump", "--supercompress"}, input);
    EXPECT_THAT(result.err, StartsWith("kestrel: note: standard input: has transparent pixels"));
}

TEST_F(Pipes, One_png_picture_goes_through) {
    const ProgramResult result = RunKestrel({"apply", input, "-o", "-", "--format", "png", "--frames", "1"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    WriteText(folder.path + "one.png", result.out);
    EXPECT_EQ(ReadBack(folder.path + "one.png").frames[0].pixels, ReadBack(input).frames[1].pixels);
    ASSERT_EQ(RunKestrel({"apply", input, "-o", folder.path + "file.png", "--frames", "1"}).exitCode, 0);
    EXPECT_TRUE(result.out == ReadText(folder.path + "file.png")) << "with the comment";
}

}  // namespace
}  // namespace kfx::test
