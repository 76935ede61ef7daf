// SPDX-License-Identifier: MIT
#include "stage/wall_settings.h"

#include "commands/direct_engine.h"
#include "effects/effect_table.h"

namespace kfx::stage {

std::vector<EffectDescription> DescribeEffects() {
    std::vector<EffectDescription> effects(EffectCount());
    commands::Failure ignored;  // the direct engine always knows its effects
    for (size_t i = 0; i < effects.size(); ++i) {
        effects[i].name = EffectAt(i)->name;
        commands::kDirectEngine.listParameters(nullptr, static_cast<int>(i), &effects[i].parameters,
                                               &ignored);
    }
    return effects;
}

EffectSettings DefaultSettings(const std::vector<EffectDescription>& effects, size_t effect) {
    EffectSettings settings;
    settings.effect = effect;
    const std::vector<commands::Parameter>& parameters = effects[effect].parameters;
    for (size_t i = 0; i < parameters.size(); ++i) settings.values[i] = parameters[i].value;
    return settings;
}

std::string SettingsText(const EffectDescription& effect, const EffectSettings& settings) {
    std::string text;
    for (size_t i = 0; i < effect.parameters.size(); ++i) {
        const commands::Parameter& parameter = effect.parameters[i];
        text += (text.empty() ? "" : ", ") + parameter.name + " " +
                commands::ValueText(parameter, settings.values[i]);
    }
    return text;
}

}  // namespace kfx::stage
