// SPDX-License-Identifier: MIT
// The options of kestrel apply as words: which of them a recipe keeps, and what becomes of a recipe's words
// beside those of a command line.
#pragma once

#include <string>
#include <vector>

#include "commands/recipe_options.h"

namespace kfx::commands {

using OptionWords = std::vector<OptionWord>;

// "--NAME=VALUE" or "--NAME".
std::string TextOf(const OptionWord& word);

// What TextOf has written. False: it is something else.
bool ReadOptionWord(const std::string& text, OptionWord* word);

// The names of all options of apply that are not the program's own.
std::vector<std::string> ApplyOptionNames();

// Whether a recipe keeps this option of apply. Those that change nothing of the result do not stand there,
// nor those that name files: a recipe may come from anywhere. What is not known to change nothing is kept.
bool IsKept(const std::string& name);

// Sorts the options that were given into options->kept and options->others. The kept ones are in the order in
// which the help lists them, each --set behind its --effect.
void TakeWords(const CLI::App& apply, RecipeOptions* options);

// A recipe's words that hold beside a command line's own (kept and others). `format` is that of the result;
// what belongs to another one is left out, and so is what the own words replace or exclude. `*leftOut` gets
// the first, as they were.
OptionWords WordsBeside(const OptionWords& own, const OptionWords& recipe, const std::string& format,
                        OptionWords* leftOut);

}  // namespace kfx::commands
