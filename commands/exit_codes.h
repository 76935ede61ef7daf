// SPDX-License-Identifier: MIT
// What the command line answers to the shell. Scripts rely on the numbers.
#pragma once

#include <string>

namespace kfx::commands {

enum ExitCode {
    kExitDone = 0,
    kExitDifferent = 1,   // of `compare` only: it was done, and the animations do not look equal
    kExitBadCommand = 2,  // a wrong option, an unknown effect or parameter, a value out of range
    kExitBadInput = 3,    // a file that cannot be read or is no animation
    kExitBadOutput = 4,   // a file that cannot be written
    kExitEngine = 5,      // nothing was built: the plug-in is missing or reported an error, memory ran out
    kExitTimeout = 6,     // the plug-in stopped answering
    kExitUnverified = 7,  // verify: the file is not what its recipe makes of the source
    kExitTooLarge = 8,    // no settings that were allowed make a file within --max-size
    kExitInterrupted = 130,
};

// Why something was not done.
struct Failure {
    ExitCode exitCode = kExitDone;
    std::string error;  // one sentence
};

}  // namespace kfx::commands
