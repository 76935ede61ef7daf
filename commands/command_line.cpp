// SPDX-License-Identifier: MIT
#include "commands/command_line.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "commands/command_row.h"
#include "commands/completion.h"
#include "commands/help_texts.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"

namespace kfx::commands {
namespace {

constexpr char kDescription[] = "Kestrel FX on files: effects for animations and pictures.";

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

ParseOutcome Parse(CLI::App* app, const std::vector<std::string>& arguments, std::string* text) {
    try {
        // The parser takes its arguments from the end.
        app->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        return ParseOutcome::Run;
    } catch (const CLI::CallForHelp&) {
        const auto chosen = app->get_subcommands();
        *text = chosen.empty() ? app->help() : chosen.front()->help(app->get_name());
        return ParseOutcome::ShowText;
    } catch (const CLI::CallForVersion& version) {
        *text = std::string(version.what()) + "\n";
        return ParseOutcome::ShowText;
    } catch (const CLI::ParseError& error) {
        *text = ParserErrorMessage(error, *app);
        return ParseOutcome::Error;
    }
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
    CLI::App app(kDescription, "kestrel");
    app.footer(ExitCodesText());
    app.set_version_flag("--version", "Kestrel 16.0a");
    app.allow_windows_style_options(false);  // a leading slash begins a path
    app.require_subcommand(0, 1);            // files may be named as commands are
    ApplyWords words;
    for (const CommandRow* row : kCommands) row->add(&app, {line, &words, own});
    for (const CommandRow* row : kCommands) {
        CLI::App* const command = app.get_subcommand(row->name);
        command->group("Commands");
        if (*row->examples) ShowExamplesFirst(command, row->examples);
    }
    ShowExamplesFirst(&app, ProgramExamples());
    if (!arguments.empty() && arguments.front() == kCompleteCommand) {
        *text = CompleteWords(app, {arguments.begin() + 1, arguments.end()});
        return ParseOutcome::ShowText;
    }
    const ParseOutcome outcome = Parse(&app, arguments, text);
    if (outcome != ParseOutcome::Run) return outcome;

    for (const CommandRow* row : kCommands) {
        if (!app.got_subcommand(row->name)) continue;
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
        const bool isDone = !row->finish || row->finish(*app.get_subcommand(row->name), words, line, text);
        return isDone ? ParseOutcome::Run : ParseOutcome::Error;
    }
    *text = "a command is missing; see --help.";
    return ParseOutcome::Error;
}

}  // namespace kfx::commands
