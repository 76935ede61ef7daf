// SPDX-License-Identifier: MIT
// kestrel recipe: how a file was made.
#include "commands/common_options.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/recipe_file.h"
#include "commands/report.h"
#include "commands/text.h"
#include "media/file_io.h"

namespace kfx::commands {
namespace {

nlohmann::ordered_json DescribeRecipe(const Recipe& recipe) {
    nlohmann::ordered_json object = {{"version", recipe.version}};
    object["options"] = nlohmann::ordered_json::array();
    for (const OptionWord& word : recipe.words) object["options"].push_back(TextOf(word));
    object["fingerprint"] = recipe.fingerprint;
    object["lossy"] = recipe.isLossy;
    if (recipe.part.count > 1) object.update({{"part", recipe.part.number}, {"parts", recipe.part.count}});
    return object;
}

Report RunRecipe(const CommandLine& line, const CommandContext&) {
    Report report;
    RecipeFile file;
    Failure failure;
    if (!ReadRecipeFile(line.inputs[0], LimitsOf(line), &file, &failure)) return FailedReport(failure);
    if (!file.recipe.isWhole) {
        return FailedReport(kExitBadInput,
                            ShownInput(line.inputs[0]) +
                                ": holds no recipe; kestrel apply keeps one in the files that it makes.");
    }
    report.result["input"] = line.inputs[0];
    report.result["recipe"] = DescribeRecipe(file.recipe);
    report.result["document"] = file.text;
    if (line.output.empty() || IsStream(line.output)) {
        report.text = file.text;
        return report;
    }
    std::string error;
    if (!CheckOutput(line, {line.output}, &report)) return report;
    if (!WriteWholeFile(SystemPath(line.output), {file.text.begin(), file.text.end()}, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, line.output));
    report.result["output"] = line.output;
    report.text = line.output + ": " + std::to_string(file.text.size()) + " bytes.\n";
    return report;
}

void AddRecipe(CLI::App* app, const OptionTarget& target) {
    CLI::App* const recipe =
        AddCommand(app, "recipe", "Print how a file was made, as a settings document (.kx1)");
    RequireOption(AddInput(recipe, target.line, "input", "A file that kestrel apply has made"));
    AddReadLimit(recipe, target.line);
    AddOptionalOutput(recipe, target.line, "-o,--output", "Write it there (.kx1)");
    AddEngineOptions(recipe, target);
}

bool FinishRecipeCommand(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return line->output.empty() || IsStream(line->output) || CheckEnding(*line, {".kx1"}, error);
}

}  // namespace

const CommandRow kRecipeCommand = {.name = "recipe",
                                   .inputs = InputUse::Each,
                                   .add = AddRecipe,
                                   .finish = FinishRecipeCommand,
                                   .run = RunRecipe,
                                   .examples = "kestrel recipe MADE.gif\nkestrel recipe MADE.gif -o HOW.kx1"};

}  // namespace kfx::commands
