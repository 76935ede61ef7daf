// SPDX-License-Identifier: MIT
// An animation under every effect at once, as one animation in the layout of a sheet.
#pragma once

#include <string>
#include <vector>

#include "commands/engine.h"
#include "media/animation.h"
#include "media/contact_sheet.h"

namespace kfx::commands {

// The values at which a gallery shows an effect. What a plug-in of another kind does not take keeps its
// default.
void ChoosePictureValues(const std::string& name, Job* job);

// How a wall is laid out.
struct WallOptions {
    std::string title;
    int columns = 1;
    // Frames that are larger are scaled down to fit, by the plug-in's scaler, before the effects: so the
    // effects are as easy to see as on a small picture, and the time depends on the wall's size only.
    int pictureWidth = 1;
    int pictureHeight = 1;
    ReadLimits limits;  // of all the wall's frames together
};

struct Wall {
    Animation animation;
    Picture ground;                  // what stands between the pictures, the same in each frame
    std::vector<SheetPlace> places;  // of the pictures
};

// Draws the wall of the source's frames, opaque, with the source's times and loop count. The source is used
// up. `names`: all effects of the engine. False: `*failure` says why.
bool DrawWall(const OpenEngine& engine, HostSession* session, const std::vector<std::string>& names,
              const WallOptions& options, Animation source, Wall* wall, Failure* failure);

// Gives what stands between the pictures the palette colours that are nearest to it: dithering has mixed it
// with what the pictures left over.
void CleanGround(const Picture& ground, const std::vector<SheetPlace>& places, BuiltAnimation* built);

}  // namespace kfx::commands
