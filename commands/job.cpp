// SPDX-License-Identifier: MIT
#include "commands/job.h"

#include <algorithm>
#include <utility>

#include "commands/engine.h"
#include "commands/output_format.h"
#include "commands/text_match.h"
#include "resources/palette_names.h"

namespace kfx::commands {
namespace {

bool Refuse(const std::string& error, Failure* failure) {
    *failure = {kExitBadCommand, error};
    return false;
}

bool ResolveEffect(const EffectChoice& choice, const std::vector<std::string>& effects, Job* job,
                   Failure* failure) {
    job->effect = FindName(choice.name, effects);
    if (job->effect >= 0) job->effectName = effects[static_cast<size_t>(job->effect)];
    return job->effect >= 0 || Refuse(UnknownNameMessage("effect", choice.name, effects), failure);
}

// Whether the job has a value, or values, of the parameter.
bool HasValue(const Job& job, const std::string& parameter) {
    for (const ChosenValue& chosen : job.values) {
        if (chosen.parameter.name == parameter) return true;
    }
    for (const MovingValue& moving : job.moving) {
        if (moving.parameter.name == parameter) return true;
    }
    return false;
}

// Adds what the setting says about the parameter to the job.
bool ResolveSetting(const Setting& setting, const Parameter& parameter, Job* job, Failure* failure) {
    std::string error;
    ChosenValue chosen = {parameter, 0};
    MovingValue moving = {parameter, {}};
    const bool moves = IsJourney(setting.value);
    if (moves ? !ParseJourney(parameter, job->effectName, setting.value, &moving.journey, &error)
              : !ParseValue(parameter, job->effectName, setting.value, &chosen.value, &error)) {
        return Refuse(error, failure);
    }
    if (HasValue(*job, parameter.name)) return Refuse("--set gives " + parameter.name + " twice.", failure);
    if (moves) {
        job->moving.push_back(std::move(moving));
    } else {
        job->values.push_back(std::move(chosen));
    }
    return true;
}

bool ResolveValues(const EffectChoice& choice, const Engine& engine, void* opened, Job* job,
                   Failure* failure) {
    if (!engine.listParameters(opened, job->effect, &job->parameters, failure)) return false;
    std::vector<std::string> names;
    names.reserve(job->parameters.size());
    for (const Parameter& parameter : job->parameters) names.push_back(parameter.name);
    for (const Setting& setting : choice.settings) {
        if (names.empty()) return Refuse(job->effectName + " has no parameters.", failure);
        const int row = FindName(setting.name, names);
        if (row < 0) return Refuse(UnknownNameMessage("parameter", setting.name, names), failure);
        if (!ResolveSetting(setting, job->parameters[static_cast<size_t>(row)], job, failure)) return false;
    }
    return true;
}

bool ResolvePalette(const CommandLine& line, bool ownPalette, const Engine& engine, void* opened, Job* job,
                    Failure* failure) {
    const std::string wanted = PlainName(line.palette);
    if (line.trueColor) return true;
    job->paletteUse = PaletteUse::Computed;
    if (wanted == "custom") return true;
    std::vector<std::string> rows;
    if (!engine.listPalettes(opened, &rows, failure)) return false;
    // The source's own comes last, where there is one.
    const auto ownRow = static_cast<int>(rows.size());
    rows.emplace_back(PALETTE_NAME_SOURCE);
    job->paletteUse = PaletteUse::Listed;
    job->palette = FindName(wanted == "original" ? PALETTE_NAME_SOURCE : line.palette, rows);
    if (job->palette == ownRow && !ownPalette)
        return Refuse(ShownInput(line.inputs[0]) + ": has no palette of its own; choose another --palette.",
                      failure);
    if (job->palette >= 0) return true;
    if (!ownPalette) rows.pop_back();
    rows.insert(rows.end(), {"custom", "original"});
    return Refuse(UnknownNameMessage("palette", line.palette, rows), failure);
}

// The text has been checked with the command line: it is a colour or "none".
void ResolveBackground(const CommandLine& line, Job* job) {
    unsigned color = 0;
    if (line.localBackground.empty()) return;
    job->background = ParseColor(line.localBackground, &color) ? Background::Color : Background::Source;
    job->backgroundColor = color;
}

}  // namespace

bool ResolveEffectJob(const EffectChoice& choice, const Engine& engine, void* opened, Job* job,
                      Failure* failure) {
    *job = {};
    std::vector<std::string> effects;
    return engine.listEffects(opened, &effects, failure) && ResolveEffect(choice, effects, job, failure) &&
           ResolveValues(choice, engine, opened, job, failure);
}

bool ResolveJobs(const CommandLine& line, bool ownPalette, const Engine& engine, void* opened,
                 std::vector<Job>* jobs, Failure* failure) {
    jobs->clear();
    for (const EffectChoice& choice : line.effects) {
        Job job;
        if (!ResolveEffectJob(choice, engine, opened, &job, failure)) return false;
        ResolveBackground(line, &job);
        jobs->push_back(std::move(job));
    }
    Job& last = jobs->back();
    if (line.colors > 0 && line.colors < 256) last.mostColors = line.colors;
    last.dither = line.dither;
    last.supercompress = line.supercompress;
    last.comment = line.comment;
    return ResolvePalette(line, ownPalette, engine, opened, &last, failure);
}

bool HasJourney(const EffectChoice& choice) {
    return std::any_of(choice.settings.begin(), choice.settings.end(),
                       [](const Setting& setting) { return IsJourney(setting.value); });
}

int ValueOf(const Job& job, const std::string& parameter, int otherwise) {
    for (const ChosenValue& chosen : job.values) {
        if (chosen.parameter.name == parameter) return chosen.value;
    }
    for (const Parameter& row : job.parameters) {
        if (row.name == parameter) return row.value;
    }
    return otherwise;
}

void CompleteValues(Job* job) {
    std::vector<ChosenValue> all;
    for (const Parameter& parameter : job->parameters)
        all.push_back({parameter, ValueOf(*job, parameter.name, parameter.value)});
    job->values = std::move(all);
}

}  // namespace kfx::commands
