// SPDX-License-Identifier: MIT
// What the sweep over refusals builds: an animation, settings and outputs.
#pragma once

#include <cstdint>
#include <vector>

#include "builder/build_driver.h"

namespace kfx::test {

constexpr uint32_t kBackground = 0x20C0FF;  // the source's
constexpr int32_t kSide = 15;               // the smallest that Emboss takes

struct Output {
    const char* name;
    BuildOptions options;
    bool effectHasBackground;
};

// One for each way that a build can take.
std::vector<Output> Outputs();

// Small frames that every effect changes, of neighbouring colours that are quick to look up, with a dark
// corner; the second one has another depth and shows a bright patch.
std::vector<uint8_t> SmallAnimation();

void BuiltInSettings();

// Other paths and other tables: frames stretched each by itself, fields that turn and waves that fade.
void OtherSettings();

}  // namespace kfx::test
