// SPDX-License-Identifier: MIT
// Which options a recipe keeps, and what becomes of them beside those of a command line.
#include "commands/recipe_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "commands/command_row.h"
#include "commands/recipe_text.h"

namespace kfx::commands {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Arguments = std::vector<std::string>;

CommandLine Accept(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), ParseOutcome::Run) << text;
    return line;
}

Arguments TextsOf(const OptionWords& words) {
    Arguments texts;
    for (const OptionWord& word : words) texts.push_back(TextOf(word));
    return texts;
}

OptionWords Words(const Arguments& texts) {
    OptionWords words;
    for (const std::string& text : texts) {
        OptionWord word;
        EXPECT_TRUE(ReadOptionWord(text, &word)) << text;
        words.push_back(word);
    }
    return words;
}

// The words of the recipe that such a command keeps.
Arguments RecipeOf(const std::string& output, const Arguments& options) {
    Arguments arguments = {"apply", "in.gif", "-o", output};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const RecipeDraft draft = DraftRecipe(Accept(arguments));
    Recipe recipe;
    std::string error;
    EXPECT_TRUE(ReadRecipe(FinishRecipe(draft, std::string(32, '0')), &recipe, &error)) << error;
    return TextsOf(recipe.words);
}

// For each option that the result depends on: how it is given, and for which output.
struct Sample {
    std::string output;
    Arguments options;
};

const std::map<std::string, Sample> kSamples = {
    {"allow", {"out.gif", {"--max-size=1M", "--allow=scale"}}},
    {"colors", {"out.gif", {"--effect=Bump", "--colors=20"}}},
    {"comment", {"out.gif", {"--effect=Bump", "--comment"}}},
    {"crop", {"out.gif", {"--crop=8x6+1+2"}}},
    {"delay", {"out.gif", {"--delay=40"}}},
    {"dither", {"out.gif", {"--effect=Bump", "--dither"}}},
    {"dither-brightness", {"out.gif", {"--effect=Bump", "--dither-brightness=7"}}},
    {"dither-contrast", {"out.gif", {"--effect=Bump", "--dither-contrast=7"}}},
    {"edges", {"out.gif", {"--effect=Motion Blur", "--edges=extend"}}},
    {"effect", {"out.gif", {"--effect=Swirl"}}},
    {"effort", {"out.webp", {"--effect=Bump", "--effort=3"}}},
    {"every", {"out.gif", {"--every=2"}}},
    {"fast-remap", {"out.gif", {"--effect=Bump", "--fast-remap"}}},
    {"fps", {"out.gif", {"--fps=12.5"}}},
    {"frames", {"out.gif", {"--frames=2-3"}}},
    {"local-background", {"out.gif", {"--effect=Swirl", "--local-background=102030"}}},
    {"loop", {"out.gif", {"--loop=3"}}},
    {"lossy", {"out.gif", {"--effect=Bump", "--lossy=20"}}},
    {"matte", {"out.gif", {"--effect=Bump", "--matte=102030"}}},
    {"max-size", {"out.gif", {"--effect=Bump", "--max-size=500K"}}},
    {"near-lossless", {"out.webp", {"--effect=Bump", "--near-lossless=60"}}},
    {"palette", {"out.gif", {"--effect=Bump", "--palette=216-color safe"}}},
    {"quality", {"out.webp", {"--effect=Bump", "--quality=80"}}},
    {"resize", {"out.gif", {"--resize=50%"}}},
    {"reverse", {"out.gif", {"--reverse"}}},
    {"set", {"out.gif", {"--effect=Swirl", "--set=Angle=90"}}},
    {"shrink", {"out.gif", {"--shrink=50"}}},
    {"speed", {"out.gif", {"--speed=2"}}},
    {"supercompress", {"out.gif", {"--effect=Bump", "--supercompress"}}},
    {"true-color", {"out.webp", {"--effect=Bump", "--true-color"}}},
};

// Options that say where files are, what is printed, or how fast it goes; and those by which a recipe is
// used.
const std::set<std::string> kWithoutResult = {
    "dry-run",  "force",      "format",     "help",      "jobs",   "join",   "json",
    "output",   "max-pixels", "no-comment", "no-recipe", "quiet",  "recipe", "recursive",
    "seamless", "seed",       "settings",   "skip-done", "survey", "threads"};

TEST(RecipeWords, Each_option_of_apply_is_kept_or_known_to_change_no_result) {
    for (const std::string& name : ApplyOptionNames()) {
        EXPECT_EQ(kSamples.count(name) + kWithoutResult.count(name), 1u)
            << "--" << name
            << " is new: when the result depends on it, say in kSamples how it is given; when not, name it "
               "in "
               "kWithoutResult and in kNotKept of commands/recipe_words.cpp";
        EXPECT_EQ(IsKept(name), kSamples.count(name) == 1) << "--" << name;
    }
    for (const auto& [name, sample] : kSamples) {
        const Arguments kept = RecipeOf(sample.output, sample.options);
        Arguments expected = {"--format=" + sample.output.substr(4)};
        expected.insert(expected.end(), sample.options.begin(), sample.options.end());
        EXPECT_EQ(kept, expected) << "--" << name;
    }
}

TEST(RecipeWords, Effects_keep_their_order_and_each_its_parameters) {
    EXPECT_THAT(
        RecipeOf("out.webp", {"--quality=80", "--effect=emb", "--set=depth=20", "--set=rad=9", "--resize",
                              "50%", "--effect", "SWIRL", "--set", "Angle=-90", "--effort=2"}),
        ElementsAre("--format=webp", "--effect=Emboss", "--set=Radius=9", "--set=Depth=20", "--effect=Swirl",
                    "--set=Angle=-90", "--resize=50%", "--quality=80", "--effort=2"));
    EXPECT_THAT(RecipeOf("out.gif", {"--set=radius=9", "--effect=emboss", "--palette=216"}),
                ElementsAre("--format=gif", "--effect=Emboss", "--set=Radius=9", "--palette=216-color safe"));
}

TEST(RecipeWords, What_names_files_or_is_printed_is_not_kept) {
    EXPECT_THAT(RecipeOf("out.gif", {"--effect=Bump", "--force", "--quiet", "--join", "--max-pixels=7"}),
                ElementsAre("--format=gif", "--effect=Bump"));
}

TEST(RecipeWords, Without_a_recipe_nothing_is_written) {
    const CommandLine line = Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump", "--no-recipe"});
    EXPECT_EQ(DraftRecipe(line).head, "");
    EXPECT_EQ(FinishRecipe({}, "0"), "");
}

TEST(RecipeWords, What_would_not_be_read_back_is_not_kept) {
    CommandLine line = Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump"});
    const OptionWord effect = line.recipe.kept.at(0);
    line.recipe.kept.assign(999, effect);  // beside --format
    EXPECT_NE(DraftRecipe(line).head, "");
    line.recipe.kept.push_back(effect);
    EXPECT_EQ(DraftRecipe(line).head, "") << "too many";
    line.recipe.kept.assign(400, {.name = "set", .value = "Radius=" + std::string(200, '1')});
    EXPECT_EQ(DraftRecipe(line).head, "") << "too long";
    EXPECT_TRUE(LosesRecipe(line));
}

TEST(RecipeWords, Without_a_format_there_is_no_result_that_keeps_one) {
    CommandLine line = Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump"});
    line.format.clear();
    EXPECT_EQ(DraftRecipe(line).head, "");
    EXPECT_FALSE(LosesRecipe(line));
}

TEST(RecipeWords, The_source_s_fingerprint_is_a_remark) {
    RecipeDraft draft = DraftRecipe(Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump"}));
    const std::string without = draft.head;
    NoteSource("0123abcd", &draft);
    EXPECT_EQ(draft.head, without + ";source fingerprint 0123abcd\n");
    Recipe recipe;
    std::string error;
    ASSERT_TRUE(ReadRecipe(FinishRecipe(draft, std::string(32, 'a')), &recipe, &error)) << error;
    EXPECT_EQ(recipe.fingerprint, std::string(32, 'a'));
    EXPECT_EQ(recipe.words.size(), 2u);
}

// A line that ends early would let its rest be read as the line of a control.
TEST(RecipeWords, An_option_that_is_no_single_line_is_not_kept_at_all) {
    for (const std::string& value : {std::string("a\nSCROLL100=5"), std::string(9000, 'a')}) {
        const CommandLine line =
            Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Emboss", "--set=Radius=" + value});
        EXPECT_EQ(DraftRecipe(line).head, "");
        EXPECT_TRUE(LosesRecipe(line));
    }
    EXPECT_FALSE(LosesRecipe(Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump"})));
    EXPECT_FALSE(LosesRecipe(Accept({"apply", "in.gif", "-o", "out.y4m", "--effect=Bump"})));
}

Arguments Beside(const Arguments& own, const Arguments& recipe, const std::string& format,
                 Arguments* leftOut = nullptr) {
    OptionWords left;
    Arguments held = TextsOf(WordsBeside(Words(own), Words(recipe), format, &left));
    if (leftOut) *leftOut = TextsOf(left);
    return held;
}

TEST(RecipeWords, What_is_given_replaces_what_the_recipe_has) {
    const Arguments recipe = {"--effect=Emboss", "--set=Radius=9", "--set=Depth=20", "--dither",
                              "--lossy=20"};
    EXPECT_EQ(Beside({}, recipe, "gif"), recipe);
    EXPECT_THAT(Beside({"--set=rad=4", "--lossy=30"}, recipe, "gif"),
                ElementsAre("--effect=Emboss", "--set=Depth=20", "--dither"));
    EXPECT_THAT(Beside({"--effect=Swirl"}, recipe, "gif"), ElementsAre("--dither", "--lossy=20"));
    EXPECT_THAT(Beside({"--true-color"}, {"--palette=custom", "--fast-remap"}, "webp"), IsEmpty());
    EXPECT_THAT(Beside({"--palette=custom"}, {"--true-color"}, "webp"), IsEmpty());
    EXPECT_THAT(Beside({"--no-comment"}, {"--comment"}, "gif"), IsEmpty());
    EXPECT_THAT(Beside({"--fps=20"}, {"--speed=2", "--delay=40"}, "gif"), IsEmpty());
}

TEST(RecipeWords, What_another_format_does_not_take_is_left_out) {
    Arguments left;
    EXPECT_THAT(Beside({}, {"--effect=Bump", "--lossy=20", "--fast-remap"}, "webp", &left),
                ElementsAre("--effect=Bump"));
    EXPECT_THAT(left, ElementsAre("--lossy=20", "--fast-remap"));
    EXPECT_THAT(Beside({}, {"--palette=custom", "--fast-remap", "--quality=80"}, "png", &left),
                ElementsAre("--palette=custom", "--fast-remap"));
    EXPECT_THAT(left, ElementsAre("--quality=80"));
}

std::string ErrorOf(const std::string& line, const std::string& version = ProgramVersion()) {
    std::string text = FinishRecipe(
        DraftRecipe(Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump"})), std::string(32, '0'));
    text.insert(text.find(";--effect"), line + "\n");
    const std::string own = ";kestrel " + ProgramVersion();
    text.replace(text.find(own), own.size(), ";kestrel " + version);
    Recipe recipe;
    std::string error;
    EXPECT_FALSE(ReadRecipe(text, &recipe, &error));
    return error;
}

TEST(RecipeWords, A_recipe_from_elsewhere_names_no_files_and_no_unknown_options) {
    EXPECT_EQ(ErrorOf(";--output=/etc/passwd"), "its recipe holds --output, which no recipe may hold.");
    EXPECT_EQ(ErrorOf(";--settings=x.kx1"), "its recipe holds --settings, which no recipe may hold.");
    EXPECT_EQ(ErrorOf(";--force"), "its recipe holds --force, which no recipe may hold.");
    const std::string unknown =
        "its recipe holds --sparkle, which kestrel " + ProgramVersion() + " does not know; ";
    EXPECT_EQ(ErrorOf(";--sparkle=3"), unknown + "the recipe has been changed or damaged.");
    EXPECT_EQ(ErrorOf(";--sparkle=3", "17.0"), unknown + "another version made it (17.0).");
    EXPECT_EQ(ErrorOf(";--effect=\x1B[2J"), "its recipe is damaged.");
    EXPECT_EQ(ErrorOf(";fingerprint 12"), "its recipe is damaged.");
    for (const char* part : {"3 of 2", "0 of 2", "x of 2", "1 in 2", "1 of x", "1 of 2x"})
        EXPECT_EQ(ErrorOf(";part " + std::string(part)), "its recipe is damaged.") << part;
    std::string many;
    for (int i = 0; i < 1001; ++i) many += ";--reverse\n";
    EXPECT_EQ(ErrorOf(many), "its recipe is damaged.");
}

TEST(RecipeWords, Lossy_results_and_parts_of_a_series_say_so) {
    Recipe recipe;
    std::string error;
    const std::string print(32, 'a');
    ASSERT_TRUE(ReadRecipe(
        FinishRecipe(DraftRecipe(Accept({"apply", "in.gif", "-o", "out.gif", "--effect=Bump", "--lossy=9"})),
                     print, {.number = 3, .count = 12}),
        &recipe, &error));
    EXPECT_TRUE(recipe.isLossy);
    EXPECT_EQ(recipe.fingerprint, print);
    EXPECT_EQ(recipe.part.number, 3u);
    EXPECT_EQ(recipe.part.count, 12u);
    EXPECT_EQ(recipe.version, ProgramVersion());
}

}  // namespace
}  // namespace kfx::commands
