// SPDX-License-Identifier: MIT
// Several inputs and a folder as output: names, order, failures, and what is done again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <filesystem>
#include <sstream>

#include "media/utf8_path.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

using Words = std::vector<std::string>;

// Windows takes names that differ in capitals only for one.
constexpr bool kIgnoresCase = std::filesystem::path::preferred_separator == '\\';

struct Batch : ::testing::Test {
    TemporaryFolder folder;
    const std::string in = folder.path + "in/", out = folder.path + "out/";

    void SetUp() override {
        std::filesystem::create_directory(PathOf(in));
        for (const char* name : {"a.gif", "b.gif", "c.gif"}) WriteTestGif(in + name, 2);
    }

    // Applies Bump to the whole folder.
    Words All(const Words& more = {}) const {
        Words words = {"apply", in, "-o", out, "--effect", "Bump"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    // Makes an input in another format.
    void Make(const std::string& name, const std::string& format, const Words& more = {}) const {
        Words words = {"apply", in + "a.gif", "-o", in + name, "--format", format};
        words.insert(words.end(), more.begin(), more.end());
        ASSERT_EQ(RunKestrel(words).exitCode, 0) << name;
    }

    void SetAge(const std::string& file, int hours) const {
        const auto now = std::filesystem::file_time_type::clock::now();
        std::filesystem::last_write_time(PathOf(file), now - std::chrono::hours(hours));
    }
};

std::vector<nlohmann::json> LinesOf(const std::string& text) {
    std::vector<nlohmann::json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_TRUE(lines.back().is_object()) << line;
    }
    return lines;
}

TEST_F(Batch, Each_result_has_the_name_of_its_input_and_a_format_that_keeps_it) {
    Make("still.png", "png", {"--frames", "1"});
    Make("moving.png", "apng");
    Make("other.apng", "apng");
    Make("w.webp", "webp");
    WriteTestGif(in + "UPPER.GIF", 1);
    WriteTestGif(in + "sp ace \xC3\xA9.gif", 1);
    WriteText(in + "no picture.txt", "x");
    const ProgramResult result = RunKestrel(All());
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(FilesIn(out), (Words{"UPPER.GIF", "a.gif", "b.gif", "c.gif", "moving.png", "other.apng",
                                   "sp ace \xC3\xA9.gif", "still.png", "w.webp"}));
    EXPECT_EQ(ReadBack(out + "moving.png").frames.size(), 2u);
    EXPECT_EQ(ReadBack(out + "w.webp").frames.size(), 2u);
    EXPECT_EQ(result.err, "kestrel: 9 done.\n");
}

TEST_F(Batch, Stills_that_are_made_to_move_become_animations) {
    Make("still.png", "png", {"--frames", "1"});
    Make("moving.png", "apng");
    const Words inputs = {"apply", in + "still.png", in + "moving.png", "-o", out, "--effect", "Swirl"};
    Words words = inputs;
    words.insert(words.end(), {"--frames", "3"});
    EXPECT_EQ(RunKestrel(words).exitCode, 2) << "the animation has no frame 3";
    EXPECT_EQ(FilesIn(out), (Words{"still.apng"}));
    EXPECT_EQ(ReadBack(out + "still.apng").frames.size(), 3u);
    words = inputs;
    words.insert(words.end(), {"--frames", "0"});
    EXPECT_EQ(RunKestrel(words).exitCode, 0);
    EXPECT_EQ(FilesIn(out), (Words{"moving.png", "still.apng", "still.png"}));
}

TEST_F(Batch, A_format_that_is_given_is_that_of_every_result) {
    Make("w.webp", "webp");
    ASSERT_EQ(RunKestrel({"apply", in + "a.gif", in + "w.webp", "-o", out, "--format", "apng"}).exitCode, 0);
    EXPECT_EQ(FilesIn(out), (Words{"a.apng", "w.apng"}));
}

TEST_F(Batch, Each_result_has_the_bytes_of_a_command_of_its_own) {
    const Words options = {"--effect", "Swirl", "--set",    "Angle=-90", "--effect",
                           "Emboss",   "--set", "Radius=9", "--palette", "216-color safe"};
    for (const char* jobs : {"1", "3"}) {
        Words words = {"apply", in + "*.gif", "-o", out, "--force", "--jobs", jobs};
        words.insert(words.end(), options.begin(), options.end());
        const ProgramResult result = RunKestrel(words);
        ASSERT_EQ(result.exitCode, 0) << result.err;
        for (const char* name : {"a.gif", "b.gif", "c.gif"}) {
            Words single = {"apply", in + name, "-o", folder.path + name, "--force"};
            single.insert(single.end(), options.begin(), options.end());
            ASSERT_EQ(RunKestrel(single).exitCode, 0);
            EXPECT_TRUE(ReadText(folder.path + name) == ReadText(out + name)) << name;
        }
    }
}

TEST_F(Batch, A_file_that_fails_stops_no_other) {
    WriteText(in + "a2.gif", "no picture");
    WriteText(in + "b2.gif", "");
    const ProgramResult result = RunKestrel(All({"--jobs", "2"}));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(FilesIn(out), (Words{"a.gif", "b.gif", "c.gif"}));
    EXPECT_THAT(result.err, HasSubstr("kestrel: " + in + "a2.gif: the file is not a"));
    EXPECT_THAT(result.err, HasSubstr("kestrel: " + in + "b2.gif: the file is empty."));
    EXPECT_THAT(result.err, EndsWith("kestrel: 3 done, 2 failed.\n"));
    EXPECT_LT(result.out.find("a.gif: "), result.out.find("b.gif: "));
}

TEST_F(Batch, For_scripts_each_file_has_a_line_in_order_and_the_sum_is_the_last) {
    WriteText(in + "a2.gif", "no picture");
    const ProgramResult result = RunKestrel(All({"--json", "--jobs", "3"}));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "");
    const auto lines = LinesOf(result.out);
    ASSERT_EQ(lines.size(), 5u);
    const Words names = {"a.gif", "a2.gif", "b.gif", "c.gif"};
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(lines[i]["input"], in + names[i]);
        EXPECT_EQ(lines[i]["output"], out + names[i]);
        EXPECT_EQ(lines[i]["ok"], i != 1);
    }
    EXPECT_EQ(lines[4]["summary"], true);
    EXPECT_EQ(lines[4]["files"], 4);
    EXPECT_EQ(lines[4]["done"], 3);
    EXPECT_EQ(lines[4]["failed"], 1);
    EXPECT_EQ(lines[4]["exitCode"], 3);
}

TEST_F(Batch, Two_inputs_with_one_name_are_refused_before_any_work) {
    std::filesystem::create_directory(PathOf(folder.path + "more"));
    WriteTestGif(folder.path + "more/b.gif", 1);
    const ProgramResult result = RunKestrel(
        {"apply", in + "a.gif", in + "b.gif", folder.path + "more/b.gif", "-o", out, "--effect", "Bump"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, "kestrel: " + in + "b.gif and " + folder.path +
                              "more/b.gif: both results would be " + out +
                              "b.gif; give them different names or folders.\n");
    EXPECT_FALSE(std::filesystem::exists(PathOf(out)));
}

TEST_F(Batch, A_picture_of_a_series_and_another_result_do_not_get_one_name) {
    WriteTestGif(in + "a-001.gif", 1);
    WriteTestGif(in + "b-002.gif", 1);  // b.gif has the pictures 000 and 001
    const ProgramResult result = RunKestrel(All({"--format", "png"}));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, "kestrel: " + in + "a.gif and " + in +
                              "a-001.gif: both results would have a file " + out +
                              "a-001.png; give them different names or folders.\n");
    EXPECT_FALSE(std::filesystem::exists(PathOf(out)));
    std::filesystem::rename(PathOf(in + "a-001.gif"), PathOf(in + "A-001.gif"));
    EXPECT_EQ(RunKestrel(All({"--format", "png", "--dry-run"})).exitCode, kIgnoresCase ? 2 : 0);
    std::filesystem::rename(PathOf(in + "A-001.gif"), PathOf(in + "a-001.gif"));
    EXPECT_EQ(RunKestrel(All({"--format", "png", "--frames", "0"})).exitCode, 0) << "a picture each";
    EXPECT_EQ(FilesIn(out), (Words{"a-001.png", "a.png", "b-002.png", "b.png", "c.png"}));
}

TEST_F(Batch, Two_series_whose_names_begin_alike_are_both_made) {
    WriteTestGif(in + "a-001.gif", 2);
    const ProgramResult result =
        RunKestrel({"apply", in + "a.gif", in + "a-001.gif", "-o", out, "--format", "png"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Words files = FilesIn(out);
    EXPECT_THAT(files, ::testing::IsSupersetOf({"a-000.png", "a-001.png", "a-001-000.png", "a-001-001.png"}));
}

TEST_F(Batch, Results_that_exist_are_replaced_on_request_only) {
    std::filesystem::create_directory(PathOf(out));
    WriteText(out + "b.gif", "mine");
    const ProgramResult result = RunKestrel(All());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, HasSubstr("b.gif: the file exists; use --force to replace it.\n"));
    EXPECT_EQ(FilesIn(out), Words{"b.gif"}) << "nothing was begun";
    EXPECT_EQ(RunKestrel(All({"--force"})).exitCode, 0);
    EXPECT_EQ(ReadBack(out + "b.gif").frames.size(), 2u);
}

TEST_F(Batch, No_source_is_replaced) {
    const std::string before = ReadText(in + "a.gif");
    const ProgramResult result = RunKestrel({"apply", in, "-o", in, "--effect", "Bump", "--force"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, HasSubstr("a.gif: the result cannot replace a source; choose another folder.\n"));
    EXPECT_TRUE(ReadText(in + "a.gif") == before);
}

TEST_F(Batch, Folders_in_folders_keep_their_place_and_results_are_no_inputs) {
    std::filesystem::create_directories(PathOf(in + "deep/er"));
    WriteTestGif(in + "deep/er/a.gif", 1);
    for (int run = 0; run < 2; ++run) {
        const ProgramResult result =
            RunKestrel({"apply", in, "-o", in + "results/", "--recursive", "--force", "--effect", "Bump"});
        EXPECT_EQ(result.err, "kestrel: 4 done.\n");
    }
    EXPECT_EQ(FilesIn(in + "results/deep/er"), Words{"a.gif"});
    EXPECT_EQ(FilesIn(in + "results"), (Words{"a.gif", "b.gif", "c.gif"}));
}

TEST_F(Batch, An_unknown_name_is_told_once_and_before_any_work) {
    const ProgramResult result = RunKestrel({"apply", in, "-o", out, "--effect", "Embosss"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, "kestrel: unknown effect \"Embosss\"; did you mean Emboss?\n");
    EXPECT_FALSE(std::filesystem::exists(PathOf(out)));
}

TEST_F(Batch, One_input_goes_into_a_folder_as_several_do) {
    EXPECT_EQ(RunKestrel({"apply", in + "a.gif", "-o", out, "--effect", "Bump"}).exitCode, 0);
    EXPECT_EQ(RunKestrel({"apply", in + "b.gif", "-o", folder.path + "out", "--effect", "Bump"}).exitCode, 0);
    EXPECT_EQ(FilesIn(out), (Words{"a.gif", "b.gif"}));
    ASSERT_EQ(RunKestrel({"apply", in + "a.gif", "-o", in + "still.png"}).exitCode, 2);
    ASSERT_EQ(RunKestrel({"apply", in + "a.gif", "-o", in + "still.png", "--format", "png"}).exitCode, 0);
    ASSERT_EQ(RunKestrel({"apply", in + "still-%03d.png", "-o", out}).exitCode, 2) << "nothing is to be done";
    ASSERT_EQ(RunKestrel({"apply", in + "still-%03d.png", "-o", out, "--delay", "40"}).exitCode, 0);
    EXPECT_EQ(ReadBack(out + "still.apng").frames.size(), 2u);
}

TEST_F(Batch, A_folder_that_is_a_file_is_refused) {
    WriteText(folder.path + "file", "mine");
    for (const std::string output : {"file/", "file/deeper/"}) {
        const ProgramResult result =
            RunKestrel({"apply", in + "a.gif", "-o", folder.path + output, "--effect", "Bump"});
        EXPECT_EQ(result.exitCode, 4);
        EXPECT_EQ(result.err,
                  "kestrel: " + folder.path + "file: this is a file, not a folder; choose another output.\n");
    }
    EXPECT_EQ(ReadText(folder.path + "file"), "mine");
}

TEST_F(Batch, Options_that_do_not_suit_one_of_the_formats_are_refused_before_any_work) {
    Make("w.webp", "webp");
    const ProgramResult result = RunKestrel(All({"--lossy", "20"}));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("w.webp: --lossy is for GIF files"));
    EXPECT_FALSE(std::filesystem::exists(PathOf(out)));
}

TEST_F(Batch, A_dry_run_says_what_would_be_done_and_does_nothing) {
    WriteText(in + "d.gif", "no picture");
    const ProgramResult result = RunKestrel(All({"--dry-run"}));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.out, HasSubstr(in + "a.gif -> " + out + "a.gif\n"));
    EXPECT_THAT(result.err, HasSubstr("d.gif: the file is not a"));
    EXPECT_THAT(result.err, EndsWith("kestrel: 3 to do, 1 refused.\n"));
    const auto lines = LinesOf(RunKestrel(All({"--dry-run", "--json"})).out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[1]["output"], out + "b.gif");
    EXPECT_EQ(lines[1]["dryRun"], true);
    EXPECT_EQ(lines[3]["ok"], false);
    EXPECT_FALSE(std::filesystem::exists(PathOf(out)));
    const std::string single = folder.path + "single.gif";
    EXPECT_EQ(RunKestrel({"apply", in + "a.gif", "-o", single, "--effect", "Bump", "--dry-run"}).out,
              in + "a.gif -> " + single + "\n");
    EXPECT_FALSE(FileExists(single));
}

TEST_F(Batch, What_is_done_is_passed_over) {
    ASSERT_EQ(RunKestrel(All()).exitCode, 0);
    std::filesystem::remove(PathOf(out + "b.gif"));
    WriteTestGif(in + "d.gif", 1);
    WriteText(out + "c.gif", ReadText(out + "c.gif").substr(0, 500));
    const std::string cut = ReadText(out + "c.gif");
    const ProgramResult result = RunKestrel(All({"--skip-done"}));
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.out, HasSubstr(out + "a.gif: is there already.\n"));
    EXPECT_THAT(result.err, HasSubstr(out + "c.gif: is there, but it is damaged; --force together with "
                                            "--skip-done makes it anew.\n"));
    EXPECT_THAT(result.err, EndsWith("kestrel: 2 done, 1 there before, 1 failed.\n"));
    EXPECT_TRUE(ReadText(out + "c.gif") == cut);
    const auto lines = LinesOf(RunKestrel(All({"--skip-done", "--force", "--json"})).out);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0]["skipped"], true);
    EXPECT_FALSE(lines[2].contains("skipped"));
    EXPECT_EQ(lines[4]["skipped"], 3);
    EXPECT_EQ(ReadBack(out + "c.gif").frames.size(), 2u);
}

TEST_F(Batch, A_result_that_is_older_than_its_source_is_not_done) {
    const std::string output = folder.path + "one.gif";
    const Words words = {"apply", in + "a.gif", "-o", output, "--effect", "Bump", "--skip-done"};
    ASSERT_EQ(RunKestrel(words).exitCode, 0);
    EXPECT_EQ(RunKestrel(words).out, output + ": is there already.\n");
    SetAge(output, 2);
    EXPECT_THAT(RunKestrel(words).err, HasSubstr("is there, but it is older than its source"));
    SetAge(in + "a.gif", 3);
    EXPECT_EQ(RunKestrel(words).exitCode, 0);
}

}  // namespace
}  // namespace kfx::test
