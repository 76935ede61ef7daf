// SPDX-License-Identifier: MIT
// The commands. Each does its work on files, with any engine, and reports; none prints.
#pragma once

#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/engine.h"

namespace kfx::commands {

struct Report;

// With what a command runs.
struct CommandContext {
    const Engine& engine;
    void (*onProgress)(const HostSession& session) = nullptr;  // may be null
};

// Runs whichever command the line names.
Report RunCommand(const CommandLine& line, const CommandContext& context);

// kestrel apply.
Report RunApply(const CommandLine& line, const CommandContext& context);

// How an engine is opened by a command that changes nothing of its defaults.
EngineStart PlainStart(const CommandContext& context, HostSession* session);

// Whether the engine works on as many frames at a time as the line says. False: `*failure` says what to do.
bool CheckThreads(const CommandLine& line, const Engine& engine, Failure* failure);

// How large an animation may be, as the line says.
ReadLimits LimitsOf(const CommandLine& line);

// Reads one of the line's sources, an animation with at least one frame, within the line's limit; warnings
// become notes.
bool ReadSource(const CommandLine& line, size_t source, Animation* animation, Report* report);

// As MayWriteResult, for what the line names. False: the report says why not.
bool CheckOutput(const CommandLine& line, const std::vector<std::string>& files, Report* report);

}  // namespace kfx::commands
