// SPDX-License-Identifier: MIT
// The lists of effects and palettes, and the sheets of pictures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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
    const nlohmann::json radius = {{"name", "Radius"},
                                   {"kind", "number"},
                                   {"minimum", 4},
                                   {"maximum", 45},
                                   {"default", 5},
                                   {"unit", "tenths of a pixel"},
                                   {"meaning", "Width of the edges, in tenths of a pixel."}};
    ASSERT_EQ(EffectNamed(listing, "Emboss").size(), 2u);
    EXPECT_EQ(EffectNamed(listing, "Emboss")[0], radius);
    const auto angle = EffectNamed(listing, "Swirl")[0];
    EXPECT_EQ(angle["minimum"], -1440);
    EXPECT_EQ(angle["maximum"], 1440);
    EXPECT_EQ(angle["default"], 45);
    EXPECT_EQ(angle["unit"], "degrees");
    EXPECT_EQ(EffectNamed(listing, "Neon"), nlohmann::json::array());
    const auto channels = EffectNamed(listing, "HSB and Channels");
    ASSERT_EQ(channels.size(), 7u);
    const auto distributed = EffectNamed(listing, "Normalize")[0];
    EXPECT_EQ(distributed["kind"], "switch");
    EXPECT_EQ(distributed["default"], true);
    EXPECT_FALSE(distributed.contains("unit"));
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
    EXPECT_THAT(result.out, HasSubstr("Emboss\n"
                                      "  Radius            4 to 45 (5)             "
                                      "Width of the edges, in tenths of a pixel.\n"));
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
