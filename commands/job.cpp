// SPDX-License-Identifier: MIT
#include "commands/job.h"

#include "commands/engine.h"
#include "commands/text_match.h"
#include "resources/palette_names.h"

namespace kfx::commands {
namespace {

bool Refuse(const std::string& error, Failure* failure) {
    *failure = {kExitBadCommand, error};
    return false;
}

bool ResolveEffect(const CommandLine& line, const Engine& engine, void* opened, Job* job, Failure* failure) {
    std::vector<std::string> effects;
    if (!engine.listEffects(opened, &effects, failure)) return false;
    job->effect = FindName(line.effect, effects);
    if (job->effect >= 0) job->effectName = effects[static_cast<size_t>(job->effect)];
    return job->effect >= 0 || Refuse(UnknownNameMessage("effect", line.effect, effects), failure);
}

bool ResolveValues(const CommandLine& line, const Engine& engine, void* opened, Job* job, Failure* failure) {
    std::vector<Parameter> parameters;
    if (!engine.listParameters(opened, job->effect, &parameters, failure)) return false;
    std::vector<std::string> names;
    names.reserve(parameters.size());
    for (const Parameter& parameter : parameters) names.push_back(parameter.name);
    for (const Setting& setting : line.settings) {
        if (names.empty()) return Refuse(job->effectName + " has no parameters.", failure);
        const int row = FindName(setting.name, names);
        if (row < 0) return Refuse(UnknownNameMessage("parameter", setting.name, names), failure);
        ChosenValue chosen = {parameters[static_cast<size_t>(row)], 0};
        std::string error;
        if (!ParseValue(chosen.parameter, job->effectName, setting.value, &chosen.value, &error))
            return Refuse(error, failure);
        for (const ChosenValue& before : job->values) {
            if (before.parameter.name == chosen.parameter.name)
                return Refuse("--set gives " + chosen.parameter.name + " twice.", failure);
        }
        job->values.push_back(chosen);
    }
    return true;
}

bool ResolvePalette(const CommandLine& line, bool ownPalette, const Engine& engine, void* opened, Job* job,
                    Failure* failure) {
    const std::string wanted = PlainName(line.palette);
    if (line.trueColor) return true;
    job->paletteUse = PaletteUse::Computed;
    if (wanted == "custom") return true;
    if (wanted == "original" && !ownPalette) {
        return Refuse(line.inputs[0] + ": has no palette of its own; choose another --palette.", failure);
    }
    std::vector<std::string> rows;
    if (!engine.listPalettes(opened, &rows, failure)) return false;
    if (ownPalette) rows.emplace_back(PALETTE_NAME_SOURCE);
    job->paletteUse = PaletteUse::Listed;
    job->palette = FindName(wanted == "original" ? PALETTE_NAME_SOURCE : line.palette, rows);
    if (job->palette >= 0) return true;
    rows.insert(rows.end(), {"custom", "original"});
    return Refuse(UnknownNameMessage("palette", line.palette, rows), failure);
}

// The command line has been checked: what is no colour is "none".
void ResolveBackground(const CommandLine& line, Job* job) {
    unsigned color = 0;
    if (line.localBackground.empty()) return;
    job->background = ParseColor(line.localBackground, &color) ? Background::Color : Background::Source;
    job->backgroundColor = color;
}

}  // namespace

bool ResolveJob(const CommandLine& line, bool ownPalette, const Engine& engine, void* opened, Job* job,
                Failure* failure) {
    *job = {};
    job->dither = line.dither;
    job->supercompress = line.supercompress;
    job->comment = line.comment;
    ResolveBackground(line, job);
    return ResolveEffect(line, engine, opened, job, failure) &&
           ResolveValues(line, engine, opened, job, failure) &&
           ResolvePalette(line, ownPalette, engine, opened, job, failure);
}

}  // namespace kfx::commands
