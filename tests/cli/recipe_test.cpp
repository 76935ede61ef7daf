// SPDX-License-Identifier: MIT
// Recipes: kept in what is made, printed, repeated on another picture, and made again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "commands/fingerprint.h"
#include "media/animation_writer.h"
#include "media/recipe_note.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using Arguments = std::vector<std::string>;

struct Recipes : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";

    void SetUp() override { WriteTestGif(input, 3); }

    std::string Path(const std::string& name) const { return folder.path + name; }

    ProgramResult Run(Arguments arguments, const Arguments& more = {}) const {
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunKestrel(arguments);
    }

    // Makes the file and returns its path.
    std::string Make(const std::string& name, const Arguments& options,
                     const std::string& source = "") const {
        const ProgramResult result =
            Run({"apply", source.empty() ? input : source, "-o", Path(name), "--force"}, options);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return Path(name);
    }

    std::string RecipeIn(const std::string& path) const { return ReadBack(path).recipe; }

    void ExpectVerified(const std::string& path, const Arguments& sources) const {
        Arguments arguments = {"verify", path};
        for (const std::string& source : sources) arguments.insert(arguments.end(), {"--source", source});
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out,
                  path + ": verified: the same " + std::to_string(ReadText(path).size()) + " bytes.\n");
    }
};

TEST_F(Recipes, Each_format_keeps_one_beside_the_sources_comment) {
    for (const char* name : {"out.gif", "out.webp", "out.apng", "out.png"}) {
        const Animation made = ReadBack(Make(name, {"--effect=Emboss", "--set=Radius=18", "--frames=2"}));
        const std::string format = std::string(name).substr(4);
        EXPECT_EQ(made.recipe,
                  std::string(kRecipeStart) + "16.0a\n;--format=" + format +
                      "\n;--effect=Emboss\n;--set=Radius=18\n;--frames=2\n;fingerprint " +
                      commands::FingerprintOf(made) + "\nCMBBOX50=1\nSCROLL100=18\nSCROLL103=15\n" +
                      (format == "gif" ? "CHKBOX10=0\nCHKBOX14=1\n" : "") + "CHKBOX20=0\n;End of document\n");
        EXPECT_EQ(made.comment, format == "webp" ? "" : "a test");
    }
    EXPECT_EQ(ReadText(Make("out.y4m", {"--effect=Emboss"})).find("kestrel"), std::string::npos);
}

TEST_F(Recipes, The_fingerprint_is_that_of_the_file_when_nothing_is_lost) {
    WriteTestGif(Path("holes.gif"), 4, true);
    const Arguments kinds[] = {{"--effect=Swirl"},
                               {"--effect=Swirl", "--palette=216-color safe", "--dither", "--supercompress"},
                               {"--resize=50%", "--loop=forever", "--fps=30"},
                               {"--frames=2-", "--reverse"}};
    for (const std::string& source : {input, Path("holes.gif")}) {
        for (const char* name : {"out.gif", "out.webp", "out.apng"}) {
            for (const Arguments& options : kinds) {
                const Animation made = ReadBack(Make(name, options, source));
                EXPECT_THAT(made.recipe, HasSubstr(";fingerprint " + commands::FingerprintOf(made) + "\n"))
                    << name << " " << ::testing::PrintToString(options);
            }
        }
    }
    for (const Arguments& lossy : {Arguments{"out.gif", "--lossy=60"}, {"out.webp", "--quality=60"}})
        EXPECT_THAT(RecipeIn(Make(lossy[0], {"--effect=Swirl", lossy[1]})), HasSubstr(" before loss\n"));
}

TEST_F(Recipes, A_usual_one_takes_some_three_hundred_bytes) {
    for (const char* name : {"out.gif", "out.webp", "out.png"}) {
        const Arguments options = {"--effect=Emboss", "--set=Radius=18", "--set=Depth=30", "--frames=1"};
        Arguments without = options;
        without.emplace_back("--no-recipe");
        const size_t with = ReadText(Make(name, options)).size();
        const std::string bare = Make(name, without);
        EXPECT_EQ(RecipeIn(bare), "");
        EXPECT_LE(with - ReadText(bare).size(), 360u) << name;
    }
}

TEST_F(Recipes, The_same_command_gives_the_same_bytes_and_no_path_is_kept) {
    WriteTestGif(Path("else.gif"), 3);
    const std::string one = ReadText(Make("one.gif", {"--effect=Swirl"}));
    EXPECT_TRUE(one == ReadText(Make("two.gif", {"--effect", "Swirl", "--quiet"}, Path("else.gif"))));
    EXPECT_THAT(one, Not(HasSubstr("else")));
}

TEST_F(Recipes, A_further_edit_has_its_own) {
    Make("one.gif", {"--effect=Swirl"});
    EXPECT_THAT(RecipeIn(Make("two.gif", {"--effect=Bump"}, Path("one.gif"))),
                AllOf(HasSubstr("Bump"), Not(HasSubstr("Swirl"))));
    EXPECT_EQ(RecipeIn(Make("bare.gif", {"--effect=Bump", "--no-recipe"}, Path("one.gif"))), "");
}

TEST_F(Recipes, It_is_printed_written_and_described) {
    const std::string made = Make("out.gif", {"--effect=Swirl", "--set=Angle=90"});
    EXPECT_EQ(RunKestrel({"recipe", made}).out, RecipeIn(made));
    EXPECT_EQ(RunKestrel({"recipe", made, "-o", Path("look.kx1")}).exitCode, 0);
    EXPECT_EQ(ReadText(Path("look.kx1")), RecipeIn(made));
    EXPECT_EQ(RunKestrel({"recipe", made, "-o", Path("look.kx1")}).exitCode, 4) << "it exists";
    EXPECT_EQ(RunKestrel({"recipe", made, "-o", Path("look.txt")}).exitCode, 2);
    const nlohmann::json object = RunKestrelForJson({"recipe", made});
    EXPECT_EQ(object["recipe"]["version"], "16.0a");
    EXPECT_EQ(object["recipe"]["options"], (Arguments{"--format=gif", "--effect=Swirl", "--set=Angle=90"}));
    EXPECT_EQ(object["recipe"]["fingerprint"], commands::FingerprintOf(ReadBack(made)));
    const ProgramResult none = RunKestrel({"recipe", input});
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_EQ(none.err, "kestrel: " + input +
                            ": holds no recipe; kestrel apply keeps one in the files that it makes.\n");
}

TEST_F(Recipes, It_is_repeated_on_another_picture) {
    WriteTestGif(Path("other.gif"), 2, true);
    const Arguments chain = {"--effect=Swirl", "--set=Angle=90", "--effect=Emboss", "--set=Radius=9",
                             "--resize=50%",   "--dither",       "--lossy=20"};
    const std::string made = Make("made.gif", chain);
    ASSERT_EQ(RunKestrel({"recipe", made, "-o", Path("look.kx1")}).exitCode, 0);
    const std::string direct = ReadText(Make("direct.gif", chain, Path("other.gif")));
    for (const std::string& recipe : {made, Path("look.kx1")})
        EXPECT_TRUE(direct == ReadText(Make("again.gif", {"--recipe", recipe}, Path("other.gif")))) << recipe;
}

TEST_F(Recipes, What_is_given_beside_it_wins) {
    const std::string made =
        Make("made.gif", {"--effect=Emboss", "--set=Radius=9", "--set=Depth=30", "--lossy=20"});
    EXPECT_TRUE(
        ReadText(Make("direct.gif", {"--effect=Emboss", "--set=Radius=4", "--set=Depth=30", "--lossy=90"})) ==
        ReadText(Make("again.gif", {"--set=rad=4", "--lossy=90", "--recipe", made})));
    EXPECT_TRUE(ReadText(Make("direct.gif", {"--effect=Bump", "--lossy=20"})) ==
                ReadText(Make("again.gif", {"--effect=Bump", "--recipe", made})));
    const ProgramResult other = Run({"apply", input, "-o", Path("again.webp"), "--recipe", made});
    EXPECT_EQ(other.exitCode, 0);
    EXPECT_THAT(other.err, HasSubstr("the recipe's --lossy=20 is not for this output; it is left out."));
    EXPECT_TRUE(ReadText(Make("direct.webp", {"--effect=Emboss", "--set=Radius=9", "--set=Depth=30"})) ==
                ReadText(Path("again.webp")));
    // The recipe also says the format of an output that does not.
    EXPECT_TRUE(ReadText(Make("direct.gif", {"--effect=Bump", "--lossy=20"})) ==
                RunKestrel({"apply", input, "-o", "-", "--effect=Bump", "--recipe", made}).out);
}

TEST_F(Recipes, A_number_of_colours_is_a_palette_option_too) {
    const auto again = [&](const std::string& made, const Arguments& more) {
        Arguments options = {"--recipe", made};
        options.insert(options.end(), more.begin(), more.end());
        return ReadText(Make("again.webp", options));
    };
    const auto direct = [&](const Arguments& options) { return ReadText(Make("direct.webp", options)); };
    const std::string few = Make("few.webp", {"--effect=Bump", "--colors=9", "--fast-remap"});
    const std::string fixed = Make("fixed.webp", {"--effect=Bump", "--palette=64-color"});
    EXPECT_TRUE(again(few, {}) == ReadText(few)) << "--fast-remap";
    EXPECT_TRUE(again(few, {"--true-color"}) == direct({"--effect=Bump", "--true-color"}));
    EXPECT_TRUE(again(few, {"--palette=64-color"}) ==
                direct({"--effect=Bump", "--palette=64-color", "--fast-remap"}));
    EXPECT_TRUE(again(few, {"--palette=custom"}) ==
                direct({"--effect=Bump", "--palette=custom", "--colors=9", "--fast-remap"}));
    EXPECT_TRUE(again(fixed, {"--colors=9"}) == direct({"--effect=Bump", "--colors=9"}));
}

TEST_F(Recipes, Settings_documents_are_taken_over) {
    WriteText(Path("look.kx1"),
              std::string(kRecipeStart.substr(0, kRecipeStart.find('\n') + 1)) +
                  ";Start of document\r\nTXTFLD41=C:\\in.gif\r\nCMBBOX50=17\r\nSCROLL193=1530\r\n"
                  "SCROLL100=18\r\nCHKBOX10=0\r\nCHKBOX14=0\r\nCMBBOX13=5\r\nCHKBOX15=1\r\n");
    EXPECT_TRUE(ReadText(Make("direct.gif", {"--effect=Swirl", "--set=Angle=90", "--palette=216-color safe",
                                             "--dither"})) ==
                ReadText(Make("again.gif", {"--settings", Path("look.kx1")})));
    EXPECT_TRUE(ReadText(Make("direct.gif", {"--effect=Emboss", "--set=Radius=18", "--set=Depth=40",
                                             "--palette=black", "--dither"})) ==
                ReadText(Make("again.gif", {"--settings", Path("look.kx1"), "--effect=emboss",
                                            "--set=Depth=40", "--palette=black"})));
    WriteText(Path("bad.kx1"), "SCROLL193=1530\n");
    const ProgramResult bad = Run({"apply", input, "-o", Path("x.gif"), "--settings", Path("bad.kx1")});
    EXPECT_EQ(bad.exitCode, 3);
    EXPECT_EQ(bad.err,
              "kestrel: " + Path("bad.kx1") + ": is not a settings document; its first line is another.\n");
    WriteText(Path("bad.kx1"), "");
    EXPECT_EQ(Run({"apply", input, "-o", Path("x.gif"), "--settings", Path("bad.kx1")}).err,
              "kestrel: " + Path("bad.kx1") + ": the file is empty.\n");
    EXPECT_EQ(Run({"apply", input, "-o", Path("x.gif"), "--settings", Path("missing.kx1")}).exitCode, 3);
    EXPECT_EQ(Run({"apply", input, "-o", Path("x.gif"), "--settings", Path("look.kx1"), "--recipe", "y"}).err,
              "kestrel: --settings and --recipe exclude each other.\n");
    EXPECT_FALSE(FileExists(Path("x.gif")));
}

TEST_F(Recipes, Whatever_was_made_is_verified) {
    WriteTestGif(Path("holes.gif"), 3, true);
    const Arguments kinds[] = {{"--effect=Swirl", "--effect=Emboss", "--set=Radius=9"},
                               {"--resize=60x", "--crop=20x20", "--reverse", "--frames=1-2"},
                               {"--effect=Water Drops"},
                               {"--effect=Motion Blur", "--edges=extend", "--local-background=102030",
                                "--palette=black", "--dither"}};
    for (const std::string& source : {input, Path("holes.gif")}) {
        for (const char* name : {"out.gif", "out.webp", "out.apng"}) {
            for (const Arguments& options : kinds) ExpectVerified(Make(name, options, source), {source});
        }
    }
    ExpectVerified(Make("lossy.gif", {"--effect=Bump", "--lossy=80"}), {input});
    ExpectVerified(Make("lossy.webp", {"--effect=Bump", "--quality=50", "--effort=2"}), {input});
    ExpectVerified(Make("quick.apng", {"--effect=Bump", "--effort=1"}), {input});
    Make("series.png", {"--effect=Bump"});
    for (const char* name : {"series-000.png", "series-002.png"}) ExpectVerified(Path(name), {input});
}

TEST_F(Recipes, What_several_files_made_is_verified_too) {
    Make("still.png", {"--format=png"});
    const Arguments stills = {Path("still-000.png"), Path("still-001.png"), Path("still-002.png")};
    Arguments join = {"apply",      stills[0], stills[1],           stills[2],      "--join",
                      "--delay=70", "-o",      Path("joined.webp"), "--effect=Bump"};
    ASSERT_EQ(RunKestrel(join).exitCode, 0);
    ExpectVerified(Path("joined.webp"), stills);
    ExpectVerified(Path("joined.webp"), {Path("still-%03d.png")});
    ExpectVerified(Path("joined.webp"), {Path("still-*.png")});
}

TEST_F(Recipes, Water_Drops_falls_in_the_same_way_by_the_kept_seed) {
    const std::string made = Make("one.gif", {"--effect=Water Drops", "--seed=5"});
    EXPECT_THAT(RecipeIn(made), HasSubstr("\n;--seed=5\n"));
    EXPECT_TRUE(ReadText(made) == ReadText(Make("two.gif", {"--recipe", made})));
    EXPECT_FALSE(ReadText(made) == ReadText(Make("two.gif", {"--recipe", made, "--seed=4294967295"})));
    EXPECT_THAT(RecipeIn(Make("two.gif", {"--effect=water"})), HasSubstr("\n;--seed="));
    EXPECT_THAT(RecipeIn(Make("two.gif", {"--effect=Bump"})), Not(HasSubstr("seed")));
    for (const char* wrong : {"-1", "4294967296", "x", "1.5", ""}) {
        EXPECT_EQ(Run({"apply", input, "-o", Path("x.gif"), "--effect=Water", std::string("--seed=") + wrong})
                      .exitCode,
                  2)
            << wrong;
    }
}

struct Differing : Recipes {
    std::string WhyNot(const std::string& path, const std::string& source) const {
        const ProgramResult result = RunKestrel({"verify", path, "--source", source});
        EXPECT_EQ(result.exitCode, 7);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, StartsWith("kestrel: " + path + ": not verified: "));
        return result.err;
    }
};

TEST_F(Differing, Another_source_is_told_by_the_first_frame_that_differs) {
    const std::string made = Make("made.webp", {"--effect=Bump"});
    Make("changed.webp", {"--reverse", "--format=webp"});
    EXPECT_THAT(WhyNot(made, Path("changed.webp")),
                AllOf(HasSubstr("the source is another one"), HasSubstr("; frame 0 ")));
    EXPECT_THAT(WhyNot(made, Make("small.webp", {"--resize=50%"})),
                HasSubstr("it has 40 x 30 pixels, and 20 x 15 pixels when it is made again."));
    EXPECT_THAT(WhyNot(made, Make("slow.webp", {"--speed=0.5"})),
                HasSubstr("frame 0 is shown for 50 ms, and 100 when it is made again."));
    EXPECT_THAT(WhyNot(made, Make("less.webp", {"--frames=0-1"})),
                HasSubstr("it has 3 frames, and 2 when it is made again."));
    EXPECT_THAT(WhyNot(made, Make("loop.webp", {"--loop=7"})),
                HasSubstr("it is played 4 times, and 7 times when it is made again."));
    const nlohmann::json object = RunKestrelForJson({"verify", made, "--source", Path("loop.webp")});
    EXPECT_EQ(object["verified"], false);
    EXPECT_EQ(object["exitCode"], 7);
}

TEST_F(Differing, A_file_that_was_changed_later_is_told_by_its_fingerprint) {
    const std::string made = Make("made.webp", {"--effect=Bump"});
    Animation changed = ReadBack(made);
    changed.frames[1].pixels[0] ^= 4;
    std::string error;
    ASSERT_TRUE(WriteWebp(made, changed, &error)) << error;
    EXPECT_THAT(WhyNot(made, input), AllOf(HasSubstr("it has been changed since it was made"),
                                           HasSubstr("frame 1 differs when it is made again.")));
}

TEST_F(Differing, Equal_pictures_in_other_bytes_are_told) {
    const std::string made = Make("made.webp", {"--effect=Bump"});
    Animation same = ReadBack(made);
    std::string error;
    ASSERT_TRUE(WriteWebp(made, same, &error, {.effort = 0}));
    EXPECT_THAT(WhyNot(made, input),
                HasSubstr("its pictures and times are the same, but another encoder has written it."));
    same.metadata.xmp = {'x'};
    ASSERT_TRUE(WriteWebp(made, same, &error));
    EXPECT_THAT(WhyNot(made, input),
                HasSubstr("its pictures and times are the same, but its metadata differ."));
    const size_t version = same.recipe.find("16.0a");
    same.metadata.xmp.clear();
    same.recipe.replace(version, 5, "15.0a");
    ASSERT_TRUE(WriteWebp(made, same, &error));
    EXPECT_THAT(WhyNot(made, input), HasSubstr("(kestrel 15.0a made it, this is 16.0a)."));
}

TEST_F(Recipes, What_cannot_be_verified_says_why) {
    EXPECT_EQ(RunKestrel({"verify", input, "--source", input}).exitCode, 3) << "no recipe";
    const std::string made = Make("made.gif", {"--effect=Bump"});
    EXPECT_EQ(RunKestrel({"verify", made, "--source", Path("missing.gif")}).exitCode, 3);
    EXPECT_EQ(RunKestrel({"verify", made}).exitCode, 2);
    WriteText(Path("look.kx1"), RecipeIn(made));
    EXPECT_EQ(RunKestrel({"verify", Path("look.kx1"), "--source", input}).err,
              "kestrel: " + Path("look.kx1") + ": is a text; verify takes the file that was made.\n");
}

TEST_F(Recipes, A_recipe_from_elsewhere_does_nothing_but_what_it_may) {
    Animation foreign = ReadBack(Make("made.webp", {"--effect=Bump"}));
    std::string error;
    const std::string recipe = foreign.recipe;
    for (const char* line : {";--output=elsewhere.gif\n", ";--sparkle\n", ";--format=../../x\n",
                             ";--format=rgb\n", ";--resize=100000x100000\n", ";--set=Depth=9\n"}) {
        foreign.recipe = recipe;
        foreign.recipe.insert(recipe.find(";fingerprint"), line);
        ASSERT_TRUE(WriteWebp(Path("foreign.webp"), foreign, &error));
        const ProgramResult verified = RunKestrel({"verify", Path("foreign.webp"), "--source", input});
        EXPECT_THAT(verified.exitCode, ::testing::AnyOf(2, 3)) << line << verified.err;
    }
    EXPECT_EQ(FilesIn(folder.path), (Arguments{"foreign.webp", "in.gif", "made.webp"}));
}

}  // namespace
}  // namespace kfx::test
