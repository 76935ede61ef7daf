// SPDX-License-Identifier: MIT
// The pictures that timed jobs work on, and the raw files in which programs hand them to each other.
#pragma once

#include <cstdint>
#include <string>

#include "framework/frame_list.h"

namespace kfx::bench {

// A picture or an animation of 24-bit frames.
struct Shot {
    int32_t width = 0;
    int32_t height = 0;
    FrameList frames = {};

    Shot() = default;
    ~Shot() { FreeFrames(&frames); }
    Shot(const Shot&) = delete;
    Shot& operator=(const Shot&) = delete;
};

// The image of a frame, which the shot keeps; null when there is no such frame.
ImageHandle FrameAt(const Shot& shot, int32_t index);

size_t PixelsOfFrame(const Shot& shot);

// Fills an empty shot from a raw file: frame after frame, rows from the top, three bytes a pixel (blue,
// green, red), nothing between rows. False: the file is shorter than that, a side or the count is below 1, or
// memory ran out.
bool ReadShot(const std::string& path, int32_t width, int32_t height, int32_t frames, Shot* shot);

// Writes such a file. False: it could not be written.
bool WriteShot(const std::string& path, const Shot& shot);

}  // namespace kfx::bench
