// SPDX-License-Identifier: MIT
// kestrel join: the parts of an animation become the file that apply would have made in one piece.
#include <algorithm>
#include <utility>

#include "commands/apply_report.h"
#include "commands/build_steps.h"
#include "commands/common_options.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/part_file.h"
#include "commands/part_run.h"
#include "commands/recipe_words.h"
#include "commands/report.h"
#include "commands/survey_text.h"
#include "commands/text.h"
#include "media/file_io.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

// A part without its frames, and where it is.
struct FoundPart {
    std::string path;
    PartFile part;
};

bool Refuse(const std::string& sentence, Failure* failure) {
    *failure = {kExitBadInput, sentence};
    return false;
}

bool ReadPart(const std::string& path, std::vector<uint8_t>* file, PartFile* part, Failure* failure) {
    std::string error;
    if (IsStream(path)) return Refuse("standard input cannot be a part; name its file.", failure);
    if (!ReadWholeFile(SystemPath(path), file, &error))
        return Refuse(WithFolderAsGiven(error, path), failure);
    return DecodePart(*file, part, &error) || Refuse(path + ": " + error + ".", failure);
}

size_t EndOf(const FoundPart& found) { return found.part.first + found.part.count; }

// "frames 3 to 5 and frame 9".
std::string JoinClauses(const std::vector<std::string>& clauses) {
    std::string text = clauses.front();
    for (size_t i = 1; i < clauses.size(); ++i)
        text += (i + 1 == clauses.size() ? " and " : ", ") + clauses[i];
    return text;
}

// Whether the parts, in order, have all frames, each once.
bool CheckFrames(const std::vector<FoundPart>& parts, size_t frames, Failure* failure) {
    std::vector<std::string> missing;
    size_t next = 0;
    for (size_t i = 0; i < parts.size(); ++i) {
        const FoundPart& found = parts[i];
        if (EndOf(found) > frames)
            return Refuse(found.path + ": its survey has only " + FramesText(0, frames - 1) + ".", failure);
        if (found.part.first < next) {
            const size_t last = std::min(next, EndOf(found)) - 1;
            return Refuse(FramesText(found.part.first, last) + (last > found.part.first ? " are" : " is") +
                              " both in " + parts[i - 1].path + " and in " + found.path +
                              "; leave one of them out.",
                          failure);
        }
        if (found.part.first > next) missing.push_back(FramesText(next, found.part.first - 1));
        next = EndOf(found);
    }
    if (next < frames) missing.push_back(FramesText(next, frames - 1));
    if (missing.empty()) return true;
    const bool isOne = missing.size() == 1 && missing[0].rfind("frame ", 0) == 0;
    return Refuse(JoinClauses(missing) + (isOne ? " is" : " are") +
                      " missing; make the parts that have them, and join all parts.",
                  failure);
}

// Everything of the parts but their frames, in the order of the frames.
bool FindParts(const CommandLine& line, std::vector<FoundPart>* parts, Survey* survey, Failure* failure) {
    for (const SourceFiles& source : line.sources) {
        FoundPart found = {.path = source.files[0], .part = {}};
        std::vector<uint8_t> file;
        if (!ReadPart(found.path, &file, &found.part, failure)) return false;
        if (!parts->empty() && found.part.survey != parts->front().part.survey) {
            return Refuse(found.path + ": is of another survey than " + parts->front().path +
                              "; make all parts with one survey.",
                          failure);
        }
        if (!parts->empty()) found.part.survey.clear();
        parts->push_back(std::move(found));
    }
    std::string error;
    const std::string first = parts->front().path;
    if (!ReadSurvey(parts->front().part.survey, survey, &error)) return Refuse(first + ": " + error, failure);
    std::sort(parts->begin(), parts->end(), [](const FoundPart& a, const FoundPart& b) {
        return a.part.first != b.part.first ? a.part.first < b.part.first : a.part.count < b.part.count;
    });
    return CheckFrames(*parts, survey->frames, failure);
}

// The line of the command that would have made the result in one piece.
bool WholeLine(const CommandLine& line, const Survey& survey, CommandLine* whole, Failure* failure) {
    std::vector<std::string> arguments = {"apply", "--output=-"};
    std::string given, error;
    for (const OptionWord& word : survey.recipe.words) {
        if (word.name == "format") given = word.value;
        arguments.push_back(TextOf(word));
    }
    if (!survey.hasRecipe) arguments.emplace_back("--no-recipe");
    arguments.insert(arguments.end(), {"--", "-"});
    if (ParseCommandLine(arguments, {}, whole, &error) != ParseOutcome::Run)
        return Refuse("the options of these parts cannot be taken: " + error, failure);
    if (ResolveFormat(line.output, given, &error).empty()) {
        *failure = {kExitBadCommand, "these parts are for --format " + given + ": " + error};
        return false;
    }
    whole->inputs = line.inputs;
    whole->output = line.output;
    whole->force = line.force;
    whole->json = line.json;
    whole->threads = line.threads;
    return true;
}

// The result's size is checked before its memory is taken.
bool CheckSize(const CommandLine& line, const PartFile& part, size_t frames, Failure* failure) {
    PixelBudget budget = {.limits = LimitsOf(line)};
    std::string clause;
    return SpendFrames(&budget, static_cast<uint64_t>(part.built.width),
                       static_cast<uint64_t>(part.built.height), frames, &clause) ||
           Refuse("the joined animation: " + clause + ".", failure);
}

bool IsOfWhole(const BuiltAnimation& part, const BuiltAnimation& whole) {
    return part.width == whole.width && part.height == whole.height && part.palette == whole.palette &&
           part.comment == whole.comment;
}

// All frames, read part by part. The files are read a second time: the first time all parts were looked at,
// which may not fit together or be too large. Their bytes are not kept for it. They would stand in memory
// beside the frames, and reading them again takes about a thousandth of the time that join takes.
bool TakeFrames(const std::vector<FoundPart>& parts, HostSession* session, PipelineNotes* notes,
                Failure* failure) {
    session->built = parts.front().part.built;
    session->record = parts.front().part.record;
    for (const FoundPart& found : parts) {
        std::vector<uint8_t> file;
        PartFile part;
        std::string error;
        if (!ReadPart(found.path, &file, &part, failure)) return false;
        if (part.first != found.part.first || part.count != found.part.count ||
            !IsOfWhole(part.built, session->built))
            return Refuse(found.path + ": does not fit the other parts; make it again.", failure);
        notes->thresholdApplied = notes->thresholdApplied || part.thresholdApplied;
        if (!DecodeFrames(file, part, &session->built, &session->record, &error))
            return Refuse(found.path + ": " + error + ".", failure);
    }
    return true;
}

Report Join(const CommandLine& line, const CommandContext& context) {
    const Clock::time_point start = Clock::now();
    Report report;
    Failure failure;
    std::vector<FoundPart> parts;
    Survey survey;
    CommandLine whole;
    HostSession session;
    PipelineNotes notes;
    ShowStage("Reading", context, &session);
    if (!FindParts(line, &parts, &survey, &failure) || !WholeLine(line, survey, &whole, &failure) ||
        !CheckSize(line, parts.front().part, survey.frames, &failure))
        return FailedReport(failure);
    const std::vector<std::string> files = ResultPaths(whole.output, survey.frames, whole.format);
    if (!CheckResult(whole, survey.frames, files, &report)) return report;
    if (!TakeFrames(parts, &session, &notes, &failure)) return FailedReport(failure);
    const ResultCounts counts = CountsOf(session);
    ResultTimes times;
    times.decode = MicrosecondsSince(start);
    NoteBuild(whole, "the source", session, notes, &report);
    WrittenResult written;
    std::string error;
    ShowStage("Writing", context, &session);
    const Clock::time_point encodeStart = Clock::now();
    if (!WriteResult(whole.output, std::move(session.built), session.record, ResultOptionsOf(whole), &written,
                     &error))
        return FailedReport(kExitBadOutput, error);
    if (!written.note.empty()) report.notes.push_back(ShownPath(line.output) + ": " + written.note + ".");
    times.encode = MicrosecondsSince(encodeStart);
    ReportResult(written, counts, times, start, &report);
    if (!written.fingerprint.empty()) report.result["fingerprint"] = written.fingerprint;
    return report;
}

Report RunJoin(const CommandLine& line, const CommandContext& context) {
    Report report = Join(line, context);
    nlohmann::ordered_json result = {{"inputs", line.inputs}, {"output", line.output}};
    result.update(report.result);
    report.result = std::move(result);
    return report;
}

void AddJoin(CLI::App* app, const OptionTarget& target) {
    CLI::App* const join = AddCommand(app, "join", "Join the parts of an animation; see kestrel survey");
    RequireOption(
        AddInputs(join, target.line, "part",
                  "Parts that kestrel apply --survey has made, in any order, or a pattern as PARTS-*.kpart"));
    AddReadLimit(join, target.line);
    AddThreads(join, target.line, false);
    AddOutput(
        join, target.line, "-o,--output",
        "In the format of the survey (PNG, several frames: NAME-000.png, ...); `-` for standard output");
    AddEngineOptions(join, target);
}

}  // namespace

const CommandRow kJoinCommand = {.name = "join",
                                 .inputs = InputUse::EachFile,
                                 .add = AddJoin,
                                 .finish = nullptr,
                                 .run = RunJoin,
                                 .examples = "kestrel join PARTS-*.kpart -o OUT.gif"};

}  // namespace kfx::commands
