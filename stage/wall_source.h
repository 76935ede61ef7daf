// SPDX-License-Identifier: MIT
// The thumbnails of an animation: small frames with which every effect of the wall begins.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "media/animation.h"

namespace kfx::stage {

// The frames of an animation, whoever owns their pixels.
struct WallFrame {
    std::shared_ptr<const std::vector<uint8_t>> pixels;  // as in Frame
    bool transparent = false;
    int milliseconds = 0;
};

struct WallSource {
    int width = 0;
    int height = 0;
    std::vector<WallFrame> frames;
};

// The frames of an animation, without a copy.
std::shared_ptr<const WallSource> WallSourceOf(const std::shared_ptr<const Animation>& animation);

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
ThumbnailPlan PlanThumbnails(const WallSource& source, int mostWidth, int mostHeight, size_t copies,
                             uint64_t mostBytes);

// Makes the thumbnail with this number. It is shown as long as the frames that it stands for together.
// Different thumbnails can be made at the same time. False: memory ran out. Throws std::bad_alloc where a
// vector does.
bool MakeThumbnail(const WallSource& source, const ThumbnailPlan& plan, size_t number, Frame* thumbnail);

// How long viewers show a frame of so many milliseconds: most take a very short time for a tenth of a second.
uint32_t ShownMilliseconds(int milliseconds);

// The animation's whole time, and the frame that is shown this long after the start when it is repeated
// forever. 0 without frames.
uint64_t PlayingTime(const Animation& animation);
size_t FrameAtTime(const Animation& animation, uint64_t milliseconds);

}  // namespace kfx::stage
