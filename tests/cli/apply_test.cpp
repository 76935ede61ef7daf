// SPDX-License-Identifier: MIT
// Source file to result file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "effects/effects.h"
#include "framework/working_image.h"
#include "tests/cli/program.h"
#include "tests/cli/test_files.h"
#include "tests/cli/test_animations.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::vector<std::string> Command(const std::string& input, const std::string& output,
                                 const std::vector<std::string>& effect,
                                 const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"apply", input, "-o", output};
    arguments.insert(arguments.end(), effect.begin(), effect.end());
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

void ExpectDone(const std::vector<std::string>& arguments) {
    const ProgramResult result = RunKestrel(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

// The frame's pixels under a kernel itself, as RGBA.
template <typename Kernel>
std::vector<uint8_t> Under(const Kernel& kernel, const Animation& animation, const Frame& frame) {
    const ImageHandle source = CreateDib(animation.width, animation.height, nullptr, 24);
    {
        const ImageLock lock(source);
        for (int y = 0; y < animation.height; ++y) {
            for (int x = 0; x < animation.width; ++x) {
                const auto* p = frame.pixels.data() + 4 * static_cast<size_t>(y * animation.width + x);
                SetDibPixel(lock.image, x, y, Rgb(p[0], p[1], p[2]));
            }
        }
    }
    const ImageHandle result = kernel(source);
    std::vector<uint8_t> pixels;
    {
        const ImageLock lock(result);
        for (int y = 0; y < animation.height; ++y) {
            for (int x = 0; x < animation.width; ++x) {
                const uint32_t color = GetDibPixel(lock.image, x, y);
                pixels.insert(pixels.end(),
                              {static_cast<uint8_t>(RedOf(color)), static_cast<uint8_t>(GreenOf(color)),
                               static_cast<uint8_t>(BlueOf(color)), 255});
            }
        }
    }
    FreeMemory(source);
    FreeMemory(result);
    return pixels;
}

TEST(Apply, True_colour_frames_are_the_kernels_bytes) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 3);
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.webp",
                       {"--effect", "emboss", "--set", "Radius=9", "--set", "depth=20"}));
    const Animation source = ReadBack(folder.path + "in.gif");
    const Animation result = ReadBack(folder.path + "out.webp");
    ASSERT_EQ(result.frames.size(), source.frames.size());
    const auto emboss = [](ImageHandle image) {
        KernelCache cache;
        return kEmboss.apply(image, {.values = {9, 20}, .background = 0, .cache = &cache});
    };
    for (size_t i = 0; i < source.frames.size(); ++i) {
        EXPECT_EQ(result.frames[i].pixels, Under(emboss, source, source.frames[i])) << "frame " << i;
    }
}

TEST(Apply, Delays_loop_count_and_comment_are_kept) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 4);
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.gif", {"--effect", "Bump"}));
    const Animation result = ReadBack(folder.path + "out.gif");
    ASSERT_EQ(result.frames.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(result.frames[static_cast<size_t>(i)].delay, 5 + i);
    EXPECT_EQ(result.loopCount, 3);
    EXPECT_THAT(result.comment, StartsWith("CREATED BY...\r\n"));
}

TEST(Apply, The_comment_is_left_out_on_request) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    ExpectDone(
        Command(folder.path + "in.gif", folder.path + "out.gif", {"--effect", "Bump"}, {"--no-comment"}));
    EXPECT_EQ(ReadBack(folder.path + "out.gif").comment, "");
}

TEST(Apply, Png_frames_are_numbered_files) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const auto report =
        RunKestrelForJson(Command(folder.path + "in.gif", folder.path + "out.png", UnchangedPictures()));
    EXPECT_EQ(report["frames"], 2);
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out-000.png", "out-001.png"}));
    const Animation source = ReadBack(folder.path + "in.gif");
    EXPECT_EQ(ReadBack(folder.path + "out-001.png").frames[0].pixels, source.frames[1].pixels);
}

TEST(Apply, Transparent_pixels_stay_transparent_in_every_format) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 3, true);
    const Animation source = ReadBack(folder.path + "in.gif");
    ASSERT_TRUE(source.frames[1].transparent);
    for (const std::string ending : {".gif", ".webp"}) {
        ExpectDone(Command(folder.path + "in.gif", folder.path + "out" + ending, UnchangedPictures()));
        ExpectSamePictures(source, ReadBack(folder.path + "out" + ending));
    }
}

TEST(Apply, A_transparent_source_is_stored_whole_when_supercompression_is_asked_for_and_a_note_says_so) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 3, true);
    const auto report = RunKestrelForJson(
        Command(folder.path + "in.gif", folder.path + "out.gif", UnchangedPictures(), {"--supercompress"}));
    ASSERT_EQ(report["notes"].size(), 1u);
    EXPECT_THAT(report["notes"][0].get<std::string>(), HasSubstr("transparent"));
    ExpectSamePictures(ReadBack(folder.path + "in.gif"), ReadBack(folder.path + "out.gif"));
}

TEST(Apply, File_names_may_hold_any_letters) {
    const TemporaryFolder folder;
    const std::string input = folder.path + "\xC3\xA9t\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC \xCE\xA9.gif";
    const std::string output = folder.path + "r\xC3\xA9sultat \xE9\xB9\xB0.gif";
    WriteTestGif(input, 2);
    const auto report = RunKestrelForJson(Command(input, output, UnchangedPictures()));
    EXPECT_EQ(report["output"], output);
    ExpectSamePictures(ReadBack(input), ReadBack(output));
}

#ifdef _WIN32
TEST(Apply, Forward_slashes_are_as_good_as_backslashes) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    std::string slashed = folder.path;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    ExpectDone(Command(slashed + "in.gif", slashed + "out.gif", {"--effect", "Neon"}));
    EXPECT_TRUE(FileExists(folder.path + "out.gif"));
}
#endif

TEST(Apply, An_existing_output_is_replaced_even_when_it_is_the_input) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const Animation source = ReadBack(folder.path + "in.gif");
    ExpectDone(Command(folder.path + "in.gif", folder.path + "in.gif", UnchangedPictures()));
    ExpectSamePictures(source, ReadBack(folder.path + "in.gif"));
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif"}));
}

TEST(Apply, Every_kind_of_parameter_is_set_as_the_window_shows_it) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 1);
    const Animation source = ReadBack(folder.path + "in.gif");
    // A list by its row's name and a check box: red and blue change places.
    ExpectDone(Command(folder.path + "in.gif", folder.path + "swapped.webp", UnchangedPictures(),
                       {"--set", "Channels=red-blue", "--set", "Enable channels=on"}));
    const Animation swapped = ReadBack(folder.path + "swapped.webp");
    for (size_t i = 0; i < source.frames[0].pixels.size(); i += 4) {
        ASSERT_EQ(swapped.frames[0].pixels[i], source.frames[0].pixels[i + 2]);
        ASSERT_EQ(swapped.frames[0].pixels[i + 2], source.frames[0].pixels[i]);
    }
    // Swirl's slider shows degrees with a sign and counts from -1440.
    ExpectDone(Command(folder.path + "in.gif", folder.path + "swirl.webp",
                       {"--effect", "Swirl", "--set", "Angle=-90"}));
    const auto swirl = [](ImageHandle image) {
        KernelCache cache;
        return kSwirl.apply(image, {.values = {1440 - 90}, .background = 0x7F7F7F, .cache = &cache});
    };
    EXPECT_EQ(ReadBack(folder.path + "swirl.webp").frames[0].pixels, Under(swirl, source, source.frames[0]));
}

TEST(Apply, The_local_background_is_the_colour_that_was_asked_for) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 1);
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.webp",
                       {"--effect", "Oil Painting", "--local-background", "12FE34"}));
    // Oil Painting leaves the background at the picture's corner.
    const auto pixels = ReadBack(folder.path + "out.webp").frames[0].pixels;
    EXPECT_EQ((std::vector<uint8_t>{pixels[0], pixels[1], pixels[2]}),
              (std::vector<uint8_t>{0x12, 0xFE, 0x34}));
}

#ifdef _WIN32
TEST(Apply, Three_hundred_frames_stay_within_memory) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 300, false, 6);  // 240 x 180: 52 MB in true colour with alpha
    const ProgramResult result =
        RunKestrel(Command(folder.path + "in.gif", folder.path + "out.gif", {"--effect", "Bump"}));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(ReadBack(folder.path + "out.gif").frames.size(), 300u);
    EXPECT_GT(result.peakBytes, 0u);
    EXPECT_LT(result.peakBytes, uint64_t{320} << 20);
}
#endif

}  // namespace
}  // namespace kfx::test
