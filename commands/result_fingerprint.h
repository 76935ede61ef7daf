// SPDX-License-Identifier: MIT
// The fingerprints that results have when they are read back, known before they are written.
#pragma once

#include <string>

#include "commands/fingerprint.h"
#include "media/animation_writer.h"

namespace kfx::commands {

// Of a GIF without loss. Frames are composed one after another, so that this takes one picture's memory.
std::string FingerprintOfGif(const GifAnimation& gif);

// Of the animation in "webp" or "apng", without loss: with the times and loop counts that the format holds.
std::string FingerprintIn(const std::string& format, const Animation& animation);

// Of one frame as a picture of its own.
std::string FingerprintOfStill(const Animation& animation, size_t frame);

}  // namespace kfx::commands
