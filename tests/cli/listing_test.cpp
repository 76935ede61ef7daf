// SPDX-License-Identifier: MIT
// The lists of effects and palettes, and the sheets of pictures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "effects/effect_table.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;

nlohmann::json EffectNamed(const nlohmann::json& listing, const std::string& name) {
    for (const auto& effect : listing["effects"]) {
        if (effect["name"] == name) return effect["parameters"];
    }
    ADD_FAILURE() << "no effect " << name;
    return {};
}

TEST(Listing, Effects_come_with_ranges_and_defaults_as_the_window_shows_them) {
    const auto listing = RunKestrelForJson({"effects"});
    EXPECT_EQ(listing["effects"].size(), EffectCount());
    EXPECT_EQ(listing["palettes"].size(), 9u);
    const nlohmann::json emboss = {
        {{"name", "Radius"}, {"kind", "number"}, {"minimum", 4}, {"maximum", 45}, {"default", 5}},
        {{"name", "Depth"}, {"kind", "number"}, {"minimum", 15}, {"maximum", 50}, {"default", 15}}};
    EXPECT_EQ(EffectNamed(listing, "Emboss"), emboss);
    const nlohmann::json swirl = {
        {{"name", "Angle"}, {"kind", "number"}, {"minimum", -1440}, {"maximum", 1440}, {"default", 45}}};
    EXPECT_EQ(EffectNamed(listing, "Swirl"), swirl);
    EXPECT_EQ(EffectNamed(listing, "Neon"), nlohmann::json::array());
    const auto channels = EffectNamed(listing, "HSB and Channels");
    ASSERT_EQ(channels.size(), 7u);
    EXPECT_EQ(EffectNamed(listing, "Normalize")[0],
              (nlohmann::json{{"name", "Distributed"}, {"kind", "switch"}, {"default", true}}));
}

TEST(Listing, A_list_parameter_comes_with_its_rows) {
    const auto channels = EffectNamed(RunKestrelForJson({"effects"}), "HSB and Channels");
    const auto list = std::find_if(channels.begin(), channels.end(),
                                   [](const auto& parameter) { return parameter["name"] == "Channels"; });
    ASSERT_NE(list, channels.end());
    EXPECT_EQ((*list)["kind"], "choice");
    EXPECT_EQ((*list)["choices"].size(), 7u);
    EXPECT_EQ((*list)["default"], "Red - Blue");
}

TEST(Listing, For_people_each_parameter_is_a_line) {
    const ProgramResult result = RunKestrel({"effects"});
    EXPECT_THAT(result.out, HasSubstr("Emboss\n  Radius            4 to 45 (5)\n"));
}

TEST(Listing, The_gallery_shows_every_effect_of_the_list) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const auto report =
        RunKestrelForJson({"gallery", folder.path + "in.gif", "-o", folder.path + "gallery.png"});
    EXPECT_EQ(report["effects"].size(), EffectCount());
    const Animation sheet = ReadBack(folder.path + "gallery.png");
    EXPECT_EQ(report["width"], sheet.width);
}

TEST(Listing, The_sample_is_an_animation_that_plays_forever) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKestrel({"sample", folder.path + "sample.gif"}).exitCode, 0);
    const Animation sample = ReadBack(folder.path + "sample.gif");
    EXPECT_GT(sample.frames.size(), 10u);
    EXPECT_EQ(sample.loopCount, kLoopForever);
    ASSERT_EQ(RunKestrel({"sheet", folder.path + "sample.gif", folder.path + "sample.gif", "-o",
                          folder.path + "sheet.png"})
                  .exitCode,
              0);
    EXPECT_GT(ReadBack(folder.path + "sheet.png").width, 600);
}

}  // namespace
}  // namespace kfx::test
