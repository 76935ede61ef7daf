// SPDX-License-Identifier: MIT
// The texts about controls say what the help document says, with the ranges that hold.
#include "window/control_texts.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "commands/direct_engine.h"
#include "commands/parameter_help.h"
#include "effects/effect_table.h"
#include "resources/resource_ids.h"

namespace kfx {
namespace {

std::string TipOf(int id, const char* range) {
    const ControlText* text = FindControlText(id);
    if (!text) return "";
    char tip[kTipBytes];
    WriteTip(*text, range, tip, sizeof tip);
    return tip;
}

// The window spells as its strings do.
std::string InSpellingOfTheWindow(const std::string& text) {
    return std::regex_replace(text, std::regex("olour"), "olor");
}

// What the help document says about an output option.
std::string HelpOnOption(const std::string& name) {
    const std::string document = commands::kHelpDocument;
    const std::string head = "<dt>" + name + "</dt><dd>";
    const size_t start = document.find(head);
    if (start == std::string::npos) return "";
    const size_t from = start + head.size();
    const std::string marked = document.substr(from, document.find("</dd>", from) - from);
    const std::string plain = std::regex_replace(marked, std::regex("<[^>]*>"), "");
    return InSpellingOfTheWindow(std::regex_replace(plain, std::regex("\\s+"), " "));
}

TEST(ControlTexts, A_tip_for_each_parameter_says_what_the_help_does_with_the_range_that_holds) {
    size_t sliders = 0;
    for (size_t i = 0; i < EffectCount(); ++i) {
        const Effect& effect = *EffectAt(i);
        std::vector<commands::Parameter> parameters;
        commands::Failure failure;
        ASSERT_TRUE(
            commands::kDirectEngine.listParameters(nullptr, static_cast<int>(i), &parameters, &failure));
        ASSERT_EQ(parameters.size(), effect.controls.count) << effect.name;
        for (size_t k = 0; k < effect.controls.count; ++k) {
            const EffectControl& control = effect.controls.rows[k];
            const std::string place = std::string(effect.name) + ", " + parameters[k].name;
            std::string tip = TipOf(control.id, control.text);
            if (control.kind == ControlKind::Slider) {
                const std::string range = ", " + commands::RangeText(parameters[k]);
                const size_t at = tip.find(range);
                ASSERT_NE(at, std::string::npos) << place << ": " << tip << " without" << range;
                tip.erase(at, range.size());
                ++sliders;
            }
            const commands::ParameterHelp help =
                commands::FindParameterHelp(commands::kHelpDocument, effect.name, parameters[k].name);
            EXPECT_EQ(tip, InSpellingOfTheWindow(help.meaning)) << place;
            const Unit* unit = FindControlText(control.id)->unit;
            EXPECT_EQ(unit ? unit->many : "", help.unit) << place;
        }
    }
    EXPECT_GT(sliders, 30u);
}

TEST(ControlTexts, A_tip_for_each_output_option_says_what_the_help_does) {
    const std::pair<int, const char*> options[] = {{IDC_TRUE_COLOR, "True color"},
                                                   {IDC_CUSTOM_PALETTE, "Custom palette"},
                                                   {IDC_PALETTE, "Palette"},
                                                   {IDC_DITHER, "Dither"},
                                                   {IDC_SUPERCOMPRESS, "Supercompress"},
                                                   {IDC_ADD_COMMENT, "Add comment"},
                                                   {IDC_LOCAL_BACKGROUND, "Local background"}};
    for (const auto& [id, name] : options) EXPECT_EQ(TipOf(id, ""), HelpOnOption(name));
}

TEST(ControlTexts, Are_sentences_that_fit) {
    size_t count = 0;
    for (int id = 0; id <= LAST_PANEL_CONTROL; ++id) {
        const ControlText* text = FindControlText(id);
        if (!text) continue;
        ++count;
        EXPECT_EQ(text->id, id);
        const std::string tip = TipOf(id, "-2000000000,2000000000,0");
        EXPECT_LT(tip.size() + 1, kTipBytes) << tip;
        EXPECT_EQ(tip.back(), '.') << tip;
        EXPECT_EQ(tip.find('@'), std::string::npos) << tip;
    }
    EXPECT_GT(count, 50u);
}

TEST(ControlTexts, A_range_stands_as_the_slider_shows_it) {
    const ControlText slider = {.id = 193, .tip = "About @, then."};  // its label counts from -1440
    const ControlText other = {.id = 12, .tip = "About @, then."};
    char tip[kTipBytes];
    WriteTip(slider, "0,2880,45", tip, sizeof tip);
    EXPECT_STREQ(tip, "About -1440 to 1440, then.");
    WriteTip(other, "4,45,5", tip, sizeof tip);
    EXPECT_STREQ(tip, "About 4 to 45, then.");
    WriteTip(other, "4,45,5", tip, 9);
    EXPECT_STREQ(tip, "About 4 ");
}

TEST(ControlTexts, A_number_has_its_unit) {
    constexpr Unit kUnit = {.one = "step", .many = "steps"};
    const std::pair<int, const char*> numbers[] = {
        {0, "0 steps"}, {1, "1 step"}, {-1, "-1 step"}, {2, "2 steps"}};
    char value[kTipBytes];
    for (const auto& [number, expected] : numbers) {
        WriteNumber({.id = 1, .tip = "", .unit = &kUnit}, number, value, sizeof value);
        EXPECT_STREQ(value, expected);
    }
    WriteNumber({.id = 1, .tip = ""}, -7, value, sizeof value);
    EXPECT_STREQ(value, "-7");
    WriteNumber({.id = 1, .tip = "", .unit = &kUnit}, 12, value, 5);
    EXPECT_STREQ(value, "12 s");
}

}  // namespace
}  // namespace kfx
