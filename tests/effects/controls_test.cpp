// SPDX-License-Identifier: MIT
// Every effect's controls as the panels, the configuration file and settings documents know them: which
// variable each one is tied to, in which order a kernel gets them, their ranges and built-in values. Written
// out, so that a slip in the header that resources and effects share does not pass as its own proof.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <vector>

#include "effects/effect_table.h"
#include "framework/settings.h"

namespace kfx::test {
namespace {

struct ControlRow {
    const char* effect;
    ControlKind kind;
    int id;
    int32_t Settings::*variable;
    int32_t builtIn;
    const char* text;
};

constexpr ControlKind kSlider = ControlKind::Slider;
constexpr ControlKind kCheckBox = ControlKind::CheckBox;
constexpr char kPatterns[] = "Red - Blue;Red - Green;Green - Blue;Left 1;Left 2;Right 1;Right 2";

// In the order of the effect list, each effect's in the order in which they are read.
const ControlRow kRows[] = {
    {"Emboss", kSlider, 100, &Settings::style000Radius, 5, "4,45,5"},
    {"Emboss", kSlider, 103, &Settings::style000Depth, 15, "15,50,25"},
    {"Explode", kSlider, 205, &Settings::style018Radius, 50, "1,100,50"},
    {"Explode", kSlider, 208, &Settings::style018CenterX, 50, "10,90,50"},
    {"Explode", kSlider, 211, &Settings::style018CenterY, 50, "10,90,50"},
    {"Gaussian Blur", kSlider, 121, &Settings::style004Radius, 5, "4,45,5"},
    {"Gaussian Blur", kSlider, 124, &Settings::style004Depth, 15, "15,50,25"},
    {"Glass Block", kSlider, 115, &Settings::style002Size, 20, "4,64,20"},
    {"HSB and Channels", kSlider, 161, &Settings::style010Hue, 180, "0,360,180"},
    {"HSB and Channels", kSlider, 164, &Settings::style010Sat, 100, "0,200,100"},
    {"HSB and Channels", kSlider, 167, &Settings::style010Bri, 100, "0,200,100"},
    {"HSB and Channels", kCheckBox, 170, &Settings::style010HSBEnable, 1, "Enable HSB"},
    {"HSB and Channels", ControlKind::List, 172, &Settings::style010ChannelsOption, 0, kPatterns},
    {"HSB and Channels", kCheckBox, 174, &Settings::style010ChannelsEnable, 0, "Enable channels"},
    {"HSB and Channels", ControlKind::SliderBox, 171, &Settings::style010InvertColors, 0, "Invert colors"},
    {"Implode", kSlider, 196, &Settings::style017Radius, 50, "1,100,50"},
    {"Implode", kSlider, 199, &Settings::style017CenterX, 50, "10,90,50"},
    {"Implode", kSlider, 202, &Settings::style017CenterY, 50, "10,90,50"},
    {"Lens Flare", kSlider, 106, &Settings::style001CenterX, 50, "1,99,50"},
    {"Lens Flare", kSlider, 109, &Settings::style001CenterY, 50, "1,99,50"},
    {"Lens Flare", kSlider, 112, &Settings::style001Intensity, 175, "50,300,175"},
    {"Motion Blur", kSlider, 184, &Settings::style014Depth, 25, "5,50,25"},
    {"Motion Blur", kSlider, 187, &Settings::style014Radius, 5, "5,300,5"},
    {"Motion Blur", kSlider, 190, &Settings::style014Angle, 45, "0,359,45"},
    {"Normalize", kCheckBox, 214, &Settings::style019Distributed, 1, "Distributed"},
    {"Obscure", kSlider, 127, &Settings::style005Level, 8, "2,64,8"},
    {"Oil Painting", kSlider, 130, &Settings::style006Radius, 250, "100,400,250"},
    {"Radial Blur", kSlider, 118, &Settings::style003Angle, 5, "1,45,5"},
    {"Raster", kSlider, 175, &Settings::style011Density, 160, "1,255,160"},
    {"Raster", kSlider, 178, &Settings::style011Size, 1, "1,8,1"},
    {"Ripple", kSlider, 142, &Settings::style009CenterX, 100, "0,200,100"},
    {"Ripple", kSlider, 145, &Settings::style009CenterY, 100, "0,200,100"},
    {"Ripple", kSlider, 148, &Settings::style009Amplitude, 2500, "70,8000,2500"},
    {"Ripple", kSlider, 151, &Settings::style009Wavelength, 1200, "400,5000,1200"},
    {"Ripple", kSlider, 154, &Settings::style009Phase, 180, "0,360,180"},
    {"Ripple", kSlider, 157, &Settings::style009Energy, 15, "1,100,15"},
    {"Ripple", kCheckBox, 160, &Settings::style009Dissipate, 1, "Dissipate"},
    {"Solarize", kSlider, 181, &Settings::style012Threshold, 128, "1,255,128"},
    {"Swirl", kSlider, 193, &Settings::style015Angle, 1485, "0,2880,45"},
    {"Water Drops", kSlider, 139, &Settings::style008Aperture, 5, "3,12,5"},
    {"Zoom Blur", kSlider, 133, &Settings::style007Displacement, 240, "100,1000,240"},
    {"Zoom Blur", kSlider, 136, &Settings::style007Cycles, 8, "4,40,8"},
};

struct PanelRow {
    const char* effect;
    int panel;
    int first;  // control; 0: none
    int last;
};

const PanelRow kPanels[] = {
    {"Bump", 7413, 0, 0},
    {"Emboss", 7400, 100, 105},
    {"Explode", 7418, 205, 213},
    {"Gaussian Blur", 7404, 121, 126},
    {"Glass Block", 7402, 115, 117},
    {"HSB and Channels", 7410, 161, 174},
    {"Implode", 7417, 196, 204},
    {"Lens Flare", 7401, 106, 114},
    {"Motion Blur", 7414, 184, 192},
    {"Neon", 7416, 0, 0},
    {"Normalize", 7419, 214, 214},
    {"Obscure", 7405, 127, 129},
    {"Oil Painting", 7406, 130, 132},
    {"Radial Blur", 7403, 118, 120},
    {"Raster", 7411, 175, 180},
    {"Ripple", 7409, 142, 160},
    {"Solarize", 7412, 181, 183},
    {"Swirl", 7415, 193, 195},
    {"Water Drops", 7408, 139, 141},
    {"Zoom Blur", 7407, 133, 138},
};

TEST(EffectControls, AreReadInTheirOrderAndTiedToTheirVariables) {
    size_t row = 0;
    for (size_t i = 0; i < EffectCount(); ++i) {
        const Effect& effect = *EffectAt(i);
        for (size_t c = 0; c < effect.controls.count; ++c, ++row) {
            ASSERT_LT(row, std::size(kRows));
            SCOPED_TRACE(kRows[row].id);
            EXPECT_STREQ(effect.name, kRows[row].effect);
            EXPECT_EQ(effect.controls.rows[c].id, kRows[row].id);
            EXPECT_EQ(effect.controls.rows[c].kind, kRows[row].kind);
            EXPECT_EQ(effect.controls.rows[c].variable, &(settings.*kRows[row].variable));
            EXPECT_STREQ(effect.controls.rows[c].text, kRows[row].text);
        }
    }
    EXPECT_EQ(row, std::size(kRows));
}

TEST(EffectControls, HaveTheirBuiltInValues) {
    const Settings builtIn;
    for (const ControlRow& row : kRows) EXPECT_EQ(builtIn.*row.variable, row.builtIn) << row.effect << row.id;
}

TEST(EffectControls, StandInTheTablesOrderUnderTheirPanels) {
    ASSERT_EQ(EffectCount(), std::size(kPanels));
    for (size_t i = 0; i < EffectCount(); ++i) {
        const Effect& effect = *EffectAt(i);
        SCOPED_TRACE(effect.name);
        EXPECT_STREQ(effect.name, kPanels[i].effect);
        EXPECT_STREQ(DescriptorAt(i)->name, kPanels[i].effect);
        EXPECT_EQ(effect.panel, kPanels[i].panel);
        std::vector<uint32_t> listed, expected(static_cast<size_t>(kPanels[i].last - kPanels[i].first + 1));
        std::iota(expected.begin(), expected.end(), kPanels[i].first);
        if (!kPanels[i].first) expected.clear();
        // The one list whose order is not that of the ids: the box beside the list comes last.
        if (effect.panel == 7410) std::rotate(expected.begin() + 10, expected.begin() + 11, expected.end());
        for (const uint32_t* id = DescriptorAt(i)->controls; *id; ++id) listed.push_back(*id);
        EXPECT_EQ(listed, expected);
    }
}

}  // namespace
}  // namespace kfx::test
