// SPDX-License-Identifier: MIT
// What of each frame an animated WebP file without loss stores.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <webp/encode.h>

#include "media/animation.h"
#include "media/gif_canvas.h"
#include "media/job_runner.h"

namespace kfx {

struct WebpPart {
    size_t frame = 0;      // the picture that the canvas shows with this part
    Rectangle place = {};  // of the canvas; left and top are even
    int milliseconds = 0;
    bool isHold = false;  // a transparent pixel that shows the same picture longer
    bool clears = false;  // its place becomes transparent after its time
    bool blends = false;  // the canvas stays where its pixels are transparent
    // The picture before, of which a place was cleared: what the part is drawn on. The first part's own frame
    // stands for a transparent canvas.
    size_t before = 0;
    Rectangle cleared = {};
    std::vector<uint8_t> data = {};  // a WebP file of the part alone
};

// Decides what each frame stores, without compressing it. The decisions are those of the library's encoder of
// animations (WebPAnimEncoder) with its own options, which looks at pixels only: a frame is the smallest
// place that changes, after the part before is kept or cleared, whichever leaves the smaller place; a frame
// that equals the one before makes its time longer. False: a time is longer than the format holds. Throws
// std::bad_alloc.
bool PlanWebpParts(const Animation& animation, std::vector<WebpPart>* parts);

// Compresses the parts on the threads of `jobs`. `config` is one without loss. Throws std::bad_alloc when
// there is no memory.
void EncodeWebpParts(const Animation& animation, const WebPConfig& config, const JobRunner& jobs,
                     std::vector<WebpPart>* parts);

}  // namespace kfx
