// SPDX-License-Identifier: MIT
#pragma once

namespace kfx::commands {
struct PrintedReport;
}

namespace kfx::cli {

// From now on an interrupt (SIGINT, SIGTERM, SIGHUP) removes the unfinished files and ends the program with
// kExitInterrupted. Once a command begins to give its files their final names, interrupts have no effect any
// more. Writing to a closed pipe returns an error instead of ending the program.
void HandleSignals();

// What an interrupt prints from now on, before it ends the program.
void SetInterruptWords(const commands::PrintedReport& words);

}  // namespace kfx::cli
