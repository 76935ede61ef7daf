// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "bench/shot.h"

namespace kfx::test {

// A raw file of frames in the folder for temporary files, removed at the end of the scope. Its name has a
// space, as the folders of users do.
struct ShotFile {
    ShotFile(int32_t width, int32_t height, int32_t frames);
    ~ShotFile();
    ShotFile(const ShotFile&) = delete;
    ShotFile& operator=(const ShotFile&) = delete;

    // "frame NAME WIDTH HEIGHT FRAMES PATH"
    std::string Question(const std::string& name) const;

    const std::string path;
    const std::string numbers;
};

}  // namespace kfx::test
