// SPDX-License-Identifier: MIT
// --skip-done: which results count as done, by the recipe that they hold.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "media/animation.h"
#include "media/animation_writer.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using Words = std::vector<std::string>;

struct Done : ::testing::Test {
    TemporaryFolder folder;
    const std::string input = folder.path + "in.gif";

    void SetUp() override { WriteTestGif(input, 3); }

    std::string Path(const std::string& name) const { return folder.path + name; }

    ProgramResult Apply(const std::string& output, const Words& options) const {
        Words words = {"apply", input, "-o", output};
        words.insert(words.end(), options.begin(), options.end());
        return RunKestrel(words);
    }

    void Make(const std::string& output, const Words& options) const {
        const ProgramResult result = Apply(output, options);
        ASSERT_EQ(result.exitCode, 0) << result.err;
    }

    // The clause that says why the result is not done; empty: it is.
    std::string WhyNot(const std::string& output, Words options, const std::string& named = "") const {
        options.emplace_back("--skip-done");
        const ProgramResult result = Apply(output, options);
        if (result.exitCode == 0) {
            EXPECT_THAT(result.out, HasSubstr(": is there already.\n"));
            return "";
        }
        EXPECT_EQ(result.exitCode, 4);
        const std::string start = "kestrel: " + (named.empty() ? output : named) + ": is there, but ";
        const std::string end = "; --force together with --skip-done makes it anew.\n";
        EXPECT_EQ(result.err.substr(0, start.size()), start);
        if (result.err.size() < start.size() + end.size()) return result.err;
        EXPECT_EQ(result.err.substr(result.err.size() - end.size()), end);
        return result.err.substr(start.size(), result.err.size() - start.size() - end.size());
    }
};

TEST_F(Done, Only_what_the_same_options_made_is_passed_over) {
    for (const char* name : {"out.gif", "out.webp", "out.apng"}) {
        const std::string out = Path(name);
        Make(out, {"--effect=Emboss", "--set=Radius=18", "--palette=216-color safe"});
        EXPECT_EQ(WhyNot(out, {"--palette", "216", "--effect", "emb", "--set", "rad=18", "--threads=1"}), "")
            << "written in another way";
        EXPECT_EQ(WhyNot(out, {"--effect=Bump", "--palette=216-color safe"}),
                  "it was made without --effect=Bump");
        EXPECT_EQ(WhyNot(out, {"--effect=Emboss", "--set=Radius=9", "--palette=216-color safe"}),
                  "it was made without --set=Radius=9");
        EXPECT_EQ(WhyNot(out, {"--effect=Emboss", "--palette=216-color safe"}),
                  "it was made with --set=Radius=18");
        EXPECT_EQ(WhyNot(out, {"--effect=Emboss", "--set=Radius=18", "--palette=216-color safe", "--dither"}),
                  "it was made without --dither");
    }
}

TEST_F(Done, The_order_of_effects_counts) {
    Make(Path("out.gif"), {"--effect=Bump", "--effect=Emboss"});
    EXPECT_EQ(WhyNot(Path("out.gif"), {"--effect=Bump", "--effect=Emboss"}), "");
    EXPECT_EQ(WhyNot(Path("out.gif"), {"--effect=Emboss", "--effect=Bump"}),
              "it was made with the same options in another order");
}

TEST_F(Done, A_result_that_was_changed_later_or_by_another_version_is_not_done) {
    const std::string out = Path("out.webp");
    std::string error;
    Make(out, {"--effect=Bump"});
    Animation changed = ReadBack(out);
    changed.frames[1].pixels[0] ^= 4;
    ASSERT_TRUE(WriteWebp(out, changed, &error)) << error;
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "it was changed after it had been made");
    changed.recipe.replace(changed.recipe.find("16.0a"), 5, "15.0a");
    ASSERT_TRUE(WriteWebp(out, changed, &error)) << error;
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "kestrel 15.0a made it, and this is 16.0a");
    changed.recipe.insert(changed.recipe.find(";fingerprint"), ";--sparkle\n");
    ASSERT_TRUE(WriteWebp(out, changed, &error)) << error;
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "its recipe is damaged or a newer kestrel's");
    Make(out, {"--effect=Bump", "--skip-done", "--force"});
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "");
}

TEST_F(Done, Without_a_recipe_the_options_are_not_known) {
    Make(Path("bare.gif"), {"--effect=Bump", "--no-recipe"});
    EXPECT_EQ(WhyNot(Path("bare.gif"), {"--effect=Emboss"}), "");
    EXPECT_EQ(WhyNot(Path("bare.gif"), {"--effect=Bump", "--no-recipe"}), "");
    Make(Path("out.y4m"), {"--effect=Bump"});
    EXPECT_EQ(WhyNot(Path("out.y4m"), {"--effect=Emboss"}), "");
    Make(Path("out.gif"), {"--effect=Bump"});
    EXPECT_EQ(WhyNot(Path("out.gif"), {"--effect=Bump", "--no-recipe"}),
              "it holds a recipe, and none is kept now");
}

TEST_F(Done, What_the_clock_has_chosen_is_not_compared) {
    Make(Path("drops.gif"), {"--effect=Water Drops", "--seed=5"});
    EXPECT_EQ(WhyNot(Path("drops.gif"), {"--effect=Water Drops"}), "");
    EXPECT_EQ(WhyNot(Path("drops.gif"), {"--effect=Water Drops", "--seed=5"}), "");
    EXPECT_EQ(WhyNot(Path("drops.gif"), {"--effect=Water Drops", "--seed=6"}),
              "it was made without --seed=6");
}

TEST_F(Done, A_file_with_loss_is_known_by_its_options) {
    Make(Path("lossy.webp"), {"--effect=Bump", "--quality=50"});
    EXPECT_EQ(WhyNot(Path("lossy.webp"), {"--effect=Bump", "--quality=50"}), "");
    EXPECT_EQ(WhyNot(Path("lossy.webp"), {"--effect=Bump", "--quality=60"}),
              "it was made without --quality=60");
}

TEST_F(Done, Each_picture_of_a_series_holds_its_part) {
    const std::string out = Path("out.png");
    Make(out, {"--effect=Bump"});
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "");
    EXPECT_EQ(WhyNot(out, {"--effect=Bump", "--frames=0-1"}), "it was made without --frames=0-1");
    WriteText(Path("out-001.png"), ReadText(Path("out-002.png")));
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "it is of another place in its series");
}

TEST_F(Done, What_was_made_to_fit_is_done_while_it_fits) {
    const std::string out = Path("fit.gif");
    Make(out, {"--effect=Bump", "--max-size=3K"});
    EXPECT_EQ(WhyNot(out, {"--effect=Bump", "--max-size=3K"}), "");
    EXPECT_EQ(WhyNot(out, {"--effect=Emboss", "--max-size=3K"}), "it was made without --effect=Emboss");
    EXPECT_EQ(WhyNot(out, {"--effect=Bump", "--max-size=100"}), "it is larger than --max-size");
}

// A small file may say that it has any number of pixels.
TEST_F(Done, A_result_with_more_pixels_than_are_read_is_not_done) {
    const std::string out = Path("out.webp");
    Animation large;
    large.width = large.height = 1000;
    large.frames.resize(3);
    std::string error;
    for (Frame& frame : large.frames) {
        frame.pixels.assign(size_t{4} * 1000 * 1000, static_cast<uint8_t>(&frame - large.frames.data()));
        frame.delay = 10;
        frame.milliseconds = 100;
    }
    ASSERT_TRUE(WriteWebp(out, large, &error)) << error;
    EXPECT_EQ(WhyNot(out, {"--effect=Bump"}), "it has another size");
    EXPECT_THAT(WhyNot(out, {"--effect=Bump", "--max-pixels=2"}),
                StartsWith("the 3 frames of 1000 x 1000 together have 3000000 pixels"));
}

TEST_F(Done, A_video_may_repeat_more_pixels_than_an_input_may_have) {
    GifAnimation gif;
    gif.width = 30;
    gif.height = 20;
    gif.globalPalette = {{1, 2, 3}, {200, 100, 50}};
    for (const int delay : {1, 3000}) {
        GifFrame frame;
        frame.indices.assign(600, static_cast<uint8_t>(gif.frames.size()));
        frame.delay = delay;
        gif.frames.push_back(frame);
    }
    std::string error;
    ASSERT_TRUE(WriteGif(input, gif, &error)) << error;
    const Words options = {"--effect=Bump", "--max-pixels=1"};
    Make(Path("slow.y4m"), options);
    EXPECT_GT(std::filesystem::file_size(Path("slow.y4m")), 3'000'000u);
    EXPECT_EQ(WhyNot(Path("slow.y4m"), options), "");
}

TEST_F(Done, A_recipe_is_taken_over_before_it_is_compared) {
    const Words options = {"--effect=Emboss", "--set=Radius=18"};
    Make(Path("model.gif"), options);
    Make(Path("out.gif"), options);
    EXPECT_EQ(WhyNot(Path("out.gif"), {"--recipe", Path("model.gif")}), "");
    EXPECT_EQ(WhyNot(Path("out.gif"), {"--recipe", Path("model.gif"), "--set=Radius=9"}),
              "it was made without --set=Radius=9");
}

}  // namespace
}  // namespace kfx::test
