// SPDX-License-Identifier: MIT
// A source animation on its way to the plug-in: the block in which the host hands it over, and what stays
// behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "media/animation.h"

namespace kfx::commands {

// What the plug-in does not carry; it comes back to a built frame by the frame's index.
struct SourceFrame {
    int delay = 0;                       // hundredths of a second
    int milliseconds = kNoMilliseconds;  // the same time exactly, as in media/animation.h
    std::vector<uint8_t> alpha;          // width * height, top row first; empty: opaque
};

struct SourceRecord {
    int width = 0;
    int height = 0;
    int loopCount = kLoopNone;
    bool transparent = false;  // at least one frame is
    bool ownPalette = false;   // the plug-in can be asked to keep it
    bool hasBackground = false;
    RgbColor background;
    std::string comment;  // the file's bytes
    Metadata metadata;
    std::vector<SourceFrame> frames;
};

// Whether the plug-in can be asked to keep the animation's palette.
bool HasOwnPalette(const Animation& animation);

SourceRecord MakeSourceRecord(const Animation& animation);
// For results that are not drawn from built frames: `transparent` is set, but the frames hold no alpha.
SourceRecord MakeRecordWithoutAlpha(const Animation& animation);

// Bytes of the animation's block; 0 when a frame goes beyond what its 32-bit fields can say.
size_t AnimationBlockBytes(const Animation& animation);

// Fills a zeroed block of AnimationBlockBytes() bytes. Frames are handed over as 8-bit pictures with the
// global palette when every frame stands on it, else as 24-bit ones. Fully transparent pixels are handed over
// white.
void WriteAnimationBlock(const Animation& animation, uint8_t* block);

}  // namespace kfx::commands
