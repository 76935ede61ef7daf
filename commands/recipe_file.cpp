// SPDX-License-Identifier: MIT
#include "commands/recipe_file.h"

#include <algorithm>

#include "commands/console.h"
#include "commands/output_format.h"
#include "commands/text.h"
#include "documents/document_text.h"
#include "media/file_io.h"
#include "media/recipe_note.h"

namespace kfx::commands {
namespace {

bool Refuse(const std::string& sentence, Failure* failure) {
    *failure = {kExitBadInput, sentence};
    return false;
}

bool ReadContent(const std::string& path, std::vector<uint8_t>* content, Failure* failure) {
    std::string error;
    if (IsStream(path))
        return ReadStandardInput(content, &error) || Refuse("standard input: " + error + ".", failure);
    return ReadWholeFile(SystemPath(path), content, &error) ||
           Refuse(WithFolderAsGiven(error, path), failure);
}

// A picture begins with bytes of its format. No format begins as a document.
bool IsText(const std::vector<uint8_t>& content) {
    const std::string start(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(
                                                                   std::min<size_t>(content.size(), 200)));
    return IsDocumentStart(start.substr(0, start.find('\n')).c_str());
}

}  // namespace

bool ReadRecipeFile(const std::string& path, const ReadLimits& limits, RecipeFile* file, Failure* failure) {
    *file = {};
    const std::string shown = ShownInput(path);
    std::vector<uint8_t>& content = file->content;
    std::string error;
    if (!ReadContent(path, &content, failure)) return false;
    if (content.empty()) return Refuse(shown + ": the file is empty.", failure);
    if (IsText(content)) {
        if (content.size() > kMostRecipeBytes)
            return Refuse(shown + ": is too large for a settings document.", failure);
        file->text.assign(content.begin(), content.end());
    } else if (!ReadAnimationFromMemory(content.data(), content.size(), &file->animation, &error, limits)) {
        if (EndingOf(path) == ".kx1")
            return Refuse(shown + ": is not a settings document; its first line is another.", failure);
        if (FormatNameOf(content.data(), content.size()).empty())
            return Refuse(shown + ": is neither a picture that holds a recipe nor a settings document.",
                          failure);
        return Refuse(shown + ": " + error + ".", failure);
    } else if (file->animation.recipe.empty()) {
        return Refuse(shown + ": holds no recipe; kestrel apply keeps one in the files that it makes.",
                      failure);
    } else {
        file->text = file->animation.recipe;
    }
    return ReadRecipe(file->text, &file->recipe, &error) || Refuse(shown + ": " + error, failure);
}

}  // namespace kfx::commands
