// SPDX-License-Identifier: MIT
// apply --max-size, --shrink and --every, from file to file.
#include <algorithm>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/colorful_animation.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using Words = std::vector<std::string>;

// The words of an option text, in which quotes hold a name together.
Words SplitOptions(const std::string& text) {
    Words words;
    std::string word;
    bool quoted = false;
    for (const char c : text + " ") {
        if (c == '"') quoted = !quoted;
        if (c != '"' && (c != ' ' || quoted)) word += c;
        if (c == ' ' && !quoted && !word.empty()) words.push_back(std::exchange(word, ""));
    }
    return words;
}

struct Fit : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.apng";

    Words Command(const std::string& name, const Words& options) const {
        Words words = {"apply", input, "-o", folder.path + name};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    size_t SizeOf(const std::string& name) const { return ReadText(folder.path + name).size(); }

    size_t PlainSize(const std::string& name, const Words& options) const {
        const ProgramResult result = RunKestrel(Command(name, options));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return SizeOf(name);
    }

    // Fits the file, and makes it again by the plain command that the report names.
    nlohmann::json Fitted(const std::string& ending, const Words& options, size_t limit,
                          const Words& allowed = {}) const {
        const std::string name = "fit" + ending;
        Words fit = options;
        fit.insert(fit.end(), {"--max-size", std::to_string(limit), "--force"});
        fit.insert(fit.end(), allowed.begin(), allowed.end());
        nlohmann::json result = RunKestrelForJson(Command(name, fit));
        EXPECT_EQ(result["exitCode"], 0) << result.dump(2);
        if (result["exitCode"] != 0) return result;
        EXPECT_LE(SizeOf(name), limit);
        EXPECT_EQ(result["bytes"], SizeOf(name));
        EXPECT_EQ(result["maxBytes"], limit);
        Words plain = options;
        const Words chosen = SplitOptions(result["options"]);
        plain.insert(plain.end(), chosen.begin(), chosen.end());
        plain.push_back("--force");
        PlainSize("plain" + ending, plain);
        EXPECT_EQ(ReadText(folder.path + name), ReadText(folder.path + "plain" + ending)) << result.dump(2);
        return result;
    }
};

TEST_F(Fit, The_result_is_that_of_the_plain_command_it_names) {
    WriteColorful(input, 8, false);
    const Words emboss = {"--effect", "Emboss"};
    const Words chain = {"--effect", "Swirl", "--set", "Angle=40", "--effect", "Bump"};
    for (const Words& effects : {emboss, chain}) {
        for (const std::string ending : {".gif", ".apng", ".webp"}) {
            const size_t size = PlainSize("full" + ending, effects);
            DeleteFileAt(folder.path + "full" + ending);
            Fitted(ending, effects, size * 2 / 3);
        }
    }
}

TEST_F(Fit, Transparent_sources_and_sources_without_an_effect_are_fitted) {
    for (const bool transparent : {false, true}) {
        WriteColorful(input, 3, transparent);
        for (const Words& options : {Words{}, Words{"--effect", "Ripple"}}) {
            for (const std::string ending : {".gif", ".apng", ".webp"}) {
                Words any = options;
                if (any.empty()) any = {"--loop", "3"};
                const size_t size = PlainSize("full" + ending, any);
                DeleteFileAt(folder.path + "full" + ending);
                Fitted(ending, any, size / 2, {"--allow", "scale"});
            }
        }
    }
}

TEST_F(Fit, What_fits_without_loss_is_left_as_it_is) {
    WriteTestGif(folder.path + "in.gif", 4);
    input = folder.path + "in.gif";
    for (const std::string ending : {".gif", ".apng", ".webp"}) {
        const nlohmann::json result = Fitted(ending, {"--reverse"}, 1000000);
        EXPECT_EQ(result["options"], "");
        EXPECT_EQ(result["tried"].size(), 1u);
        EXPECT_EQ(result["tried"][0]["look"], 100);
    }
}

TEST_F(Fit, More_room_never_looks_worse) {
    WriteColorful(input, 8, false);
    double before = 0;
    for (const size_t limit : {6000u, 10000u, 20000u, 200000u}) {
        const nlohmann::json result =
            Fitted(".gif", {"--effect", "Emboss"}, limit, {"--allow", "scale,frames"});
        double look = 0;
        size_t marked = 0;
        for (const nlohmann::json& row : result["tried"]) {
            EXPECT_EQ(row["fits"], row["bytes"] <= limit);
            if (!row["chosen"]) continue;
            ++marked;
            look = row["look"];
            EXPECT_EQ(row["bytes"], result["bytes"]);
            EXPECT_EQ(row["options"], result["options"]);
        }
        EXPECT_EQ(marked, 1u);
        EXPECT_GE(look, before);
        before = look;
        for (const nlohmann::json& row : result["tried"]) EXPECT_FALSE(row["fits"] && row["look"] > look);
    }
}

TEST_F(Fit, One_colour_or_one_quality_more_does_not_fit) {
    WriteColorful(input, 8, false);
    for (const std::string ending : {".gif", ".apng", ".webp"}) {
        const std::string name = ending == ".webp" ? "--quality" : "--colors";
        // So that nothing but the number is left to be chosen.
        Words options = {"--effect", "Swirl"};
        if (ending != ".webp") options.insert(options.end(), {"--palette", "custom"});
        const size_t most = PlainSize("full" + ending, options) * (ending == ".webp" ? 4 : 8) / 10;
        DeleteFileAt(folder.path + "full" + ending);
        for (const size_t limit : {most, most * 5 / 6, most * 2 / 3}) {
            const nlohmann::json result = Fitted(ending, options, limit);
            Words chosen = SplitOptions(result["options"]);
            const auto number = std::find(chosen.begin(), chosen.end(), name);
            ASSERT_NE(number, chosen.end()) << result.dump(2);
            const int next = std::stoi(number[1]) + 1;
            number[1] = std::to_string(next);
            chosen.insert(chosen.begin(), options.begin(), options.end());
            chosen.push_back("--force");
            EXPECT_GT(PlainSize("next" + ending, chosen), limit) << result.dump(2);
        }
    }
}

TEST_F(Fit, What_is_allowed_is_used_and_nothing_else) {
    WriteColorful(input, 9, false);
    const Words options = {"--effect", "Emboss", "--colors", "16"};
    Words fit = options;
    fit.insert(fit.end(), {"--max-size", "500"});
    const nlohmann::json refused = RunKestrelForJson(Command("no.gif", fit));
    EXPECT_EQ(refused["exitCode"], 8);
    EXPECT_NE(std::string(refused["error"]).find("--allow scale,frames,lossy"), std::string::npos)
        << refused["error"];
    ASSERT_FALSE(refused["tried"].empty());
    size_t smallest = SIZE_MAX;
    for (const nlohmann::json& row : refused["tried"]) {
        smallest = std::min<size_t>(smallest, row["bytes"]);
        EXPECT_EQ(row["width"], 64);
        EXPECT_EQ(row["frames"], 9);
        EXPECT_FALSE(row["fits"]);
    }
    EXPECT_FALSE(FileExists(folder.path + "no.gif"));
    const nlohmann::json scaled = Fitted(".gif", options, smallest - 100, {"--allow", "scale"});
    EXPECT_LT(scaled["width"], 64);
    EXPECT_EQ(scaled["frames"], 9);
}

TEST_F(Fit, A_still_that_does_not_fit_is_to_be_made_smaller) {
    WriteColorful(input, 1, false);
    const ProgramResult result =
        RunKestrel(Command("no.gif", {"--colors", "2", "--max-size", "10", "--allow", "scale,lossy"}));
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_NE(result.err.find("; make the picture smaller with --resize, or take a larger --max-size.\n"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(result.err.find(" bytes ("), std::string::npos) << "below a thousand: " << result.err;
}

TEST_F(Fit, The_smallest_that_was_reached_is_named_and_the_earlier_file_stays) {
    WriteColorful(input, 4, false);
    WriteText(folder.path + "out.gif", "earlier");
    const ProgramResult result = RunKestrel(Command(
        "out.gif", {"--effect", "Neon", "--max-size", "120", "--allow", "scale,frames,lossy", "--force"}));
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_NE(result.err.find("the smallest has "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("larger --max-size"), std::string::npos) << result.err;
    EXPECT_EQ(ReadText(folder.path + "out.gif"), "earlier");
    EXPECT_EQ(FilesIn(folder.path).size(), 2u);
}

TEST_F(Fit, The_table_stands_before_the_result_and_quiet_leaves_it_out) {
    WriteColorful(input, 3, false);
    const Words options = {"--effect", "Neon", "--max-size", "100K", "--force"};
    const ProgramResult told = RunKestrel(Command("out.gif", options));
    ASSERT_EQ(told.exitCode, 0) << told.err;
    EXPECT_NE(told.out.find("chosen\n"), std::string::npos) << told.out;
    EXPECT_NE(told.out.find(" dB  "), std::string::npos) << told.out;
    Words quiet = options;
    quiet.push_back("--quiet");
    const ProgramResult result = RunKestrel(Command("out.gif", quiet));
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1) << result.out;
}

TEST_F(Fit, Standard_output_gets_the_file_that_fits) {
    WriteColorful(input, 3, false);
    const ProgramResult result =
        RunKestrel({"apply", input, "-o", "-", "--format", "gif", "--effect", "Neon", "--max-size", "3K"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_LE(result.out.size(), 3000u);
    EXPECT_EQ(result.out.substr(0, 6), "GIF89a");
    EXPECT_NE(result.err.find("chosen"), std::string::npos);
}

TEST_F(Fit, A_picture_is_fitted_and_a_series_is_refused) {
    WriteColorful(input, 3, false);
    const nlohmann::json one = Fitted(".png", {"--frames", "1", "--effect", "Emboss"}, 3000);
    EXPECT_EQ(one["frames"], 1);
    const ProgramResult series = RunKestrel(Command("out.png", {"--effect", "Emboss", "--max-size", "1M"}));
    EXPECT_EQ(series.exitCode, 2);
    EXPECT_NE(series.err.find("series"), std::string::npos);
}

TEST_F(Fit, Wrong_sizes_are_refused) {
    WriteColorful(input, 1, false);
    for (const std::string size :
         {"", "0", "-5", "x", "2X", "1T", "1e9", "1e9G", "1.2.3M", "99999999999999999999"}) {
        const ProgramResult result = RunKestrel(Command("out.gif", {"--effect", "Neon", "--max-size", size}));
        EXPECT_EQ(result.exitCode, 2) << size;
        EXPECT_EQ(result.err,
                  "kestrel: --max-size takes a number of bytes as 500000, 500K, 1.5M or 2MiB, not \"" + size +
                      "\".\n");
    }
    for (const std::string list : {"", "size", "scale,", ",scale", "scale frames"}) {
        const ProgramResult result =
            RunKestrel(Command("out.gif", {"--effect", "Neon", "--max-size", "1M", "--allow", list}));
        EXPECT_EQ(result.exitCode, 2) << list;
        EXPECT_EQ(result.err, "kestrel: --allow takes scale, frames and lossy, divided by commas, not \"" +
                                  list + "\".\n");
    }
}

TEST_F(Fit, Shrinking_and_leaving_out_frames_come_behind_the_effect) {
    WriteColorful(input, 7, false);
    PlainSize("full.apng", {"--effect", "Emboss"});
    PlainSize("edited.apng", {"--effect", "Emboss", "--shrink", "50%", "--every", "3"});
    input = folder.path + "full.apng";
    PlainSize("expected.apng", {"--resize", "50%"});
    const Animation all = ReadBack(folder.path + "expected.apng");
    const Animation edited = ReadBack(folder.path + "edited.apng");
    ASSERT_EQ(edited.frames.size(), 3u);
    EXPECT_EQ(edited.width, 32);
    EXPECT_EQ(edited.loopCount, 2);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(edited.frames[i].pixels, all.frames[3 * i].pixels) << i;
        int time = 0;
        for (size_t j = 3 * i; j < std::min<size_t>(7, 3 * i + 3); ++j) time += MillisecondsOf(all.frames[j]);
        EXPECT_EQ(MillisecondsOf(edited.frames[i]), time) << i;
    }
    for (const std::string percent : {"0%", "101%", "-5%", "x", "12.5%", ""}) {
        EXPECT_EQ(RunKestrel(Command("no.gif", {"--shrink=" + percent})).exitCode, 2) << percent;
    }
}

}  // namespace
}  // namespace kfx::test
