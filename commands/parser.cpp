// SPDX-License-Identifier: MIT
#include "commands/parser.h"

#include <algorithm>
#include <map>
#include <utility>

#include <CLI/CLI.hpp>

#include "commands/text_match.h"

namespace kfx::commands {
namespace {

// Everything that is said after a dash, for suggestions.
std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
}

std::string UnexpectedArgumentMessage(const std::string& argument, const CLI::App& app,
                                      const CLI::App& place) {
    if (argument == "--") return "behind \"--\" stand files only; put the options before it.";
    const std::vector<std::string> known = OptionNames(place);
    if (&place != &app && std::find(known.begin(), known.end(), argument) != known.end())
        return argument + " stands before the command; put it behind: " + app.get_name() + " " +
               place.get_name() + " " + argument + ".";
    if (argument.rfind('-', 0) == 0) {
        const auto nearest = NearestNames(argument, known);
        return "unknown option \"" + argument + "\"" +
               (nearest.empty() ? "; see --help." : "; did you mean " + JoinNames(nearest) + "?");
    }
    if (&place != &app) return "unexpected argument \"" + argument + "\".";
    std::vector<std::string> commands;
    for (const CLI::App* command : app.get_subcommands({})) commands.push_back(command->get_name());
    return UnknownNameMessage("command", argument, commands);
}

// The parser's own text begins with the name of the option that it is about. Null: with none.
const CLI::Option* OptionOf(const std::string& text, const CLI::App& place) {
    const std::string first = text.substr(0, text.find_first_of(": "));
    for (const CLI::Option* option : place.get_options()) {
        if (option->get_name() == first || option->check_lname(first)) return option;
    }
    return nullptr;
}

std::string SeeHelp(const CLI::App& app, const CLI::App& place) {
    return std::string("; see ") + app.get_name() + " " + (&place != &app ? place.get_name() + " " : "") +
           "--help.";
}

std::string MissingMessage(const CLI::Option& option, const std::string& help) {
    const bool isFile = option.get_type_name() == "FILE";
    if (!option.nonpositional())
        return "the " + option.get_name() + (isFile ? " file" : "") + " is missing" + help;
    return option.get_name() + " " + option.get_type_name() + " is missing" + help;
}

// One sentence for an error of the parser. `app` is the one that has parsed.
std::string ErrorMessage(const CLI::Error& error, const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    const CLI::App& place = chosen.empty() ? app : *chosen.front();
    // A mistyped option is more likely than the missing one that it leaves behind.
    const auto unexpected = app.remaining(true);
    if (!unexpected.empty()) return UnexpectedArgumentMessage(unexpected.front(), app, place);

    const std::string text = error.what();
    const std::string help = SeeHelp(app, place);
    const CLI::Option* const option = OptionOf(text, place);
    if (!option) return "the command cannot be understood" + help;
    const std::string name = option->get_name();
    if (dynamic_cast<const CLI::RequiredError*>(&error)) return MissingMessage(*option, help);
    if (dynamic_cast<const CLI::RequiresError*>(&error)) {
        return name + " needs " + text.substr(text.find_last_of(' ') + 1) + " as well.";
    }
    if (dynamic_cast<const CLI::ValidationError*>(&error)) {
        return name + " " + text.substr(name.size() + 2) + ".";
    }
    if (option->get_expected_max() == 0) return name + " takes no value.";
    if (option->count() > 1) return name + " may be given only once.";
    return name + " takes a value, " + option->get_type_name() + help;
}

DeclaredOption DescribeOption(const CLI::Option& option) {
    return {.shortNames = option.get_snames(),
            .longNames = option.get_lnames(),
            .inputName = option.get_positional() ? option.get_name(true) : "",
            .typeName = option.get_type_name(),
            .description = option.get_description(),
            .takesValue = option.get_items_expected_max() > 0,
            .isRepeatable = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll};
}

}  // namespace

void DeleteParser::operator()(CLI::App* program) const { delete program; }

Parser MakeParser(const ProgramText& text) {
    Parser program(new CLI::App(text.description, text.name));
    program->footer(text.footer);
    program->set_version_flag("--version", text.version);
    program->allow_windows_style_options(false);  // a leading slash begins a path
    program->require_subcommand(0, 1);            // files may be named as commands are
    return program;
}

CLI::App* CommandNamed(CLI::App* program, const std::string& name) { return program->get_subcommand(name); }

const CLI::App& ProgramOf(const CLI::App& command) { return *command.get_parent(); }

void ShowBeforeUsage(CLI::App* command, const std::string& text) {
    command->formatter_fn([text](const CLI::App* app, std::string name, CLI::AppFormatMode mode) {
        CLI::Formatter formatter;
        formatter.label("SUBCOMMAND", "COMMAND");
        std::string help = formatter.make_help(app, std::move(name), mode);
        const size_t usage = help.find("Usage:");
        if (mode != CLI::AppFormatMode::Sub && usage != std::string::npos) help.insert(usage, text);
        return help;
    });
}

ParseOutcome ParseWords(CLI::App* program, const std::vector<std::string>& words, std::string* text) {
    try {
        // The parser takes its arguments from the end.
        program->parse(std::vector<std::string>(words.rbegin(), words.rend()));
        return ParseOutcome::Run;
    } catch (const CLI::CallForHelp&) {
        const auto chosen = program->get_subcommands();
        *text = chosen.empty() ? program->help() : chosen.front()->help(program->get_name());
        return ParseOutcome::ShowText;
    } catch (const CLI::CallForVersion& version) {
        *text = std::string(version.what()) + "\n";
        return ParseOutcome::ShowText;
    } catch (const CLI::ParseError& error) {
        *text = ErrorMessage(error, *program);
        return ParseOutcome::Error;
    }
}

std::string GivenCommand(const CLI::App& program) {
    const auto given = program.get_subcommands();
    return given.empty() ? "" : given.front()->get_name();
}

std::vector<GivenOption> GivenOptions(const CLI::App& command) {
    std::vector<GivenOption> given;
    std::map<const CLI::Option*, size_t> before;
    for (const CLI::Option* option : command.parse_order()) {
        const std::vector<std::string>& names = option->get_lnames();
        const std::vector<std::string>& values = option->results();
        const size_t number = before[option]++;
        given.push_back({.name = names.empty() ? "" : names.front(),
                         .value = number < values.size() ? values[number] : "",
                         .takesValue = option->get_items_expected_max() > 0});
    }
    return given;
}

bool IsInput(const DeclaredOption& option) { return option.shortNames.empty() && option.longNames.empty(); }

DeclaredCommand DescribeCommand(const CLI::App& command) {
    DeclaredCommand described = {
        .name = command.get_name(), .description = command.get_description(), .options = {}, .commands = {}};
    for (const CLI::Option* option : command.get_options())
        described.options.push_back(DescribeOption(*option));
    for (const CLI::App* own : command.get_subcommands({}))
        described.commands.push_back(DescribeCommand(*own));
    return described;
}

}  // namespace kfx::commands
