// SPDX-License-Identifier: MIT
#include "commands/fit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/console.h"
#include "commands/fit_look.h"
#include "commands/report.h"
#include "commands/text.h"
#include "media/file_io.h"

namespace kfx::commands {
namespace {

std::string NameOf(const CommandLine& line, const FitSettings& settings) {
    const std::string options = OptionsText(line, settings);
    return options.empty() ? "(nothing changed)" : options;
}

// "2411003 bytes (2.41M)": also in the unit in which people give sizes.
std::string BytesText(uint64_t bytes) {
    std::string text = std::to_string(bytes) + " bytes";
    if (bytes < 1000) return text;
    char rounded[32];
    const auto number = static_cast<double>(bytes);
    if (bytes < 1000000)
        std::snprintf(rounded, sizeof rounded, " (%.1fK)", number / 1e3);
    else
        std::snprintf(rounded, sizeof rounded, " (%.2fM)", number / 1e6);
    return text + rounded;
}

// What could be allowed as well.
std::string HelpFor(const CommandLine& line, const FitSubject& subject) {
    std::string list;
    const auto add = [&list](bool helps, const char* word) {
        if (helps) list += (list.empty() ? "" : ",") + std::string(word);
    };
    add(!line.fit.scale && line.resultEdits.shrink == 100, "scale");
    add(!line.fit.frames && line.resultEdits.every == 1 && subject.isAnimated, "frames");
    add(!line.fit.lossy && line.format == "gif" && line.lossy < 0, "lossy");
    if (!list.empty()) return "--allow " + list + " can make it smaller";
    return subject.isAnimated ? "leave out frames with --frames, or take a larger --max-size"
                              : "make the picture smaller with --resize, or take a larger --max-size";
}

Failure NothingFits(const CommandLine& line, const FitSubject& subject, const FitFound& found) {
    if (found.tried.empty())
        return {kExitBadCommand, "--max-size has nothing to try with the options that stand beside it."};
    const FitTrial& smallest = found.tried[found.chosen];
    return {kExitTooLarge, ShownPath(line.output) + ": nothing fits into " + line.fit.size +
                               "; the smallest has " + BytesText(smallest.bytes) + " with " +
                               NameOf(line, smallest.settings) + "; " + HelpFor(line, subject) + "."};
}

bool FillSubject(const OpenEngine& engine, const Animation& wanted, FitSubject* subject, Failure* failure) {
    subject->isAnimated = wanted.frames.size() > 1;
    subject->isTransparent = HasAlpha(wanted);
    subject->hasOwnPalette = HasOwnPalette(wanted);
    return engine.engine.listPalettes(engine.opened, &subject->palettes, failure);
}

// The frames as all effects leave them.
bool MakeWanted(const CommandLine& line, const FitWork& work, Animation* wanted, Failure* failure) {
    *wanted = std::move(*work.session->source);
    if (line.effects.empty()) return true;
    CommandLine colors = line;
    colors.trueColor = true;
    std::vector<Job> jobs;
    return ResolveJobs(colors, HasOwnPalette(*wanted), work.engine.engine, work.engine.opened, &jobs,
                       failure) &&
           RunInTrueColor(work.engine, work.session, std::move(jobs), work.pipelineOptions(line), wanted,
                          failure);
}

// One line that is told while trials are made; the engine's own would come and go too fast to be read.
void TellStatus(const std::string& text, const CommandContext& context, HostSession* session) {
    {
        const std::lock_guard<std::mutex> lock(session->statusLock);
        session->status = text;
    }
    session->progressTotal = 0;
    if (context.onProgress) context.onProgress(*session);
}

std::string RightAligned(const std::string& text, size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string LookText(double look) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f dB", look);
    return look >= kExactLook ? "exact" : text;
}

nlohmann::ordered_json TrialObject(const CommandLine& line, const FitFound& found, size_t number) {
    const FitTrial& trial = found.tried[number];
    nlohmann::ordered_json object = {{"options", OptionsText(line, trial.settings)},
                                     {"bytes", trial.bytes},
                                     {"look", std::round(trial.look * 100) / 100},
                                     {"width", trial.width},
                                     {"height", trial.height},
                                     {"frames", trial.frames},
                                     {"colors", trial.colors},
                                     {"fits", trial.bytes <= line.fit.mostBytes},
                                     {"chosen", found.fits && number == found.chosen}};
    return object;
}

}  // namespace

bool SearchFinished(const CommandLine& line, const CommandContext& context, const FitSteps& steps,
                    HostSession* session, const SearchWanted& search, Failure* failure) {
    const EngineStart start = steps.start(line, context, session);
    const OpenEngine engine(context.engine, start, failure);
    if (!engine) return false;
    const FitWork work = {line, engine, session, steps.pipelineOptions, steps.resultOptions, steps.stop};
    Animation wanted;
    FitSubject subject;
    if (!MakeWanted(line, work, &wanted, failure) || !FillSubject(engine, wanted, &subject, failure))
        return false;
    session->actions.showProgress = nullptr;
    return search(work, wanted, subject);
}

bool FitToSize(const CommandLine& line, const CommandContext& context, const FitSteps& steps,
               HostSession* session, FitFound* found, Failure* failure) {
    if (!context.engine.limitsColors) {
        *failure = {kExitBadCommand, "--max-size needs no plug-in; leave out --through-plugin."};
        return false;
    }
    if (line.format == "png" && KeptFrames(line.resultEdits, session->source->frames.size()) > 1) {
        *failure = {
            kExitBadCommand,
            "--max-size is for one file, and a series of PNG files has several; write .apng, .webp or "
            ".gif, or choose one frame with --frames."};
        return false;
    }
    const TellTrial tell = [&](const FitSettings& settings) {
        TellStatus("Trying " + NameOf(line, settings), context, session);
    };
    const auto search = [&](const FitWork& work, const Animation& wanted, const FitSubject& subject) {
        if (!SearchFit(work, wanted, subject, tell, found, failure)) return false;
        if (!found->fits) *failure = NothingFits(line, subject, *found);
        return found->fits;
    };
    return SearchFinished(line, context, steps, session, search, failure);
}

bool WriteFound(const CommandLine& line, const FitFound& found, WrittenResult* written, std::string* error) {
    written->files = {line.output};
    written->bytes = found.file.size();
    written->note = found.tried[found.chosen].note;
    written->fingerprint = found.tried[found.chosen].fingerprint;
    if (!IsStream(line.output)) {
        if (WriteWholeFile(SystemPath(line.output), found.file, error)) return true;
        *error = WithFolderAsGiven(*error, line.output);
        return false;
    }
    std::string reason;
    if (WriteStandardOutput(found.file.data(), found.file.size(), &reason)) return true;
    *error = "standard output: " + reason + ".";
    return false;
}

void ReportFit(const CommandLine& line, const FitFound& found, Report* report) {
    if (found.tried.empty()) return;
    std::string table;
    size_t width = 0;
    for (const FitTrial& trial : found.tried) width = std::max(width, NameOf(line, trial.settings).size());
    nlohmann::ordered_json tried = nlohmann::ordered_json::array();
    for (size_t i = 0; i < found.tried.size(); ++i) {
        const FitTrial& trial = found.tried[i];
        std::string name = NameOf(line, trial.settings);
        name.resize(width, ' ');
        const bool isChosen = found.fits && i == found.chosen;
        table += (isChosen ? "* " : "  ") + name + RightAligned(std::to_string(trial.bytes), 14) + " bytes" +
                 RightAligned(LookText(trial.look), 10) + "  " +
                 (isChosen                            ? "chosen"
                  : trial.bytes <= line.fit.mostBytes ? "fits"
                                                      : "too large") +
                 "\n";
        tried.push_back(TrialObject(line, found, i));
    }
    if (!line.quiet) report->text = table + report->text;
    report->result["maxBytes"] = line.fit.mostBytes;
    if (found.fits) report->result["options"] = OptionsText(line, found.tried[found.chosen].settings);
    report->result["estimates"] = found.estimates;
    report->result["tried"] = std::move(tried);
}

}  // namespace kfx::commands
