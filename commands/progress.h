// SPDX-License-Identifier: MIT
// How far a command is, and how long it will take.
#pragma once

#include <cstdint>
#include <string>

namespace kfx::commands {

struct HostSession;

// The stage of one build, as the engine tells it.
struct StageProgress {
    std::string stage;
    int current = 0;  // counted from 0
    int total = 0;    // 0: the stage has no parts
};

StageProgress ProgressOf(const HostSession& session);

// As "Building  3 of 12"; empty before the first stage.
std::string TextOf(const StageProgress& progress);

// The time that is left when `done` of `total` took `seconds`, as "about 20 s left". Empty while there is too
// little to conclude from, or nothing left.
std::string TimeLeftText(double seconds, uint64_t done, uint64_t total);

// The text in at most `columns` columns: the middle gives way to "...". UTF-8 characters stay whole and count
// as one column each.
std::string FitColumns(const std::string& text, size_t columns);

}  // namespace kfx::commands
