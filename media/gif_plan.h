// SPDX-License-Identifier: MIT
// How the frames of a GIF file build on each other: which part of the canvas each one stores, what happens to
// the canvas after it, and which colours it needs.
#pragma once

#include <vector>

#include "media/gif_pictures.h"

namespace kfx {

struct FramePlan {
    Rectangle part;  // what the frame stores; not empty
    int disposal = kDisposalKeep;
    // The numbers of all pixels of the part that the canvas does not show already, each once.
    std::vector<ColorNumber> needed;
    // The numbers of the other pixels of the part, without those above.
    std::vector<ColorNumber> shown;
    size_t unchanged = 0;   // pixels of the part whose colour the canvas shows already
    bool hasClear = false;  // some pixel of the part stays transparent
};

struct GifPlan {
    ColorNumbers numbers;
    std::vector<FramePlan> frames;
};

// Plans an animation that WriteGif accepts. Every frame shows the same picture as before.
GifPlan PlanGif(const GifAnimation& gif);

// Makes `canvas` what it is after a frame with this part and disposal; `picture` is what the frame shows.
void DisposePicture(const FramePlan& frame, const NumberedPicture& picture, NumberedCanvas* canvas);

}  // namespace kfx
