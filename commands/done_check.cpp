// SPDX-License-Identifier: MIT
#include "commands/done_check.h"

#include <algorithm>
#include <filesystem>

#include "commands/commands.h"
#include "commands/fingerprint.h"
#include "commands/output_format.h"
#include "commands/recipe_text.h"
#include "commands/text.h"
#include "media/file_io.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

namespace fs = std::filesystem;

bool Say(const std::string& clause, std::string* reason) {
    *reason = clause;
    return false;
}

bool IsOlder(const std::string& file, const std::vector<std::string>& inputs) {
    std::error_code unknown;
    const auto made = fs::last_write_time(PathOf(SystemPath(file)), unknown);
    return std::any_of(inputs.begin(), inputs.end(), [&](const std::string& input) {
        std::error_code noTime;
        const auto changed = fs::last_write_time(PathOf(SystemPath(input)), noTime);
        return !noTime && changed > made;
    });
}

// Frames without headers cannot be read; their bytes must be a number of whole frames.
bool AreWholeFrames(const std::string& file, const std::string& format, int width, int height) {
    std::error_code unknown;
    const auto bytes = fs::file_size(PathOf(SystemPath(file)), unknown);
    const auto pixels = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
    return !unknown && bytes > 0 && bytes % (pixels * (format == "rgb" ? 3 : 4)) == 0;
}

bool Has(const OptionWords& words, const OptionWord& word) {
    return std::any_of(words.begin(), words.end(),
                       [&](const OptionWord& other) { return TextOf(other) == TextOf(word); });
}

bool IsGiven(const CommandLine& line, const std::string& name) {
    const OptionWords& words = line.recipe.others;
    return std::any_of(words.begin(), words.end(), [&](const OptionWord& word) { return word.name == name; });
}

// A seed that was not asked for is the clock's, and another each time.
void ForgetClock(const CommandLine& line, OptionWords* words) {
    if (!IsGiven(line, "seed"))
        std::erase_if(*words, [](const OptionWord& word) { return word.name == "seed"; });
}

bool IsMadeByTheSameOptions(const CommandLine& line, OptionWords made, OptionWords wanted,
                            std::string* reason) {
    const bool fits = line.fit.mostBytes > 0;
    ForgetClock(line, &made);
    ForgetClock(line, &wanted);
    // What was made to fit keeps the options that were found.
    if (fits)
        std::erase_if(wanted,
                      [](const OptionWord& word) { return word.name == "max-size" || word.name == "allow"; });
    for (const OptionWord& word : wanted)
        if (!Has(made, word)) return Say("it was made without " + TextOf(word), reason);
    if (fits) return true;
    for (const OptionWord& word : made)
        if (!Has(wanted, word)) return Say("it was made with " + TextOf(word), reason);
    const auto isSame = [](const OptionWord& one, const OptionWord& other) {
        return TextOf(one) == TextOf(other);
    };
    return std::equal(made.begin(), made.end(), wanted.begin(), wanted.end(), isSame) ||
           Say("it was made with the same options in another order", reason);
}

// Whether the recipe in the result, if there is one, is that of the line's command, and the result's pictures
// are those that it was made with.
bool HasItsRecipe(const CommandLine& line, const Animation& result, const SeriesPart& part,
                  std::string* reason) {
    if (result.recipe.empty()) return true;
    const std::string own = FingerprintOf(result);
    const RecipeDraft draft = DraftRecipe(line);
    if (draft.head.empty()) return Say("it holds a recipe, and none is kept now", reason);
    Recipe made, wanted;
    std::string error;
    if (!ReadRecipe(FinishRecipe(draft, own, part), &wanted, &error)) return true;
    if (!ReadRecipe(result.recipe, &made, &error) || !made.isWhole)
        return Say("its recipe is damaged or a newer kestrel's", reason);
    if (made.version != wanted.version)
        return Say("kestrel " + made.version + " made it, and this is " + wanted.version, reason);
    if (!IsMadeByTheSameOptions(line, made.words, wanted.words, reason)) return false;
    if (made.part.number != wanted.part.number || made.part.count != wanted.part.count)
        return Say("it is of another place in its series", reason);
    return made.isLossy || made.fingerprint == own || Say("it was changed after it had been made", reason);
}

// A frame that equals the one before may have become a longer time.
bool IsWhole(const CommandLine& line, const Animation& source, const std::string& file, size_t mostFrames,
             Animation* read, std::string* reason) {
    Animation& result = *read;
    std::string error;
    const int width = ShrunkSide(source.width, line.resultEdits.shrink);
    const int height = ShrunkSide(source.height, line.resultEdits.shrink);
    if (line.format == "rgb" || line.format == "rgba")
        return AreWholeFrames(file, line.format, width, height) ||
               Say("it does not hold whole frames", reason);
    // It may have been put there by anybody, so it is read with the limit of an input. A video repeats frames
    // and may have more of them; its file is as large as they are.
    ReadLimits limits = LimitsOf(line);
    if (line.format == "y4m") limits.maxPixels = UINT64_MAX;
    std::vector<uint8_t> content;
    if (!ReadWholeFile(SystemPath(file), &content, &error)) return Say("it cannot be read", reason);
    if (!ReadAnimationFromMemory(content.data(), content.size(), &result, &error, limits))
        return Say(error.find(kMaxPixelsOption) != std::string::npos ? error : "it is damaged", reason);
    if (!result.warning.empty()) return Say("it is damaged", reason);
    // Which scale was taken stands nowhere.
    const bool hasSize = line.fit.scale ? result.width <= width && result.height <= height
                                        : result.width == width && result.height == height;
    if (!hasSize) return Say("it has another size", reason);
    // A video repeats frames.
    return result.frames.size() <= mostFrames || line.format == "y4m" ||
           Say("it has another number of frames", reason);
}

bool FitsStill(const CommandLine& line, const std::string& file, std::string* reason) {
    std::error_code unknown;
    const auto bytes = fs::file_size(PathOf(SystemPath(file)), unknown);
    return line.fit.mostBytes == 0 || unknown || bytes <= line.fit.mostBytes ||
           Say("it is larger than --max-size", reason);
}

}  // namespace

bool IsDone(const CommandLine& line, const Animation& source, const std::vector<std::string>& files,
            std::string* reason) {
    reason->clear();
    std::error_code unknown;
    const auto missing = std::count_if(files.begin(), files.end(), [&](const std::string& file) {
        return IsStream(file) || !fs::is_regular_file(PathOf(SystemPath(file)), unknown);
    });
    if (static_cast<size_t>(missing) == files.size()) return false;
    if (missing > 0) return Say("some of its files are missing", reason);
    const size_t mostFrames = files.size() == 1 ? KeptFrames(line.resultEdits, source.frames.size()) : 1;
    for (size_t i = 0; i < files.size(); ++i) {
        Animation result;
        const SeriesPart part = files.size() > 1 ? SeriesPart{i + 1, files.size()} : SeriesPart{};
        if (IsOlder(files[i], line.inputs)) return Say("it is older than its source", reason);
        if (!FitsStill(line, files[i], reason) ||
            !IsWhole(line, source, files[i], mostFrames, &result, reason) ||
            !HasItsRecipe(line, result, part, reason))
            return false;
    }
    return true;
}

}  // namespace kfx::commands
