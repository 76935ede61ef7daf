// SPDX-License-Identifier: MIT
// What the window does with builds: showing them, undoing, doing again, keeping or dropping tests, repeating
// the last effect.
#pragma once

#include <memory>
#include <string>

#include "stage/history.h"

namespace kfx::stage {

struct Stage;

constexpr int kThumbnailSide = 48;

// Another animation is open: it is the first step of a new history.
void TakeOpened(Stage* stage, const std::string& path, std::shared_ptr<const Film> film);

// A build is complete; a test waits to be kept or dropped.
void TakeStep(Stage* stage, Step step, bool isTest);

void GoToStep(Stage* stage, size_t step);
void OnKeepTest(Stage* stage);
void OnDropTest(Stage* stage);

// Builds the last effect with its settings once more, on the step that is shown.
void OnRepeatEffect(Stage* stage);
bool CanRepeat(const Stage& stage);

}  // namespace kfx::stage
