// SPDX-License-Identifier: MIT
// The options of kestrel apply.
#include <set>

#include "commands/apply_options.h"
#include "commands/common_options.h"
#include "commands/edit_options.h"
#include "commands/option_checks.h"
#include "commands/parser.h"
#include "commands/parser_words.h"
#include "commands/recipe_words.h"
#include "media/animation_writer.h"

namespace kfx::commands {
namespace {

constexpr char kExamples[] =
    "kestrel apply IN.gif -o OUT.gif --effect Emboss --set Radius=18 --set Depth=30\n"
    "kestrel apply IN.webp -o OUT.webp --effect \"Water Drops\" --effect Swirl --set Angle=90\n"
    "kestrel apply IN.gif -o OUT.gif --effect Bump --palette \"216-color safe\" --dither --supercompress\n"
    "kestrel apply LOGO.png -o LOGO.gif --frames 20 --effect Swirl --set Angle=0..720:ease\n"
    "kestrel apply IN.gif -o OUT.gif --effect Neon --max-size 500K --allow scale,frames\n"
    "kestrel apply FRAMES-%03d.png -o OUT.gif --delay 40 --effect Neon\n"
    "kestrel apply OTHER.gif -o OUT.gif --recipe MADE.gif";

void AddPaletteOptions(CLI::App* command, CommandLine* line) {
    AddText(
        command,
        {.name = "--palette",
         .typeName = "NAME",
         .description =
             "Palette as `kestrel effects --json` lists them, `custom` (computed; the default for GIF) or "
             "`original`"},
        &line->palette);
    AddNumber(command, "--colors", &line->colors, 2, 256, "The most colours of the computed palette");
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
              "WebP (6 by itself), APNG and PNG (9): more takes longer and makes smaller files");
}

void AddBatchOptions(CLI::App* command, CommandLine* line) {
    BatchOptions* const batch = &line->batch;
    AddNumber(command, "--jobs", &batch->jobs, 1, kMostJobs,
              "Files at a time, with a folder as output (as many as there are processors, up to 4)");
    AddThreads(command, line, true);
    AddFlag(command, "--recursive", &batch->recursive, "Folders in the input folders, too");
    AddFlag(command, "--skip-done", &batch->skipDone, "Pass over results that are there and complete");
    AddFlag(command, "--dry-run", &batch->dryRun, "Only say what would be written");
}

void AddFiles(CLI::App* command, CommandLine* line, bool isSurvey) {
    RequireOption(
        AddInputs(command, line, "input",
                  std::string("GIF, WebP, PNG, JPEG or BMP file, or Y4M video; `-` for standard input; "
                              "NAME-%03d.png for numbered files; several files, NAME-*.gif or a folder") +
                      (isSurvey ? " are one animation" : ", with a folder as output")));
    AddReadLimit(command, line);
    AddJoinOptions(command, line);
    AddOutput(command, line, "-o,--output",
              isSurvey ? "NAME.survey; `-` for standard output"
                       : ".gif, .webp, .apng, .y4m, or .png (several frames: NAME-000.png, ...); `-` for "
                         "standard output; FOLDER/ for a result of each input, named as it; .kpart for a "
                         "part (--survey)");
}

void AddBackgroundOptions(CLI::App* command, CommandLine* line) {
    AddText(command,
            {.name = "--local-background",
             .typeName = "RRGGBB",
             .description =
                 "Colour that effects show beyond the picture's edges, or `none` for the source's own"},
            &line->localBackground);
    AddText(command,
            {.name = "--edges",
             .typeName = "NAME",
             .description =
                 "What Motion Blur, Oil Painting and Radial Blur see there: `background` (the default) or "
                 "`extend` (the edge's pixels, repeated)"},
            &line->edges);
    AddText(command,
            {.name = "--matte",
             .typeName = "RRGGBB",
             .description =
                 "GIF: colour that half-transparent pixels are mixed onto (without it they are opaque or "
                 "hidden)"},
            &line->matte);
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

// The options of one result's own command, as they were written.
std::vector<std::string> WordsForEach(const CLI::App& command) {
    static const std::set<std::string> others = {"output",  "format", "jobs",  "recursive",
                                                 "threads", "json",   "quiet", "dry-run"};
    std::vector<std::string> words;
    for (const GivenOption& option : GivenOptions(command)) {
        if (option.name.empty() || others.count(option.name) > 0) continue;
        words.push_back("--" + option.name);
        if (option.takesValue) words.push_back(option.value);
    }
    return words;
}

void AddApply(CLI::App* app, const OptionTarget& target) {
    AddApplyOptions(
        AddCommand(app, "apply", "Apply an effect, or several in turn, to an animation, or edit it"), target,
        ApplyUse::Apply);
}

bool FinishApply(const CLI::App& command, const ApplyWords& words, CommandLine* line, std::string* error) {
    line->batch.words = WordsForEach(command);
    TakeWords(command, &line->recipe);
    if (!CheckPart(*line, error)) return false;
    if (!line->split.survey.empty()) return true;  // the survey has the options
    if (TakesOver(line->recipe)) return CheckTakingOver(*line, error);
    return JoinEffectsAndSettings(command, words, line, error) && CheckApply(words, line, error);
}

}  // namespace

void AddApplyOptions(CLI::App* apply, const OptionTarget& target, ApplyUse use) {
    CommandLine* const line = target.line;
    const bool isSurvey = use == ApplyUse::Survey;
    AddFiles(apply, line, isSurvey);
    if (isSurvey)
        AddThreads(apply, line, false);
    else
        AddBatchOptions(apply, line);
    AddText(
        apply,
        {.name = "--format",
         .typeName = "NAME",
         .description =
             isSurvey ? "What the parts are joined to: gif, webp, png, apng, y4m, rgb or rgba"
                      : "For standard output, or a name without ending: gif, webp, png, apng, y4m, rgb or "
                        "rgba"},
        &target.words->format);
    AddList(apply,
            {.name = "--effect",
             .typeName = "NAME",
             .description =
                 "Effect, as `kestrel effects` lists them; several are applied in turn; may be left out with "
                 "--format or one of --reverse to --loop"},
            &target.words->effects);
    AddList(apply,
            {.name = "--set",
             .typeName = "NAME=VALUE",
             .description =
                 "Parameter of the effect before it; may be given several times; 0..720, 4,20,8 or "
                 "4@0%,20@30%,8@100% moves it over the frames, with :ease (slow at the ends) and :loop (back "
                 "to the first value)"},
            &target.words->settings);
    AddEditOptions(apply, &line->edits);
    if (!isSurvey)
        AddFlag(apply, "--seamless", &line->journeys.seamless,
                "Say when the last frame does not lead into the first");
    AddResultEditOptions(apply, &line->resultEdits);
    AddPaletteOptions(apply, line);
    AddFormatOptions(apply, line);
    if (!isSurvey) AddFitOptions(apply, &line->fit);
    AddFlag(apply, "--comment", &line->comment,
            "Add the plug-in's comment to a GIF, behind the source's own");
    AddFlag(apply, "--no-comment", &target.words->noComment, "No comment of the plug-in (the default)");
    AddBackgroundOptions(apply, line);
    AddRecipeOptions(apply, target);
    if (!isSurvey) AddSurveyOption(apply, &line->split);
    AddEngineOptions(apply, target);
}

bool JoinEffectsAndSettings(const CLI::App& command, const ApplyWords& words, CommandLine* line,
                            std::string* error) {
    for (const std::string& name : words.effects) line->effects.push_back({name, {}});
    size_t effectsBefore = 0, setting = 0;
    for (const GivenOption& option : GivenOptions(command)) {
        if (option.name == "effect") ++effectsBefore;
        if (option.name != "set") continue;
        const std::string& text = words.settings[setting++];
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

const CommandRow kApplyCommand = {.name = "apply",
                                  .inputs = InputUse::OneAnimation,
                                  .add = AddApply,
                                  .finish = FinishApply,
                                  .run = RunApply,
                                  .examples = kExamples};

}  // namespace kfx::commands
