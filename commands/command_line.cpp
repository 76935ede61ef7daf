// SPDX-License-Identifier: MIT
#include "commands/command_line.h"

#include <algorithm>

#include "commands/command_row.h"
#include "commands/completion.h"
#include "commands/help_texts.h"
#include "commands/output_format.h"

namespace kfx::commands {
namespace {

// In the order in which the help lists them.
const CommandRow* const kCommands[] = {
    &kApplyCommand,    &kRecipeCommand,   &kVerifyCommand,      &kSurveyCommand,
    &kJoinCommand,     &kEffectsCommand,  &kGalleryCommand,     &kPalettesCommand,
    &kInfoCommand,     &kCompareCommand,  &kSheetCommand,       &kSampleCommand,
    &kHelpBookCommand, &kSelfTestCommand, &kCompletionsCommand, &kManualCommand,
};

// All of apply's, and one of each other command.
std::string ProgramExamples() {
    std::string examples = kApplyCommand.examples;
    for (const CommandRow* row : kCommands) {
        const std::string own = row->examples;
        if (row != &kApplyCommand && !own.empty()) examples += "\n" + own.substr(0, own.find('\n'));
    }
    return examples;
}

}  // namespace

std::string ExamplesOf(const std::string& command) {
    if (command.empty()) return ProgramExamples();
    for (const CommandRow* row : kCommands) {
        if (command == row->name) return row->examples;
    }
    return "";
}

std::string EndingOf(const std::string& path) {
    const size_t name = path.find_last_of("/\\");
    const size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (name != std::string::npos && dot < name)) return "";
    std::string ending = path.substr(dot);
    for (char& c : ending) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return ending;
}

bool ParseColor(const std::string& text, unsigned* color) {
    const std::string digits = text.rfind('#', 0) == 0 ? text.substr(1) : text;
    if (digits.size() != 6 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    const unsigned long rgb = std::stoul(digits, nullptr, 16);
    *color = static_cast<unsigned>((rgb & 0xFF) << 16 | (rgb & 0xFF00) | rgb >> 16);
    return true;
}

ParseOutcome ParseCommandLine(const std::vector<std::string>& arguments, const OwnOptions& own,
                              CommandLine* line, std::string* text) {
    *line = {};
    const Parser parser =
        MakeParser({.name = "kestrel",
                    .version = kVersionText,
                    .description = "Kestrel FX on files: effects for animations and pictures.",
                    .footer = ExitCodesText()});
    CLI::App* const app = parser.get();
    ApplyWords words;
    for (const CommandRow* row : kCommands) row->add(app, {line, &words, own});
    for (const CommandRow* row : kCommands) {
        if (*row->examples) ShowExamplesFirst(CommandNamed(app, row->name), row->examples);
    }
    ShowExamplesFirst(app, ProgramExamples());
    if (!arguments.empty() && arguments.front() == kCompleteCommand) {
        *text = CompleteWords(DescribeCommand(*app), {arguments.begin() + 1, arguments.end()});
        return ParseOutcome::ShowText;
    }
    const ParseOutcome outcome = ParseWords(app, arguments, text);
    if (outcome != ParseOutcome::Run) return outcome;

    const std::string given = GivenCommand(*app);
    for (const CommandRow* row : kCommands) {
        if (given != row->name) continue;
        line->command = row;
        if (std::find(line->inputs.begin(), line->inputs.end(), "") != line->inputs.end()) {
            *text = "an input has no name: its argument is empty.";
            return ParseOutcome::Error;
        }
        if (std::count_if(line->inputs.begin(), line->inputs.end(), IsStream) > 1) {
            *text = "standard input is named twice, but can be read only once.";
            return ParseOutcome::Error;
        }
        if (NamesStandardOutput(line->output)) line->output = "-";
        const bool isDone = !row->finish || row->finish(*CommandNamed(app, given), words, line, text);
        return isDone ? ParseOutcome::Run : ParseOutcome::Error;
    }
    *text = "a command is missing; see --help.";
    return ParseOutcome::Error;
}

}  // namespace kfx::commands
