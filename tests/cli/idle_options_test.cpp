// SPDX-License-Identifier: MIT
// Options that would do nothing are refused, unless a document or a recipe has brought them.
#include <gtest/gtest.h>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using Words = std::vector<std::string>;

struct IdleOptions : ::testing::Test {
    TemporaryFolder folder;

    IdleOptions() {
        WriteTestGif(Path("a.gif"), 2);
        WriteTestGif(Path("b.gif"), 2);
    }

    std::string Path(const std::string& name) const { return folder.path + name; }

    ProgramResult Run(const Words& options, const Words& inputs, const std::string& output) const {
        Words words = {"apply"};
        for (const std::string& input : inputs) words.push_back(Path(input));
        words.insert(words.end(), {"-o", Path(output)});
        words.insert(words.end(), options.begin(), options.end());
        return RunKestrel(words);
    }
};

struct Idle {
    Words options;
    const char* says;
};

const Idle kIdle[] = {
    {{"--effect=Emboss", "--edges=Extend"},
     "--edges extend is for Motion Blur, Oil Painting and Radial Blur; leave it out, or choose one of these "
     "effects."},
    {{"--effect=Swirl", "--effect=Bump", "--edges=extend"}, "--edges extend is for Motion Blur,"},
    {{"--effect=Emboss", "--local-background=FF0000"},
     "--local-background is for Explode, Implode, Motion Blur, Oil Painting, Radial Blur, Raster and Swirl; "
     "leave it out, or choose one of these effects."},
    {{"--effect=Ripple", "--local-background=none"}, "--local-background is for Explode,"},
    {{"--effect=Emboss", "--dither-brightness=9"},
     "--dither-brightness is for dithering to black and white; add --palette \"Black and white\" --dither, "
     "or "
     "leave it out."},
    {{"--effect=Emboss", "--dither", "--dither-contrast=9"}, "--dither-contrast is for dithering to"},
    {{"--effect=Emboss", "--palette=black", "--dither-contrast=9"}, "--dither-contrast is for"},
    {{"--effect=Emboss", "--palette=216", "--dither", "--dither-brightness=9"}, "--dither-brightness is for"},
    {{"--effect=Emboss", "--max-size=1M", "--palette=216", "--dither-brightness=9"}, "--dither-brightness"},
    {{"--effect=Emboss", "--seed=5"}, "--seed is for Water Drops; leave it out, or choose this effect."},
    {{"--effect=Emboss", "--set=radius=4..45:ease:linear"},
     "--set radius=4..45:ease:linear: linear, ease and loop may stand once, and linear not beside ease."},
    {{"--effect=Emboss", "--set=radius=4..45:Ease:ease"}, "--set radius=4..45:Ease:ease: linear, ease"},
    {{"--effect=Emboss", "--set=radius=4..45:loop:loop"}, "--set radius=4..45:loop:loop: linear, ease"},
};

TEST_F(IdleOptions, They_are_refused_before_any_work) {
    for (const Idle& idle : kIdle) {
        const ProgramResult one = Run(idle.options, {"a.gif"}, "out.gif");
        EXPECT_EQ(one.exitCode, 2) << idle.says;
        EXPECT_EQ(one.err.find("kestrel: " + std::string(idle.says)), 0u) << one.err;
        for (const bool dry : {false, true}) {
            Words options = idle.options;
            if (dry) options.emplace_back("--dry-run");
            const ProgramResult batch = Run(options, {"a.gif", "b.gif"}, "folder/");
            EXPECT_EQ(batch.exitCode, 2) << idle.says;
            EXPECT_EQ(batch.err.find("kestrel: " + std::string(idle.says)), 0u) << batch.err;
        }
    }
    EXPECT_EQ(FilesIn(folder.path).size(), 2u);
}

TEST_F(IdleOptions, What_has_an_effect_is_taken) {
    const Words kUsed[] = {
        {"--effect=Emboss", "--effect=motion blur", "--edges=EXTEND"},
        {"--effect=Emboss", "--edges=background"},
        {"--effect=Emboss", "--set=radius=4..45:loop:ease"},
        {"--effect=Emboss", "--effect=water", "--seed=5"},
        {"--effect=raster", "--effect=Emboss", "--local-background=FF0000"},
        {"--effect=Emboss", "--palette=BLACK", "--dither", "--dither-brightness=9", "--dither-contrast=3"},
        {"--effect=Emboss", "--colors=2", "--dither", "--dither-brightness=9"},
        {"--effect=Emboss", "--palette=original", "--dither", "--dither-brightness=9"},
        {"--effect=Emboss", "--max-size=1M", "--dither-brightness=9"},
        {"--reverse", "--palette=black", "--dither", "--dither-brightness=9"},
    };
    for (Words options : kUsed) {
        options.emplace_back("--force");
        const ProgramResult result = Run(options, {"a.gif"}, "out.gif");
        EXPECT_EQ(result.exitCode, 0) << result.err;
    }
}

TEST_F(IdleOptions, Files_at_a_time_are_for_a_folder) {
    const ProgramResult one = Run({"--effect=Emboss", "--jobs=3"}, {"a.gif"}, "out.gif");
    EXPECT_EQ(one.exitCode, 2);
    EXPECT_EQ(
        one.err,
        "kestrel: --jobs is for several results; leave it out, or name a folder for them by -o FOLDER/.\n");
    EXPECT_EQ(Run({"--effect=Emboss", "--jobs=3"}, {"a.gif"}, "folder/").exitCode, 0);
}

TEST_F(IdleOptions, Two_computed_colours_are_dithered_with_the_given_brightness) {
    const auto bytesWith = [&](const char* brightness) {
        const Words options = {"--effect=Bump", "--colors=2",
                               "--dither",      "--force",
                               "--no-recipe",   "--dither-brightness=" + std::string(brightness)};
        EXPECT_EQ(Run(options, {"a.gif"}, "two.gif").exitCode, 0);
        return ReadText(Path("two.gif"));
    };
    EXPECT_NE(bytesWith("0"), bytesWith("120"));
}

TEST_F(IdleOptions, What_a_recipe_brings_may_do_nothing) {
    const Words made = {"--effect=Motion Blur", "--edges=extend", "--local-background=FF0000",
                        "--palette=black",      "--dither",       "--dither-brightness=9"};
    ASSERT_EQ(Run(made, {"a.gif"}, "made.gif").exitCode, 0);
    const Words repeated = {"--recipe=" + Path("made.gif"), "--effect=Emboss", "--palette=216"};
    const ProgramResult again = Run(repeated, {"b.gif"}, "again.gif");
    EXPECT_EQ(again.exitCode, 0) << again.err;
    const ProgramResult verified = RunKestrel({"verify", Path("again.gif"), "--source", Path("b.gif")});
    EXPECT_EQ(verified.exitCode, 0) << verified.err;
    const ProgramResult batch = Run(repeated, {"a.gif", "b.gif"}, "folder/");
    EXPECT_EQ(batch.exitCode, 0) << batch.err;
}

}  // namespace
}  // namespace kfx::test
