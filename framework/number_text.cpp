// SPDX-License-Identifier: MIT
#include "framework/number_text.h"

#include <cstdio>

#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int kSwirlAngleLabel = IDC_SWIRL_ANGLE + 1;
constexpr int32_t kSwirlAngleZero = 1440;

bool IsWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

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
    int least, most, standard;
    if (std::sscanf(text, "%d,%d,%d", &least, &most, &standard) != 3) {
        *range = {0, 100, 0};
        return false;
    }
    *range = {least, most, standard};
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
