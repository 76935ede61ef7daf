// SPDX-License-Identifier: MIT
// What the readers of the single formats share. Each fills an empty animation from a whole file in memory; on
// failure it returns false with a clause in *error, and the animation may be half filled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "media/animation.h"

namespace kfx {

// The limits, and how many pixels were counted against them so far.
struct PixelBudget {
    ReadLimits limits = {};
    uint64_t spent = 0;
};

// Called before every allocation or decoding of width x height pixels: false with a clause in *error when a
// side or the running sum is beyond the limits.
bool SpendPixels(PixelBudget* budget, uint64_t width, uint64_t height, std::string* error);

// Sets `transparent` from the pixels.
void NoteTransparency(Frame* frame);

bool ReadGif(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);
bool ReadWebp(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
              std::string* error);
bool ReadPng(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);
bool ReadBmp(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);

// The warning of a file whose end is missing or damaged after `frames` complete frames.
std::string DamageWarning(size_t frames);

}  // namespace kfx
