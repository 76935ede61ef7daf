// SPDX-License-Identifier: MIT
// A command that runs in a process of its own, the child: the effects' settings belong to the whole process,
// so that two files at a time need two; and a plug-in may end the process that it is in, in ways that nothing
// inside it can see. The parent prints what its children report, and removes what one that was ended has left
// unfinished.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "commands/child_lines.h"

namespace kfx::commands {

struct HostSession;

// To be called before the first child is started; once is enough. From then on Ctrl+C and the like end the
// children, not this process; but a child that is putting its files in place ends by itself, however long
// that takes. False: `*error` is one sentence.
bool PrepareChildren(std::string* error);

// Runs this program once more with these arguments (UTF-8) and waits for its end. A child that ends without
// its report gives a failed one. `onProgress`, which may be empty, is called on this thread. Several threads
// may do so at the same time, kMostJobs at most.
Report RunChild(const std::vector<std::string>& arguments,
                const std::function<void(const StageProgress&)>& onProgress);

// Whether this process was told to end, so that no child should be started any more.
bool WasInterrupted();

// Takes what RunChild has put in front of the arguments; false: there is nothing, this is no child. From then
// on the process tells its parent of temporary files, and leaves it to the parent to say anything.
bool BecomeChild(std::vector<std::string>* arguments);

// These do nothing in a process that is no child.
void TellOfPlugin();  // from now on the plug-in may be what ends this process
void TellOfTemporary(const std::string& path);
void TellOfProgress(const HostSession& session);

// Hands the child's report to the parent and ends the process at once: a plug-in that hangs must not keep it
// alive.
[[noreturn]] void EndChild(const Report& report);

}  // namespace kfx::commands
