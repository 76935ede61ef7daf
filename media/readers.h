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
// side or the running sum is beyond the limits. The clause names what was asked for, the limit, and what
// raises it.
bool SpendPixels(PixelBudget* budget, uint64_t width, uint64_t height, std::string* error);

// The same for all frames of a file at once, before the first is decoded.
bool SpendFrames(PixelBudget* budget, uint64_t width, uint64_t height, uint64_t frames, std::string* error);

// The same for pixels that are decoded besides those of the frames, in parts that no frame shows.
bool SpendHiddenPixels(PixelBudget* budget, uint64_t pixels, std::string* error);

// Milliseconds to hundredths of a second. What rounding takes or adds goes to the next frame, so that the
// animation keeps its pace (33 ms become 3, 3, 4, ...); but a frame of 15 ms and more never falls to a single
// hundredth, because viewers show such frames for a tenth of a second. `carry` is 0 before the first frame.
int HundredthsOf(int milliseconds, int* carry);

// Sets `transparent` from the pixels.
void NoteTransparency(Frame* frame);

bool ReadGif(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);
bool ReadWebp(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
              std::string* error);
bool ReadPng(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);
bool ReadJpeg(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
              std::string* error);
bool ReadBmp(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);

bool ReadY4m(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation, std::string* error);

// The warning of a file whose end is missing or damaged after `frames` complete frames.
std::string DamageWarning(size_t frames);

}  // namespace kfx
