// SPDX-License-Identifier: MIT
// Animations for tests of the wall.
#pragma once

#include <memory>

#include "media/animation.h"

namespace kfx::test {

// Coloured frames that move, 10, 20, 30, ... hundredths of a second each; with `holes`, a disc with a soft
// edge and nothing round it.
std::shared_ptr<const Animation> WallTestSource(int frames, int width, int height, bool holes = false);

// Fails the test when the animations differ in size, times or a pixel.
void ExpectSameFrames(const Animation& expected, const Animation& actual, const char* what);

// The sample animation in true colour.
std::shared_ptr<const Animation> SampleSource(int frames);

}  // namespace kfx::test
