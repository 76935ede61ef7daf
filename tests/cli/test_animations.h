// SPDX-License-Identifier: MIT
// Small animations on disk, and reading results back.
#pragma once

#include <string>
#include <vector>

#include "media/animation.h"

namespace kfx::test {

constexpr int kTestWidth = 40;
constexpr int kTestHeight = 30;

// A GIF of `frames` frames with 20 colours of its own, delays 5, 6, 7, ..., three repetitions and a comment.
// With `holes`, part of each frame is transparent.
void WriteTestGif(const std::string& path, int frames, bool holes = false, int scale = 1);

// A GIF of one frame in two dark colours, which are one by their luminance.
void WriteTwoColors(const std::string& path);

// Reads an animation; fails the test when that is not possible.
Animation ReadBack(const std::string& path);

// Fails the test when the pictures differ; names the first differing pixel.
void ExpectSamePictures(const Animation& expected, const Animation& actual);

// The options that leave pictures as they are: a build that shows what the builder does to them.
std::vector<std::string> UnchangedPictures();

}  // namespace kfx::test
