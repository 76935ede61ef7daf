// SPDX-License-Identifier: MIT
// kestrel man: the manual page, from the same options that the parser takes.
#include "commands/command_row.h"
#include "commands/help_texts.h"
#include "commands/parser.h"
#include "commands/parser_words.h"

namespace kfx::commands {
namespace {

// Text as troff prints it unchanged: a hyphen can be copied as one, and no line begins with a request.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        const bool isLineStart = escaped.empty() || escaped.back() == '\n';
        if (isLineStart && (c == '.' || c == '\'')) escaped += "\\&";
        if (c == '-') escaped += '\\';
        escaped += c;
        if (c == '\\') escaped.back() = '\\', escaped += 'e';
    }
    return escaped;
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

// What stands between back quotes is typed as it stands.
std::string Sentence(const std::string& text) {
    std::string sentence;
    bool isTyped = false;
    size_t start = 0;
    for (size_t end = text.find('`'); end != std::string::npos; end = text.find('`', start)) {
        const std::string part = text.substr(start, end - start);
        sentence += isTyped ? Bold(part) : Escaped(part);
        isTyped = !isTyped;
        start = end + 1;
    }
    return sentence + Escaped(text.substr(start)) + "\n";
}

std::string ExampleBlock(const std::string& examples) { return ".nf\n" + Escaped(examples) + "\n.fi\n"; }

std::string NamesOf(const DeclaredOption& option) {
    if (IsInput(option)) return Italic(option.inputName);
    std::string names;
    for (const std::string& name : option.shortNames) names += (names.empty() ? "" : ", ") + Bold("-" + name);
    for (const std::string& name : option.longNames) names += (names.empty() ? "" : ", ") + Bold("--" + name);
    return option.takesValue ? names + " " + Italic(option.typeName) : names;
}

bool IsHelp(const DeclaredOption& option) {
    return !option.longNames.empty() && option.longNames.front() == "help";
}

std::string OptionsOf(const DeclaredCommand& command) {
    std::string text;
    for (const DeclaredOption& option : command.options) {
        if (IsHelp(option)) continue;
        text += ".TP\n" + NamesOf(option) + "\n" + Sentence(option.description);
    }
    return text;
}

std::string CommandsOf(const DeclaredCommand& program) {
    std::string text;
    for (const DeclaredCommand& command : program.commands) {
        text += ".SS " + command.name + "\n" + Sentence(command.description + ".");
        text += OptionsOf(command);
        const std::string examples = ExamplesOf(command.name);
        if (!examples.empty()) text += ".PP\n" + ExampleBlock(examples);
    }
    return text;
}

std::string ManualPage(const DeclaredCommand& program) {
    std::string text = std::string(".TH KESTREL 1 \"\" \"") + kVersionText + "\" \"User Commands\"\n";
    text += ".SH NAME\nkestrel \\- effects for animations and pictures\n";
    text += ".SH SYNOPSIS\n.B kestrel\n\\fICOMMAND\\fR [\\fIOPTION\\fR]... [\\fIFILE\\fR]...\n";
    text += ".SH DESCRIPTION\n" + Sentence(program.description);
    text += Sentence("`kestrel` COMMAND `--help` lists the options of a command.");
    text += ".SH COMMANDS\n" + CommandsOf(program);
    text += ".SH EXAMPLES\n" + ExampleBlock(ExamplesOf(""));
    text += ".SH \"EXIT STATUS\"\n";
    for (const ExitCodeRow& row : ExitCodeRows())
        text += ".TP\n" + Bold(std::to_string(row.code)) + "\n" + Sentence(row.meaning);
    return text;
}

void AddManual(CLI::App* app, const OptionTarget&) {
    AddCommand(app, "man", "Print the manual page (see it with `kestrel man | man -l -`)");
}

bool FinishManual(const CLI::App& command, const ApplyWords&, CommandLine* line, std::string*) {
    line->printed = ManualPage(DescribeCommand(ProgramOf(command)));
    return true;
}

}  // namespace

const CommandRow kManualCommand = {.name = "man",
                                   .inputs = InputUse::Each,
                                   .add = AddManual,
                                   .finish = FinishManual,
                                   .run = RunPrinted,
                                   .examples = "kestrel man | man -l -"};

}  // namespace kfx::commands
