// SPDX-License-Identifier: MIT
// Commands and options of the command line, made so that everything the parser refuses is said in the user's
// terms. The parser's library takes longer to compile than a whole command, so commands know its types by
// name only.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kfx::commands {

// An option as users see it.
struct OptionText {
    std::string name;      // "--palette", "-o,--output", or "input" for one that stands without dashes
    std::string typeName;  // of what it takes, as the help shows it: "FILE", "WxH"
    std::string description;
};

// What is wrong with an option's text, to be read behind the option's name: "takes whole numbers, not \"x\"".
// Empty: it is right.
using TextCheck = std::function<std::string(const std::string& text)>;

// A command of the program.
CLI::App* AddCommand(CLI::App* program, const std::string& name, const std::string& description);

// What the help says below the options.
void SetFooter(CLI::App* command, const std::string& text);

// The functions below add options in the order in which the help lists them. Where they store something, it
// stays as it is when the option is not there.

// An option without a value. `*given` is set when it is there.
CLI::Option* AddFlag(CLI::App* command, const std::string& name, bool* given, const std::string& description);

// An option with a whole number from `least` to `most`.
CLI::Option* AddNumber(CLI::App* command, const std::string& name, int* number, int least, int most,
                       const std::string& description);

// An option with a text.
CLI::Option* AddText(CLI::App* command, const OptionText& option, std::string* text);

// An option with a text that `read` checks and stores.
CLI::Option* AddReadText(CLI::App* command, const OptionText& option, const TextCheck& read);

// An option with a text that goes behind those that `*texts` has.
CLI::Option* AddTextBehind(CLI::App* command, const OptionText& option, std::vector<std::string>* texts);

// An option with any number of texts, one behind the other.
CLI::Option* AddTexts(CLI::App* command, const OptionText& option, std::vector<std::string>* texts);

// An option with a text that may be given several times.
CLI::Option* AddList(CLI::App* command, const OptionText& option, std::vector<std::string>* texts);

// The command is refused without the option.
void RequireOption(CLI::Option* option);

// The option is refused without the other one.
void RequireWith(CLI::Option* option, CLI::Option* other);

// The option's text is refused where `check` finds something wrong.
void CheckText(CLI::Option* option, const TextCheck& check);

}  // namespace kfx::commands
