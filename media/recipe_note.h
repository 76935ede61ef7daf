// SPDX-License-Identifier: MIT
// The note in which a file says how it was made. Its text is the program's; media/ only carries it.
#pragma once

#include <cstddef>
#include <string_view>

namespace kfx {

// A longer note is not the program's own, and is not read.
constexpr size_t kMostRecipeBytes = size_t{64} << 10;

// How every recipe begins and ends. Both tell the comment of a GIF that is a recipe from all others, also
// from a settings document of the plug-in's window, which has the same first lines but no program's version.
constexpr std::string_view kRecipeStart =
    ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\n"
    ";Start of document\n"
    ";kestrel ";
constexpr std::string_view kRecipeEnd = "\n;End of document\n";

// The chunk of a WebP file that is a recipe.
constexpr char kRecipeChunk[] = "KFXR";

inline bool IsRecipe(std::string_view text) {
    return text.size() <= kMostRecipeBytes && text.starts_with(kRecipeStart) && text.ends_with(kRecipeEnd);
}

}  // namespace kfx
