// SPDX-License-Identifier: MIT
#include "commands/parameter_help.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "commands/direct_engine.h"
#include "effects/effect_table.h"

namespace kfx::commands {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kDocument[] =
    "<h3 id=\"A\">Emboss</h3><p>Edges.</p>\n"
    "<dl><dt>Radius</dt><dd>Width of the\n  edges, in <span class=\"unit\">pixels</span>, -4 to 45; more "
    "with "
    "<b>Depth</b>.</dd>\n"
    "<dt>Center X, Center Y</dt><dd>Where, so to speak.</dd></dl>\n"
    "<h3 id=\"B\">Neon</h3><dl><dt>Depth</dt><dd>Another.</dd></dl>";

TEST(ParameterHelp, Unit_and_meaning_come_without_marks_and_range) {
    const ParameterHelp help = FindParameterHelp(kDocument, "Emboss", "Radius");
    EXPECT_EQ(help.unit, "pixels");
    EXPECT_EQ(help.meaning, "Width of the edges, in pixels; more with Depth.");
}

TEST(ParameterHelp, Parameters_may_share_a_text) {
    for (const char* name : {"Center X", "Center Y"}) {
        EXPECT_EQ(FindParameterHelp(kDocument, "Emboss", name).meaning, "Where, so to speak.") << name;
        EXPECT_EQ(FindParameterHelp(kDocument, "Emboss", name).unit, "") << name;
    }
}

TEST(ParameterHelp, What_the_document_does_not_name_has_no_help) {
    EXPECT_EQ(FindParameterHelp(kDocument, "Emboss", "Depth").meaning, "") << "that is Neon's";
    EXPECT_EQ(FindParameterHelp(kDocument, "Emboss", "Center").meaning, "");
    EXPECT_EQ(FindParameterHelp(kDocument, "Bump", "Radius").meaning, "");
    EXPECT_EQ(FindParameterHelp("", "Bump", "Radius").meaning, "");
}

TEST(ParameterHelp, Every_parameter_of_every_effect_is_explained) {
    for (size_t i = 0; i < EffectCount(); ++i) {
        const std::string effect = EffectAt(i)->name;
        std::vector<Parameter> parameters;
        Failure failure;
        ASSERT_TRUE(kDirectEngine.listParameters(nullptr, static_cast<int>(i), &parameters, &failure));
        for (const Parameter& parameter : parameters) {
            const ParameterHelp help = FindParameterHelp(kHelpDocument, effect, parameter.name);
            EXPECT_NE(help.meaning, "") << effect << ", " << parameter.name;
            const std::string range = RangeText(parameter);
            EXPECT_THAT(help.meaning, Not(HasSubstr(range))) << effect << ", " << parameter.name;
        }
    }
}

TEST(ParameterHelp, A_heading_may_say_at_which_settings_the_picture_shows_the_effect) {
    const std::string document =
        "<h3 id=\"A\" data-picture=\"Radius=18, Center X=-4\">Emboss</h3><h3 id=\"B\">Neon</h3>";
    const auto settings = FindPictureSettings(document, "Emboss");
    ASSERT_EQ(settings.size(), 2u);
    EXPECT_EQ(settings[0].name, "Radius");
    EXPECT_EQ(settings[0].value, "18");
    EXPECT_EQ(settings[1].name, "Center X");
    EXPECT_EQ(settings[1].value, "-4");
    EXPECT_TRUE(FindPictureSettings(document, "Neon").empty());
    EXPECT_TRUE(FindPictureSettings(document, "Bump").empty());
}

TEST(ParameterHelp, Every_setting_of_the_picture_is_one_that_its_effect_takes) {
    size_t count = 0;
    for (size_t i = 0; i < EffectCount(); ++i) {
        const std::string effect = EffectAt(i)->name;
        std::vector<Parameter> parameters;
        Failure failure;
        ASSERT_TRUE(kDirectEngine.listParameters(nullptr, static_cast<int>(i), &parameters, &failure));
        for (const Setting& setting : FindPictureSettings(kHelpDocument, effect)) {
            const auto parameter =
                std::find_if(parameters.begin(), parameters.end(),
                             [&](const Parameter& row) { return row.name == setting.name; });
            ASSERT_NE(parameter, parameters.end()) << effect << ", " << setting.name;
            int value = 0;
            std::string error;
            EXPECT_TRUE(ParseValue(*parameter, effect, setting.value, &value, &error)) << error;
            ++count;
        }
    }
    EXPECT_GT(count, 15u);
}

}  // namespace
}  // namespace kfx::commands
