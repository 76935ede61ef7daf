// SPDX-License-Identifier: MIT
// The commands that show and compare: info, compare, gallery, palettes, effects, self-test, sample.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sstream>

#include "media/utf8_path.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using Json = nlohmann::json;

std::vector<Json> JsonLines(const std::string& text) {
    std::vector<Json> objects;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) objects.push_back(Json::parse(line));
    return objects;
}

uint64_t BytesOf(const std::string& path) { return std::filesystem::file_size(PathOf(path)); }

struct Looking : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "A caf\xC3\xA9.gif";
    void SetUp() override { WriteTestGif(input, 3); }

    std::string At(const std::string& name) const { return folder.path + name; }
};

struct Info : Looking {};

TEST_F(Info, A_file_is_described_in_one_json_line) {
    const ProgramResult result = RunKestrel({"info", "--json", "--frames", input});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const auto lines = JsonLines(result.out);
    ASSERT_EQ(lines.size(), 1u);
    const Json& file = lines[0];
    EXPECT_EQ(file["input"], input);
    EXPECT_EQ(file["format"], "gif");
    EXPECT_EQ(file["bytes"], BytesOf(input));
    EXPECT_EQ(file["width"], kTestWidth);
    EXPECT_EQ(file["frames"], 3);
    EXPECT_EQ(file["delays"], Json({50, 60, 70}));
    EXPECT_EQ(file["duration"], 180);
    EXPECT_EQ(file["plays"], 4);
    EXPECT_EQ(file["comment"], "a test");
    EXPECT_EQ(file["transparency"], "none");
    EXPECT_EQ(file["fingerprint"].get<std::string>().size(), 32u);
    // Only the block moves: the file stores the part that changes.
    EXPECT_EQ(file["frameList"][0]["width"], kTestWidth);
    EXPECT_LT(file["frameList"][1]["width"], kTestWidth);
}

TEST_F(Info, People_get_a_row_for_each_thing) {
    const ProgramResult result = RunKestrel({"info", input});
    EXPECT_THAT(result.out, StartsWith(input + "\n  Format       GIF, "));
    EXPECT_THAT(result.out, HasSubstr("\n  Size         40 x 30\n  Frames       3 in 0.18 s\n"
                                      "  Times        50 ms, 60 ms, 70 ms\n  Plays        4 times\n"));
    EXPECT_THAT(result.out, HasSubstr("\n  Comment      a test\n"));
}

TEST_F(Info, How_a_file_was_made_is_told) {
    for (const char* name : {"made.gif", "made.webp", "made.apng"}) {
        const std::string made = At(name), format = made.substr(made.rfind('.') + 1);
        ASSERT_EQ(RunKestrel({"apply", input, "-o", made, "--effect=Bump", "--palette=216"}).exitCode, 0);
        const std::string version =
            JsonLines(RunKestrel({"info", "--json", made}).out)[0]["recipe"]["version"];
        std::string told = "\n  Recipe       kestrel " + version;
        told += ", --format=" + format + ", --effect=Bump, --palette=216-color safe\n";
        EXPECT_THAT(RunKestrel({"info", made}).out, HasSubstr(told));
    }
    EXPECT_EQ(JsonLines(RunKestrel({"info", "--json", At("made.gif")}).out)[0]["recipe"]["options"],
              Json({"--format=gif", "--effect=Bump", "--palette=216-color safe"}));
    EXPECT_FALSE(JsonLines(RunKestrel({"info", "--json", input}).out)[0].contains("recipe"));
}

TEST_F(Info, What_a_file_says_of_its_pictures_is_told) {
    const std::string jpeg = "tests/data/fuzz/jpeg/metadata.jpg", webp = "tests/data/fuzz/webp/metadata.webp";
    const ProgramResult text = RunKestrel({"info", "--frames", jpeg, webp});
    EXPECT_EQ(text.exitCode, 0) << text.err;
    EXPECT_THAT(text.out, HasSubstr("\n  Frames       1, a still picture\n"));
    EXPECT_THAT(text.out, HasSubstr("\n  Comment      a comment another\n"
                                    "  ICC profile  without a name, 23 bytes\n"
                                    "  EXIF         38 bytes, orientation 6 (read upright)\n"
                                    "  XMP          25 bytes\n"));
    EXPECT_THAT(text.out, HasSubstr("\n  Frames       3 in 0.099 s\n  Times        3 x 33 ms\n"
                                    "  Plays        forever\n"));
    EXPECT_THAT(text.out, HasSubstr("\n  Transparency transparent pixels in 3 of 3 frames\n"
                                    "  Background   FFFFFF\n"));
    EXPECT_THAT(text.out, HasSubstr("6 x 5       0,0      keep           20  transparent\n"));
    const auto lines = JsonLines(RunKestrel({"info", "--json", "--frames", jpeg, webp}).out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["comment"], "a comment\nanother");
    EXPECT_EQ(lines[0]["frames"], 1);
    EXPECT_EQ(lines[1]["plays"], "forever");
    EXPECT_EQ(lines[1]["delays"], Json({33, 33, 33}));
}

TEST_F(Info, A_cut_file_is_told_with_what_is_left_of_it) {
    const std::string whole = ReadText(input);
    WriteText(At("cut.gif"), whole.substr(0, whole.size() - 40));
    const ProgramResult text = RunKestrel({"info", At("cut.gif")});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_THAT(text.out, HasSubstr("the file is damaged or cut after 2 frames; only the frames up to there "
                                    "are used"));
}

TEST_F(Info, A_bad_file_does_not_stop_the_others) {
    WriteText(At("bad.gif"), "no picture");
    WriteTestGif(At("holes.gif"), 1, true);
    const ProgramResult result =
        RunKestrel({"info", "--json", input, At("bad.gif"), At("none.gif"), At("holes.gif")});
    EXPECT_EQ(result.exitCode, 3);
    const auto lines = JsonLines(result.out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[1]["ok"], false);
    EXPECT_THAT(lines[1]["error"].get<std::string>(), HasSubstr("bad.gif: the file is not a GIF"));
    EXPECT_EQ(lines[2]["exitCode"], 3);
    EXPECT_EQ(lines[3]["transparency"], "full");
    const ProgramResult text = RunKestrel({"info", At("bad.gif"), input});
    EXPECT_EQ(text.exitCode, 3);
    EXPECT_THAT(text.out, StartsWith(input + "\n"));
    EXPECT_THAT(text.err, StartsWith("kestrel: " + At("bad.gif") + ": "));
}

TEST_F(Info, A_folder_and_a_pattern_are_all_their_files) {
    WriteTestGif(At("b.gif"), 2);
    EXPECT_EQ(JsonLines(RunKestrel({"info", "--json", folder.path}).out).size(), 2u);
    EXPECT_EQ(JsonLines(RunKestrel({"info", "--json", At("*.gif")}).out).size(), 2u);
}

struct Compare : Looking {};

TEST_F(Compare, A_file_without_loss_looks_equal) {
    ASSERT_EQ(RunKestrel({"apply", input, "-o", At("b.webp"), "--format", "webp"}).exitCode, 0);
    const ProgramResult result = RunKestrel({"compare", input, At("b.webp")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, input + " and " + At("b.webp") + " look equal.\n");
}

TEST_F(Compare, What_differs_is_told_and_the_exit_code_is_1) {
    ASSERT_EQ(
        RunKestrel({"apply", input, "-o", At("b.gif"), "--effect", "Solarize", "--loop", "once"}).exitCode,
        0);
    const ProgramResult result =
        RunKestrel({"compare", input, At("b.gif"), "-o", At("differences.png"), "--json"});
    EXPECT_EQ(result.exitCode, 1) << result.err;
    const Json report = Json::parse(result.out);
    EXPECT_EQ(report["equal"], false);
    EXPECT_EQ(report["samePlays"], false);
    EXPECT_EQ(report["sameDuration"], true);
    EXPECT_EQ(report["pictures"].size(), 3u);
    EXPECT_EQ(report["first"]["time"], 0);
    EXPECT_EQ(report["first"]["frames"], Json({0, 0})) << "counted as --frames counts";
    EXPECT_EQ(report["inputs"], Json({input, At("b.gif")}));
    EXPECT_LT(report["pictures"][0]["psnr"], 40);
    EXPECT_GT(ReadBack(At("differences.png")).width, 3 * kTestWidth);
    EXPECT_THAT(RunKestrel({"compare", input, At("b.gif")}).out,
                HasSubstr("differ:\n  Plays       4 times and once\n  Pictures    3 of 3 differ\n"));
}

TEST_F(Compare, Thresholds_say_what_is_equal_enough) {
    ASSERT_EQ(
        RunKestrel({"apply", input, "-o", At("b.webp"), "--format", "webp", "--quality", "90"}).exitCode, 0);
    EXPECT_EQ(RunKestrel({"compare", input, At("b.webp")}).exitCode, 1);
    EXPECT_EQ(RunKestrel({"compare", input, At("b.webp"), "--min-psnr", "15"}).exitCode, 0);
    EXPECT_EQ(RunKestrel({"compare", input, At("b.webp"), "--min-psnr", "99"}).exitCode, 1);
    EXPECT_EQ(RunKestrel({"compare", input, At("b.webp"), "--min-ssim", "1"}).exitCode, 1);
    EXPECT_EQ(RunKestrel({"compare", input, At("b.webp"), "--min-psnr", "many"}).err,
              "kestrel: --min-psnr takes decibels from 0 to 200, such as 35 or 38.5, not \"many\".\n");
}

struct Wall : Looking {};

TEST_F(Wall, Has_the_times_of_the_source_and_every_frame) {
    for (const char* name : {"wall.webp", "wall.gif", "wall.apng"}) {
        const Json report = RunKestrelForJson({"gallery", input, "-o", At(name)});
        EXPECT_EQ(report["effects"].size(), 20u);
        const Animation source = ReadBack(input), wall = ReadBack(At(name));
        EXPECT_EQ(wall.width, report["width"]);
        EXPECT_EQ(wall.loopCount, source.loopCount);
        ASSERT_EQ(wall.frames.size(), 3u) << name;
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(MillisecondsOf(wall.frames[i]), MillisecondsOf(source.frames[i]));
            EXPECT_FALSE(wall.frames[i].transparent);
        }
        EXPECT_NE(wall.frames[0].pixels, wall.frames[1].pixels);
    }
}

TEST_F(Wall, Of_a_transparent_still_is_a_still_and_opaque) {
    WriteTestGif(At("holes.gif"), 1, true);
    RunKestrelForJson(
        {"gallery", At("holes.gif"), "-o", At("wall.webp"), "--columns", "3", "--size", "100x80"});
    const Animation wall = ReadBack(At("wall.webp"));
    EXPECT_EQ(wall.frames.size(), 1u);
    EXPECT_FALSE(wall.frames[0].transparent);
    EXPECT_GT(wall.height, wall.width);
}

TEST_F(Wall, That_is_too_large_is_refused_before_it_is_drawn) {
    WriteTestGif(At("long.gif"), 30);
    const ProgramResult result =
        RunKestrel({"gallery", At("long.gif"), "-o", At("wall.gif"), "--max-pixels", "1"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, StartsWith("kestrel: the wall is too large: "));
    EXPECT_THAT(result.err, HasSubstr("--max-pixels"));
    EXPECT_FALSE(FileExists(At("wall.gif")));
}

TEST_F(Looking, The_bytes_of_a_palette_are_those_of_the_file) {
    const Json report = RunKestrelForJson({"palettes", input, "-o", At("palettes.png")});
    ASSERT_EQ(report["palettes"].size(), 22u) << "custom, original and nine, plain and dithered";
    for (const size_t i : {0u, 3u, 9u, 20u}) {
        const Json& trial = report["palettes"][i];
        std::vector<std::string> arguments = {"apply",       input,      "-o",  At("one.gif"), "--force",
                                              "--no-recipe", "--format", "gif", "--palette",   trial["name"]};
        if (trial["dither"]) arguments.emplace_back("--dither");
        ASSERT_EQ(RunKestrel(arguments).exitCode, 0);
        EXPECT_EQ(BytesOf(At("one.gif")), trial["bytes"]) << trial["name"] << trial["dither"];
    }
    EXPECT_GT(ReadBack(At("palettes.png")).height, 4 * kTestHeight);
}

TEST_F(Looking, Sheets_and_walls_are_the_same_with_any_number_of_threads) {
    const std::vector<std::vector<std::string>> commands = {
        {"palettes", input, "-o", At("look.png")},
        {"gallery", input, "-o", At("look.png")},
        {"gallery", input, "-o", At("look.gif"), "--size", "40x30"},
        {"gallery", input, "-o", At("look.apng"), "--size", "40x30"}};
    for (const std::vector<std::string>& command : commands) {
        std::string first;
        for (const char* threads : {"1", "4"}) {
            std::vector<std::string> words = command;
            words.insert(words.end(), {"--force", "--threads", threads});
            const ProgramResult result = RunKestrel(words);
            ASSERT_EQ(result.exitCode, 0) << result.err;
            const std::string made = ReadText(command[3]);
            if (first.empty()) first = made;
            EXPECT_TRUE(made == first) << command[0] << " " << command[3] << " " << threads;
        }
    }
}

TEST_F(Looking, One_effect_is_listed_by_the_beginning_of_its_name) {
    const Json one = RunKestrelForJson({"effects", "oil"});
    ASSERT_EQ(one["effects"].size(), 1u);
    EXPECT_EQ(one["effects"][0]["name"], "Oil Painting");
    EXPECT_THAT(
        RunKestrel({"effects", "EMBOSS"}).out,
        HasSubstr("\nkestrel apply IN.gif -o OUT.gif --effect Emboss --set Radius=18 --set Depth=30\n"));
    const ProgramResult wrong = RunKestrel({"effects", "R"});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_EQ(wrong.err, "kestrel: ambiguous effect \"R\": it can be Radial Blur, Raster or Ripple.\n");
}

TEST_F(Looking, The_self_test_finds_this_machine_right) {
    const Json report = RunKestrelForJson({"self-test"});
    EXPECT_EQ(report["ok"], true) << report.dump(2);
    EXPECT_GE(report["results"].size(), 41u);
}

TEST_F(Looking, The_sample_is_written_in_each_format) {
    for (const char* name : {"s.webp", "s.apng", "s.png"}) {
        ASSERT_EQ(RunKestrel({"sample", At(name)}).exitCode, 0);
        EXPECT_EQ(ReadBack(At(name)).frames.size(), std::string(name) == "s.png" ? 1u : 24u) << name;
    }
}

}  // namespace
}  // namespace kfx::test
