// SPDX-License-Identifier: MIT
#include "commands/command_line.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "commands/text_match.h"

namespace kfx::commands {
namespace {

constexpr char kDescription[] = "Kestrel FX on files: effects for animations and pictures.";

constexpr char kFooter[] =
    "Examples:\n"
    "  kestrel apply IN.gif -o OUT.gif --effect Emboss --set Radius=18 --set Depth=30\n"
    "  kestrel apply IN.webp -o OUT.webp --effect \"Water Drops\"\n"
    "  kestrel apply IN.gif -o OUT.gif --effect Bump --palette \"216-color safe\" --dither --supercompress\n"
    "  kestrel effects --json\n\n"
    "Exit codes: 0 done, 2 wrong command, 3 unreadable input, 4 output not writable, 5 nothing was built,\n"
    "  6 the plug-in stopped answering, 130 interrupted.";

// What the parser fills and CommandLine holds in another form.
struct ParsedTexts {
    std::string input;
    std::string secondInput;
    std::vector<std::string> settings;
};

// Where a command's options are stored.
struct Target {
    CommandLine* line;
    ParsedTexts* texts;
    const OwnOptions& own;
};

// What the commands that use an engine have in common.
void AddEngineOptions(CLI::App* command, const Target& target) {
    command->add_flag("--json", target.line->json, "Print the result, or the error, as one JSON object");
    command->add_flag("--quiet", target.line->quiet, "No progress line and no notes");
    if (target.own.add) target.own.add(command, target.own.values);
}

CLI::Option* AddOutput(CLI::App* command, CommandLine* line, const char* description) {
    return command->add_option("-o,--output", line->output, description)->type_name("FILE");
}

CLI::Option* AddInput(CLI::App* command, std::string* input, const char* name, const char* description) {
    return command->add_option(name, *input, description)->type_name("FILE");
}

void AddPaletteOptions(CLI::App* command, CommandLine* line) {
    command
        ->add_option(
            "--palette", line->palette,
            "Palette as `kestrel effects --json` lists them, `custom` (computed; the default for GIF) or "
            "`original`")
        ->type_name("NAME");
    command->add_flag("--dither", line->dither, "Dither to the palette");
    command->add_flag("--supercompress", line->supercompress, "Store only pixels that change");
    command->add_flag("--true-color", line->trueColor,
                      "All colours (WebP and PNG only, where it is the default without palette options)");
    command->add_flag("--fast-remap", line->fastRemap, "Coarser and faster search for palette colours");
    command->add_option("--dither-brightness", line->ditherBrightness, "For black and white")
        ->type_name("0-255")
        ->check(CLI::Range(0, 255).description(""));
    command->add_option("--dither-contrast", line->ditherContrast, "For black and white")
        ->type_name("0-127")
        ->check(CLI::Range(0, 127).description(""));
}

void AddApply(CLI::App* app, const Target& target) {
    CommandLine* const line = target.line;
    CLI::App* const apply = app->add_subcommand("apply", "Apply an effect to an animation");
    AddInput(apply, &target.texts->input, "input", "GIF, WebP, PNG or BMP file")->required();
    AddOutput(apply, line, ".gif, .webp, or .png (several frames: NAME-000.png, ...)")->required();
    apply->add_option("--effect", line->effect, "Effect, as `kestrel effects` lists them")
        ->required()
        ->type_name("NAME");
    apply->add_option("--set", target.texts->settings, "Parameter of the effect; may be given several times")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    AddPaletteOptions(apply, line);
    apply->add_flag_callback(
        "--comment", [line] { line->comment = Choice::On; }, "Add the plug-in's comment (the default)");
    apply->add_flag_callback(
        "--no-comment", [line] { line->comment = Choice::Off; }, "Leave the comment out");
    apply
        ->add_option("--local-background", line->localBackground,
                     "Colour that effects show beyond the picture's edges, or `none` for the source's own")
        ->type_name("RRGGBB");
    AddEngineOptions(apply, target);
}

void AddEffects(CLI::App* app, const Target& target) {
    AddEngineOptions(
        app->add_subcommand("effects", "List the effects with their parameters, ranges and defaults"),
        target);
}

void AddGallery(CLI::App* app, const Target& target) {
    CLI::App* const gallery =
        app->add_subcommand("gallery", "Draw one picture sheet of a picture under every effect");
    AddInput(gallery, &target.texts->input, "input",
             "Picture or animation (default: the sample's first frame)");
    AddOutput(gallery, target.line, "PNG file")->required();
    AddEngineOptions(gallery, target);
}

void AddSample(CLI::App* app, const Target& target) {
    app->add_subcommand("sample", "Write the sample animation")
        ->add_option("-o,--output,output", target.line->output, "GIF file")
        ->required()
        ->type_name("FILE");
}

void AddSheet(CLI::App* app, const Target& target) {
    CLI::App* const sheet =
        app->add_subcommand("sheet", "Draw frames of a source and of its result on one contact sheet");
    AddInput(sheet, &target.texts->input, "source", "Source animation")->required();
    AddInput(sheet, &target.texts->secondInput, "result", "Its result")->required();
    AddOutput(sheet, target.line, "PNG file")->required();
}

// Everything that is said after a dash, for suggestions.
std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
}

std::string UnexpectedArgumentMessage(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    const CLI::App& place = chosen.empty() ? app : *chosen.front();
    const auto unexpected = app.remaining(true);
    const std::string argument = unexpected.empty() ? "" : unexpected.front();
    if (argument.rfind('-', 0) == 0) {
        const auto nearest = NearestNames(argument, OptionNames(place));
        return "unknown option \"" + argument + "\"" +
               (nearest.empty() ? "; see --help." : "; did you mean " + JoinNames(nearest) + "?");
    }
    if (!chosen.empty()) return "unexpected argument \"" + argument + "\".";
    std::vector<std::string> commands;
    for (const CLI::App* command : app.get_subcommands({})) commands.push_back(command->get_name());
    return UnknownNameMessage("command", argument, commands);
}

bool SplitSettings(const std::vector<std::string>& texts, CommandLine* line, std::string* error) {
    for (const std::string& text : texts) {
        const size_t equals = text.find('=');
        if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
            *error = "--set takes NAME=VALUE, not \"" + text + "\".";
            return false;
        }
        line->settings.push_back({text.substr(0, equals), text.substr(equals + 1)});
    }
    return true;
}

// What the parts of an apply command say together.
bool CheckApply(CommandLine* line, std::string* error) {
    const std::string ending = EndingOf(line->output);
    const bool gif = ending == ".gif";
    const char* paletteOption = !line->palette.empty() ? "--palette"
                                : line->dither         ? "--dither"
                                : line->supercompress  ? "--supercompress"
                                                       : nullptr;
    unsigned color = 0;
    if (!gif && ending != ".webp" && ending != ".png") {
        *error = "the output must end in .gif, .webp or .png, not \"" + line->output + "\".";
    } else if (gif && line->trueColor) {
        *error = "a GIF cannot hold true colour; write .webp or .png, or leave out --true-color.";
    } else if (line->trueColor && paletteOption) {
        *error = std::string("--true-color and ") + paletteOption + " exclude each other.";
    } else if (!line->localBackground.empty() && PlainName(line->localBackground) != "none" &&
               !ParseColor(line->localBackground, &color)) {
        *error =
            "--local-background takes a colour as RRGGBB or none, not \"" + line->localBackground + "\".";
    } else {
        line->trueColor = !gif && !paletteOption;
        if (line->palette.empty()) line->palette = "custom";
        return true;
    }
    return false;
}

bool CheckEnding(const CommandLine& line, const char* ending, std::string* error) {
    if (EndingOf(line.output) == ending) return true;
    *error = std::string("the output must end in ") + ending + ", not \"" + line.output + "\".";
    return false;
}

bool FinishApply(const ParsedTexts& texts, CommandLine* line, std::string* error) {
    return SplitSettings(texts.settings, line, error) && CheckApply(line, error);
}

bool FinishNothing(const ParsedTexts&, CommandLine*, std::string*) { return true; }

bool FinishPicture(const ParsedTexts&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, ".png", error);
}

bool FinishSample(const ParsedTexts&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, ".gif", error);
}

struct CommandRow {
    const char* name;
    Command command;
    void (*add)(CLI::App* app, const Target& target);
    // Checks what was parsed and completes it. False: `*error` is one sentence.
    bool (*finish)(const ParsedTexts& texts, CommandLine* line, std::string* error);
};

constexpr CommandRow kCommands[] = {
    {.name = "apply", .command = Command::Apply, .add = AddApply, .finish = FinishApply},
    {.name = "effects", .command = Command::Effects, .add = AddEffects, .finish = FinishNothing},
    {.name = "gallery", .command = Command::Gallery, .add = AddGallery, .finish = FinishPicture},
    {.name = "sample", .command = Command::Sample, .add = AddSample, .finish = FinishSample},
    {.name = "sheet", .command = Command::Sheet, .add = AddSheet, .finish = FinishPicture},
};

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
        // A mistyped option is more likely than the missing one it leaves behind.
        *text =
            app->remaining(true).empty() ? std::string(error.what()) + "." : UnexpectedArgumentMessage(*app);
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
    ParsedTexts texts;
    for (const CommandRow& row : kCommands) row.add(&app, {line, &texts, own});
    const ParseOutcome outcome = Parse(&app, arguments, text);
    if (outcome != ParseOutcome::Run) return outcome;

    for (const std::string& input : {texts.input, texts.secondInput}) {
        if (!input.empty()) line->inputs.push_back(input);
    }
    for (const CommandRow& row : kCommands) {
        if (!app.got_subcommand(row.name)) continue;
        line->command = row.command;
        return row.finish(texts, line, text) ? ParseOutcome::Run : ParseOutcome::Error;
    }
    *text = "a command is missing; see --help.";
    return ParseOutcome::Error;
}

}  // namespace kfx::commands
