// SPDX-License-Identifier: MIT
// A limit for the size of the result, and what may be given up for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace CLI {
class App;
}

namespace kfx::commands {

struct CommandLine;

struct FitOptions {
    std::string size;             // as it was given; empty: no limit
    uint64_t mostBytes = 0;       // what it says
    bool fixedPalette = false;    // --palette stands beside it
    bool fixedTrueColor = false;  // --true-color does
    std::string allowed;          // as it was given
    // What may be given up beside colours.
    bool scale = false;
    bool frames = false;
    bool lossy = false;
    // All that may be given up is given up in every result, for results that differ; see fit_choices.h.
    bool givesUp = false;
    size_t mostTrials = 14;  // with all frames
};

// Adds --max-size and --allow, which are stored in `options`.
void AddFitOptions(CLI::App* command, FitOptions* options);

// Reads a number of bytes: digits with or without decimals, and B, K, M, G (powers of 1000) or KiB, MiB, GiB
// (powers of 1024), in capitals or not; 1 to 10^15 bytes, rounded down. False: the text is no such number.
bool ParseBytes(const std::string& text, uint64_t* bytes);

// Reads the texts of the line's options and checks them against the others. False: `*error` is one sentence.
bool CheckFit(CommandLine* line, std::string* error);

}  // namespace kfx::commands
