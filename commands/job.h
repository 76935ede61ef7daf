// SPDX-License-Identifier: MIT
// What a command wants built, with every name replaced by the row that it means.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/exit_codes.h"
#include "commands/journey.h"
#include "commands/parameter.h"

namespace kfx {
struct WholeAnimation;
}

namespace kfx::commands {

struct Engine;

struct ChosenValue {
    Parameter parameter;
    int value = 0;  // as shown
};

// A parameter whose value changes from frame to frame.
struct MovingValue {
    Parameter parameter;
    Journey journey;
};

enum class PaletteUse {
    TrueColor,  // none
    Computed,   // from the result's frames
    Listed,     // a row of the palette list
};

// What effects show beyond the picture's edges.
enum class Background {
    Standard,  // the plug-in's own setting
    Source,    // the source's background colour
    Color,
};

struct Job {
    int effect = 0;                     // row of the effect list
    std::string effectName;             // as the list has it
    std::vector<Parameter> parameters;  // all of the effect's, with their defaults
    std::vector<ChosenValue> values;    // the other parameters keep what they have in a fresh engine
    std::vector<MovingValue> moving;    // an engine builds frames of one value only; see journey_frames.h
    PaletteUse paletteUse = PaletteUse::TrueColor;
    int palette = 0;     // when Listed: row of the palette list; the row behind the last is the source's own
    int mostColors = 0;  // when Computed: of the palette, 2 to 255; 0: 256
    bool dither = false;
    bool supercompress = false;
    bool comment = false;
    Background background = Background::Standard;
    uint32_t backgroundColor = 0;  // 0x00BBGGRR
    // What all frames say, for an engine that buildsParts; null: the source has all of them.
    WholeAnimation* whole = nullptr;
};

// Looks up everything that an apply command names in the lists of the engine, which `opened` belongs to: one
// job for each effect. The last one has the palette and all that goes with the output, the others are in true
// colour. `ownPalette`: the source has a palette that the result can keep. False: `*failure` names what is
// wrong and what was probably meant.
bool ResolveJobs(const CommandLine& line, bool ownPalette, const Engine& engine, void* opened,
                 std::vector<Job>* jobs, Failure* failure);

// The same for one effect of its own: a job in true colour.
bool ResolveEffectJob(const EffectChoice& choice, const Engine& engine, void* opened, Job* job,
                      Failure* failure);

// Whether a parameter of the effect moves.
bool HasJourney(const EffectChoice& choice);

// The value that the job gives the parameter of this name, as shown; `otherwise` when its effect has none.
int ValueOf(const Job& job, const std::string& parameter, int otherwise);

// Gives every parameter a value, so that nothing is left of what the engine did before.
void CompleteValues(Job* job);

}  // namespace kfx::commands
