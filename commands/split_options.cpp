// SPDX-License-Identifier: MIT
#include "commands/split_options.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "commands/command_line.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/part_file.h"
#include "commands/recipe_words.h"
#include "commands/settings_file.h"
#include "commands/survey_text.h"

namespace kfx::commands {
namespace {

// Options of apply that say nothing about a part.
constexpr const char* kNotForParts[] = {"dry-run", "recursive", "seamless"};

// Those that belong to the part itself; the survey has its own.
constexpr const char* kOfPart[] = {"frames", "output", "survey"};

template <size_t kCount>
bool IsOneOf(const char* const (&names)[kCount], const std::string& name) {
    return std::any_of(std::begin(names), std::end(names), [&](const char* one) { return name == one; });
}

bool HasFrames(const CommandLine& line) {
    const OptionWords& kept = line.recipe.kept;
    return std::any_of(kept.begin(), kept.end(),
                       [](const OptionWord& word) { return word.name == "frames"; });
}

bool Has(const OptionWords& words, const OptionWord& wanted) {
    return std::any_of(words.begin(), words.end(),
                       [&](const OptionWord& word) { return TextOf(word) == TextOf(wanted); });
}

// Whether what is given beside the survey says the same.
bool Agrees(const CommandLine& line, const Survey& survey, std::string* disagreeing) {
    OptionWords own = WithFullNames(line.recipe.kept);
    for (const OptionWord& word : line.recipe.others) {
        if (word.name == "format" || word.name == "seed") own.push_back(word);
        if (word.name == "no-recipe" && survey.hasRecipe) *disagreeing = TextOf(word);
    }
    for (const OptionWord& word : own) {
        if (!IsOneOf(kOfPart, word.name) && !Has(survey.recipe.words, word)) *disagreeing = TextOf(word);
    }
    return disagreeing->empty();
}

// The arguments of the command that builds the whole. Of the line's own options it has those that change
// nothing of the result.
std::vector<std::string> WholeArguments(const CommandLine& line, const Survey& survey) {
    std::vector<std::string> arguments = {"apply", "--output=-", "--join"};
    for (const OptionWord& word : survey.recipe.words) arguments.push_back(TextOf(word));
    if (!survey.hasRecipe) arguments.emplace_back("--no-recipe");
    for (const OptionWord& word : line.recipe.others) {
        const bool isSaid = word.name == "format" || word.name == "seed" || word.name == "no-recipe" ||
                            word.name == "join" || IsOneOf(kOfPart, word.name);
        if (!isSaid) arguments.push_back(TextOf(word));
    }
    arguments.emplace_back("--");
    arguments.insert(arguments.end(), line.inputs.begin(), line.inputs.end());
    return arguments;
}

}  // namespace

void AddSurveyOption(CLI::App* command, SplitOptions* options) {
    AddText(
        command,
        {.name = "--survey",
         .typeName = "FILE",
         .description = "Build only the --frames of this part of an animation, for kestrel join; options and "
                        "what all frames say together are those of a file that kestrel survey has made"},
        &options->survey);
}

bool CheckPart(const CommandLine& line, std::string* error) {
    const bool isPart = EndingOf(line.output) == kPartEnding;
    if (line.split.survey.empty()) {
        if (isPart) *error = "a part needs --survey FILE, which kestrel survey makes.";
        return !isPart;
    }
    for (const OptionWord& word : line.recipe.others) {
        if (!IsOneOf(kNotForParts, word.name)) continue;
        *error = "--" + word.name + " is not for a part of an animation; leave it out.";
        return false;
    }
    if (TakesOver(line.recipe)) {
        *error = "a part takes its options from the survey; leave out --recipe and --settings.";
    } else if (!HasFrames(line)) {
        *error = "a part needs the frames that it is to have, as --frames 0-99.";
    } else if (!isPart && !IsStream(line.output)) {
        *error = std::string("a part is no picture before kestrel join; name it *") + kPartEnding +
                 ", not \"" + line.output + "\".";
    } else if (IsStream(line.split.survey) && std::any_of(line.inputs.begin(), line.inputs.end(), IsStream)) {
        *error = "standard input cannot be both the source and the survey.";
    }
    return error->empty();
}

bool TakeSurvey(CommandLine* line, Failure* failure) {
    if (line->split.survey.empty()) return true;
    Survey survey;
    SplitOptions split = line->split;
    std::string text;
    if (!ReadSurveyFile(split.survey, &survey, &split.surveyText, failure)) return false;
    const std::string shown = ShownInput(split.survey);
    if (!Agrees(*line, survey, &text)) {
        *failure = {kExitBadCommand,
                    text + " is not what " + shown + " says; leave it out, or make a survey with it."};
        return false;
    }
    split.firstFrame = line->edits.firstFrame;
    split.lastFrame = line->edits.lastFrame;
    CommandLine whole;
    if (ParseCommandLine(WholeArguments(*line, survey), {}, &whole, &text) != ParseOutcome::Run) {
        *failure = {kExitBadInput, shown + ": its options cannot be taken: " + text};
        return false;
    }
    whole.output = line->output;
    whole.json = line->json;
    whole.quiet = line->quiet;
    whole.split = std::move(split);
    *line = std::move(whole);
    return true;
}

}  // namespace kfx::commands
