// SPDX-License-Identifier: MIT
// Where an animation stands and how it goes on. Times are milliseconds; functions that need the clock are
// told what it says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "stage/film.h"

namespace kfx::stage {

struct Playback {
    bool playing = true;
    bool forever = false;   // whatever the file says
    int speed = 2;          // a row of the speeds; see SpeedText
    uint64_t position = 0;  // from the animation's start
    int roundsDone = 0;
    uint64_t clock = 0;  // when `position` was right
    size_t frame = 0;    // that is shown
};

constexpr int kUsualSpeedRow = 2;

// The rows of the speeds reach from a quarter to four times.
int SpeedCount();
std::string SpeedText(int speed);

// From the first frame, at a clock of `now`.
void Restart(Playback* playback, uint64_t now);

// Plays on from where it stands, from the start when it has come to its end; or stops.
void SetPlaying(Playback* playback, const Film& film, bool playing, uint64_t now);

// The time goes on to `now`. True: another frame is to be shown, or the end has come.
bool Advance(Playback* playback, const Film& film, uint64_t now);

// How long the frame that is shown stays, on the clock; at least 1.
uint64_t UntilNextFrame(const Playback& playback, const Film& film);

// Stops at this frame.
void ShowFrame(Playback* playback, const Film& film, size_t frame);

// Changes the speed by so many rows, as far as there are any.
void ChangeSpeed(Playback* playback, int rows, uint64_t now, const Film& film);

// "Frame 3 of 12    0.20 of 1.20 s".
std::string PositionText(const Playback& playback, const Film& film);

}  // namespace kfx::stage
