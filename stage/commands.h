// SPDX-License-Identifier: MIT
// The commands of kestrel-stage that work on files. Each does its work and reports; none prints.
#pragma once

#include "stage/command_line.h"
#include "stage/command_settings.h"
#include "stage/plugin_run.h"
#include "stage/report.h"

namespace kfx::stage {

Report RunApply(const CommandLine& line);
Report RunEffects(const CommandLine& line);
Report RunGallery(const CommandLine& line);
Report RunSample(const CommandLine& line);
Report RunSheet(const CommandLine& line);

// A plug-in that a command drives. It sees nothing of the user's settings.
struct DrivenPlugin {
    // Opens the plug-in's window with settings of its own. On failure run.error says why.
    DrivenPlugin(const CommandLine& line, std::uint8_t capabilities, HostSession* session);
    ~DrivenPlugin();
    DrivenPlugin(const DrivenPlugin&) = delete;
    DrivenPlugin& operator=(const DrivenPlugin&) = delete;

    CommandSettings settings;
    PluginLibrary library;
    PluginRun run;
};

// The report of a run that failed.
Report PluginReport(PluginRun* run);

// Reads an animation with at least one frame; its warning becomes a note.
bool ReadSource(const std::string& path, Animation* animation, Report* report);

// Tries whether a file could be written at `path`, before the work is done. False: the report says why not.
bool CheckWritable(const std::string& path, Report* report);

}  // namespace kfx::stage
