// SPDX-License-Identifier: MIT
// kestrel, natively.
#include <string>
#include <vector>

#include "cli/interrupts.h"
#include "cli/program.h"
#include "commands/direct_engine.h"

int main(int argc, char** argv) {
    kfx::cli::HandleSignals();
    kfx::commands::CommandLine line;
    int exitCode = kfx::commands::kExitDone;
    if (!kfx::cli::ReadCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc}, {}, &line, &exitCode))
        return exitCode;
    const auto context = kfx::cli::ContextFor(line, kfx::commands::kDirectEngine);
    return kfx::cli::PrintResult(kfx::commands::RunCommand(line, context), line);
}
