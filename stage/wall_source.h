// SPDX-License-Identifier: MIT
// The thumbnails of an animation: small frames with which every effect of the wall begins.
#pragma once

#include <cstddef>
#include <cstdint>

#include "media/animation.h"

namespace kfx::stage {

// What the thumbnails of an animation will be.
struct ThumbnailPlan {
    int width = 0;  // of each, pixels
    int height = 0;
    size_t step = 1;   // every step-th frame is taken, the first one always
    size_t count = 0;  // of frames that are taken
};

// Frames are scaled down to fit into mostWidth x mostHeight; smaller ones keep their size. Of long animations
// only every step-th frame is taken, so that `copies` animations of them (the source and each tile) take at
// most `mostBytes`; one frame always is.
ThumbnailPlan PlanThumbnails(const Animation& source, int mostWidth, int mostHeight, size_t copies,
                             uint64_t mostBytes);

// Makes the thumbnail with this number. It is shown as long as the frames that it stands for together.
// Different thumbnails can be made at the same time. False: memory ran out. Throws std::bad_alloc where a
// vector does.
bool MakeThumbnail(const Animation& source, const ThumbnailPlan& plan, size_t number, Frame* thumbnail);

// How long viewers show a frame, in milliseconds: most take a very short time for a tenth of a second.
uint32_t ShownMilliseconds(const Frame& frame);

// The animation's whole time, and the frame that is shown this long after the start when it is repeated
// forever. 0 without frames.
uint64_t PlayingTime(const Animation& animation);
size_t FrameAtTime(const Animation& animation, uint64_t milliseconds);

}  // namespace kfx::stage
