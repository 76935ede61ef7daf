// SPDX-License-Identifier: MIT
// Which file each result of an apply command gets when the output is a folder, found before any work.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/exit_codes.h"

namespace kfx::commands {

// One result of an apply command.
struct BatchItem {
    std::vector<std::string> inputs;  // as the command line of this result alone has them
    std::string output;
    std::string format;     // as CommandLine::format
    uint64_t bytes = 0;     // of the input
    Failure inputFailure;   // what the input's beginning shows to be wrong; exitCode kExitDone: nothing
    Failure outputFailure;  // why nothing may be written there
};

// Whether the output's name is that of a folder, which gets the results: it is one, or it ends as one.
bool NamesFolder(const std::string& output);

// One item for each of the line's sources, or the single one that the output names. False: nothing can be
// done at all; `*failure` says why. What is wrong with single results stands in their items.
bool PlanBatch(const CommandLine& line, std::vector<BatchItem>* items, Failure* failure);

// The line of one item's command. False: the options do not suit its format.
bool LineOf(const CommandLine& line, const BatchItem& item, CommandLine* one, std::string* error);

// Makes the folders of the results whose inputs can be read. False: `*failure` says which cannot be made.
bool MakeFolders(const std::vector<BatchItem>& items, Failure* failure);

// The words of an item's command, for a process of its own.
std::vector<std::string> WordsOf(const CommandLine& line, const BatchItem& item);

}  // namespace kfx::commands
