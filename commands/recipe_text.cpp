// SPDX-License-Identifier: MIT
#include "commands/recipe_text.h"

#include <algorithm>
#include <charconv>

#include "commands/command_line.h"
#include "commands/output_format.h"
#include "commands/text_match.h"
#include "documents/document_text.h"
#include "media/recipe_note.h"
#include "resources/resource_ids.h"

namespace kfx::commands {
namespace {

constexpr char kVersionLine[] = "kestrel ";
constexpr char kFingerprintLine[] = "fingerprint ";
constexpr char kBeforeLoss[] = " before loss";
constexpr char kPartLine[] = "part ";
constexpr char kSourceLine[] = "source fingerprint ";  // a remark
constexpr size_t kFingerprintDigits = 32;
constexpr size_t kMostWords = 1000;
constexpr size_t kLongestVersion = 20;

bool IsPrintable(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

// As a line of the document. The window's reader would take the rest of a longer one for a control's.
bool AddLine(const std::string& text, std::string* lines) {
    if (!IsPrintable(text) || text.size() + 3 > kDocumentLineBytes) return false;
    *lines += ";" + text + "\n";
    return true;
}

bool IsLossy(const CommandLine& line) {
    if (line.format == "gif") return line.lossy > 0;
    return line.format == "webp" && (line.quality >= 0 || line.nearLossless >= 0);
}

bool StartsWith(const std::string& text, const char* start) { return text.rfind(start, 0) == 0; }

bool ReadFingerprint(const std::string& text, Recipe* recipe) {
    recipe->fingerprint = text.substr(0, kFingerprintDigits);
    recipe->isLossy = text.substr(recipe->fingerprint.size()) == kBeforeLoss;
    return recipe->fingerprint.size() == kFingerprintDigits &&
           recipe->fingerprint.find_first_not_of("0123456789abcdef") == std::string::npos &&
           (recipe->isLossy || text.size() == kFingerprintDigits);
}

// "3 of 12".
bool ReadPart(const std::string& text, SeriesPart* part) {
    const char* const end = text.data() + text.size();
    const auto number = std::from_chars(text.data(), end, part->number);
    const std::string rest(number.ptr, end);
    if (number.ec != std::errc() || !StartsWith(rest, " of ")) return false;
    const auto count = std::from_chars(rest.data() + 4, rest.data() + rest.size(), part->count);
    return count.ec == std::errc() && count.ptr == rest.data() + rest.size() && part->number >= 1 &&
           part->number <= part->count;
}

bool ReadLine(const std::string& line, Recipe* recipe) {
    OptionWord word;
    if (StartsWith(line, kFingerprintLine)) return ReadFingerprint(line.substr(12), recipe);
    if (StartsWith(line, kPartLine)) return ReadPart(line.substr(5), &recipe->part);
    if (!ReadOptionWord(line, &word)) return true;  // a remark
    recipe->words.push_back(word);
    return recipe->words.size() <= kMostWords;
}

// No option of a recipe names a file or changes anything but the result.
bool CheckWords(const Recipe& recipe, std::string* error) {
    for (const OptionWord& word : recipe.words) {
        if (word.name == "format" || word.name == "seed" || IsKept(word.name)) continue;
        const std::vector<std::string> names = ApplyOptionNames();
        *error = "its recipe holds --" + word.name;
        if (std::find(names.begin(), names.end(), word.name) != names.end()) {
            *error += ", which no recipe may hold.";
        } else {
            *error += ", which kestrel " + ProgramVersion() + " does not know";
            *error += recipe.version == ProgramVersion()
                          ? "; the recipe has been changed or damaged."
                          : "; another version made it (" + recipe.version + ").";
        }
        return false;
    }
    return true;
}

}  // namespace

std::string ProgramVersion() {
    return std::to_string(KFX_VERSION_MAJOR) + "." + std::to_string(KFX_VERSION_MINOR) + KFX_VERSION_LETTER;
}

RecipeDraft DraftRecipe(const CommandLine& line) {
    RecipeDraft draft;
    if (line.recipe.leavesOut || line.format.empty()) return draft;
    OptionWords words = {{.name = "format", .value = line.format}};
    if (line.recipe.seed != kNoSeed)
        words.push_back({.name = "seed", .value = std::to_string(line.recipe.seed)});
    const OptionWords kept = WithFullNames(line.recipe.kept);
    words.insert(words.end(), kept.begin(), kept.end());
    std::string lines = kDocumentStart;
    AddLine(kVersionLine + ProgramVersion(), &lines);
    for (const OptionWord& word : words) {
        if (!AddLine(TextOf(word), &lines)) return draft;
    }
    draft.tail = ControlLinesOf(line) + kDocumentEnd;
    // What is longer would not be read back.
    if (lines.size() + draft.tail.size() + 200 > kMostRecipeBytes || words.size() > kMostWords) return draft;
    draft.head = lines;
    draft.isLossy = IsLossy(line);
    return draft;
}

void NoteSource(const std::string& fingerprint, RecipeDraft* draft) {
    AddLine(kSourceLine + fingerprint, &draft->head);
}

bool LosesRecipe(const CommandLine& line) {
    const bool isKept = !line.recipe.leavesOut && !line.format.empty() && !IsRawFormat(line.format);
    return isKept && DraftRecipe(line).head.empty();
}

std::string FinishRecipe(const RecipeDraft& draft, const std::string& fingerprint, const SeriesPart& part) {
    if (draft.head.empty()) return "";
    std::string text = draft.head;
    AddLine(kFingerprintLine + fingerprint + (draft.isLossy ? kBeforeLoss : ""), &text);
    if (part.count > 1)
        AddLine(kPartLine + std::to_string(part.number) + " of " + std::to_string(part.count), &text);
    return text + draft.tail;
}

bool ReadRecipe(const std::string& text, Recipe* recipe, std::string* error) {
    *recipe = {};
    // As the window says it.
    if (!ReadSettings(text, &recipe->document)) {
        *error = "This file has been damaged.";
        return false;
    }
    const std::vector<std::string>& comments = recipe->document.comments;
    const auto version = std::find_if(comments.begin(), comments.end(),
                                      [](const std::string& line) { return StartsWith(line, kVersionLine); });
    recipe->isWhole = version != comments.end();
    if (!recipe->isWhole) return true;
    recipe->version = version->substr(8, kLongestVersion);
    for (const std::string& line : comments) {
        if (IsPrintable(line) && ReadLine(line, recipe)) continue;
        *error = "its recipe is damaged.";
        return false;
    }
    return CheckWords(*recipe, error);
}

}  // namespace kfx::commands
