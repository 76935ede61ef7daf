// SPDX-License-Identifier: MIT
// GIF files put together byte by byte from the format's description, for what the writer never makes:
// interlaced images, parts of the canvas, any disposal; and pictures as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "media/animation.h"

namespace kfx::test {

using Bytes = std::vector<uint8_t>;

// Index 0 to 7 of the palette that all these files use: K black, R red, G green, B blue, Y yellow, M magenta,
// C cyan, W white.
std::vector<RgbColor> TextPalette();

struct TestImage {
    // Letters of TextPalette (or of `localPalette`, in its order), rows separated by '/'; '.' is index 7 as
    // the transparent index.
    std::string picture;
    int left = 0;
    int top = 0;
    int disposal = 0;
    int delay = 0;
    bool interlaced = false;
    bool hasControl = true;    // the extension with delay, disposal and transparent index
    std::string localPalette;  // letters; empty: none
    int width = -1;            // of the descriptor; -1: that of the picture
    int height = -1;
    bool hasData = true;  // else there is a code size and no block; an empty picture has an end code only
};

struct TestGif {
    int width = 0;
    int height = 0;
    bool hasGlobalPalette = true;
    int backgroundIndex = 0;
    int loopCount = -1;  // of the loop extension; -1: none
    std::vector<std::string> comments;
    std::vector<TestImage> images;
    bool hasTrailer = true;
};

// The usual ones: an image at a place of the canvas, and a file of such images.
TestImage Part(const std::string& picture, int left = 0, int top = 0, int disposal = 0);
TestGif Gif(int width, int height, const std::vector<TestImage>& images);

Bytes BuildGif(const TestGif& gif);

// A frame as text: letters of TextPalette, '.' fully transparent, '?' any other colour; rows separated by
// '/'.
std::string ShowFrame(const Animation& animation, size_t frame);

// Random RGBA frames, opaque unless `transparent`: then about a third of the pixels is fully transparent.
Animation RandomAnimation(int width, int height, int frames, unsigned seed, bool transparent);

}  // namespace kfx::test
