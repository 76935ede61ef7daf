// SPDX-License-Identifier: MIT
// The command line: words in, commands out. No name in it has been looked up yet; see job.h.
#pragma once

#include <string>
#include <vector>

#include "commands/batch_options.h"
#include "commands/fit_options.h"
#include "commands/frame_edits.h"
#include "commands/journey.h"
#include "commands/look_options.h"
#include "commands/parser.h"
#include "commands/recipe_options.h"
#include "commands/result_edits.h"
#include "commands/split_options.h"

namespace kfx::commands {

struct CommandRow;

// A parameter of the effect as the user names it.
struct Setting {
    std::string name;
    std::string value;
};

// An effect as the user names it, with the parameters that were given for it.
struct EffectChoice {
    std::string name;
    std::vector<Setting> settings;
};

// The files of one animation.
struct SourceFiles {
    std::vector<std::string> files;
    std::string note = {};                // a sentence about what was found; or empty
    std::vector<std::string> given = {};  // the inputs on the command line that name the files
    std::string subfolder = {};           // of the folder that was given, with its separator; or empty
};

struct CommandLine {
    const CommandRow* command = nullptr;  // command_row.h
    std::vector<std::string> inputs;
    std::vector<SourceFiles> sources;  // what the inputs name, found when the command runs; source_files.h
    bool join = false;                 // several files are one animation
    int delay = -1;                    // milliseconds for every frame, joins as well; -1: not given
    std::string output;
    std::string format;  // of an apply command's output, see output_format.h; empty: of each its own
    BatchOptions batch;
    std::string printed;  // all that a command has to say that only prints
    bool json = false;
    bool quiet = false;
    int threads = 0;     // that work on frames; 0: as many as there are processors
    bool force = false;  // replace a file that exists
    int maxPixels = -1;  // the most that are read, in millions over all frames; -1: what is read by itself

    // In the order in which they are applied; empty: the frames are only edited or converted.
    std::vector<EffectChoice> effects;
    FrameEdits edits;
    JourneyOptions journeys;
    ResultEdits resultEdits;
    std::string palette;  // empty: whatever suits the output
    int colors = -1;      // the most of a computed palette; -1: 256
    bool dither = false;
    bool supercompress = false;
    bool trueColor = false;
    bool keepsColors = false;  // neither effect nor palette options: a GIF may keep the frames' own palettes
    bool comment = false;      // the plug-in's own
    std::string localBackground;  // RRGGBB or "none"; empty: the plug-in's default
    std::string edges;            // "background" or "extend"; empty: background
    std::string matte;            // RRGGBB; empty: half-transparent pixels of a GIF are decided, not mixed
    bool fastRemap = false;
    int ditherBrightness = -1;  // -1: the plug-in's default
    int ditherContrast = -1;
    // How the output's format is written, in the numbers of media/animation_writer.h; -1: as it is by itself.
    int lossy = -1;
    int quality = -1;
    int nearLossless = -1;
    int effort = -1;
    RecipeOptions recipe;
    LookOptions look;
    FitOptions fit;
    SplitOptions split;
};

// Options of the program's own, for the commands that use an engine.
struct OwnOptions {
    // Adds them to a command; they are stored in `values`. Null: there are none.
    void (*add)(CLI::App* command, void* values) = nullptr;
    void* values = nullptr;
};

// Reads the arguments as ParseWords does, and checks them against each other.
ParseOutcome ParseCommandLine(const std::vector<std::string>& arguments, const OwnOptions& own,
                              CommandLine* line, std::string* text);

// The colour of "RRGGBB" or "#RRGGBB" as 0x00BBGGRR. False: it is not written so.
bool ParseColor(const std::string& text, unsigned* color);

// The option for CommandLine::maxPixels, as refusals of large files name it.
inline constexpr char kMaxPixelsOption[] = "--max-pixels";
inline constexpr int kMostMaxPixels = 1000000;  // millions

// A file name's ending in lower case, such as ".gif"; empty when it has none.
std::string EndingOf(const std::string& path);

}  // namespace kfx::commands
