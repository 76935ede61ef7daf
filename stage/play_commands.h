// SPDX-License-Identifier: MIT
// The commands of playing.
#pragma once

#include <cstddef>

namespace kfx::stage {

struct Stage;

bool HasFrames(const Stage& stage);  // two at least
bool CanStepBack(const Stage& stage);
bool CanStepOn(const Stage& stage);

void OnPlay(Stage* stage);
void OnFirstFrame(Stage* stage);
void OnPreviousFrame(Stage* stage);
void OnNextFrame(Stage* stage);
void OnLastFrame(Stage* stage);
void OnSlower(Stage* stage);
void OnFaster(Stage* stage);
void OnUsualSpeed(Stage* stage);
void OnLoopForever(Stage* stage);

// Stops at a frame, as far as there is one.
void GoToFrame(Stage* stage, size_t frame);

// Answers the timer.
void OnPlayTimer(Stage* stage);

constexpr unsigned kPlayTimer = 1;

}  // namespace kfx::stage
