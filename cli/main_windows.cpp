// SPDX-License-Identifier: MIT
// kestrel.exe. The work is done in a process of its own, the child: it can be ended at any moment without
// leaving an unfinished file, and a plug-in may end the process that it is in.
#include <string>
#include <vector>

#include <windows.h>
#include <shellapi.h>

#include "cli/program.h"
#include "commands/child_process.h"
#include "commands/console.h"
#include "commands/direct_engine.h"
#include "commands/text_windows.h"
#include "driven/driven_engine.h"
#include "driven/settings_folder.h"

using namespace kfx::commands;
using namespace kfx::driven;

namespace {

std::vector<std::string> Arguments() {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; wide && i < count; ++i) arguments.push_back(Narrow(wide[i]));
    LocalFree(wide);
    return arguments;
}

}  // namespace

int main() {
    // A library that is missing from the system's folder is looked for in the program's, and nowhere else.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    auto arguments = Arguments();
    const bool isChild = BecomeChild(&arguments);
    DrivenOptions options;
    CommandLine line;
    int exitCode = kExitDone;
    if (!kfx::cli::ReadCommandLine(arguments, DrivenCommandOptions(&options), &line, &exitCode))
        return exitCode;
    if (isChild) {
        const Engine engine = options.throughPlugin ? MakeDrivenEngine(&options) : kDirectEngine;
        EndChild(RunCommand(line, kfx::cli::ContextOfChild(engine)));
    }
    std::string error;
    if (!PrepareChildren(&error)) return kfx::cli::PrintResult(FailedReport(kExitEngine, error), line);
    const std::string leftSettings = options.throughPlugin ? PutBackLeftSettings() : "";
    // Only the plug-in knows its names.
    if (kfx::cli::RunBatchLine(&line, options.throughPlugin ? nullptr : &kDirectEngine, &exitCode))
        return exitCode;
    Report report = RunChild(arguments, line.quiet ? nullptr : ShowStageLine);
    if (!leftSettings.empty()) report.notes.push_back(leftSettings);
    return kfx::cli::PrintResult(report, line);
}
