// SPDX-License-Identifier: MIT
// Numbers as they stand in texts: configuration values, document lines, the ranges in the panels' control
// texts.
#pragma once

#include <cstdint>

namespace kfx {

// The decimal number at the start of the text: white space, one sign, digits; 0 without digits. It wraps
// modulo 2^32, so whatever "%u" or "%d" wrote comes back with the same 32 bits.
uint32_t ParseDecimal(const char* text);

// "minimum,maximum,default", the window text of a slider or of a number field's companion.
struct ControlRange {
    int32_t least;
    int32_t most;
    int32_t standard;
};

// Reads a range text into `*range`: three numbers with one comma between them, white space allowed before
// each, anything behind the last; numbers beyond 32 bits become the nearest that fits. False, with 0..100
// (and 0) in the range: the text holds no three numbers.
bool ParseControlRange(const char* text, ControlRange* range);

// `value` moved into the range; if the minimum is above the maximum, the maximum is returned.
int32_t ClampToRange(const ControlRange& range, int32_t value);

// What a slider's value label shows at a position. Swirl's angle, the label 194, counts from -1440.
int32_t ShownPosition(int labelId, int32_t position);

}  // namespace kfx
