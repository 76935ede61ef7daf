// SPDX-License-Identifier: MIT
// kestrel, natively. One result is made in this process; several have a process each.
#include <string>
#include <vector>

#include "cli/heap.h"
#include "cli/interrupts.h"
#include "cli/program.h"
#include "commands/child_process.h"
#include "commands/console.h"
#include "commands/direct_engine.h"
#include "commands/output_format.h"

using namespace kfx::commands;

int main(int argc, char** argv) {
    kfx::cli::PrepareHeap();
    std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const bool isChild = BecomeChild(&arguments);
    kfx::cli::HandleSignals();
    CommandLine line;
    int exitCode = kExitDone;
    if (!kfx::cli::ReadCommandLine(arguments, {}, &line, &exitCode)) return exitCode;
    kfx::cli::SetInterruptWords(WordsOf(FailedReport(kExitInterrupted, "interrupted."), line.json, line.quiet,
                                        IsStream(line.output)));
    if (isChild) EndChild(RunCommand(line, kfx::cli::ContextOfChild(kDirectEngine)));
    if (kfx::cli::RunBatchLine(&line, &kDirectEngine, &exitCode)) return exitCode;
    const auto context = kfx::cli::ContextFor(line, kDirectEngine);
    return kfx::cli::PrintResult(RunCommand(line, context), line);
}
