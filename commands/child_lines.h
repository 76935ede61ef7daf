// SPDX-License-Identifier: MIT
// What a command in a process of its own, the child, tells the process that has started it: lines of JSON
// through a pipe.
#pragma once

#include <string>
#include <vector>

#include "commands/progress.h"
#include "commands/report.h"

namespace kfx::commands {

// In front of the child's arguments, followed by what it shares with its parent.
inline constexpr char kChildOption[] = "--child-of-kestrel";

// What the child has told so far.
struct ChildWords {
    bool reported = false;
    bool usedPlugin = false;
    Report report;
    std::vector<std::string> temporary;  // files that it has begun
    StageProgress progress;
};

// Each is one whole line.
std::string TemporaryLine(const std::string& path);  // before the file is made
std::string PluginLine();                            // before a plug-in is loaded
std::string ProgressLine(const StageProgress& progress);
std::string ReportLine(const Report& report);  // at the end

// Adds a line, without its end. A plug-in can write to the pipe, too: a line that is not as it should be says
// nothing.
void TakeChildLine(const std::string& line, ChildWords* words);

// The child's report; where it has none, one that says how the child ended: `how` is as "exit code 3".
Report ReportOf(const ChildWords& words, bool interrupted, const std::string& how);

}  // namespace kfx::commands
