// SPDX-License-Identifier: MIT
#include "commands/command_line.h"

#include <initializer_list>

#include <CLI/CLI.hpp>

#include "commands/edit_options.h"
#include "commands/option_checks.h"
#include "commands/parser_words.h"
#include "commands/text_match.h"
#include "media/animation_writer.h"

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

constexpr int kLongestDelay = 655350;  // what a GIF file can say

// What the parser fills and CommandLine holds in another form.
struct ParsedTexts {
    std::string input;
    std::string secondInput;
    const CLI::App* apply = nullptr;  // knows the order of the next two
    std::vector<std::string> effects;
    std::vector<std::string> inputs;  // of a command that takes any number
    std::vector<std::string> settings;
    ApplyWords words;
};

// Where a command's options are stored.
struct Target {
    CommandLine* line;
    ParsedTexts* texts;
    const OwnOptions& own;
};

// What the commands that use an engine have in common.
void AddEngineOptions(CLI::App* command, const Target& target) {
    AddFlag(command, "--json", &target.line->json, "Print the result, or the error, as one JSON object");
    AddFlag(command, "--quiet", &target.line->quiet, "No progress line and no notes");
    if (target.own.add) target.own.add(command, target.own.values);
}

void AddOutput(CLI::App* command, CommandLine* line, const char* name, const char* description) {
    command->add_option(name, line->output, description)->type_name("FILE")->required();
    AddFlag(command, "--force", &line->force, "Replace the output when it exists");
}

CLI::Option* AddInput(CLI::App* command, std::string* input, const char* name, const char* description) {
    return command->add_option(name, *input, description)->type_name("FILE");
}

void AddJoinOptions(CLI::App* command, CommandLine* line) {
    AddFlag(command, "--join", &line->join, "Several files, NAME-*.png or a folder make one animation");
    AddNumber(command, "--delay", &line->delay, 0, kLongestDelay,
              "Milliseconds that each frame is shown; joins, too (without it: 100 for stills)");
}

void AddReadLimit(CLI::App* command, CommandLine* line) {
    constexpr int kMostMillions = 1000000;
    AddNumber(command, kMaxPixelsOption, &line->maxPixels, 1, kMostMillions,
              "Read inputs with up to so many million pixels over all frames (537)");
}

void AddPaletteOptions(CLI::App* command, CommandLine* line) {
    command
        ->add_option(
            "--palette", line->palette,
            "Palette as `kestrel effects --json` lists them, `custom` (computed; the default for GIF) or "
            "`original`")
        ->type_name("NAME");
    AddFlag(command, "--dither", &line->dither, "Dither to the palette");
    AddFlag(command, "--supercompress", &line->supercompress, "Store only pixels that change");
    AddFlag(command, "--true-color", &line->trueColor,
            "All colours (WebP and PNG only, where it is the default without palette options)");
    AddFlag(command, "--fast-remap", &line->fastRemap, "Coarser and faster search for palette colours");
    AddNumber(command, "--dither-brightness", &line->ditherBrightness, 0, 255, "For black and white");
    AddNumber(command, "--dither-contrast", &line->ditherContrast, 0, 127, "For black and white");
}

void AddFormatOptions(CLI::App* command, CommandLine* line) {
    AddNumber(command, "--lossy", &line->lossy, 0, kMaxLossy,
              "Smaller GIF: a colour may change by a quarter of this (0: not at all)");
    AddNumber(command, "--quality", &line->quality, 0, 100, "Lossy WebP of this quality (100: the best)");
    AddNumber(command, "--near-lossless", &line->nearLossless, 0, 100,
              "Smaller WebP after small changes of the pixels (100: none)");
    AddNumber(command, "--effort", &line->effort, 0, 9,
              "WebP: more takes longer and makes smaller files (6)");
}

void AddApply(CLI::App* app, const Target& target) {
    CommandLine* const line = target.line;
    CLI::App* const apply =
        app->add_subcommand("apply", "Apply an effect, or several in turn, to an animation, or edit it");
    target.texts->apply = apply;
    apply
        ->add_option(
            "input", target.texts->inputs,
            "GIF, WebP, PNG, JPEG or BMP file, or Y4M video; `-` for standard input; NAME-%03d.png for "
            "numbered files")
        ->type_name("FILE")
        ->required();
    AddReadLimit(apply, line);
    AddJoinOptions(apply, line);
    AddOutput(
        apply, line, "-o,--output",
        ".gif, .webp, .apng, .y4m, or .png (several frames: NAME-000.png, ...); `-` for standard output");
    apply
        ->add_option("--format", target.texts->words.format,
                     "For standard output, or a name without ending: gif, webp, png, apng, y4m, rgb or rgba")
        ->type_name("NAME");
    AddList(
        apply, "--effect", &target.texts->effects,
        "Effect, as `kestrel effects` lists them; several are applied in turn; may be left out with --format "
        "or one of --reverse to --loop")
        ->type_name("NAME");
    AddList(apply, "--set", &target.texts->settings,
            "Parameter of the effect before it; may be given several times")
        ->type_name("NAME=VALUE");
    AddEditOptions(apply, &line->edits);
    AddPaletteOptions(apply, line);
    AddFormatOptions(apply, line);
    AddFlag(apply, "--comment", &line->comment,
            "Add the plug-in's comment to a GIF, behind the source's own");
    AddFlag(apply, "--no-comment", &target.texts->words.noComment, "No comment of the plug-in (the default)");
    apply
        ->add_option("--local-background", line->localBackground,
                     "Colour that effects show beyond the picture's edges, or `none` for the source's own")
        ->type_name("RRGGBB");
    apply
        ->add_option(
            "--edges", line->edges,
            "What Motion Blur, Oil Painting and Radial Blur see there: `background` (the default) or "
            "`extend` (the edge's pixels, repeated)")
        ->type_name("NAME");
    apply
        ->add_option("--matte", line->matte,
                     "GIF: colour that half-transparent pixels are mixed onto (without it they are opaque or "
                     "hidden)")
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
    AddReadLimit(gallery, target.line);
    AddOutput(gallery, target.line, "-o,--output", "PNG file");
    AddEngineOptions(gallery, target);
}

void AddSample(CLI::App* app, const Target& target) {
    CLI::App* const sample = app->add_subcommand("sample", "Write the sample animation");
    AddOutput(sample, target.line, "-o,--output,output", "GIF file");
}

void AddSheet(CLI::App* app, const Target& target) {
    CLI::App* const sheet =
        app->add_subcommand("sheet", "Draw frames of a source and of its result on one contact sheet");
    AddInput(sheet, &target.texts->input, "source", "Source animation")->required();
    AddInput(sheet, &target.texts->secondInput, "result", "Its result")->required();
    AddJoinOptions(sheet, target.line);
    AddReadLimit(sheet, target.line);
    AddOutput(sheet, target.line, "-o,--output", "PNG file");
}

bool SplitSetting(const std::string& text, EffectChoice* effect, std::string* error) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        *error = "--set takes NAME=VALUE, not \"" + text + "\".";
        return false;
    }
    effect->settings.push_back({text.substr(0, equals), text.substr(equals + 1)});
    return true;
}

// Each setting belongs to the latest effect before it. Where there is only one effect, the order does not
// matter.
bool JoinEffectsAndSettings(const ParsedTexts& texts, CommandLine* line, std::string* error) {
    for (const std::string& name : texts.effects) line->effects.push_back({name, {}});
    size_t effectsBefore = 0, setting = 0;
    for (const CLI::Option* option : texts.apply->parse_order()) {
        if (option->check_lname("effect")) ++effectsBefore;
        if (!option->check_lname("set")) continue;
        const std::string& text = texts.settings[setting++];
        if (line->effects.empty()) {
            *error = "--set needs an --effect, whose parameter it sets.";
            return false;
        }
        if (effectsBefore == 0 && line->effects.size() > 1) {
            *error = "--set " + text +
                     " stands before the first --effect; put it behind the effect that it is for.";
            return false;
        }
        const size_t effect = effectsBefore == 0 ? 0 : effectsBefore - 1;
        if (!SplitSetting(text, &line->effects[effect], error)) return false;
    }
    return true;
}

bool CheckEnding(const CommandLine& line, const char* ending, std::string* error) {
    if (EndingOf(line.output) == ending) return true;
    *error = std::string("the output must end in ") + ending + ", not \"" + line.output + "\".";
    return false;
}

bool FinishApply(const ParsedTexts& texts, CommandLine* line, std::string* error) {
    return JoinEffectsAndSettings(texts, line, error) && CheckApply(texts.words, line, error);
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
    ParsedTexts texts;
    for (const CommandRow& row : kCommands) row.add(&app, {line, &texts, own});
    const ParseOutcome outcome = Parse(&app, arguments, text);
    if (outcome != ParseOutcome::Run) return outcome;

    line->inputs = texts.inputs;
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
