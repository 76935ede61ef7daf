// SPDX-License-Identifier: MIT
// A step as options of `kestrel apply`: for building it once more, and for the recipe in its file.
#pragma once

#include <string>

#include "commands/command_line.h"
#include "commands/recipe_text.h"
#include "commands/recipe_words.h"
#include "stage/history.h"

namespace kfx::stage {

// The command line that builds with the step's settings into a file of this format ("gif", "webp", "apng"),
// with `more` beside them, which wins. `*isTrueColor`: the step was built without a palette; the line does
// not say so for a GIF, whose palettes then come from the writer. False: the settings name nothing that can
// be built, and `*error` is a clause.
bool LineOfStep(const Step& step, const std::string& format, const commands::OptionWords& more,
                commands::CommandLine* line, bool* isTrueColor, std::string* error);

// The recipe for a file of the step: its effect with all settings, and the fingerprint of the animation that
// it was applied to, which is another step's when builds stand on each other. Empty for the opened animation,
// or when the settings name nothing that can be built.
commands::RecipeDraft DraftStepRecipe(const Step& step, const std::string& format,
                                      const commands::OptionWords& more = {});

}  // namespace kfx::stage
