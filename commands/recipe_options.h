// SPDX-License-Identifier: MIT
// Options that take over what another command did, and the words by which a recipe keeps what this one does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kfx::commands {

struct CommandLine;
struct Engine;
struct Failure;
struct OptionTarget;

// An option of kestrel apply as it is given: --NAME=VALUE, or --NAME alone.
struct OptionWord {
    std::string name;  // without dashes
    std::string value;
    bool isFlag = false;
};

constexpr int64_t kNoSeed = -1;
constexpr int64_t kLargestSeed = UINT32_MAX;

struct RecipeOptions {
    bool leavesOut = false;            // --no-recipe
    std::string recipe;                // of --recipe: a picture with a recipe, or its text in a file
    std::string settings;              // of --settings: a settings document
    int64_t seed = kNoSeed;            // of the random numbers; kNoSeed: the clock's second
    std::vector<OptionWord> kept;      // what the result depends on, beside input, seed and format
    std::vector<OptionWord> others;    // the other options of apply
    std::vector<std::string> sources;  // of kestrel verify
    std::vector<std::string> notes;    // sentences about what was taken over
};

// Adds --settings, --recipe, --no-recipe and --seed.
void AddRecipeOptions(CLI::App* command, const OptionTarget& target);

// Adds --seed. `byItself`: what is taken without the option, for the help.
void AddSeed(CLI::App* command, RecipeOptions* options, const std::string& byItself);

// Whether the engine takes the seed, if the line gives one. False: `*failure` says what to do.
bool CheckSeed(const CommandLine& line, const Engine& engine, Failure* failure);

// Whether options have still to be taken from a file.
bool TakesOver(const RecipeOptions& options);

// Whether the line says where to take them from only once. All else is checked when they are known. False:
// `*error` is one sentence.
bool CheckTakingOver(const CommandLine& line, std::string* error);

// Before a command runs: reads the settings or the recipe that the line names and makes the line what it
// would be if their options had been given; what is given beside them wins. Then settles the seed, when an
// effect needs one. False: `*failure` says why.
bool TakeRecipe(const Engine& engine, CommandLine* line, Failure* failure);

}  // namespace kfx::commands
