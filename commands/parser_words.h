// SPDX-License-Identifier: MIT
// Options of the command line, made so that everything the parser refuses is said in the user's terms.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Error;
class Option;
}  // namespace CLI

namespace kfx::commands {

// An option without a value. `*given` is set when it is there.
CLI::Option* AddFlag(CLI::App* command, const std::string& name, bool* given, const std::string& description);

// An option with a whole number from `least` to `most`. `*number` stays as it is when the option is not
// there.
CLI::Option* AddNumber(CLI::App* command, const std::string& name, int* number, int least, int most,
                       const std::string& description);

// An option with a text that may be given several times.
CLI::Option* AddList(CLI::App* command, const std::string& name, std::vector<std::string>* texts,
                     const std::string& description);

// One sentence for an error of the parser. `app` is the one that has parsed.
std::string ParserErrorMessage(const CLI::Error& error, const CLI::App& app);

}  // namespace kfx::commands
