// SPDX-License-Identifier: MIT
#include "commands/fit_settings.h"

#include <algorithm>

#include "commands/recipe_words.h"

namespace kfx::commands {
namespace {

constexpr int kColorSteps[] = {256, 192, 128, 96, 64, 48, 32, 24, 16, 12, 8, 6, 4, 3};
constexpr int kQualitySteps[] = {95, 90, 85, 80, 75, 70, 60, 50, 40, 30, 20, 10, 0};
constexpr int kLossySteps[] = {0, 40, 120};
constexpr int kScales[] = {100, 90, 80, 70, 60, 50, 40, 33, 25};

// What is said by the line itself; true colour or own colours where they can be had.
FitSettings SettingsOf(const CommandLine& line) {
    FitSettings settings;
    settings.palette = line.trueColor || line.keepsColors ? "" : line.palette;
    settings.colors = line.colors;
    settings.dither = line.dither;
    settings.supercompress = line.supercompress;
    settings.lossy = line.lossy;
    settings.quality = line.quality;
    settings.edits = line.resultEdits;
    return settings;
}

// Dither and supercompression. Without dithering, supercompression leaves out nothing that the writers would
// not leave out themselves.
std::vector<FitSettings> WaysToRemap(const CommandLine& line, const FitSubject& subject,
                                     const FitSettings& settings) {
    std::vector<FitSettings> ways;
    for (const bool dither : {false, true}) {
        if (line.dither && !dither) continue;
        for (const bool supercompress : {false, true}) {
            // Somebody waits for several searches: what saves little is not looked at.
            if (line.fit.givesUp && supercompress != line.supercompress) continue;
            const bool changes =
                dither && subject.isAnimated && !subject.isTransparent && settings.colors != 2;
            if (supercompress != line.supercompress && (line.supercompress || !changes)) continue;
            ways.push_back(settings);
            ways.back().dither = dither;
            ways.back().supercompress = supercompress;
        }
    }
    return ways;
}

std::vector<FitSettings> WaysOfLoss(const CommandLine& line, const std::vector<FitSettings>& settings) {
    if (!line.fit.lossy || line.format != "gif") return settings;
    std::vector<FitSettings> ways;
    for (const FitSettings& one : settings) {
        for (const int lossy : kLossySteps) {
            if (lossy == 0 && line.fit.givesUp) continue;
            ways.push_back(one);
            if (lossy > 0) ways.back().lossy = lossy;
        }
    }
    return ways;
}

FitGroup StepsOf(const FitSettings& settings, bool stepsOverColors) {
    FitGroup group;
    if (!stepsOverColors) {
        group.steps.push_back(settings);
        return group;
    }
    for (const int colors : kColorSteps) group.steps.push_back(WithStepNumber(settings, colors));
    return group;
}

FitGroup QualitySteps(const FitSettings& settings) {
    FitGroup group;
    group.steps.push_back(settings);  // without loss
    for (const int quality : kQualitySteps) group.steps.push_back(WithStepNumber(settings, quality));
    return group;
}

bool NamesPaletteOption(const CommandLine& line) {
    return line.fit.fixedPalette || line.colors > 0 || line.dither || line.supercompress;
}

// What a plain command has instead of the options of the search.
std::vector<OptionWord> WordsFor(const CommandLine& line, const FitSettings& settings) {
    std::vector<OptionWord> words;
    const auto add = [&words](const char* name, const std::string& value) {
        words.push_back({.name = name, .value = value, .isFlag = value.empty()});
    };
    const bool isCustom = settings.palette == "custom";
    // A palette option is what makes a palette of a picture that could stay in true colour.
    const bool needsPalette = !settings.palette.empty() && (line.format != "gif" || line.effects.empty()) &&
                              settings.colors < 0 && !settings.dither && !settings.supercompress;
    if (!line.fit.fixedPalette && !settings.palette.empty() && (!isCustom || needsPalette))
        add("palette", settings.palette);
    if (settings.colors != line.colors) add("colors", std::to_string(settings.colors));
    if (settings.dither != line.dither) add("dither", "");
    if (settings.supercompress != line.supercompress) add("supercompress", "");
    if (settings.lossy != line.lossy) add("lossy", std::to_string(settings.lossy));
    if (settings.quality != line.quality) add("quality", std::to_string(settings.quality));
    if (settings.edits.shrink != line.resultEdits.shrink)
        add("shrink", std::to_string(settings.edits.shrink) + "%");
    if (settings.edits.every != line.resultEdits.every) add("every", std::to_string(settings.edits.every));
    return words;
}

// The words that a recipe keeps, as if the plain command had been given: effects first, then in the order of
// the options.
void KeepPlainWords(const std::vector<OptionWord>& added, std::vector<OptionWord>* kept) {
    const std::vector<std::string> names = ApplyOptionNames();
    const auto placeOf = [&](const OptionWord& word) {
        const bool isEffect = word.name == "effect" || word.name == "set";
        return isEffect ? names.begin() : std::find(names.begin(), names.end(), word.name) + 1;
    };
    std::erase_if(*kept,
                  [](const OptionWord& word) { return word.name == "max-size" || word.name == "allow"; });
    kept->insert(kept->end(), added.begin(), added.end());
    std::stable_sort(kept->begin(), kept->end(), [&](const OptionWord& one, const OptionWord& other) {
        return placeOf(one) < placeOf(other);
    });
}

}  // namespace

CommandLine LineWith(const CommandLine& line, const FitSettings& settings) {
    CommandLine plain = line;
    plain.fit = {};
    plain.palette = settings.palette.empty() ? "custom" : settings.palette;
    plain.colors = settings.colors;
    plain.dither = settings.dither;
    plain.supercompress = settings.supercompress;
    plain.lossy = settings.lossy;
    plain.quality = settings.quality;
    plain.resultEdits = settings.edits;
    plain.trueColor = settings.palette.empty() && line.format != "gif";
    plain.keepsColors = settings.palette.empty() && line.effects.empty();
    KeepPlainWords(WordsFor(line, settings), &plain.recipe.kept);
    return plain;
}

std::string OptionsText(const CommandLine& line, const FitSettings& settings) {
    std::string text;
    for (const OptionWord& word : WordsFor(line, settings)) {
        text += (text.empty() ? "--" : " --") + word.name;
        if (word.value.empty()) continue;
        const bool isPlain = word.value.find(' ') == std::string::npos;
        text += isPlain ? " " + word.value : " \"" + word.value + "\"";
    }
    return text;
}

std::vector<FitGroup> MainGroups(const CommandLine& line, const FitSubject& subject,
                                 const ResultEdits& edits) {
    std::vector<FitGroup> groups;
    FitSettings settings = SettingsOf(line);
    settings.edits = edits;
    const bool namesPalette = NamesPaletteOption(line);
    const bool keepsAll = !namesPalette && (line.format != "gif" || line.effects.empty());
    if (keepsAll && line.format == "webp") {
        const bool isFixed = line.quality >= 0 || line.nearLossless >= 0;
        groups.push_back(isFixed ? StepsOf(settings, false) : QualitySteps(settings));
        return groups;
    }
    if (keepsAll && line.fit.givesUp && line.fit.lossy) {
        for (const FitSettings& way : WaysOfLoss(line, {settings})) groups.push_back(StepsOf(way, false));
    } else if (keepsAll) {
        groups.push_back(StepsOf(settings, false));
    }
    if (line.fit.fixedTrueColor) return groups;
    if (!line.fit.fixedPalette) settings.palette = "custom";
    const bool stepsOverColors = settings.palette == "custom" && line.colors < 0;
    for (const FitSettings& way : WaysOfLoss(line, WaysToRemap(line, subject, settings)))
        groups.push_back(StepsOf(way, stepsOverColors));
    return groups;
}

std::vector<FitGroup> PaletteGroups(const CommandLine& line, const FitSubject& subject) {
    std::vector<FitGroup> groups;
    const bool isFree =
        !line.fit.fixedPalette && line.colors < 0 && !line.fit.fixedTrueColor && !line.fit.givesUp;
    if (!isFree || line.format == "webp") return groups;
    FitSettings settings = SettingsOf(line);
    settings.dither = true;
    std::vector<std::string> names = subject.palettes;
    if (subject.hasOwnPalette) names.emplace_back("original");
    for (const std::string& name : names) {
        settings.palette = name;
        groups.push_back(StepsOf(settings, false));
    }
    return groups;
}

std::vector<FitGroup> OtherWaysOf(const CommandLine& line, const FitSubject& subject,
                                  const FitSettings& settings) {
    std::vector<FitGroup> groups;
    for (const FitSettings& way : WaysOfLoss(line, WaysToRemap(line, subject, settings)))
        groups.push_back(StepsOf(way, false));
    return groups;
}

int StepNumberOf(const FitSettings& settings) {
    if (settings.palette != "custom") return settings.quality;
    return settings.colors > 0 ? settings.colors : 256;
}

FitSettings WithStepNumber(FitSettings settings, int number) {
    if (settings.palette == "custom")
        settings.colors = number < 256 ? number : -1;
    else
        settings.quality = number;
    return settings;
}

std::vector<int> ScalesOf(const CommandLine& line) {
    if (!line.fit.scale) return {line.resultEdits.shrink};
    // The first one is the full size.
    return {std::begin(kScales) + (line.fit.givesUp ? 1 : 0), std::end(kScales)};
}

std::vector<int> RatesOf(const CommandLine& line, const FitSubject& subject) {
    if (!line.fit.frames || !subject.isAnimated) return {line.resultEdits.every};
    if (line.fit.givesUp) return {2, 3};
    return {1, 2, 3};
}

}  // namespace kfx::commands
