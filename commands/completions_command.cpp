// SPDX-License-Identifier: MIT
// kestrel completions: what a shell loads to complete command lines.
#include <algorithm>

#include "commands/command_row.h"
#include "commands/completion_scripts.h"
#include "commands/parser_words.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

void AddCompletions(CLI::App* app, const OptionTarget& target) {
    CLI::App* const completions =
        AddCommand(app, "completions", "Print what a shell loads to complete kestrel's command lines");
    RequireOption(AddText(
        completions, {.name = "shell", .typeName = "SHELL", .description = JoinNames(CompletionShells())},
        &target.words->shell));
}

bool FinishCompletions(const CLI::App&, const ApplyWords& words, CommandLine* line, std::string* error) {
    const int shell = FindName(words.shell, CompletionShells());
    if (shell < 0) {
        *error = UnknownNameMessage("shell", words.shell, CompletionShells());
        return false;
    }
    line->printed = CompletionScript(CompletionShells()[static_cast<size_t>(shell)]);
    return true;
}

}  // namespace

const CommandRow kCompletionsCommand = {
    .name = "completions",
    .inputs = InputUse::Each,
    .add = AddCompletions,
    .finish = FinishCompletions,
    .run = RunPrinted,
    .examples = "source <(kestrel completions bash)\nkestrel completions fish | source"};

}  // namespace kfx::commands
