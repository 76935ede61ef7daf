// SPDX-License-Identifier: MIT
// The recipe of a picture, or a settings document, as the commands read it.
#include "commands/recipe_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

using namespace kfx::commands;

namespace {

void Expect(bool holds) {
    if (!holds) std::abort();
}

// What a recipe may not say: it comes with a picture, from anybody.
void CheckWord(const OptionWord& word) {
    constexpr const char* kNever[] = {"output",  "o",      "force", "recipe",    "settings",
                                      "source",  "plugin", "join",  "threads",   "jobs",
                                      "dry-run", "quiet",  "json",  "max-pixels"};
    for (const char* name : kNever) Expect(word.name != name);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    Expect(std::none_of(word.value.begin(), word.value.end(), isControl));
}

// Becomes a command as `apply --recipe` makes it, and keeps its input and its output.
void CheckCommand(const OptionWords& words) {
    std::vector<std::string> arguments = {"apply", "-o", "out.gif"};
    for (const OptionWord& word : words) {
        if (word.name != "format") arguments.push_back(TextOf(word));
    }
    arguments.insert(arguments.end(), {"--", "in.gif"});
    CommandLine line;
    std::string text;
    const ParseOutcome outcome = ParseCommandLine(arguments, {}, &line, &text);
    Expect(outcome != ParseOutcome::ShowText);
    if (outcome != ParseOutcome::Run) return;
    Expect(line.output == "out.gif" && line.inputs == std::vector<std::string>{"in.gif"});
    Expect(!line.force && line.recipe.recipe.empty() && line.recipe.settings.empty());
    // What is made of it is a recipe again, with the same options.
    const std::string again = FinishRecipe(DraftRecipe(line), std::string(32, '0'));
    if (again.empty()) return;
    Recipe read;
    Expect(ReadRecipe(again, &read, &text) && read.isWhole);
    Expect(FinishRecipe(DraftRecipe(line), read.fingerprint) == again);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(data, data + size);
    Recipe recipe;
    std::string error;
    if (!ReadRecipe(text, &recipe, &error)) {
        Expect(!error.empty());
        return 0;
    }
    for (const OptionWord& word : recipe.words) CheckWord(word);
    if (recipe.isWhole) {
        CheckCommand(recipe.words);
        return 0;
    }
    OptionWords words;
    if (WordsOfSettings(recipe.document, {}, &words, &error)) CheckCommand(words);
    return 0;
}
