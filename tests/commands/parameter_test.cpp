// SPDX-License-Identifier: MIT
#include "commands/parameter.h"

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

Parameter Slider() {
    Parameter slider;
    slider.name = "Radius";
    slider.minimum = -4;
    slider.maximum = 45;
    return slider;
}

TEST(Parameter, A_name_is_its_caption_without_colon_and_mnemonic) {
    EXPECT_EQ(ShownName("Center &X:"), "Center X");
}

TEST(Parameter, A_number_is_all_of_its_text) {
    int number = 0;
    EXPECT_TRUE(ReadNumber("-12", &number));
    EXPECT_EQ(number, -12);
    EXPECT_TRUE(ReadNumber("+9", &number));
    EXPECT_EQ(number, 9);
    for (const char* text :
         {"", " 9", "9 ", "+", "-", "+-9", "--9", "9x", "x", "1.5", "1000001", "99999999999999999999"})
        EXPECT_FALSE(ReadNumber(text, &number)) << text;
}

TEST(Parameter, A_slider_takes_numbers_of_its_range) {
    int value = 0;
    std::string error;
    EXPECT_TRUE(ParseValue(Slider(), "Emboss", "-4", &value, &error));
    EXPECT_TRUE(ParseValue(Slider(), "Emboss", "45", &value, &error));
    EXPECT_EQ(ValueText(Slider(), value), "45");
    EXPECT_FALSE(ParseValue(Slider(), "Emboss", "46", &value, &error));
    EXPECT_EQ(error, "Radius of Emboss takes whole numbers from -4 to 45, not \"46\".");
}

TEST(Parameter, A_check_box_takes_words_for_on_and_off) {
    Parameter box;
    box.kind = Parameter::CheckBox;
    int value = 0;
    std::string error;
    for (const char* text : {"on", "Yes", "1", "TRUE"}) {
        EXPECT_TRUE(ParseValue(box, "Emboss", text, &value, &error)) << text;
        EXPECT_EQ(ValueText(box, value), "on");
    }
    for (const char* text : {"off", "No", "0", "false"}) {
        EXPECT_TRUE(ParseValue(box, "Emboss", text, &value, &error)) << text;
        EXPECT_EQ(ValueText(box, value), "off");
    }
    EXPECT_FALSE(ParseValue(box, "Emboss", "maybe", &value, &error));
}

}  // namespace
}  // namespace kfx::commands
