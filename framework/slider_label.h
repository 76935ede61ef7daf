// SPDX-License-Identifier: MIT
// What the label beside a slider shows.
#pragma once

#include <cstdint>

#include "resources/panel_controls.h"

namespace kfx {

// The number shown in label `labelId` (the slider's id plus 1) for a slider position. Swirl's positions
// 0..2880 stand for -1440..1440 degrees; every other slider shows its position.
constexpr int32_t SliderLabelValue(int labelId, int32_t position) {
    return labelId == IDC_SWIRL_ANGLE + 1 ? position - 1440 : position;
}

}  // namespace kfx
