// SPDX-License-Identifier: MIT
// How transparency follows each effect. Effects know colours only.
#pragma once

#include <cstddef>
#include <string>

namespace kfx::commands {

enum class AlphaWay {
    // The effect mixes each pixel from others with shares that do not depend on colours. It runs over black
    // and over white; the difference is the alpha.
    Solve,
    // The effect copies whole pixels from elsewhere, perhaps at random. It runs once, on a picture of places.
    Places,
    // What the effect makes of a pixel depends on its colour, or on colours around it, in another way: an
    // alpha that is computed from two results would mean nothing. The outline stays, and the effect sees
    // visible colours only.
    Keep,
    // The same, but what the effect draws along edges belongs along the outline, too: it runs over black.
    Edges,
    // The same, and what it draws is light, which is also seen outside the outline.
    Light,
};

// What stands in hidden pixels while an effect of the way Keep runs; nothing to the others.
enum class HiddenColors {
    Any,           // the effect looks at one pixel at a time
    Nearest,       // the nearest visible colour: no edge where the outline is
    InProportion,  // the visible colours in their shares: counts of colours stay
};

struct AlphaRule {
    const char* effect;  // as the effect list has it
    AlphaWay way;
    HiddenColors hidden = HiddenColors::Nearest;
};

// The rule for an effect by its name; that of an unknown effect keeps the outline.
const AlphaRule& AlphaRuleOf(const std::string& effect);

// The table's rows, in the order of the effect list.
const AlphaRule* AlphaRules(size_t* count);

}  // namespace kfx::commands
