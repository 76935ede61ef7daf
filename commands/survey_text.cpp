// SPDX-License-Identifier: MIT
#include "commands/survey_text.h"

#include <charconv>
#include <cstdint>
#include <sstream>
#include <vector>

#include "commands/command_line.h"
#include "commands/console.h"
#include "commands/fingerprint.h"
#include "commands/output_format.h"
#include "commands/text.h"
#include "media/file_io.h"
#include "media/recipe_note.h"

namespace kfx::commands {
namespace {

constexpr char kSurveyWord[] = "survey";
constexpr char kFingerprintStart[] = "\n;fingerprint ";
constexpr size_t kMostFrames = 1000000;
constexpr size_t kMostStages = 1000;
constexpr size_t kColorsInLine = 16;
constexpr int kMostBits = 8;
constexpr int kMostColors = 256;

constexpr char kDamaged[] = "this survey is damaged.";

std::string HexOf(RgbColor color) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const uint8_t channel : {color.red, color.green, color.blue}) {
        text += kDigits[channel >> 4];
        text += kDigits[channel & 15];
    }
    return text;
}

std::string LinesOf(const StageFacts& stage) {
    std::string line = std::string(";stage ") + (stage.opaque ? "opaque" : "transparent");
    if (stage.gathered.isKnown) line += " gathered " + std::to_string(stage.gathered.summary);
    return line + "\n";
}

std::string LinesOf(const ComputedPalette& palette) {
    if (!palette.isKnown) return "";
    std::string lines = ";palette " + std::to_string(palette.bitsPerPixel) + " " +
                        std::to_string(palette.colorCount) + " " + std::to_string(palette.reservedIndex) +
                        "\n";
    for (size_t i = 0; i < kMostColors; ++i) {
        const uint8_t* const entry = palette.colors + 3 * i;
        lines += i % kColorsInLine == 0 ? ";colors " : " ";
        lines += HexOf({.red = entry[0], .green = entry[1], .blue = entry[2]});
        if (i % kColorsInLine == kColorsInLine - 1) lines += "\n";
    }
    return lines;
}

// The words of one line.
struct Words {
    std::istringstream stream;

    bool Take(std::string* word) { return static_cast<bool>(stream >> *word); }

    template <typename Number>
    bool Take(Number* number, Number least, Number most) {
        std::string word;
        if (!Take(&word)) return false;
        const char* const end = word.data() + word.size();
        const auto read = std::from_chars(word.data(), end, *number);
        return read.ec == std::errc() && read.ptr == end && *number >= least && *number <= most;
    }

    bool IsAtEnd() {
        std::string word;
        return !Take(&word);
    }
};

bool TakeColor(Words* words, RgbColor* color) {
    std::string word;
    unsigned number = 0;
    if (!words->Take(&word) || word.size() != 6 || !ParseColor(word, &number)) return false;
    *color = {.red = static_cast<uint8_t>(number),
              .green = static_cast<uint8_t>(number >> 8),
              .blue = static_cast<uint8_t>(number >> 16)};
    return true;
}

bool TakeStage(Words* words, WholeFacts* facts) {
    StageFacts stage;
    std::string word;
    if (facts->stages.size() == kMostStages || !words->Take(&word)) return false;
    stage.opaque = word == "opaque";
    if (!stage.opaque && word != "transparent") return false;
    if (words->Take(&word)) {
        stage.gathered.isKnown = true;
        if (word != "gathered" || !words->Take<uint64_t>(&stage.gathered.summary, 0, UINT64_MAX))
            return false;
    }
    facts->stages.push_back(stage);
    return true;
}

// Pixels can hold the index of each colour, and the reserved entry stands behind the colours.
bool TakePalette(Words* words, ComputedPalette* palette) {
    if (palette->isKnown || !words->Take(&palette->bitsPerPixel, 1, kMostBits)) return false;
    const int32_t entries = 1 << palette->bitsPerPixel;
    palette->isKnown = words->Take(&palette->colorCount, 1, entries) &&
                       words->Take(&palette->reservedIndex, palette->colorCount, palette->colorCount);
    return palette->isKnown;
}

bool TakeColors(Words* words, size_t* count, ComputedPalette* palette) {
    for (size_t i = 0; i < kColorsInLine; ++i, ++*count) {
        RgbColor color;
        if (*count == kMostColors || !TakeColor(words, &color)) return false;
        uint8_t* const entry = palette->colors + 3 * *count;
        entry[0] = color.red;
        entry[1] = color.green;
        entry[2] = color.blue;
    }
    return true;
}

// What is read line by line.
struct Reading {
    Survey* survey;
    bool isSurvey = false;
    size_t colors = 0;
};

// Lines of the recipe pass.
bool ReadLine(const std::string& line, Reading* reading) {
    Survey* const survey = reading->survey;
    Words words = {.stream = std::istringstream(line)};
    std::string name;
    int number = 0;
    words.Take(&name);
    bool isRight = true;
    if (name == kSurveyWord) {
        isRight = words.Take(&number, 1, 1);
        reading->isSurvey = true;
    } else if (name == "source") {
        isRight = words.Take(&survey->source);
    } else if (name == "frames") {
        isRight = words.Take<size_t>(&survey->frames, 1, kMostFrames);
    } else if (name == "no-recipe") {
        survey->hasRecipe = false;
    } else if (name == "keeps-colors") {
        survey->facts.keepsColors = true;
    } else if (name == "hidden") {
        isRight = TakeColor(&words, &survey->facts.hidden);
    } else if (name == "stage") {
        isRight = TakeStage(&words, &survey->facts);
    } else if (name == "palette") {
        isRight = TakePalette(&words, &survey->facts.palette);
    } else if (name == "colors") {
        isRight = TakeColors(&words, &reading->colors, &survey->facts.palette);
    } else {
        return true;
    }
    return isRight && words.IsAtEnd();
}

std::string WithoutFingerprint(const std::string& text) {
    const size_t start = text.find(kFingerprintStart);
    const size_t end = start == std::string::npos ? start : text.find('\n', start + 1);
    return end == std::string::npos ? text : text.substr(0, start) + text.substr(end);
}

}  // namespace

std::string SurveyTextOf(const CommandLine& line, const Survey& survey) {
    CommandLine kept = line;
    kept.recipe.leavesOut = false;
    RecipeDraft draft = DraftRecipe(kept);
    if (draft.head.empty()) return "";
    draft.isLossy = false;
    const WholeFacts& facts = survey.facts;
    draft.head += std::string(";") + kSurveyWord + " 1\n;source " + survey.source + "\n;frames " +
                  std::to_string(survey.frames) + "\n";
    if (line.recipe.leavesOut) draft.head += ";no-recipe\n";
    if (facts.keepsColors) draft.head += ";keeps-colors\n";
    draft.head += ";hidden " + HexOf(facts.hidden) + "\n";
    for (const StageFacts& stage : facts.stages) draft.head += LinesOf(stage);
    draft.head += LinesOf(facts.palette);
    const std::string text = FinishRecipe(draft, HashOfText(draft.head + draft.tail));
    return text.size() > kMostRecipeBytes ? "" : text;
}

bool ReadSurvey(const std::string& text, Survey* survey, std::string* error) {
    *survey = {};
    Recipe& recipe = survey->recipe;
    if (text.empty() || text.size() > kMostRecipeBytes || !ReadRecipe(text, &recipe, error)) {
        // The sentence is about documents of the window.
        if (recipe.version.empty()) *error = "this is no survey; kestrel survey makes one.";
        return false;
    }
    Reading reading = {.survey = survey, .isSurvey = false, .colors = 0};
    bool isRight = true;
    for (const std::string& line : recipe.document.comments) isRight = isRight && ReadLine(line, &reading);
    if (!recipe.isWhole || !reading.isSurvey) {
        *error = "this is no survey; kestrel survey makes one.";
        return false;
    }
    if (recipe.version != ProgramVersion()) {
        *error = "kestrel " + recipe.version + " made this survey, and this is " + ProgramVersion() +
                 "; take one version for survey, parts and join.";
        return false;
    }
    isRight = isRight && survey->frames > 0 && recipe.fingerprint == HashOfText(WithoutFingerprint(text)) &&
              (!survey->facts.palette.isKnown || reading.colors == kMostColors);
    if (!isRight) *error = kDamaged;
    return isRight;
}

bool ReadSurveyFile(const std::string& path, Survey* survey, std::string* text, Failure* failure) {
    std::vector<uint8_t> content;
    std::string error;
    if (IsStream(path)) {
        if (!ReadStandardInput(&content, &error)) {
            *failure = {kExitBadInput, "standard input: " + error + "."};
            return false;
        }
    } else if (!ReadWholeFile(SystemPath(path), &content, &error)) {
        *failure = {kExitBadInput, WithFolderAsGiven(error, path)};
        return false;
    }
    text->assign(content.begin(), content.end());
    if (ReadSurvey(*text, survey, &error)) return true;
    *failure = {kExitBadInput, ShownInput(path) + ": " + error};
    return false;
}

}  // namespace kfx::commands
