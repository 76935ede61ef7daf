// SPDX-License-Identifier: MIT
#include "commands/parser_words.h"

#include <CLI/CLI.hpp>

#include "commands/parameter.h"

namespace kfx::commands {

CLI::App* AddCommand(CLI::App* program, const std::string& name, const std::string& description) {
    return program->add_subcommand(name, description)->group("Commands");
}

void SetFooter(CLI::App* command, const std::string& text) { command->footer(text); }

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

CLI::Option* AddText(CLI::App* command, const OptionText& option, std::string* text) {
    return command->add_option(option.name, *text, option.description)->type_name(option.typeName);
}

CLI::Option* AddReadText(CLI::App* command, const OptionText& option, const TextCheck& read) {
    // Nothing is left to store when the check has read the text.
    return command
        ->add_option_function<std::string>(
            option.name, [](const std::string&) {}, option.description)
        ->type_name(option.typeName)
        ->check(read);
}

CLI::Option* AddTextBehind(CLI::App* command, const OptionText& option, std::vector<std::string>* texts) {
    return command
        ->add_option_function<std::string>(
            option.name, [texts](const std::string& text) { texts->push_back(text); }, option.description)
        ->type_name(option.typeName);
}

CLI::Option* AddTexts(CLI::App* command, const OptionText& option, std::vector<std::string>* texts) {
    return command->add_option(option.name, *texts, option.description)->type_name(option.typeName);
}

CLI::Option* AddList(CLI::App* command, const OptionText& option, std::vector<std::string>* texts) {
    return AddTexts(command, option, texts)->expected(1)->allow_extra_args(false)->take_all();
}

void RequireOption(CLI::Option* option) { option->required(); }

void RequireWith(CLI::Option* option, CLI::Option* other) { option->needs(other); }

void CheckText(CLI::Option* option, const TextCheck& check) { option->check(check); }

}  // namespace kfx::commands
