// SPDX-License-Identifier: MIT
// What the beginning of a file says, without reading the rest.
#pragma once

#include <string>

namespace kfx::commands {

struct PictureHeader {
    std::string format;   // as "gif", "webp", "png", "jpeg", "bmp" or "y4m"; empty: a pipe, say
    bool isApng = false;  // a PNG file that announces an animation
};

// False: the file cannot be read or is of no format that is read; `*error` is one sentence, path first.
bool ReadPictureHeader(const std::string& path, PictureHeader* header, std::string* error);

}  // namespace kfx::commands
