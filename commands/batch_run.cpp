// SPDX-License-Identifier: MIT
#include "commands/batch_run.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include "commands/child_process.h"
#include "commands/command_row.h"
#include "commands/console.h"
#include "commands/frame_threads.h"
#include "commands/output_format.h"
#include "commands/plain_build.h"
#include "commands/source_files.h"
#include "commands/text.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kDrawStep{200};

// What the threads that wait for the children share.
struct Batch {
    const CommandLine& line;
    const std::vector<BatchItem>& items;
    std::mutex lock = {};
    std::condition_variable changed = {};
    size_t next = 0;
    size_t waiting = 0;  // threads that still run
    std::vector<std::optional<Report>> reports = {};
    std::vector<StageProgress> progress = {};
    std::vector<bool> isRunning = {};
    size_t finished = 0;
    uint64_t finishedBytes = 0;
};

// What the reports say together.
struct Sum {
    size_t done = 0;
    size_t skipped = 0;
    size_t failed = 0;
    int exitCode = kExitDone;
};

// The next item. False: there is none, or the work is to end.
bool TakeItem(Batch* batch, size_t* item) {
    const std::lock_guard<std::mutex> lock(batch->lock);
    if (batch->next == batch->items.size() || WasInterrupted()) return false;
    *item = batch->next++;
    batch->isRunning[*item] = true;
    return true;
}

void WorkThrough(Batch* batch) {
    size_t item = 0;
    while (TakeItem(batch, &item)) {
        const auto note = [&](const StageProgress& progress) {
            const std::lock_guard<std::mutex> lock(batch->lock);
            batch->progress[item] = progress;
        };
        Report report;
        try {
            report = RunChild(WordsOf(batch->line, batch->items[item]), note);
        } catch (const std::bad_alloc&) {
            report = FailedReport(kExitEngine, "there is not enough memory to start a process.");
        }
        const std::lock_guard<std::mutex> lock(batch->lock);
        batch->reports[item] = std::move(report);
        batch->isRunning[item] = false;
        ++batch->finished;
        batch->finishedBytes += batch->items[item].bytes + 1;
        batch->changed.notify_all();
    }
    const std::lock_guard<std::mutex> lock(batch->lock);
    --batch->waiting;
    batch->changed.notify_all();
}

uint64_t AllBytes(const Batch& batch) {
    uint64_t bytes = 0;
    for (const BatchItem& item : batch.items) bytes += item.bytes + 1;
    return bytes;
}

// Shows the first of the files that are at work. The lock is taken.
void DrawProgress(const Batch& batch, Clock::time_point start) {
    const auto running = std::find(batch.isRunning.begin(), batch.isRunning.end(), true);
    if (running == batch.isRunning.end()) return;
    const auto item = static_cast<size_t>(running - batch.isRunning.begin());
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const std::string stage = TextOf(batch.progress[item]);
    const std::string left = TimeLeftText(seconds, batch.finishedBytes, AllBytes(batch));
    ShowProgressText(std::to_string(batch.finished + 1) + " of " + std::to_string(batch.items.size()) +
                     (left.empty() ? "" : ", " + left) + ": " + FileNameOf(batch.items[item].inputs[0]) +
                     (stage.empty() ? "" : ", " + stage));
}

// Waits for an item's report. None: it was not begun, and will not be.
std::optional<Report> WaitForReport(Batch* batch, size_t item, Clock::time_point start) {
    const bool draws = !batch->line.quiet && ErrorsAreWatched();
    std::unique_lock<std::mutex> lock(batch->lock);
    while (!batch->reports[item] && batch->waiting > 0) {
        if (draws) {
            DrawProgress(*batch, start);
            batch->changed.wait_for(lock, kDrawStep);
        } else {
            batch->changed.wait(lock);
        }
    }
    return std::exchange(batch->reports[item], std::nullopt);
}

// Says which file the report is about, where its sentence does not.
void NameFile(const BatchItem& item, Report* report) {
    if (!report->error.empty() && report->error.rfind(item.inputs[0], 0) != 0 &&
        report->error.rfind(item.output, 0) != 0)
        report->error = item.inputs[0] + ": " + report->error;
    // A process that ended without a report has said nothing.
    if (!report->result.contains("input") && !report->result.contains("inputs"))
        report->result.update(nlohmann::ordered_json{{"input", item.inputs[0]}, {"output", item.output}});
}

void Add(const Report& report, Sum* sum) {
    const bool isDone = report.exitCode == kExitDone;
    const bool isSkipped = isDone && report.result.value("skipped", false);
    ++(isSkipped ? sum->skipped : isDone ? sum->done : sum->failed);
    if (sum->exitCode == kExitDone) sum->exitCode = report.exitCode;
}

std::string SumText(const Sum& sum, size_t files, bool interrupted) {
    const size_t finished = sum.done + sum.skipped;
    std::string text =
        interrupted ? "interrupted: " + std::to_string(finished) + " of " + std::to_string(files) + " done"
                    : std::to_string(sum.done) + " done";
    if (sum.skipped > 0)
        text += ", " + std::to_string(sum.skipped) + (interrupted ? " of them" : "") + " there before";
    if (sum.failed > 0) text += ", " + std::to_string(sum.failed) + " failed";
    return text + ".\n";
}

bool PrintSum(const CommandLine& line, const Sum& sum, size_t files, bool interrupted, double seconds) {
    ClearProgressLine();
    if (!line.json) {
        const bool isNews = interrupted || sum.failed > 0 || !line.quiet;
        if (isNews) WriteStandardError("kestrel: " + SumText(sum, files, interrupted));
        return true;
    }
    Report report;
    report.exitCode = static_cast<ExitCode>(sum.exitCode);
    if (interrupted) report.error = "interrupted.";
    report.result = {{"summary", true},        {"files", files},       {"done", sum.done},
                     {"skipped", sum.skipped}, {"failed", sum.failed}, {"seconds", seconds}};
    return PrintReport(report, true, true);
}

// As many as there are processors; but few, because each file's frames are in memory, and one where each file
// has a window of its own.
size_t JobsOf(const CommandLine& line, const Engine* names, size_t files) {
    const unsigned mostByItself = names ? 4 : 1;
    const size_t processors = std::clamp(std::thread::hardware_concurrency(), 1u, mostByItself);
    return std::min(line.batch.jobs > 0 ? static_cast<size_t>(line.batch.jobs) : processors, files);
}

void StartThreads(size_t count, Batch* batch, std::vector<std::thread>* threads) {
    for (size_t i = 0; i < count; ++i) {
        const std::lock_guard<std::mutex> lock(batch->lock);
        try {
            threads->emplace_back(WorkThrough, batch);
            ++batch->waiting;
        } catch (const std::system_error&) {
            return;  // those that there are do the work
        }
    }
}

// Whether an effect, parameter or palette is unknown, which would be said of each file.
bool KnowsNames(const CommandLine& line, const BatchItem& item, const Engine& engine, Failure* failure) {
    CommandLine one;
    std::string error;
    if (!LineOf(line, item, &one, &error)) return true;  // the item's own refusal
    if (one.effects.empty()) one.effects = {UnchangingEffect()};
    HostSession session;
    EngineStart start;
    start.session = &session;
    const OpenEngine opened(engine, start, failure);
    std::vector<Job> jobs;
    return opened && ResolveJobs(one, true, engine, opened.opened, &jobs, failure);
}

// What keeps the whole batch from beginning.
const Failure* FirstRefusal(const std::vector<BatchItem>& items, size_t* count) {
    const Failure* first = nullptr;
    *count = 0;
    for (const BatchItem& item : items) {
        if (item.outputFailure.exitCode == kExitDone) continue;
        if (!first) first = &item.outputFailure;
        ++*count;
    }
    return first;
}

int PrintFailure(const CommandLine& line, const Failure& failure, const std::string& note) {
    Report report = FailedReport(failure);
    if (!note.empty()) report.notes.push_back(note);
    PrintReport(report, line.json, line.quiet, IsStream(line.output));
    return failure.exitCode;
}

// A result that is there already and would be passed over, by its time alone.
bool IsThere(const CommandLine& line, const BatchItem& item) {
    std::error_code unknown;
    return line.batch.skipDone && std::filesystem::exists(PathOf(SystemPath(item.output)), unknown);
}

Report PlannedReport(const CommandLine& line, const BatchItem& item) {
    const Failure& failure =
        item.outputFailure.exitCode != kExitDone ? item.outputFailure : item.inputFailure;
    Report report = FailedReport(failure);
    const bool isThere = report.exitCode == kExitDone && IsThere(line, item);
    if (item.inputs.size() > 1) report.result["inputs"] = item.inputs;
    if (item.inputs.size() == 1) report.result["input"] = item.inputs[0];
    report.result.update(nlohmann::ordered_json{
        {"output", item.output}, {"format", item.format}, {"dryRun", true}, {"skipped", isThere}});
    if (report.exitCode != kExitDone) return report;
    report.text = (item.inputs.size() == 1 ? ShownInput(item.inputs[0])
                                           : std::to_string(item.inputs.size()) + " inputs") +
                  " -> " + ShownPath(item.output) +
                  (isThere ? " (is there; passed over when complete)" : "") + "\n";
    return report;
}

}  // namespace

bool IsBatch(CommandLine* line, std::vector<BatchItem>* items, Report* refusal) {
    items->clear();
    if (line->command != &kApplyCommand) return false;
    if (!line->batch.dryRun && !NamesFolder(line->output)) return false;
    CommandLine found = *line;
    Failure failure;
    if (!FindSources(found.command->inputs, &found, &failure) || !PlanBatch(found, items, &failure)) {
        *refusal = FailedReport(failure);
        return false;
    }
    if (items->size() == 1 && !line->batch.dryRun) return false;
    *line = std::move(found);
    return true;
}

int PrintPlan(const CommandLine& line, const std::vector<BatchItem>& items, const Engine* names) {
    Failure failure;
    if (names && !KnowsNames(line, items[0], *names, &failure)) return PrintFailure(line, failure, "");
    Sum sum;
    bool isWritten = true;
    for (const BatchItem& item : items) {
        Report report = PlannedReport(line, item);
        NameFile(item, &report);
        Add(report, &sum);
        isWritten = PrintReport(report, line.json, line.quiet) && isWritten;
    }
    if (!line.json && !line.quiet && items.size() > 1) {
        WriteStandardError("kestrel: " + std::to_string(sum.done) + " to do" +
                           (sum.skipped > 0 ? ", " + std::to_string(sum.skipped) + " there already" : "") +
                           (sum.failed > 0 ? ", " + std::to_string(sum.failed) + " refused" : "") + ".\n");
    }
    return isWritten || sum.exitCode != kExitDone ? sum.exitCode : kExitBadOutput;
}

int RunBatch(const CommandLine& given, const std::vector<BatchItem>& items, const Engine* names) {
    const Clock::time_point start = Clock::now();
    CommandLine line = given;
    const size_t jobs = JobsOf(line, names, items.size());
    // Files that are built at the same time share the processors. The plug-in has no threads.
    if (names && line.threads == 0) line.threads = std::max(UsableThreads() / static_cast<int>(jobs), 1);
    Failure failure;
    size_t refused = 0;
    if (names && !KnowsNames(line, items[0], *names, &failure)) return PrintFailure(line, failure, "");
    if (const Failure* first = FirstRefusal(items, &refused)) {
        return PrintFailure(line, *first,
                            refused == 1 ? ""
                                         : std::to_string(refused) + " of " + std::to_string(items.size()) +
                                               " results are refused; --dry-run lists them.");
    }
    if (!MakeFolders(items, &failure)) return PrintFailure(line, failure, "");
    Batch batch = {.line = line, .items = items};
    batch.reports.resize(items.size());
    batch.progress.resize(items.size());
    batch.isRunning.resize(items.size());
    std::vector<std::thread> threads;
    StartThreads(jobs, &batch, &threads);
    if (threads.empty())
        return PrintFailure(line, {kExitEngine, "no thread can be started for the files."}, "");
    Sum sum;
    bool isWritten = true, isCut = false;
    for (size_t i = 0; i < items.size(); ++i) {
        std::optional<Report> report = WaitForReport(&batch, i, start);
        const bool isFinished = report && report->exitCode != kExitInterrupted;
        isCut = isCut || !isFinished;
        if (!isFinished) continue;
        NameFile(items[i], &*report);
        Add(*report, &sum);
        isWritten = PrintReport(*report, line.json, line.quiet) && isWritten;
    }
    for (std::thread& thread : threads) thread.join();
    if (isCut) sum.exitCode = kExitInterrupted;
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    isWritten = PrintSum(line, sum, items.size(), isCut, seconds) && isWritten;
    return isWritten || sum.exitCode != kExitDone ? sum.exitCode : kExitBadOutput;
}

}  // namespace kfx::commands
