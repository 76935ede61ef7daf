// SPDX-License-Identifier: MIT
// What the handler of signals needs to know of children. It may be called at any moment.
#pragma once

namespace kfx::commands {

// Ends the children. False: this process has none, and has to end itself.
bool InterruptChildren();

// Whether this process is a child, whose parent speaks for it.
bool IsChildProcess();

}  // namespace kfx::commands
