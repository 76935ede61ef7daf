// SPDX-License-Identifier: MIT
// The effects and their settings, as the wall and its variations know them.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "commands/parameter.h"
#include "framework/effect.h"

namespace kfx::stage {

struct EffectDescription {
    std::string name;                             // as the effect list has it
    std::vector<commands::Parameter> parameters;  // in the panel's order, with their defaults
};

// All effects, in the order of the effect list. Sets the framework's settings to their defaults: not to be
// called while another thread builds.
std::vector<EffectDescription> DescribeEffects();

// An effect and a value for each of its parameters. Plain numbers: a copy takes no memory.
struct EffectSettings {
    size_t effect = 0;                           // row of the effect list
    std::array<int, kMostControls> values = {};  // as shown, in the panel's order; unused ones are 0

    bool operator==(const EffectSettings&) const = default;
};

EffectSettings DefaultSettings(const std::vector<EffectDescription>& effects, size_t effect);

// "Radius 18, Depth 30", "Dissipate off"; empty for an effect without parameters.
std::string SettingsText(const EffectDescription& effect, const EffectSettings& settings);

}  // namespace kfx::stage
