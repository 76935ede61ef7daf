// SPDX-License-Identifier: MIT
// Edits of finished frames, behind all effects and before the palette.
#pragma once

#include <cstddef>

#include "media/animation.h"

namespace CLI {
class App;
}

namespace kfx::commands {

struct ResultEdits {
    int shrink = 100;  // percent of each side, 1 to 100
    int every = 1;     // the frames that stay: the first of each so many, 1 to kMostEvery
};

constexpr int kMostEvery = 100;

// Adds --shrink and --every, which are stored in `edits`.
void AddResultEditOptions(CLI::App* command, ResultEdits* edits);

bool HasResultEdits(const ResultEdits& edits);

// A side after shrinking; at least 1.
int ShrunkSide(int side, int percent);

// How many frames of so many stay.
size_t KeptFrames(const ResultEdits& edits, size_t frames);

// Leaves frames out, then shrinks the others by the plug-in's scaler. A frame that stays is shown for the
// time of those behind it that go, too. False: memory ran out.
bool EditResult(const ResultEdits& edits, Animation* animation);

}  // namespace kfx::commands
