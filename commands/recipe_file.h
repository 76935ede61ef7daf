// SPDX-License-Identifier: MIT
// Recipes in files: in a picture, or as a text of their own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/recipe_text.h"
#include "media/animation.h"

namespace kfx::commands {

struct RecipeFile {
    std::vector<uint8_t> content;  // of the file
    std::string text;              // of the recipe
    Recipe recipe;
    Animation animation;  // when the file is a picture
};

// Reads the recipe of a picture, or a recipe or settings document that is the file itself. Pictures are read
// within the limits. False: there is none, it is damaged, or a newer program made it; `*failure` says so,
// name first.
bool ReadRecipeFile(const std::string& path, const ReadLimits& limits, RecipeFile* file, Failure* failure);

}  // namespace kfx::commands
