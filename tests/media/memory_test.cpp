// SPDX-License-Identifier: MIT
// How much memory reading and writing takes. This program counts what it allocates.
#include <gtest/gtest.h>

#include "media/animation_writer.h"
#include "media/png_deflate.h"
#include "media/png_format.h"
#include "tests/media/reading.h"
#include "tests/support/counted_memory.h"

namespace kfx::test {
namespace {

constexpr int kSide = 600;
constexpr size_t kArea = size_t{kSide} * kSide;
constexpr size_t kFrame = 4 * kArea;
constexpr size_t kMargin = 400000;  // for what does not depend on the picture

Bytes DeepPicture(PngColors colors, bool interlaced) {
    const PngFormat format = {
        .colors = colors, .depth = 16, .interlaced = interlaced, .palette = {}, .alphas = {}};
    Bytes file;
    PutPngSignature(&file);
    Bytes header;
    PutBigWord32(&header, kSide);
    PutBigWord32(&header, kSide);
    header.insert(header.end(), {16, colors, 0, 0, static_cast<uint8_t>(interlaced ? 1 : 0)});
    PutPngChunk(&file, kHeaderChunk, header);
    // Rows of one value and no filter; interlaced, a pixel's bytes are the same and seven passes have more
    // rows.
    const size_t filters = interlaced ? 15 * kSide / 8 : kSide;
    const Bytes rows(filters + kSide * PngRowBytes(format, kSide));
    PutPngChunk(&file, kDataChunk, Pack(rows.data(), rows.size(), 6));
    PutPngChunk(&file, kEndChunk, {});
    return file;
}

TEST(MediaMemory, A_picture_of_16_bits_takes_little_more_than_its_frame) {
    for (const PngColors colors : {kPngGrey, kPngRgb, kPngGreyAlpha, kPngRgba}) {
        for (const bool interlaced : {false, true}) {
            const Bytes file = DeepPicture(colors, interlaced);
            Animation animation;
            std::string error;
            bool isRead = false;
            const size_t most = PeakOf(
                [&] { isRead = ReadAnimationFromMemory(file.data(), file.size(), &animation, &error); });
            ASSERT_TRUE(isRead) << error;
            EXPECT_LT(most, kFrame + kMargin) << colors << " " << interlaced;
        }
    }
}

TEST(MediaMemory, A_GIF_without_size_takes_nothing_for_its_images) {
    Bytes file = {'G', 'I', 'F', '8', '9', 'a', 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 20000; ++i) file.insert(file.end(), {0x2C, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0});
    file.push_back(0x3B);
    Animation animation;
    std::string error;
    const size_t most =
        PeakOf([&] { ReadAnimationFromMemory(file.data(), file.size(), &animation, &error); });
    EXPECT_EQ(error, "the GIF file has no frames");
    EXPECT_LT(most, kMargin);
}

// Four bytes a pixel for the picture and two for what is compressed.
TEST(MediaMemory, Writing_a_GIF_picture_takes_less_than_two_frames) {
    constexpr size_t kDictionary = 2200000;
    constexpr int kGifSide = 1500;
    constexpr size_t kPixels = size_t{kGifSide} * kGifSide;
    GifAnimation gif;
    gif.width = kGifSide;
    gif.height = kGifSide;
    gif.globalPalette = {{1, 2, 3}, {4, 5, 6}};
    for (const int disposal : {kDisposalKeep, kDisposalBackground, kDisposalPrevious}) {
        gif.frames = {GifFrame()};
        gif.frames[0].indices = Bytes(kPixels);
        gif.frames[0].indices[kPixels / 2] = 1;
        gif.frames[0].disposal = disposal;
        Bytes file;
        std::string error;
        bool isWritten = false;
        const size_t most = PeakOf([&] { isWritten = EncodeGif(gif, &file, &error); });
        ASSERT_TRUE(isWritten) << error;
        EXPECT_LT(most, 6 * kPixels + kDictionary + kMargin) << disposal;
    }
}

}  // namespace
}  // namespace kfx::test
