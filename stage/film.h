// SPDX-License-Identifier: MIT
// An animation for showing: its frames are shared between the steps of the history and never change.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "media/animation.h"

namespace kfx::stage {

using Pixels = std::vector<uint8_t>;

struct FilmFrame {
    std::shared_ptr<const Pixels> pixels;   // as in Frame
    std::shared_ptr<const Pixels> indices;  // null: the frame is not indexed
    Frame facts;                            // the rest; its own pixels and indices are empty
};

struct Film {
    Animation facts;  // without frames
    std::vector<FilmFrame> frames;
    std::vector<uint64_t> ends;  // milliseconds from the start at which each frame's time is over
};

// Frames that are there already. A frame that equals one of them shares its memory. For all threads.
struct FramePool {
    std::mutex lock;
    std::unordered_multimap<uint64_t, std::weak_ptr<const Pixels>> known;
};

// Takes the animation over; its pixels are moved, not copied. Very short times are taken as a tenth of a
// second, as browsers do.
std::shared_ptr<const Film> MakeFilm(Animation animation, FramePool* pool);

// A copy with pixels, for those who need an animation of their own.
Animation AnimationOf(const Film& film);

// As commands::FingerprintOf has it, without a copy.
std::string FingerprintOf(const Film& film);

// The whole time in milliseconds; 0 without frames.
uint64_t LengthOf(const Film& film);

// The frame that is shown at a moment; a moment behind the end shows the last one.
size_t FrameAt(const Film& film, uint64_t milliseconds);

// When a frame begins.
uint64_t StartOf(const Film& film, size_t frame);

// Bytes of all pixels in the films, each counted once however often it is shared.
uint64_t BytesOf(const std::vector<const Film*>& films);

}  // namespace kfx::stage
