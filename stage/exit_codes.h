// SPDX-License-Identifier: MIT
// What kestrel-stage answers to the shell. Scripts rely on the numbers.
#pragma once

namespace kfx::stage {

enum ExitCode {
    kExitDone = 0,
    kExitBadCommand = 2,  // a wrong option, an unknown effect or parameter, a value out of range
    kExitBadInput = 3,    // a file that cannot be read or is no animation
    kExitBadOutput = 4,   // a file that cannot be written
    kExitPlugin = 5,      // the plug-in is missing, or reported an error
    kExitTimeout = 6,     // the plug-in stopped answering
    kExitInterrupted = 130,
};

}  // namespace kfx::stage
