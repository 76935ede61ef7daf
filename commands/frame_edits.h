// SPDX-License-Identifier: MIT
// Edits around the effect: which frames there are, how large they are and how long each is shown.
#pragma once

#include <cstddef>
#include <cstdint>

#include "commands/exit_codes.h"
#include "media/animation.h"

namespace kfx::commands {

// A part of the picture.
struct CropArea {
    int width = 0;  // pixels; 0: no crop
    int height = 0;
    bool centered = true;  // in the middle of the picture; else at `left` and `top`
    int left = 0;
    int top = 0;
};

// A new size: a percentage of the old one, or sides in pixels.
struct NewSize {
    double percent = 0;  // 0: the sides below
    int width = 0;  // 0: follows from the other side, so that the picture keeps its shape; both 0: no resize
    int height = 0;
};

constexpr int kLastFrame = -1;
constexpr double kSlowestSpeed = 0.01;
constexpr double kFastestSpeed = 100;
// Shown for so long where neither file nor command line says how long.
constexpr int kStillMilliseconds = 100;
constexpr int kLongestFrame = 655350;  // milliseconds: what the hundredths of a GIF file can say

struct FrameEdits {
    // The frames that stay, counted from 0. `lastFrame` may be kLastFrame: up to the end.
    int firstFrame = 0;
    int lastFrame = kLastFrame;
    // They are given by one number. A still picture becomes an animation of so many frames, each shown for
    // `stillDelay` milliseconds; 0 stays the picture itself.
    bool singleNumber = false;
    int stillDelay = kStillMilliseconds;
    bool reverse = false;
    CropArea crop = {};
    NewSize resize = {};
    double speed = 1;            // kSlowestSpeed to kFastestSpeed; 2: in half the time
    double framesPerSecond = 0;  // each frame is shown equally long; 0: as the source says
    bool setsLoop = false;
    int loopCount = kLoopNone;  // as in media/animation.h
};

// Of an animation that is built in parts: the frames whose pixels one part needs, counted behind --frames and
// --reverse.
struct NeededFrames {
    size_t first = 0;
    size_t end = SIZE_MAX;  // behind the last
    size_t step = 1;        // each so many of them
};

bool HasEdits(const FrameEdits& edits);

// Edits the animation in place, one frame after another, in this order: frames, reverse, crop, resize, speed
// or frames per second, loop. A still picture is repeated behind resizing, and loops for ever then. Resized
// frames stand on no palette any more. Everything else of the animation
// stays. Frames that are not needed have no pixels afterwards. False: `*failure` says which option does not
// fit this animation or that memory ran out; in the first case the animation is as it was.
bool EditFrames(const FrameEdits& edits, const ReadLimits& limits, Animation* animation, Failure* failure,
                const NeededFrames& needed = {});

}  // namespace kfx::commands
