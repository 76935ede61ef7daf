// SPDX-License-Identifier: MIT
#pragma once

namespace kfx::cli {

// Interrupts and requests to end remove the unfinished files and end the program with kExitInterrupted; once
// the first file of a command gets its final name they wait for the program's end. A closed pipe is left to
// whoever writes to it.
void HandleSignals();

}  // namespace kfx::cli
