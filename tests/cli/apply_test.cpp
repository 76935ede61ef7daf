// SPDX-License-Identifier: MIT
// Source file to result file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>

#include "effects/effects.h"
#include "framework/working_image.h"
#include "media/animation_writer.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::EndsWith;
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

// The last part of a folder's path, which ends in a separator.
std::string FolderName(const std::string& path) {
    const std::string bare = path.substr(0, path.size() - 1);
    return bare.substr(bare.find_last_of("/\\") + 1);
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
    EXPECT_EQ(result.comment, "a test");
    ASSERT_EQ(result.frames.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(result.frames[static_cast<size_t>(i)].delay, 5 + i);
    EXPECT_EQ(result.loopCount, 3);
}

TEST(Apply, The_plugins_comment_stands_behind_the_sources_on_request_and_only_once) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const std::vector<std::string> effect = {"--effect", "Bump", "--comment"};
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.gif", effect));
    const std::string comment = ReadBack(folder.path + "out.gif").comment;
    EXPECT_THAT(comment, StartsWith("a test\nCREATED BY...\r\n"));
    ExpectDone(Command(folder.path + "out.gif", folder.path + "again.gif", effect));
    EXPECT_EQ(ReadBack(folder.path + "again.gif").comment, comment);
}

// An animation with everything that WebP and GIF files can say beside pictures.
Animation MetadataAnimation(const std::vector<int>& milliseconds) {
    Animation animation;
    animation.width = 8;
    animation.height = 6;
    animation.loopCount = 4;
    animation.hasBackground = true;
    animation.background = {10, 20, 30};
    const std::string profile = "a profile", exif = "an exif block", xmp = "<x:xmpmeta/>";
    animation.metadata = {.colorProfile = {profile.begin(), profile.end()},
                          .exif = {exif.begin(), exif.end()},
                          .xmp = {xmp.begin(), xmp.end()}};
    for (size_t f = 0; f < milliseconds.size(); ++f) {
        Frame frame;
        frame.pixels.assign(4 * 8 * 6, 255);
        for (size_t i = 0; i < frame.pixels.size(); i += 4)
            frame.pixels[i] = static_cast<uint8_t>(50 * f + i / 4);
        frame.milliseconds = milliseconds[f];
        frame.delay = milliseconds[f] / 10;
        animation.frames.push_back(frame);
    }
    return animation;
}

void WriteMetadataWebp(const std::string& path, const std::vector<int>& milliseconds) {
    std::string error;
    ASSERT_TRUE(WriteWebp(path, MetadataAnimation(milliseconds), &error)) << error;
}

TEST(Apply, Webp_files_keep_milliseconds_background_and_metadata) {
    const TemporaryFolder folder;
    const std::vector<int> times = {33, 33, 17, 250};
    WriteMetadataWebp(folder.path + "in.webp", times);
    const auto report =
        RunKestrelForJson(Command(folder.path + "in.webp", folder.path + "out.webp", {"--effect", "Bump"}));
    const Animation result = ReadBack(folder.path + "out.webp");
    ASSERT_EQ(result.frames.size(), times.size());
    for (size_t i = 0; i < times.size(); ++i) EXPECT_EQ(MillisecondsOf(result.frames[i]), times[i]) << i;
    const Animation expected = MetadataAnimation(times);
    EXPECT_EQ(result.loopCount, 4);
    EXPECT_EQ(result.background, expected.background);
    EXPECT_EQ(result.metadata.colorProfile, expected.metadata.colorProfile);
    EXPECT_EQ(result.metadata.exif, expected.metadata.exif);
    EXPECT_EQ(result.metadata.xmp, expected.metadata.xmp);
    ASSERT_EQ(report["notes"].size(), 1u);
    EXPECT_THAT(report["notes"][0].get<std::string>(),
                HasSubstr("out.webp: 1 frame is to be shown for less than 20 ms"));
}

TEST(Apply, A_gif_keeps_of_a_webp_what_it_can_hold) {
    const TemporaryFolder folder;
    WriteMetadataWebp(folder.path + "in.webp", {40, 250});
    const auto report =
        RunKestrelForJson(Command(folder.path + "in.webp", folder.path + "out.gif", {"--effect", "Bump"}));
    EXPECT_EQ(report["notes"].size(), 0u);
    const Animation result = ReadBack(folder.path + "out.gif");
    ASSERT_EQ(result.frames.size(), 2u);
    EXPECT_EQ(result.frames[0].delay, 4);
    EXPECT_EQ(result.frames[1].delay, 25);
    EXPECT_EQ(result.loopCount, 4);
    EXPECT_TRUE(result.hasBackground);
    EXPECT_EQ(result.background, (RgbColor{10, 20, 30}));
    const Animation expected = MetadataAnimation({});
    EXPECT_EQ(result.metadata.colorProfile, expected.metadata.colorProfile);
    EXPECT_EQ(result.metadata.xmp, expected.metadata.xmp);
}

size_t BytesWith(const std::string& input, const std::string& output,
                 const std::vector<std::string>& options) {
    std::vector<std::string> all = {"--force"};
    all.insert(all.end(), options.begin(), options.end());
    // Swirl gives the picture more colours than a palette has.
    ExpectDone(Command(input, output, {"--effect", "Swirl"}, all));
    return ReadText(output).size();
}

TEST(Apply, Options_of_the_formats_make_files_smaller) {
    const TemporaryFolder folder;
    const std::string input = folder.path + "in.gif";
    ASSERT_EQ(RunKestrel({"sample", input}).exitCode, 0);
    const std::string still = folder.path + "still-000.png";
    ExpectDone(Command(input, folder.path + "still.png", UnchangedPictures()));
    const std::string gif = folder.path + "out.gif", webp = folder.path + "out.webp";
    EXPECT_LT(BytesWith(still, gif, {"--lossy", "80"}), BytesWith(still, gif, {}));
    const size_t lossless = BytesWith(still, webp, {});
    const size_t near = BytesWith(still, webp, {"--near-lossless", "20"});
    const size_t good = BytesWith(still, webp, {"--quality", "90"});
    EXPECT_LT(near, lossless);
    EXPECT_LT(good, near);
    EXPECT_LT(BytesWith(still, webp, {"--quality", "40"}), good);
    EXPECT_GT(BytesWith(still, webp, {"--effort", "0"}), lossless);
}

TEST(Apply, The_original_palette_keeps_two_colours_apart) {
    const TemporaryFolder folder;
    WriteTwoColors(folder.path + "in.gif");
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.gif", UnchangedPictures(),
                       {"--palette", "original"}));
    ExpectSamePictures(ReadBack(folder.path + "in.gif"), ReadBack(folder.path + "out.gif"));
}

TEST(Apply, Png_frames_are_numbered_files) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const auto report =
        RunKestrelForJson(Command(folder.path + "in.gif", folder.path + "out.png", UnchangedPictures()));
    EXPECT_EQ(report["frames"], 2);
    EXPECT_EQ(report["colors"], 20);
    EXPECT_EQ(report["files"],
              (std::vector<std::string>{folder.path + "out-000.png", folder.path + "out-001.png"}));
    EXPECT_EQ(report["bytes"],
              ReadText(folder.path + "out-000.png").size() + ReadText(folder.path + "out-001.png").size());
    EXPECT_GT(report["seconds"].get<double>(), 0);
    const ProgramResult told = RunKestrel(
        Command(folder.path + "in.gif", folder.path + "out.png", UnchangedPictures(), {"--force"}));
    EXPECT_THAT(told.out, StartsWith(folder.path + "out-000.png to " + folder.path +
                                     "out-001.png: 2 frames, 40 x 30, 20 colors, "));
    EXPECT_THAT(told.out, EndsWith(" s.\n"));
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

TEST(Apply, An_existing_output_is_replaced_only_by_force) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    WriteText(folder.path + "out.gif", "something of the user's");
    const auto command = Command(folder.path + "in.gif", folder.path + "out.gif", UnchangedPictures());
    const ProgramResult refused = RunKestrel(command);
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_EQ(refused.err,
              "kestrel: " + folder.path + "out.gif: the file exists; use --force to replace it.\n");
    EXPECT_EQ(ReadText(folder.path + "out.gif"), "something of the user's");
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.gif", UnchangedPictures(), {"--force"}));
    ExpectSamePictures(ReadBack(folder.path + "in.gif"), ReadBack(folder.path + "out.gif"));
}

TEST(Apply, One_file_of_a_series_that_exists_stops_it_all) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 3);
    WriteText(folder.path + "out-002.png", "something of the user's");
    const auto command = Command(folder.path + "in.gif", folder.path + "out.png", UnchangedPictures());
    const ProgramResult refused = RunKestrel(command);
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_THAT(refused.err, HasSubstr("out-002.png: the file exists; use --force"));
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out-002.png"}));
    ExpectDone(Command(folder.path + "in.gif", folder.path + "out.png", UnchangedPictures(), {"--force"}));
    EXPECT_EQ(FilesIn(folder.path).size(), 4u);
}

TEST(Apply, A_source_is_never_replaced_by_its_result) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const std::string before = ReadText(folder.path + "in.gif");
    // The same file by another spelling of its name.
    const std::string other = folder.path + "../" + FolderName(folder.path) + "/in.gif";
    for (const std::string& output : {folder.path + "in.gif", other}) {
        const ProgramResult refused =
            RunKestrel(Command(folder.path + "in.gif", output, UnchangedPictures(), {"--force"}));
        EXPECT_EQ(refused.exitCode, 4);
        EXPECT_THAT(refused.err, HasSubstr(output + ": the result cannot replace its own source"));
    }
    EXPECT_EQ(ReadText(folder.path + "in.gif"), before);
    const ProgramResult sheet = RunKestrel(
        {"sheet", folder.path + "in.gif", folder.path + "in.gif", "-o", folder.path + "sheet.png"});
    EXPECT_EQ(sheet.exitCode, 0);
    EXPECT_EQ(RunKestrel({"gallery", folder.path + "sheet.png", "-o", folder.path + "sheet.png", "--force"})
                  .exitCode,
              4);
    EXPECT_EQ(RunKestrel({"sample", folder.path + "in.gif"}).exitCode, 4) << "it exists";
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
