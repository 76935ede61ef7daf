// SPDX-License-Identifier: MIT
// The parser of the command line: what it has been told with parser_words.h, and what it makes of the words
// of a command line. Only the sources of these two headers include the parser's library, which takes longer
// to compile than a whole command.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kfx::commands {

struct DeleteParser {
    void operator()(CLI::App* program) const;
};

using Parser = std::unique_ptr<CLI::App, DeleteParser>;

// What the help says of the program, and what it answers to --version.
struct ProgramText {
    std::string name;
    std::string version;
    std::string description;
    std::string footer;
};

// A parser without commands. The program takes one of them, or none.
Parser MakeParser(const ProgramText& text);

// The command of this name, which the program has.
CLI::App* CommandNamed(CLI::App* program, const std::string& name);

// The program that has the command.
const CLI::App& ProgramOf(const CLI::App& command);

// Puts text behind the description in the help of the command or program, before the usage.
void ShowBeforeUsage(CLI::App* command, const std::string& text);

enum class ParseOutcome { Run, ShowText, Error };

// Reads the words (UTF-8, without the program's name) and stores what the options say. ShowText: `*text` is
// the help or the version that was asked for. Error: `*text` is one sentence.
ParseOutcome ParseWords(CLI::App* program, const std::vector<std::string>& words, std::string* text);

// The name of the command that the words had; empty: none.
std::string GivenCommand(const CLI::App& program);

// An option among the words, or an input.
struct GivenOption {
    std::string name;  // "output" for --output and -o; empty: an input
    std::string value;
    bool takesValue = false;
};

// The command's options in the order of the words; one that is given twice is there twice.
std::vector<GivenOption> GivenOptions(const CLI::App& command);

// An option as it was declared, or an input.
struct DeclaredOption {
    std::vector<std::string> shortNames;  // without dashes
    std::vector<std::string> longNames;
    std::string inputName;  // where it may stand without dashes; else empty
    std::string typeName;
    std::string description;
    bool takesValue = false;
    bool isRepeatable = false;
};

// Whether it stands without dashes only.
bool IsInput(const DeclaredOption& option);

// A command, or the program.
struct DeclaredCommand {
    std::string name;
    std::string description;
    std::vector<DeclaredOption> options;    // in the order of the help, which begins with --help
    std::vector<DeclaredCommand> commands;  // of a program
};

DeclaredCommand DescribeCommand(const CLI::App& command);

}  // namespace kfx::commands
