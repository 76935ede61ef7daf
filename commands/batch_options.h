// SPDX-License-Identifier: MIT
// What an apply command with several results was told.
#pragma once

#include <string>
#include <vector>

namespace kfx::commands {

constexpr int kMostJobs = 64;

struct BatchOptions {
    int jobs = -1;           // files at a time, up to kMostJobs; -1: not given
    bool recursive = false;  // folders in folders, too
    bool dryRun = false;     // only say what would be done
    bool skipDone = false;   // pass over results that are there already
    // The options that each single file's command has, as they were written.
    std::vector<std::string> words;
};

}  // namespace kfx::commands
