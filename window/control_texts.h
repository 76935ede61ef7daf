// SPDX-License-Identifier: MIT
// What the controls of the plug-in's window do and what their values are, for people who point at them and
// for screen readers.
#pragma once

#include <cstddef>

namespace kfx {

// What a number counts, as in "1 pixel" and "2 pixels".
struct Unit {
    const char* one;
    const char* many;
};

struct ControlText {
    int id;                      // of a control of the window or of a panel
    const char* tip;             // what it does; '@' stands for a slider's range
    const char* name = nullptr;  // null: its own text or its caption is its name
    const Unit* unit = nullptr;  // of a slider's value; null: a number without one
};

// Enough for each tip with its range.
constexpr size_t kTipBytes = 300;

// The text of the control with this identifier; null: it has none.
const ControlText* FindControlText(int id);

// Writes the tip. `range` is a slider's "min,max,default" and stands in the tip as the slider shows it, as in
// "4 to 45"; for other controls it is not looked at. What does not fit into `bytes` is cut.
void WriteTip(const ControlText& text, const char* range, char* tip, size_t bytes);

// Writes a slider's value as it shows it, with its unit: "45 degrees".
void WriteNumber(const ControlText& text, int number, char* value, size_t bytes);

}  // namespace kfx
