// SPDX-License-Identifier: MIT
#include "commands/idle_options.h"

#include <algorithm>
#include <string>
#include <vector>

#include "commands/command_row.h"
#include "commands/direct_engine.h"
#include "commands/edges.h"
#include "commands/engine.h"
#include "commands/journey.h"
#include "commands/text_match.h"
#include "resources/palette_names.h"

namespace kfx::commands {
namespace {

// Whether an effect of the line is among these. One that kestrel does not know may be.
bool HasOneOf(const CommandLine& line, const std::vector<std::string>& wanted) {
    std::vector<std::string> names;
    Failure failure;
    if (!kDirectEngine.listEffects(nullptr, &names, &failure)) return true;
    return std::any_of(line.effects.begin(), line.effects.end(), [&](const EffectChoice& effect) {
        const int row = FindName(effect.name, names);
        return row < 0 ||
               std::find(wanted.begin(), wanted.end(), names[static_cast<size_t>(row)]) != wanted.end();
    });
}

// Whether the result may be dithered to two colours.
bool MayHaveTwoColors(const CommandLine& line) {
    const std::string palette = PlainName(line.palette);
    const bool isComputed = palette.empty() || palette == "custom";
    // All palettes are tried then, with and without dither.
    if (!line.fit.size.empty() && isComputed && !line.fit.fixedPalette && line.colors < 0) return true;
    if (!line.dither) return false;
    if (isComputed) return line.colors == 2;
    // The source's own palette may have any number of colours.
    std::vector<std::string> names;
    Failure failure;
    if (palette == "original" || !kDirectEngine.listPalettes(nullptr, &names, &failure)) return true;
    names.emplace_back(PALETTE_NAME_SOURCE);
    const int row = FindName(line.palette, names);
    if (row < 0) return true;
    const std::string& name = names[static_cast<size_t>(row)];
    return name == PALETTE_NAME_0 || name == PALETTE_NAME_SOURCE;
}

bool Refuse(const std::string& error, Failure* failure) {
    *failure = {kExitBadCommand, error};
    return false;
}

bool CheckEffects(const CommandLine& line, const std::string& option, const std::vector<std::string>& effects,
                  Failure* failure) {
    return HasOneOf(line, effects) ||
           Refuse(option + " is for " + JoinNames(effects, "and") + "; leave it out, or choose " +
                      (effects.size() == 1 ? "this effect." : "one of these effects."),
                  failure);
}

// A recipe may say so: it was made when the last of the words counted.
bool CheckPaces(const CommandLine& line, Failure* failure) {
    for (const EffectChoice& effect : line.effects) {
        for (const Setting& setting : effect.settings) {
            if (!SaysPaceTwice(setting.value)) continue;
            return Refuse("--set " + setting.name + "=" + setting.value +
                              ": linear, ease and loop may stand once, and linear not beside ease.",
                          failure);
        }
    }
    return true;
}

bool CheckIdleSeed(const CommandLine& line, Failure* failure) {
    // Galleries have all effects.
    const bool isForEffects = line.command == &kApplyCommand || line.command == &kSurveyCommand;
    return !isForEffects || line.recipe.seed == kNoSeed ||
           CheckEffects(line, "--seed", {kRandomEffect}, failure);
}

}  // namespace

bool CheckIdleOptions(const CommandLine& line, Failure* failure) {
    if (TakesOver(line.recipe)) return true;
    if (!CheckPaces(line, failure) || !CheckIdleSeed(line, failure)) return false;
    if (line.edges == "extend" && !CheckEffects(line, "--edges extend", EffectsWithEdges(), failure))
        return false;
    if (!line.localBackground.empty() &&
        !CheckEffects(line, "--local-background", EffectsWithBackground(), failure))
        return false;
    const bool brightness = line.ditherBrightness >= 0;
    if ((!brightness && line.ditherContrast < 0) || MayHaveTwoColors(line)) return true;
    return Refuse(std::string(brightness ? "--dither-brightness" : "--dither-contrast") +
                      " is for dithering to black and white; add --palette \"" PALETTE_NAME_0
                      "\" --dither, or leave it out.",
                  failure);
}

}  // namespace kfx::commands
