// SPDX-License-Identifier: MIT
#include "commands/parser_words.h"

#include <algorithm>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands/parameter.h"
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

}  // namespace

CLI::Option* AddFlag(CLI::App* command, const std::string& name, bool* given,
                     const std::string& description) {
    return command->add_flag(name, *given, description)->disable_flag_override();
}

CLI::Option* AddNumber(CLI::App* command, const std::string& name, int* number, int least, int most,
                       const std::string& description) {
    const std::string range = std::to_string(least) + " to " + std::to_string(most);
    const auto refuse = [=](const std::string& text) {
        int value = 0;
        const bool fits = ReadNumber(text, &value) && value >= least && value <= most;
        return fits ? std::string() : "takes whole numbers from " + range + ", not \"" + text + "\"";
    };
    return command->add_option(name, *number, description)
        ->type_name(std::to_string(least) + "-" + std::to_string(most))
        ->check(refuse);
}

CLI::Option* AddList(CLI::App* command, const std::string& name, std::vector<std::string>* texts,
                     const std::string& description) {
    return command->add_option(name, *texts, description)->expected(1)->allow_extra_args(false)->take_all();
}

std::string ParserErrorMessage(const CLI::Error& error, const CLI::App& app) {
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

}  // namespace kfx::commands
