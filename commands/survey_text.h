// SPDX-License-Identifier: MIT
// The text of a survey: what the parts of an animation have to know of the whole. It is a recipe, in whose
// comment lines stand the source, the number of frames and the facts, and whose fingerprint is that of these
// lines.
#pragma once

#include <cstddef>
#include <string>

#include "commands/recipe_text.h"
#include "commands/whole_facts.h"

namespace kfx::commands {

struct Survey {
    Recipe recipe;          // the options of the whole, and the version of the program
    std::string source;     // ExactHashOf the source, as it was read
    size_t frames = 0;      // of the result
    bool hasRecipe = true;  // the result keeps one
    WholeFacts facts;
};

// The text of a survey for an apply command. `survey.recipe` is not used. Empty: the options are too long.
std::string SurveyTextOf(const CommandLine& line, const Survey& survey);

// Reads a survey of this version. False: `*error` is a sentence without the file's name.
bool ReadSurvey(const std::string& text, Survey* survey, std::string* error);

// The same from a file, which may be standard input; `*text` is what it holds. False: `*failure` has a
// sentence, name first.
bool ReadSurveyFile(const std::string& path, Survey* survey, std::string* text, Failure* failure);

}  // namespace kfx::commands
