// SPDX-License-Identifier: MIT
// A command runs in a process of its own, the child, because a plug-in may end the process it runs in, in
// ways that nothing inside it can see. The parent prints what the child reports, and removes what a child
// that was ended has left unfinished.
#pragma once

#include <string>
#include <vector>

#include "commands/report.h"

namespace kfx::driven {

// Runs this program once more with the same command line and waits for its end. A child that ends without its
// report gives a failed one. Ctrl+C and the like end the child, unless its files are already being put in
// place: then it ends by itself, however long that takes.
commands::Report RunChildCommand();

// Takes what RunChildCommand has put in front of the arguments; false: there is nothing, this is no child.
// From then on the process leaves console interrupts to its parent and tells it of temporary files.
bool BecomeChild(std::vector<std::string>* arguments);

// Tells the parent that a plug-in is about to be loaded: from then on it may be what ends the child.
void TellOfPlugin();

// Hands the child's report to the parent and ends the process at once: a plug-in that hangs must not keep it
// alive.
[[noreturn]] void EndChild(const commands::Report& report);

}  // namespace kfx::driven
