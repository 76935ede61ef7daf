// SPDX-License-Identifier: MIT
// Kinds of animation that people make GIF files of, for tests and measurements of the writer.
#pragma once

#include "media/animation_writer.h"

namespace kfx::test {

struct GifScene {
    const char* name;
    GifAnimation (*make)(int width, int height, int frames);
};

constexpr size_t kGifSceneCount = 11;
extern const GifScene kGifScenes[kGifSceneCount];

}  // namespace kfx::test
