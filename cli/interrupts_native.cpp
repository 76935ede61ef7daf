// SPDX-License-Identifier: MIT
#include "cli/interrupts.h"

#include <atomic>
#include <csignal>
#include <string>

#include <unistd.h>

#include "commands/child_process.h"
#include "commands/child_process_native.h"
#include "commands/exit_codes.h"
#include "media/file_io.h"

namespace kfx::cli {
namespace {

// The unfinished files. A signal handler reads this list at any moment, so an entry is complete before it is
// linked in, and is never changed or freed.
struct UnfinishedFile {
    std::string path;
    const UnfinishedFile* next;
};
std::atomic<const UnfinishedFile*> unfinished{nullptr};

// Is read by the handler, so that it is complete before it stands here, and is never changed or freed.
std::atomic<const commands::PrintedReport*> interruptWords{nullptr};

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

void NoteUnfinished(const std::string& path) {
    const auto* file = new UnfinishedFile{path, unfinished};
    unfinished = file;
    commands::TellOfTemporary(path);
}

// Called before the first file gets its final name: an interrupt after that would leave a part of a series.
void BlockEndingSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : kEndingSignals) sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
}

// Nothing can be done about a stream that takes nothing.
void Say(int stream, const std::string& text) {
    if (write(stream, text.data(), text.size()) < 0) return;
}

void OnEndingSignal(int) {
    // With children the main thread goes on: it says what they have done.
    if (commands::InterruptChildren()) return;
    for (const UnfinishedFile* file = unfinished; file; file = file->next) unlink(file->path.c_str());
    if (commands::IsChildProcess()) _exit(commands::kExitInterrupted);
    if (const commands::PrintedReport* const words = interruptWords) {
        Say(STDOUT_FILENO, words->output);
        Say(STDERR_FILENO, words->errors);
    }
    _exit(commands::kExitInterrupted);
}

}  // namespace

void SetInterruptWords(const commands::PrintedReport& words) {
    interruptWords = new commands::PrintedReport(words);
}

void HandleSignals() {
    // Not freed at the program's end either, where the handler may still be called.
    static const auto* const words = new commands::PrintedReport{"", "kestrel: interrupted.\n"};
    interruptWords = words;
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);  // a file beyond the limit of its size fails with a reason
    struct sigaction action = {};
    action.sa_handler = OnEndingSignal;
    for (const int number : kEndingSignals) {
        // A signal that was ignored when the program started stays ignored: nohup works this way.
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
    }
    WatchWriting({NoteUnfinished, BlockEndingSignals});
}

}  // namespace kfx::cli
