// SPDX-License-Identifier: MIT
// Small GIF animations written as text, and their way through writer and reader.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "media/animation_writer.h"
#include "tests/media/reading.h"

namespace kfx::test {

// Letters of the text palette as indices; '.' is 8.
inline Bytes IndicesOf(const std::string& picture) {
    static const std::string letters = "KRGBYMCW.";
    Bytes indices;
    for (const char letter : picture)
        if (letter != '/') indices.push_back(static_cast<uint8_t>(letters.find(letter)));
    return indices;
}

inline GifFrame TextFrame(const std::string& picture, int disposal = kDisposalKeep) {
    GifFrame frame;
    frame.indices = IndicesOf(picture);
    frame.disposal = disposal;
    if (picture.find('.') != std::string::npos) frame.transparentIndex = 8;
    return frame;
}

inline GifAnimation TextGif(int width, int height, const std::vector<GifFrame>& frames) {
    GifAnimation gif;
    gif.width = width;
    gif.height = height;
    gif.globalPalette = test::TextPalette();
    gif.frames = frames;
    return gif;
}

inline Bytes EncodeOrFail(const GifAnimation& gif) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeGif(gif, &file, &error)) << error;
    return file;
}

inline Animation RoundTrip(const GifAnimation& gif) { return ReadWhole(EncodeOrFail(gif)); }

}  // namespace kfx::test
