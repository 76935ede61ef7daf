// SPDX-License-Identifier: MIT
// The fingerprints that results have when they are read back, known before they are written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/fingerprint.h"
#include "media/animation_writer.h"
#include "media/raw_video.h"

namespace kfx::commands {

// Of a GIF without loss. Frames are composed one after another, so that this takes one picture's memory.
std::string FingerprintOfGif(const GifAnimation& gif);

// Of the animation in "webp" or "apng", without loss: with the times and loop counts that the format holds.
std::string FingerprintIn(const std::string& format, const Animation& animation);

// Of one frame as a picture of its own.
std::string FingerprintOfStill(const Animation& animation, size_t frame);

// Of PNG files, a frame each: one is a still, several are what NAME-%03d.png reads.
std::string FingerprintOfPictures(const Animation& animation);

// Of a stream of WriteRawVideo.
std::string FingerprintOfStream(const Animation& animation, const ConstantRate& plan, RawFormat format,
                                RgbColor behind);

// Of a whole file that was written with loss: it is decoded. Empty: that failed.
std::string FingerprintOfFile(const std::vector<uint8_t>& file);

}  // namespace kfx::commands
