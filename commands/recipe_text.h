// SPDX-License-Identifier: MIT
// The text of a recipe: a settings document, which the plug-in's window opens as it is. What the window has
// no control for stands in comment lines: the program's version, every option that the result depends on, and
// the fingerprint of the result.
#pragma once

#include <cstddef>
#include <string>

#include "commands/settings_file.h"

namespace kfx::commands {

// A recipe before its result is known.
struct RecipeDraft {
    std::string head;  // up to the fingerprint; empty: no recipe is kept
    std::string tail;
    bool isLossy = false;  // what is read back is not what was written
};

// The recipe of an apply command, as far as the command line says it. It holds neither paths nor times.
RecipeDraft DraftRecipe(const CommandLine& line);

// Notes in a recipe which animation it was for. Nobody reads it but people.
void NoteSource(const std::string& fingerprint, RecipeDraft* draft);

// Whether the command should keep a recipe and cannot: an option is no single line, or all are too long.
bool LosesRecipe(const CommandLine& line);

// Which file of a series the recipe is for, counted from 1; 0 of 0: there is only one.
struct SeriesPart {
    size_t number = 0;
    size_t count = 0;
};

// Empty for an empty draft. The fingerprint is that of the file, or of what was encoded where that has a
// loss.
std::string FinishRecipe(const RecipeDraft& draft, const std::string& fingerprint,
                         const SeriesPart& part = {});

struct Recipe {
    bool isWhole = false;  // it was kept in a result; else this is a settings document of the window's
    std::string version;   // of the program that made it
    OptionWords words;     // of apply, with --format and --seed
    std::string fingerprint;
    bool isLossy = false;
    SeriesPart part;
    SettingsDocument document;
};

// Reads a recipe or a settings document. False: `*error` is a sentence without the file's name.
bool ReadRecipe(const std::string& text, Recipe* recipe, std::string* error);

// The version of this program, as recipes name it.
std::string ProgramVersion();

}  // namespace kfx::commands
