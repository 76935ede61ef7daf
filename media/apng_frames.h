// SPDX-License-Identifier: MIT
// How the frames of an animated PNG file are stored: one format for all, and of each frame what it changes.
#pragma once

#include <cstdint>
#include <vector>

#include "media/animation.h"
#include "media/apng.h"
#include "media/gif_canvas.h"
#include "media/animation_writer.h"

namespace kfx {

// The smallest format for all frames of an animation. Where it can, it has a transparent colour even for
// opaque frames: what stays as it is can then be left out.
PngFormat ChooseApngFormat(const Animation& animation);

struct StoredFrame {
    Rectangle place;
    int disposal = kApngKeep;
    int blend = kApngReplace;
    std::vector<uint8_t> data;  // compressed
};

// Colours of fully transparent pixels are not kept. Throws std::bad_alloc.
std::vector<StoredFrame> StoreFrames(const Animation& animation, const PngFormat& format,
                                     const PngOptions& options);

}  // namespace kfx
