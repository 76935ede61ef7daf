// SPDX-License-Identifier: MIT
// A command of the program: its name, its options, what it does. The rows stand in the commands' own files,
// the table of them in command_line.cpp.
#pragma once

#include <string>
#include <vector>

#include "commands/commands.h"

namespace kfx::commands {

// What of an apply command CommandLine holds in another form, or not at all.
struct ApplyWords {
    std::string format;                 // of --format; empty: not given
    bool noComment = false;             // --no-comment
    std::vector<std::string> effects;   // of each --effect
    std::vector<std::string> settings;  // of each --set
    std::string shell;                  // that a command prints something for
};

// Where a command's options are stored.
struct OptionTarget {
    CommandLine* line;
    ApplyWords* words;
    const OwnOptions& own;
};

// What the files are that a command's inputs name.
enum class InputUse {
    Each,          // one source an input
    OneAnimation,  // one source of them all, where the line joins them
    FirstPicture,  // only the first file counts
    EachFile,      // every file by itself, also those of a folder or a pattern
};

struct CommandRow {
    const char* name;
    InputUse inputs;
    void (*add)(CLI::App* app, const OptionTarget& target);
    // Checks what was parsed and completes it; null: there is nothing to check. False: `*error` is one
    // sentence.
    bool (*finish)(const CLI::App& command, const ApplyWords& words, CommandLine* line, std::string* error);
    Report (*run)(const CommandLine& line, const CommandContext& context);
    const char* examples = "";  // command lines that work, one a line
};

// What the program answers to --version.
inline constexpr char kVersionText[] = "Kestrel 16.0a";

// The examples of the command of this name; of the program, for an empty one.
std::string ExamplesOf(const std::string& command);

// Prints what the line has ready.
Report RunPrinted(const CommandLine& line, const CommandContext& context);

extern const CommandRow kApplyCommand;
extern const CommandRow kCompareCommand;
extern const CommandRow kCompletionsCommand;
extern const CommandRow kEffectsCommand;
extern const CommandRow kGalleryCommand;
extern const CommandRow kHelpBookCommand;
extern const CommandRow kInfoCommand;
extern const CommandRow kJoinCommand;
extern const CommandRow kManualCommand;
extern const CommandRow kPalettesCommand;
extern const CommandRow kRecipeCommand;
extern const CommandRow kSampleCommand;
extern const CommandRow kSelfTestCommand;
extern const CommandRow kSheetCommand;
extern const CommandRow kSurveyCommand;
extern const CommandRow kVerifyCommand;

}  // namespace kfx::commands
