// SPDX-License-Identifier: MIT
// An apply command with several results: each is made in a process of its own, several at a time.
#pragma once

#include "commands/batch_plan.h"
#include "commands/commands.h"

namespace kfx::commands {

// Whether an apply command has several results, or only says what it would do: then RunBatch does it.
// Everything else is RunCommand's. The line's sources are found here. False, and a failed report: nothing can
// be done.
bool IsBatch(CommandLine* line, std::vector<BatchItem>* items, Report* refusal);

// Does the work and prints every report, in the order of the inputs, as soon as it is there, and at the end a
// sum. Names of effects, parameters and palettes are looked up in `names` before the work begins; null: each
// process does that in the plug-in. PrepareChildren() has been called. The exit code: that of the first
// failure.
int RunBatch(const CommandLine& line, const std::vector<BatchItem>& items, const Engine* names);

// Prints what RunBatch would do; the exit code of the first refusal.
int PrintPlan(const CommandLine& line, const std::vector<BatchItem>& items, const Engine* names);

}  // namespace kfx::commands
