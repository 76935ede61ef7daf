// SPDX-License-Identifier: MIT
// The parts of animated PNG files that their reader and writer share.
#pragma once

#include <cstdint>

#include "media/png_format.h"
#include "media/readers.h"

namespace kfx {

constexpr uint32_t kAnimationChunk = PngName("acTL");     // how many frames, how often they are shown
constexpr uint32_t kFrameControlChunk = PngName("fcTL");  // a frame's place, time, disposal and blending
constexpr uint32_t kFrameDataChunk = PngName("fdAT");     // the data of frames behind the first

constexpr size_t kAnimationChunkSize = 8;
constexpr size_t kFrameControlSize = 26;

enum ApngDisposal { kApngKeep = 0, kApngBackground = 1, kApngPrevious = 2 };
enum ApngBlend { kApngReplace = 0, kApngOver = 1 };

// Whether a PNG file has an animation.
bool IsAnimatedPng(const uint8_t* data, size_t size);

// Reads the frames of an animated file with this header; see ReadPng.
bool ReadAnimatedPng(const uint8_t* data, size_t size, const PngHeader& header, PixelBudget* budget,
                     Animation* animation, std::string* error);

}  // namespace kfx
