// SPDX-License-Identifier: MIT
// kestrel survey: what the parts of an animation have to know of the whole.
#include "commands/apply_options.h"
#include "commands/apply_report.h"
#include "commands/build_steps.h"
#include "commands/common_options.h"
#include "commands/console.h"
#include "commands/fingerprint.h"
#include "commands/option_checks.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/part_run.h"
#include "commands/recipe_words.h"
#include "commands/report.h"
#include "commands/survey_text.h"
#include "commands/text.h"
#include "media/file_io.h"

namespace kfx::commands {
namespace {

bool Write(const CommandLine& line, const std::string& text, std::string* error) {
    if (!IsStream(line.output)) {
        if (WriteWholeFile(SystemPath(line.output), {text.begin(), text.end()}, error)) return true;
        *error = WithFolderAsGiven(*error, line.output);
        return false;
    }
    if (WriteStandardOutput(reinterpret_cast<const uint8_t*>(text.data()), text.size(), error)) return true;
    *error = "standard output: " + *error + ".";
    return false;
}

// Reads and edits the source. False: the report says why not.
bool ReadEdited(const CommandLine& line, Animation* source, Survey* survey, Report* report) {
    Failure failure;
    if (!ReadSource(line, 0, source, report)) return false;
    survey->source = ExactHashOf(*source);
    FrameEdits edits = line.edits;
    if (line.delay >= 0) edits.stillDelay = line.delay;
    if (!EditFrames(edits, LimitsOf(line), source, &failure)) {
        *report = FailedReport(failure);
        return false;
    }
    survey->frames = KeptFrames(line.resultEdits, source->frames.size());
    return true;
}

Report MakeSurvey(const CommandLine& line, const CommandContext& context) {
    const Clock::time_point start = Clock::now();
    Report report;
    Failure failure;
    Survey survey;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = SystemPath(line.inputs[0]);
    if (!CheckPartEngine(context.engine, &failure)) return FailedReport(failure);
    if (!CheckOutput(line, {line.output}, &report)) return report;
    ShowStage("Reading", context, &session);
    if (!ReadEdited(line, &source, &survey, &report)) return report;
    PipelineNotes notes;
    WholeRun run;
    run.facts = &survey.facts;
    if (!BuildResult(line, context, &run, &session, &notes, &failure)) return FailedReport(failure);
    const std::string text = SurveyTextOf(line, survey);
    std::string error;
    if (text.empty())
        return FailedReport(kExitBadCommand, "the options are too long for a survey; take fewer effects.");
    if (!Write(line, text, &error)) return FailedReport(kExitBadOutput, error);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    report.text = ShownPath(line.output) + ": survey of " + FramesText(0, survey.frames - 1) + ", " +
                  std::to_string(text.size()) + " bytes, " + SecondsText(seconds) + " s.\n";
    report.result = {{"files", {line.output}},
                     {"frames", survey.frames},
                     {"format", line.format},
                     {"bytes", text.size()},
                     {"seconds", seconds}};
    return report;
}

Report RunSurvey(const CommandLine& line, const CommandContext& context) {
    Report report = MakeSurvey(line, context);
    nlohmann::ordered_json result = {{"input", line.inputs[0]}, {"output", line.output}};
    result.update(report.result);
    report.result = std::move(result);
    return report;
}

void AddSurvey(CLI::App* app, const OptionTarget& target) {
    AddApplyOptions(AddCommand(app, "survey",
                               "Find what the parts of an animation have to know of all "
                               "frames, to build them on several machines"),
                    target, ApplyUse::Survey);
}

bool FinishSurvey(const CLI::App& command, const ApplyWords& words, CommandLine* line, std::string* error) {
    TakeWords(command, &line->recipe);
    line->join = true;  // a survey is of one animation
    if (!IsStream(line->output) && !CheckEnding(*line, {".survey"}, error)) return false;
    if (TakesOver(line->recipe)) return CheckTakingOver(*line, error);
    if (words.format.empty()) {
        *error = "a survey needs the format that the parts are joined to, as --format gif.";
        return false;
    }
    return JoinEffectsAndSettings(command, words, line, error) && CheckApply(words, line, error);
}

}  // namespace

const CommandRow kSurveyCommand = {
    .name = "survey",
    .inputs = InputUse::OneAnimation,
    .add = AddSurvey,
    .finish = FinishSurvey,
    .run = RunSurvey,
    .examples =
        "kestrel survey IN.gif -o WHOLE.survey --format gif --effect Neon --dither\n"
        "kestrel apply IN.gif -o 0.kpart --survey WHOLE.survey --frames 0-99\n"
        "kestrel join 0.kpart 1.kpart 2.kpart -o OUT.gif"};

}  // namespace kfx::commands
