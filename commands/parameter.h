// SPDX-License-Identifier: MIT
// A parameter of an effect, as the plug-in's window shows it: its name, its numbers, its rows.
#pragma once

#include <string>
#include <vector>

namespace kfx::commands {

struct Parameter {
    enum Kind { Slider, CheckBox, List };
    Kind kind = Slider;
    std::string name;  // as shown, without colon and mnemonic
    int control = 0;   // its id in the plug-in's window
    int minimum = 0;   // as shown; 0 and 1 for a check box, row numbers for a list
    int maximum = 0;
    int value = 0;                   // the default
    int shownOffset = 0;             // what a slider shows is its position and this
    std::vector<std::string> items;  // of a list
};

// The name in a caption: "Center &X:" is shown as "Center X".
std::string ShownName(const std::string& caption);

// Reads a whole number from -1000000 to 1000000. False: the text is anything else, or has anything else in
// it, such as a space.
bool ReadNumber(const std::string& text, int* number);

// Reads "9", "on" or "Left 1" for the parameter of `effect`. False: `*error` says what it takes.
bool ParseValue(const Parameter& parameter, const std::string& effect, const std::string& text, int* value,
                std::string* error);

// "4 to 45", "on or off", "Red - Blue, Red - Green or Left 1".
std::string RangeText(const Parameter& parameter);

// A value as ParseValue takes it.
std::string ValueText(const Parameter& parameter, int value);

}  // namespace kfx::commands
