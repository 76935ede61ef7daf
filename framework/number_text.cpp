// SPDX-License-Identifier: MIT
#include "framework/number_text.h"

#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int kSwirlAngleLabel = IDC_SWIRL_ANGLE + 1;
constexpr int32_t kSwirlAngleZero = 1440;

bool IsWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Reads one number of a range and moves the text behind it: white space, one sign, digits. A number beyond 32
// bits becomes the nearest one that fits. False: there are no digits. The C library's scanning functions are
// not used: they allocate memory, and end the process when they get none.
bool ReadNumber(const char** text, int32_t* number) {
    const char* c = *text;
    while (IsWhiteSpace(*c)) ++c;
    const bool negative = *c == '-';
    if (*c == '-' || *c == '+') ++c;
    if (*c < '0' || *c > '9') return false;
    const int64_t most = negative ? int64_t{INT32_MAX} + 1 : INT32_MAX;
    int64_t value = 0;
    for (; *c >= '0' && *c <= '9'; ++c) {
        value = 10 * value + (*c - '0');
        if (value > most) value = most;
    }
    *number = static_cast<int32_t>(negative ? -value : value);
    *text = c;
    return true;
}

}  // namespace

uint32_t ParseDecimal(const char* text) {
    while (IsWhiteSpace(*text)) ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    uint32_t value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) value = 10 * value + static_cast<uint32_t>(*text - '0');
    return negative ? 0 - value : value;
}

bool ParseControlRange(const char* text, ControlRange* range) {
    int32_t numbers[3];
    for (int i = 0; i < 3; ++i) {
        if ((i > 0 && *text++ != ',') || !ReadNumber(&text, &numbers[i])) {
            *range = {0, 100, 0};
            return false;
        }
    }
    *range = {numbers[0], numbers[1], numbers[2]};
    return true;
}

int32_t ClampToRange(const ControlRange& range, int32_t value) {
    if (value < range.least) value = range.least;
    return value > range.most ? range.most : value;
}

int32_t ShownPosition(int labelId, int32_t position) {
    return labelId == kSwirlAngleLabel ? position - kSwirlAngleZero : position;
}

}  // namespace kfx
