// SPDX-License-Identifier: MIT
#include "commands/recipe_options.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "commands/common_options.h"
#include "commands/direct_engine.h"
#include "commands/engine.h"
#include "commands/idle_options.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/recipe_file.h"
#include "commands/text_match.h"
#include "framework/random.h"

namespace kfx::commands {
namespace {

bool ReadSeed(const std::string& text, int64_t* seed) {
    const auto read = std::from_chars(text.data(), text.data() + text.size(), *seed);
    return !text.empty() && read.ec == std::errc() && read.ptr == text.data() + text.size() && *seed >= 0 &&
           *seed <= kLargestSeed;
}

const OptionWord* FindWord(const OptionWords& words, const std::string& name) {
    const auto found =
        std::find_if(words.begin(), words.end(), [&](const OptionWord& word) { return word.name == name; });
    return found == words.end() ? nullptr : &*found;
}

std::string ValueOf(const OptionWords& words, const std::string& name) {
    const OptionWord* const word = FindWord(words, name);
    return word ? word->value : "";
}

std::vector<std::string> ValuesOf(const OptionWords& words, const std::string& name) {
    std::vector<std::string> values;
    for (const OptionWord& word : words) {
        if (word.name == name) values.push_back(word.value);
    }
    return values;
}

// The options of a document that the window has saved.
bool TakeSettings(const RecipeFile& file, const std::string& path, RecipeOptions* options, OptionWords* words,
                  Failure* failure) {
    std::string error;
    if (WordsOfSettings(file.recipe.document, ValuesOf(options->kept, "effect"), words, &error)) return true;
    *failure = {kExitBadInput, path + ": " + error + "."};
    return false;
}

// The own words with what a document says about their effects: each effect is followed by the document's
// parameters for it, then by its own, of which those that are given win.
OptionWords WithParameters(const OptionWords& own, const OptionWords& document) {
    OptionWords joined;
    auto next = document.begin();
    for (auto word = own.begin(); word != own.end(); ++word) {
        joined.push_back(*word);
        if (word->name != "effect") continue;
        OptionWords sets;
        for (auto set = word + 1; set != own.end() && set->name == "set"; ++set) sets.push_back(*set);
        OptionWords leftOut;
        OptionWords given;
        while (next != document.end() && next->name != "effect") ++next;
        if (next != document.end()) ++next;
        for (; next != document.end() && next->name == "set"; ++next) given.push_back(*next);
        const OptionWords held = WordsBeside(sets, given, "gif", &leftOut);
        joined.insert(joined.end(), held.begin(), held.end());
    }
    return joined;
}

// The arguments of the command that the line and the words of a file make together.
std::vector<std::string> JoinArguments(const CommandLine& line, OptionWords words, bool isRecipe,
                                       std::vector<std::string>* notes) {
    OptionWords own = line.recipe.kept;
    if (!isRecipe && FindWord(own, "effect")) own = WithParameters(own, words);
    own.insert(own.end(), line.recipe.others.begin(), line.recipe.others.end());
    std::string unsaid;
    std::string format = ResolveFormat(line.output, ValueOf(own, "format"), &unsaid);
    const std::string recipeFormat = ValueOf(words, "format");
    const std::string recipeSeed = ValueOf(words, "seed");
    if (format.empty() && !FindWord(own, "format") && !recipeFormat.empty()) {
        format = recipeFormat;
        own.push_back({.name = "format", .value = recipeFormat});
    }
    if (!FindWord(own, "seed") && !recipeSeed.empty()) own.push_back({.name = "seed", .value = recipeSeed});
    std::erase_if(words, [](const OptionWord& word) { return word.name == "format" || word.name == "seed"; });
    OptionWords leftOut;
    const OptionWords held = WordsBeside(own, words, format, &leftOut);
    for (const OptionWord& word : leftOut) {
        if (isRecipe)
            notes->push_back("the recipe's " + TextOf(word) + " is not for this output; it is left out.");
    }
    std::vector<std::string> arguments = {line.command->name};
    for (const OptionWords* part : {&held, &std::as_const(own)}) {
        for (const OptionWord& word : *part) arguments.push_back(TextOf(word));
    }
    arguments.emplace_back("--");
    arguments.insert(arguments.end(), line.inputs.begin(), line.inputs.end());
    return arguments;
}

bool TakeFile(CommandLine* line, Failure* failure) {
    RecipeOptions options = line->recipe;
    const bool isRecipe = !options.recipe.empty();
    const std::string path = isRecipe ? options.recipe : options.settings;
    RecipeFile file;
    OptionWords words;
    if (!ReadRecipeFile(path, LimitsOf(*line), &file, failure)) return false;
    const bool isWhole = isRecipe && file.recipe.isWhole;
    if (isWhole)
        words = file.recipe.words;
    else if (!TakeSettings(file, path, &options, &words, failure))
        return false;
    CommandLine joined;
    std::string text;
    const auto arguments = JoinArguments(*line, words, isWhole, &options.notes);
    if (ParseCommandLine(arguments, {}, &joined, &text) != ParseOutcome::Run) {
        *failure = {kExitBadCommand, text};
        return false;
    }
    *line = joined;
    line->recipe.notes = options.notes;
    return true;
}

bool NeedsSeed(const CommandLine& line) {
    return std::any_of(line.effects.begin(), line.effects.end(), [](const EffectChoice& effect) {
        std::vector<std::string> names;
        Failure failure;
        kDirectEngine.listEffects(nullptr, &names, &failure);
        const int row = FindName(effect.name, names);
        return row >= 0 && names[static_cast<size_t>(row)] == kRandomEffect;
    });
}

}  // namespace

void AddRecipeOptions(CLI::App* command, const OptionTarget& target) {
    RecipeOptions* const options = &target.line->recipe;
    AddText(
        command,
        {.name = "--settings",
         .typeName = "FILE",
         .description =
             "Effect, parameters and palette of a settings document (.kx1), as the plug-in's window saves "
             "it; what is given beside it wins"},
        &options->settings);
    AddText(
        command,
        {.name = "--recipe",
         .typeName = "FILE",
         .description =
             "Everything that made this picture, from the recipe in it or printed by `kestrel recipe`; what "
             "is given beside it wins"},
        &options->recipe);
    AddFlag(command, "--no-recipe", &options->leavesOut, "Do not keep in the result how it was made");
    AddSeed(command, options, "the clock's second");
}

void AddSeed(CLI::App* command, RecipeOptions* options, const std::string& byItself) {
    const auto readSeed = [options](const std::string& text) {
        return ReadSeed(text, &options->seed) ? std::string()
                                              : "takes whole numbers from 0 to " +
                                                    std::to_string(kLargestSeed) + ", not \"" + text + "\"";
    };
    AddReadText(command,
                {.name = "--seed",
                 .typeName = "N",
                 .description = "Seed of the random numbers of Water Drops (" + byItself + ")"},
                readSeed);
}

bool TakesOver(const RecipeOptions& options) { return !options.recipe.empty() || !options.settings.empty(); }

bool CheckTakingOver(const CommandLine& line, std::string* error) {
    if (line.recipe.recipe.empty() || line.recipe.settings.empty()) return true;
    *error = "--settings and --recipe exclude each other.";
    return false;
}

bool CheckSeed(const CommandLine& line, const Engine& engine, Failure* failure) {
    if (engine.takesSeed || line.recipe.seed == kNoSeed) return true;
    *failure = {kExitBadCommand,
                "--seed is not for --through-plugin: the plug-in takes the clock's second; leave it out."};
    return false;
}

bool TakeRecipe(const Engine& engine, CommandLine* line, Failure* failure) {
    if (line->command != &kApplyCommand && line->command != &kSurveyCommand) return true;
    if (TakesOver(line->recipe) && !TakeFile(line, failure)) return false;
    if (!CheckSeed(*line, engine, failure)) return false;
    if (engine.takesSeed && line->recipe.seed == kNoSeed && NeedsSeed(*line))
        line->recipe.seed = ClockSeconds();
    return true;
}

}  // namespace kfx::commands
