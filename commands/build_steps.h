// SPDX-License-Identifier: MIT
// From the options of an apply command to what the engine, the pipeline and the writers get.
#pragma once

#include "commands/commands.h"
#include "commands/pipeline.h"
#include "commands/result_files.h"

namespace kfx::commands {

PipelineOptions PipelineOptionsOf(const CommandLine& line);

// How the engine is opened for the session's source.
EngineStart StartOf(const CommandLine& line, const CommandContext& context, HostSession* session);

ResultOptions ResultOptionsOf(const CommandLine& line);

// Builds the session's source, read and edited, into session->built and session->record. `whole`: null, or
// what other runs have to do with this one; where facts are to be found, nothing is built, and no more is
// done than they need. False: `*failure` says why. The session's source is used up.
bool BuildResult(const CommandLine& line, const CommandContext& context, WholeRun* whole,
                 HostSession* session, PipelineNotes* notes, Failure* failure);

}  // namespace kfx::commands
