// SPDX-License-Identifier: MIT
// The settings among which a file within a size is looked for.
#pragma once

#include <string>
#include <vector>

#include "commands/command_line.h"

namespace kfx::commands {

// What may differ from one trial to the next; the rest is as the command line says.
struct FitSettings {
    std::string palette;  // as --palette has it; empty: true colour, or the frames' own colours in a GIF
    int colors = -1;      // as in CommandLine
    bool dither = false;
    bool supercompress = false;
    int lossy = -1;
    int quality = -1;
    ResultEdits edits;
};

// The command line of a plain command that has these settings and no limit.
CommandLine LineWith(const CommandLine& line, const FitSettings& settings);

// The options by which that command differs from the line, as they are written: "--colors 64 --dither".
// Empty: none.
std::string OptionsText(const CommandLine& line, const FitSettings& settings);

// What the candidates depend on beside the command line.
struct FitSubject {
    bool isAnimated = false;            // several frames
    bool isTransparent = false;         // a frame is
    bool hasOwnPalette = false;         // --palette original can be asked for
    std::vector<std::string> palettes;  // the fixed ones
};

// Settings that differ in one number, from the largest file to the smallest.
struct FitGroup {
    std::vector<FitSettings> steps;
};

// With the palettes that are computed, and true colour; or with the qualities of a lossy WebP.
std::vector<FitGroup> MainGroups(const CommandLine& line, const FitSubject& subject,
                                 const ResultEdits& edits);

// With each fixed palette and the source's own, dithered; none where the line says which palette to take.
std::vector<FitGroup> PaletteGroups(const CommandLine& line, const FitSubject& subject);
// The other settings with the palette of one of those.
std::vector<FitGroup> OtherWaysOf(const CommandLine& line, const FitSubject& subject,
                                  const FitSettings& settings);

// The number by which the steps of a group differ: quality or colours; -1: there is none.
int StepNumberOf(const FitSettings& settings);
FitSettings WithStepNumber(FitSettings settings, int number);

// The scales and rates that may be tried, in the order in which they are; only the line's own when the others
// are not allowed.
std::vector<int> ScalesOf(const CommandLine& line);
std::vector<int> RatesOf(const CommandLine& line, const FitSubject& subject);

}  // namespace kfx::commands
