// SPDX-License-Identifier: MIT
#include "commands/command_line.h"

#include <CLI/CLI.hpp>

#include "commands/command_row.h"
#include "commands/parser_words.h"

namespace kfx::commands {
namespace {

constexpr char kDescription[] = "Kestrel FX on files: effects for animations and pictures.";

constexpr char kFooter[] =
    "Examples:\n"
    "  kestrel apply IN.gif -o OUT.gif --effect Emboss --set Radius=18 --set Depth=30\n"
    "  kestrel apply IN.webp -o OUT.webp --effect \"Water Drops\" --effect Swirl --set Angle=90\n"
    "  kestrel apply IN.gif -o OUT.gif --effect Bump --palette \"216-color safe\" --dither --supercompress\n"
    "  kestrel apply FRAMES-%03d.png -o OUT.gif --delay 40 --effect Neon\n"
    "  kestrel effects --json\n\n"
    "Exit codes: 0 done, 2 wrong command, 3 unreadable input, 4 output not writable, 5 nothing was built,\n"
    "  6 the plug-in stopped answering, 130 interrupted.";

// In the order in which the help lists them.
const CommandRow* const kCommands[] = {&kApplyCommand, &kEffectsCommand, &kGalleryCommand, &kSampleCommand,
                                       &kSheetCommand};

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
    app.footer(kFooter);
    app.set_version_flag("--version", "Kestrel 16.0a");
    app.allow_windows_style_options(false);  // a leading slash begins a path
    app.require_subcommand(0, 1);            // files may be named as commands are
    ApplyWords words;
    for (const CommandRow* row : kCommands) row->add(&app, {line, &words, own});
    const ParseOutcome outcome = Parse(&app, arguments, text);
    if (outcome != ParseOutcome::Run) return outcome;

    for (const CommandRow* row : kCommands) {
        if (!app.got_subcommand(row->name)) continue;
        line->command = row;
        const bool isDone = !row->finish || row->finish(*app.get_subcommand(row->name), words, line, text);
        return isDone ? ParseOutcome::Run : ParseOutcome::Error;
    }
    *text = "a command is missing; see --help.";
    return ParseOutcome::Error;
}

}  // namespace kfx::commands
