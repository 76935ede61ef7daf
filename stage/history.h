// SPDX-License-Identifier: MIT
// What has been made of the opened animation, step by step, for undoing and doing again.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

#include "commands/built_animation.h"
#include "commands/settings_file.h"
#include "stage/film.h"
#include "stage/palette_search.h"

namespace kfx::stage {

struct Thumbnail {
    SIZE size = {};
    std::vector<uint8_t> rgba;
};

struct Step {
    uint64_t number = 0;  // unlike that of any other step, once it stands in the history
    std::string name;     // of the effect; of the file for the first step
    std::string summary;  // its parameters
    std::shared_ptr<const Film> film;
    std::shared_ptr<const commands::BuiltAnimation> built;  // null for the first step
    std::shared_ptr<const commands::SourceRecord> record;   // what comes back into the built frames
    commands::SettingsDocument settings;                    // of the plug-in's window that made it
    PaletteSearch search;                                   // the same
    std::string sourceFingerprint;                          // of the animation that it was applied to
    Thumbnail thumbnail;
    bool saved = false;
};

// An effect with what its user has set in the plug-in's window.
struct EffectUse {
    std::string name;
    std::string summary;
    commands::SettingsDocument settings;
    PaletteSearch search;
};

struct History {
    std::vector<Step> steps;  // the first one is the animation as it was opened; empty: none is
    size_t current = 0;
    uint64_t numbered = 0;             // how many steps have got a number
    std::optional<Step> test;          // shown in place of the current step until it is kept or dropped
    std::optional<EffectUse> lastUse;  // for repeating it, also on another animation
};

// A picture of the film's first frame for lists, within a square of this many pixels.
Thumbnail ThumbnailOf(const Film& film, int side);

// Starts anew from an opened animation. What was there is given back for the caller to release.
std::vector<Step> StartHistory(History* history, Step opened);

// Puts a step behind the current one. Steps that were undone go, and so do the oldest ones behind the first
// while there are more than kMostSteps or their memory goes beyond `mostBytes`; the new one always stays.
// What has gone is given back.
std::vector<Step> AddStep(History* history, Step step, uint64_t mostBytes);

// The latter alone, for a test that has come: builds behind the first go while there are more than kMostSteps
// or all takes more than `mostBytes`; the current step always stays.
std::vector<Step> DropOldest(History* history, uint64_t mostBytes);

constexpr size_t kMostSteps = 50;

bool CanUndo(const History& history);
bool CanRedo(const History& history);

// The opened animation, and what the result side shows; null: there is none.
const Film* SourceFilm(const History& history);
const Step* ShownStep(const History& history);  // null while the opened animation is the current step
const Film* ShownFilm(const History& history);  // the result's, else the source's

// Whether the current step is a result that stands in no file.
bool HasUnsavedStep(const History& history);

// Bytes of all steps and of a test: frames once each, and what is kept for saving.
uint64_t BytesOf(const History& history);

}  // namespace kfx::stage
