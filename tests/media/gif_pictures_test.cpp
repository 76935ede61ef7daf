// SPDX-License-Identifier: MIT
// The player that skips what a frame draws again shows what a plain one shows.
#include "media/gif_pictures.h"

#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace kfx {
namespace {

constexpr int kWidth = 4;
constexpr int kHeight = 3;
constexpr size_t kArea = size_t{kWidth} * kHeight;
constexpr uint32_t kClearColor = UINT32_MAX;

uint32_t Packed(RgbColor color) {
    return color.red | uint32_t{color.green} << 8 | uint32_t{color.blue} << 16;
}

// What each frame shows, drawn pixel by pixel.
std::vector<std::vector<uint32_t>> PlayPlainly(const GifAnimation& gif) {
    std::vector<std::vector<uint32_t>> shown;
    std::vector<uint32_t> canvas(kArea, kClearColor);
    for (const GifFrame& frame : gif.frames) {
        const std::vector<uint32_t> before = canvas;
        const std::vector<RgbColor>& palette = frame.palette.empty() ? gif.globalPalette : frame.palette;
        for (size_t i = 0; i < kArea; ++i)
            if (frame.indices[i] != frame.transparentIndex) canvas[i] = Packed(palette[frame.indices[i]]);
        shown.push_back(canvas);
        if (frame.disposal == kDisposalBackground) canvas.assign(kArea, kClearColor);
        if (RestoresCanvas(frame.disposal)) canvas = before;
    }
    return shown;
}

// Few colours, palettes and rows, so that most frames repeat some of an earlier one.
GifAnimation RandomGif(std::mt19937* random) {
    const std::vector<RgbColor> palettes[] = {
        {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}, {{4, 0, 0}, {2, 0, 0}, {1, 0, 0}}, {}};
    const std::vector<uint8_t> rows[] = {{0, 1, 2, 0}, {2, 2, 2, 2}, {0, 0, 1, 1}};
    const auto below = [random](uint32_t end) { return static_cast<uint32_t>((*random)() % end); };
    GifAnimation gif;
    gif.width = kWidth;
    gif.height = kHeight;
    gif.globalPalette = palettes[0];
    const uint32_t ofPalettes = 1 + below(3);
    for (uint32_t count = 2 + below(6); count > 0; --count) {
        GifFrame frame;
        frame.palette = palettes[below(ofPalettes)];
        frame.transparentIndex = below(2) == 0 ? -1 : static_cast<int>(below(3));
        frame.disposal = static_cast<int>(1 + below(3));
        for (int y = 0; y < kHeight; ++y) {
            const std::vector<uint8_t>& row = rows[below(3)];
            frame.indices.insert(frame.indices.end(), row.begin(), row.end());
        }
        gif.frames.push_back(frame);
    }
    return gif;
}

TEST(GifPictures, Frames_that_repeat_others_show_what_a_plain_player_shows) {
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        const GifAnimation gif = RandomGif(&random);
        const auto expected = PlayPlainly(gif);
        ColorNumbers numbers;
        GifPlayer player = MakeGifPlayer(gif, &numbers);
        for (size_t i = 0; i < gif.frames.size(); ++i) {
            const NumberedPicture& picture = ShowNextFrame(&player);
            for (size_t pixel = 0; pixel < kArea; ++pixel) {
                const uint32_t found =
                    picture[pixel] == kClear ? kClearColor : Packed(numbers.colors[picture[pixel]]);
                ASSERT_EQ(found, expected[i][pixel])
                    << "animation " << round << ", frame " << i << ", pixel " << pixel;
            }
        }
    }
}

}  // namespace
}  // namespace kfx
