// SPDX-License-Identifier: MIT
#include "commands/alpha_ways.h"

#include <iterator>

namespace kfx::commands {
namespace {

using enum AlphaWay;

constexpr AlphaRule kRules[] = {
    {.effect = "Bump", .way = Edges},
    {.effect = "Emboss", .way = Edges},
    {.effect = "Explode", .way = Solve},
    {.effect = "Gaussian Blur", .way = Solve},
    {.effect = "Glass Block", .way = Places},
    {.effect = "HSB and Channels", .way = Keep, .hidden = HiddenColors::Any},
    {.effect = "Implode", .way = Solve},
    {.effect = "Lens Flare", .way = Solve},
    {.effect = "Motion Blur", .way = Solve},
    {.effect = "Neon", .way = Light},
    {.effect = "Normalize", .way = Keep, .hidden = HiddenColors::InProportion},
    {.effect = "Obscure", .way = Solve},
    {.effect = "Oil Painting", .way = Keep},
    {.effect = "Radial Blur", .way = Solve},
    {.effect = "Raster", .way = Keep, .hidden = HiddenColors::Any},
    {.effect = "Ripple", .way = Solve},
    {.effect = "Solarize", .way = Keep, .hidden = HiddenColors::Any},
    {.effect = "Swirl", .way = Solve},
    {.effect = "Water Drops", .way = Places},
    {.effect = "Zoom Blur", .way = Solve},
};

constexpr AlphaRule kUnknown = {.effect = "", .way = Keep};

}  // namespace

const AlphaRule& AlphaRuleOf(const std::string& effect) {
    for (const AlphaRule& rule : kRules) {
        if (effect == rule.effect) return rule;
    }
    return kUnknown;
}

const AlphaRule* AlphaRules(size_t* count) {
    *count = std::size(kRules);
    return kRules;
}

}  // namespace kfx::commands
