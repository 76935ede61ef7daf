// SPDX-License-Identifier: MIT
// Options of the commands that show and compare.
#pragma once

#include <string>

namespace kfx::commands {

struct LookOptions {
    std::string effect;        // `effects`: the only one to list, as the user names it; empty: all
    bool listsFrames = false;  // `info`
    // `gallery` and `palettes`; -1: as it suits the pictures.
    int columns = -1;
    std::string pictureSize;  // WxH, the most that one picture takes; empty: not given
    // `compare`: what is still equal, as the user writes it; empty: equal pixels only.
    std::string leastPsnr;
    std::string leastSsim;
    bool roundsTimes = false;  // to the hundredths of a second that GIF files hold
};

}  // namespace kfx::commands
