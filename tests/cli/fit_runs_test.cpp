// SPDX-License-Identifier: MIT
// apply --max-size together with what other options ask of a run: batches, plans, recipes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sstream>

#include "media/utf8_path.h"
#include "tests/cli/colorful_animation.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using Words = std::vector<std::string>;

struct FitRuns : ::testing::Test {
    TemporaryFolder folder;

    std::string Path(const std::string& name) const { return folder.path + name; }

    ProgramResult Apply(const Words& inputs, const std::string& output, const Words& options) const {
        Words words = {"apply"};
        for (const std::string& input : inputs) words.push_back(Path(input));
        words.insert(words.end(), {"-o", Path(output)});
        words.insert(words.end(), options.begin(), options.end());
        return RunKestrel(words);
    }

    // Of the file without a limit.
    size_t PlainSize(const std::string& input) const {
        EXPECT_EQ(Apply({input}, "plain.gif", {"--effect=Swirl", "--force"}).exitCode, 0);
        return ReadText(Path("plain.gif")).size();
    }

    static std::string MaxSize(size_t bytes) { return "--max-size=" + std::to_string(bytes); }

    ProgramResult Verify(const std::string& made, const std::string& source) const {
        return RunKestrel({"verify", Path(made), "--source", Path(source)});
    }
};

TEST_F(FitRuns, Every_file_of_a_batch_gets_settings_of_its_own) {
    WriteTestGif(Path("few colours.gif"), 3);
    WriteColorful(Path("many \xC3\xA9.apng"), 4, false);
    const size_t most = PlainSize("many \xC3\xA9.apng") * 2 / 3;
    ASSERT_LT(PlainSize("few colours.gif"), most);
    const ProgramResult result = Apply({"few colours.gif", "many \xC3\xA9.apng"}, "out/",
                                       {"--effect=Swirl", "--format=gif", "--json", MaxSize(most)});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    std::istringstream lines(result.out);
    std::vector<std::string> options;
    for (std::string text; std::getline(lines, text);) {
        const nlohmann::json line = nlohmann::json::parse(text);
        if (line.contains("summary")) continue;
        EXPECT_LE(line["bytes"], most);
        EXPECT_FALSE(line["tried"].empty());
        options.push_back(line["options"]);
    }
    ASSERT_EQ(options.size(), 2u);
    EXPECT_NE(options[0], options[1]);
    for (const char* name : {"out/few colours.gif", "out/many \xC3\xA9.gif"})
        EXPECT_LE(ReadText(Path(name)).size(), most);
}

TEST_F(FitRuns, A_file_of_a_batch_that_cannot_fit_stops_no_other) {
    WriteTestGif(Path("a.gif"), 1);
    WriteColorful(Path("b.apng"), 5, false);
    const std::string most = std::to_string(2 * PlainSize("a.gif"));
    const ProgramResult result =
        Apply({"a.gif", "b.apng"}, "out/",
              {"--effect=Swirl", "--format=gif", "--palette=216", "--max-size=" + most});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_THAT(result.err, HasSubstr("b.gif: nothing fits into " + most + "; the smallest has "));
    EXPECT_THAT(result.err, HasSubstr("1 done, 1 failed."));
    EXPECT_TRUE(FileExists(Path("out/a.gif")));
    EXPECT_FALSE(FileExists(Path("out/b.gif")));
}

TEST_F(FitRuns, A_plan_searches_nothing_and_refuses_what_cannot_be_read) {
    WriteTestGif(Path("a.gif"), 2);
    const ProgramResult plan = Apply({"a.gif"}, "out.gif", {"--effect=Emboss", "--max-size=1", "--dry-run"});
    EXPECT_EQ(plan.exitCode, 0) << plan.err;
    EXPECT_THAT(plan.out, Not(HasSubstr("bytes")));
    EXPECT_EQ(Apply({"a.gif"}, "out.gif", {"--effect=Emboss", "--max-size=2X", "--dry-run"}).exitCode, 2);
    EXPECT_FALSE(FileExists(Path("out.gif")));
}

TEST_F(FitRuns, What_is_there_and_small_enough_is_passed_over) {
    WriteColorful(Path("in.apng"), 4, false);
    const Words options = {"--effect=Emboss", "--max-size=5000", "--allow=scale,frames"};
    ASSERT_EQ(Apply({"in.apng"}, "out.gif", options).exitCode, 0);
    const std::string made = ReadText(Path("out.gif"));
    Words again = options;
    again.emplace_back("--skip-done");
    const ProgramResult skipped = Apply({"in.apng"}, "out.gif", again);
    EXPECT_EQ(skipped.exitCode, 0) << skipped.err;
    EXPECT_THAT(skipped.out, HasSubstr("is there already"));
    again[1] = "--max-size=" + std::to_string(made.size() - 1);
    const ProgramResult tooLarge = Apply({"in.apng"}, "out.gif", again);
    EXPECT_EQ(tooLarge.exitCode, 4);
    EXPECT_THAT(tooLarge.err, HasSubstr("is there, but it is larger than --max-size"));
    EXPECT_EQ(ReadText(Path("out.gif")), made);
    again.emplace_back("--force");
    EXPECT_EQ(Apply({"in.apng"}, "out.gif", again).exitCode, 0);
    EXPECT_LT(ReadText(Path("out.gif")).size(), made.size());
}

TEST_F(FitRuns, A_shrunken_result_that_is_there_must_have_its_size) {
    WriteColorful(Path("in.apng"), 5, false);
    ASSERT_EQ(Apply({"in.apng"}, "out.gif", {"--shrink=50", "--every=2"}).exitCode, 0);
    EXPECT_EQ(Apply({"in.apng"}, "out.gif", {"--shrink=50", "--every=2", "--skip-done"}).exitCode, 0);
    EXPECT_THAT(Apply({"in.apng"}, "out.gif", {"--shrink=60", "--every=2", "--skip-done"}).err,
                HasSubstr("another size"));
    EXPECT_THAT(Apply({"in.apng"}, "out.gif", {"--shrink=50", "--every=3", "--skip-done"}).err,
                HasSubstr("another number of frames"));
}

TEST_F(FitRuns, A_recipe_has_what_was_chosen_and_repeats_the_bytes) {
    struct Case {
        const char* source;
        const char* output;
        Words options;
    };
    WriteColorful(Path("moving.apng"), 5, false);
    WriteColorful(Path("one.apng"), 1, false);
    WriteColorful(Path("disc.apng"), 3, true);
    const Case cases[] = {
        {"moving.apng", "1.gif", {"--effect=Swirl", "--max-size=1500", "--allow=scale,frames"}},
        {"moving.apng", "2.gif", {"--effect=Swirl", "--max-size=6000", "--allow=lossy"}},
        {"moving.apng", "3.webp", {"--effect=Swirl", "--effect=Bump", "--max-size=3000"}},
        {"one.apng", "4.gif", {"--effect=Water Drops", "--max-size=2500"}},
        {"one.apng", "5.apng", {"--effect=Neon", "--max-size=1500", "--allow=scale"}},
        {"disc.apng", "6.gif", {"--effect=Ripple", "--max-size=4000"}},
        {"disc.apng", "7.apng", {"--resize=30x", "--max-size=3000"}},
    };
    for (const Case& each : cases) {
        const ProgramResult made = Apply({each.source}, each.output, each.options);
        ASSERT_EQ(made.exitCode, 0) << each.output << made.err << made.out;
        const ProgramResult again = Verify(each.output, each.source);
        EXPECT_EQ(again.exitCode, 0) << each.output << again.err;
        const std::string recipe = RunKestrel({"recipe", Path(each.output)}).out;
        EXPECT_THAT(recipe, Not(HasSubstr("max-size"))) << recipe;
        EXPECT_THAT(recipe, Not(HasSubstr("allow"))) << recipe;
    }
    const std::string shrunk = RunKestrel({"recipe", Path("1.gif")}).out;
    EXPECT_TRUE(shrunk.find("shrink") != std::string::npos || shrunk.find("every") != std::string::npos)
        << shrunk;
}

TEST_F(FitRuns, A_recipe_that_is_repeated_within_a_size_is_searched_anew) {
    WriteColorful(Path("in.apng"), 4, false);
    ASSERT_EQ(Apply({"in.apng"}, "made.gif", {"--effect=Emboss", "--shrink=50"}).exitCode, 0);
    const size_t size = ReadText(Path("made.gif")).size();
    const ProgramResult again = Apply(
        {"in.apng"}, "again.gif", {"--recipe=" + Path("made.gif"), "--max-size=" + std::to_string(size / 2)});
    ASSERT_EQ(again.exitCode, 0) << again.err;
    EXPECT_LE(ReadText(Path("again.gif")).size(), size / 2);
    EXPECT_EQ(Verify("again.gif", "in.apng").exitCode, 0);
}

}  // namespace
}  // namespace kfx::test
