// SPDX-License-Identifier: MIT
// A short text that stands for what an animation shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "media/animation.h"

namespace kfx::commands {

// 32 hexadecimal digits of XXH3-128 over what a viewer plays: size, loop count, and each picture with how
// long it is shown. Colours that full transparency hides do not count, nor whether one picture stands as
// several equal frames. A file without loss has the fingerprint of what was written into it, whatever its
// format. No protection against somebody who wants two animations to have the same fingerprint.
std::string FingerprintOf(const Animation& animation);

// The fingerprint of what is not there as a whole: `show` is asked for one frame after another, and the
// pixels it gives are used before the next one.
struct ShownFrame {
    const Frame* frame = nullptr;
    int milliseconds = 0;
};
using ShowFrame = std::function<ShownFrame(size_t frame)>;
struct ShownAnimation {
    int width = 0;
    int height = 0;
    int loopCount = kLoopNone;
    size_t frames = 0;
};
std::string FingerprintOf(const ShownAnimation& animation, const ShowFrame& show);

// 32 hexadecimal digits of XXH3-128 over all that effects, palettes and writers may look at: also what
// FingerprintOf passes over.
std::string ExactHashOf(const Animation& animation);

// The same over bytes.
std::string HashOfBytes(const uint8_t* data, size_t size);
std::string HashOfText(const std::string& text);

}  // namespace kfx::commands
