// SPDX-License-Identifier: MIT
// What a file within a size is, in words for its user.
#pragma once

#include <cstdint>
#include <string>

#include "commands/fit_choices.h"

namespace kfx::stage {

// "Fewer colours".
std::string NameOfWay(commands::FitWay way);

// "1.93 MB", "312 KB", "640 bytes"; rounded up, so that it is never below what the file has.
std::string SizeText(uint64_t bytes);

// "1,930,112 bytes".
std::string ByteCountText(uint64_t bytes);

// "24 frames, 320 x 240, 128 colours".
std::string FactsText(const commands::FitTrial& trial);

// What was changed: "128 colours at most, dithered, every 2nd frame".
std::string ChangesText(const commands::FitSettings& settings);

// All of it in one line, for lists and screen readers.
std::string ChoiceText(const commands::FitChoice& choice);

}  // namespace kfx::stage
