// SPDX-License-Identifier: MIT
#include "stage/step_recipe.h"

#include <algorithm>

namespace kfx::stage {

using namespace commands;

namespace {

// What the command line takes.
constexpr int kMostBrightness = 255, kMostContrast = 127;

void AddSearch(const PaletteSearch& search, OptionWords* words) {
    const PaletteSearch usual;
    const auto add = [words](const char* name, int value) {
        words->push_back({.name = name, .value = std::to_string(value)});
    };
    if (search.fast) words->push_back({.name = "fast-remap", .value = "", .isFlag = true});
    const int brightness = search.ditherBrightness, contrast = search.ditherContrast;
    if (brightness != usual.ditherBrightness && brightness >= 0 && brightness <= kMostBrightness)
        add("dither-brightness", brightness);
    if (contrast != usual.ditherContrast && contrast >= 0 && contrast <= kMostContrast)
        add("dither-contrast", contrast);
}

}  // namespace

bool LineOfStep(const Step& step, const std::string& format, const OptionWords& more, CommandLine* line,
                bool* isTrueColor, std::string* error) {
    OptionWords words;
    if (!WordsOfSettings(step.settings, {}, &words, error)) return false;
    *isTrueColor = std::any_of(words.begin(), words.end(),
                               [](const OptionWord& word) { return word.name == "true-color"; });
    if (!*isTrueColor) AddSearch(step.search, &words);
    OptionWords leftOut;
    const OptionWords held = WordsBeside(more, words, format, &leftOut);
    // No file is read or written by these names.
    std::vector<std::string> arguments = {"apply", "in.gif", "-o", "out." + format};
    for (const OptionWords* part : {&held, &more}) {
        for (const OptionWord& word : *part) arguments.push_back(TextOf(word));
    }
    return ParseCommandLine(arguments, {}, line, error) == ParseOutcome::Run;
}

RecipeDraft DraftStepRecipe(const Step& step, const std::string& format, const OptionWords& more) {
    CommandLine line;
    bool isTrueColor = false;
    std::string error;
    if (step.settings.lines.empty() || !LineOfStep(step, format, more, &line, &isTrueColor, &error))
        return {};
    RecipeDraft draft = DraftRecipe(line);
    if (!draft.head.empty() && !step.sourceFingerprint.empty()) NoteSource(step.sourceFingerprint, &draft);
    return draft;
}

}  // namespace kfx::stage
