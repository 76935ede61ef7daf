// SPDX-License-Identifier: MIT
// Single fields of files at the values that no writer gives them.
#include <gtest/gtest.h>

#include "media/little_endian.h"
#include "media/png_format.h"
#include "media/readers.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::ErrorOf;
using test::ReadOrFail;

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

Bytes Joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// Whether a chunk of palette or transparency is taken by a picture of this format.
bool IsTaken(uint32_t name, const Bytes& content, PngFormat format) {
    Bytes file;
    PutPngChunk(&file, name, content);
    size_t at = 0;
    PngChunk chunk;
    EXPECT_TRUE(NextPngChunk(file.data(), file.size(), &at, &chunk));
    return TakeFormatChunk(chunk, &format);
}

TEST(PngEdges, Palettes_have_1_to_256_whole_colours) {
    EXPECT_FALSE(IsTaken(kPaletteChunk, {}, {}));
    EXPECT_FALSE(IsTaken(kPaletteChunk, Bytes(4), {}));
    EXPECT_TRUE(IsTaken(kPaletteChunk, Bytes(3), {}));
    EXPECT_TRUE(IsTaken(kPaletteChunk, Bytes(768), {}));
    EXPECT_FALSE(IsTaken(kPaletteChunk, Bytes(771), {}));
}

TEST(PngEdges, Transparency_fits_the_kind_of_picture) {
    PngFormat format;
    format.colors = kPngPalette;
    format.palette.resize(2);
    EXPECT_TRUE(IsTaken(kTransparencyChunk, Bytes(2), format));
    EXPECT_FALSE(IsTaken(kTransparencyChunk, Bytes(3), format));
    for (const PngColors colors : {kPngRgba, kPngGreyAlpha}) {
        format.colors = colors;
        for (size_t size = 0; size <= 8; size += 2)
            EXPECT_FALSE(IsTaken(kTransparencyChunk, Bytes(size), format)) << "alpha stands in the pixels";
    }
    format.colors = kPngGrey;
    EXPECT_TRUE(IsTaken(kTransparencyChunk, Bytes(2), format));
    EXPECT_FALSE(IsTaken(kTransparencyChunk, Bytes(6), format));
    format.colors = kPngRgb;
    EXPECT_TRUE(IsTaken(kTransparencyChunk, Bytes(6), format));
    EXPECT_FALSE(IsTaken(kTransparencyChunk, Bytes(2), format));
}

TEST(PngEdges, No_chunk_begins_behind_the_end_of_the_file) {
    size_t at = 5;
    PngChunk chunk;
    EXPECT_FALSE(NextPngChunk(Bytes(4).data(), 4, &at, &chunk));
    EXPECT_EQ(at, 5u);
}

TEST(PngEdges, Each_field_of_the_header_is_checked) {
    // Width, height, depth, colours, compression, filters, interlace.
    const Bytes sound = {0, 0, 0, 1, 0, 0, 0, 1, 8, kPngGrey, 0, 0, 0};
    const auto isRead = [](const Bytes& header) {
        Bytes file;
        PutPngSignature(&file);
        PutPngChunk(&file, kHeaderChunk, header);
        PngHeader read;
        return ReadPngHeader(file.data(), file.size(), &read);
    };
    ASSERT_TRUE(isRead(sound));
    const struct {
        size_t at;
        uint8_t value;
        bool isSound;
    } kCases[] = {{3, 0, false},  {7, 0, false},  {8, 3, false},  {8, 16, true}, {8, 0, false},
                  {8, 32, false}, {9, 2, true},   {9, 1, false},  {9, 3, true},  {9, 5, false},
                  {9, 7, false},  {10, 1, false}, {11, 1, false}, {12, 1, true}, {12, 2, false}};
    for (const auto& [at, value, isSound] : kCases) {
        Bytes header = sound;
        header[at] = value;
        EXPECT_EQ(isRead(header), isSound) << "byte " << at << " = " << int{value};
    }
    EXPECT_FALSE(isRead(Joined(sound, {0})));
    EXPECT_FALSE(isRead({sound.begin(), sound.end() - 1}));
}

// A BMP file with these numbers in a header of 40 bytes.
Bytes Bmp(int32_t width, int32_t height, uint16_t depth, uint32_t compression, uint32_t colors,
          const Bytes& rest) {
    Bytes file(54);
    file[0] = 'B';
    file[1] = 'M';
    const auto put = [&file](size_t at, uint32_t value) {
        for (size_t i = 0; i < 4; ++i) file[at + i] = static_cast<uint8_t>(value >> 8 * i);
    };
    put(10, static_cast<uint32_t>(54 + rest.size()));
    put(14, 40);
    put(18, static_cast<uint32_t>(width));
    put(22, static_cast<uint32_t>(height));
    file[28] = static_cast<uint8_t>(depth);
    put(30, compression);
    put(46, colors);
    return Joined(file, rest);
}

TEST(BmpEdges, Sides_storage_and_tables_that_cannot_be_are_refused) {
    const std::string damaged = "the BMP file is damaged or of an unknown kind";
    EXPECT_EQ(ErrorOf(Bmp(3, 0, 8, 0, 2, Bytes(8))), damaged);
    EXPECT_EQ(ErrorOf(Bmp(2, -2, 8, 1, 2, Bytes(8))), damaged) << "run lengths go upwards";
    EXPECT_EQ(ErrorOf(Bmp(2, -2, 4, 2, 2, Bytes(8))), damaged);
    EXPECT_EQ(ErrorOf(Bmp(2, 2, 4, 1, 2, Bytes(8))), damaged);
    EXPECT_EQ(ErrorOf(Bmp(2, 2, 8, 2, 2, Bytes(8))), damaged);
    EXPECT_EQ(ErrorOf(Bmp(2, 2, 24, 3, 0, Bytes(12))), damaged) << "no masks for 24 bits";
    for (const size_t masks : {size_t{0}, size_t{4}, size_t{11}})
        EXPECT_EQ(ErrorOf(Bmp(1, 1, 16, 3, 0, Bytes(masks))), damaged) << masks;
    EXPECT_EQ(ErrorOf(Bmp(1, 1, 32, 6, 0, Bytes(12))), damaged) << "the fourth mask is missing";
    EXPECT_EQ(ErrorOf(Bmp(2, 2, 8, 0, 3, Bytes(3))), damaged) << "less than a colour before the pixels";
    EXPECT_EQ(ErrorOf(Bmp(2, 2, 1, 0, 0, Bytes(3))), damaged);
}

TEST(BmpEdges, A_header_is_of_one_of_the_known_sizes) {
    const Bytes sound = Bmp(1, 1, 24, 0, 0, {});
    for (const uint8_t size : Bytes{0, 11, 13, 39}) {
        Bytes file = Joined(sound, Bytes(4));
        file[14] = size;
        EXPECT_EQ(ErrorOf(file), "the BMP file is damaged or of an unknown kind") << int{size};
    }
    EXPECT_EQ(ReadOrFail(Joined(sound, {1, 2, 3, 0})).frames[0].pixels, (Bytes{3, 2, 1, 255}));
}

// A frame's control chunk: number, width, height, left, top, delay and its unit, disposal, blending.
Bytes FrameControl(uint32_t number, uint32_t width, uint32_t height, uint16_t delay, uint16_t parts) {
    Bytes content;
    for (const uint32_t word : {number, width, height, 0u, 0u}) PutBigWord32(&content, word);
    PutBigWord16(&content, delay);
    PutBigWord16(&content, parts);
    return Joined(content, {0, 0});
}

// An APNG file of one grey pixel whose chunks between header and end are these.
Bytes Apng(const std::vector<std::pair<uint32_t, Bytes>>& chunks) {
    Bytes file;
    PutPngSignature(&file);
    PutPngChunk(&file, kHeaderChunk, {0, 0, 0, 1, 0, 0, 0, 1, 8, kPngGrey, 0, 0, 0});
    for (const auto& [name, content] : chunks) PutPngChunk(&file, name, content);
    PutPngChunk(&file, kEndChunk, {});
    return file;
}

constexpr uint32_t kAnimation = PngName("acTL");
constexpr uint32_t kControl = PngName("fcTL");
constexpr uint32_t kFrameData = PngName("fdAT");
const Bytes kOneFrame = {0, 0, 0, 1, 0, 0, 0, 5};
// A stored block of one row: filter 0 and the level 9.
const Bytes kPixel = {0x78, 0x01, 1, 2, 0, 0xFD, 0xFF, 0, 9, 0, 0x0B, 0, 0x0A};

TEST(ApngEdges, A_delay_without_a_unit_is_in_hundredths) {
    const Animation animation = ReadOrFail(
        Apng({{kAnimation, kOneFrame}, {kControl, FrameControl(0, 1, 1, 7, 0)}, {kDataChunk, kPixel}}));
    ASSERT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.loopCount, 4);
    EXPECT_EQ(MillisecondsOf(animation.frames[0]), 70);
    EXPECT_EQ(animation.frames[0].pixels, (Bytes{9, 9, 9, 255}));
}

TEST(ApngEdges, Frames_without_pixels_control_or_number_are_damage) {
    const std::string damaged = "the PNG file is damaged before the end of its first frame";
    const std::pair<uint32_t, Bytes> announced = {kAnimation, kOneFrame},
                                     control = {kControl, FrameControl(0, 1, 1, 1, 1)};
    EXPECT_EQ(ErrorOf(Apng({announced, {kControl, FrameControl(0, 0, 1, 1, 1)}, {kDataChunk, kPixel}})),
              damaged);
    EXPECT_EQ(ErrorOf(Apng({announced, {kControl, FrameControl(0, 1, 0, 1, 1)}, {kDataChunk, kPixel}})),
              damaged);
    EXPECT_EQ(ErrorOf(Apng({announced, {kControl, FrameControl(1, 1, 1, 1, 1)}, {kDataChunk, kPixel}})),
              damaged);
    EXPECT_EQ(ErrorOf(Apng({announced, {kFrameData, Joined({0, 0, 0, 0}, kPixel)}, control})), damaged);
    EXPECT_EQ(ErrorOf(Apng({announced, control, {kFrameData, {0, 0, 1}}})), damaged);
    EXPECT_EQ(ErrorOf(Apng({announced, control, {kFrameData, Joined({0, 0, 0, 7}, kPixel)}})), damaged);
    const Animation whole =
        ReadOrFail(Apng({announced, control, {kFrameData, Joined({0, 0, 0, 1}, kPixel)}}));
    EXPECT_EQ(whole.frames[0].pixels, (Bytes{9, 9, 9, 255}));
}

TEST(ApngEdges, A_second_announcement_of_a_wrong_size_says_nothing) {
    const Animation animation = ReadOrFail(Apng({{kAnimation, kOneFrame},
                                                 {kControl, FrameControl(0, 1, 1, 7, 0)},
                                                 {kDataChunk, kPixel},
                                                 {kAnimation, {0, 0, 0, 1}}}));
    EXPECT_EQ(animation.loopCount, 4);
}

TEST(GifEdges, A_comment_that_the_end_of_the_file_cuts_is_kept_so_far) {
    Bytes file = test::BuildGif(test::Gif(1, 1, {test::Part("R")}));
    file.pop_back();  // the trailer
    const Bytes begun = Joined(file, {0x21, 0xFE, 5, 'h', 'e', 'l', 'l', 'o'});
    for (const Bytes& end : {Bytes{}, Bytes{9}, Bytes{9, '!'}}) {
        const Animation cut = ReadOrFail(Joined(begun, end));
        EXPECT_EQ(cut.frames.size(), 1u);
        EXPECT_EQ(cut.comment, end.size() < 2 ? "hello" : "hello!");
        EXPECT_NE(cut.warning, "");
    }
}

// The text's end is what tells it from the blocks behind it.
TEST(GifEdges, XMP_that_the_end_of_the_file_cuts_is_none) {
    Bytes file = test::BuildGif(test::Gif(1, 1, {test::Part("R")}));
    file.pop_back();  // the trailer
    const Bytes begun = Joined(Joined(file, {0x21, 0xFF, 11}), BytesOf("XMP DataXMP<x:xmpmeta>"));
    const Animation cut = ReadOrFail(begun);
    EXPECT_EQ(cut.frames.size(), 1u);
    EXPECT_TRUE(cut.metadata.xmp.empty());
    EXPECT_NE(cut.warning, "");
}

TEST(GifEdges, A_screen_without_one_side_takes_that_of_the_first_image) {
    const Animation low = ReadOrFail(test::BuildGif(test::Gif(5, 0, {test::Part("RGB/RGB")})));
    EXPECT_EQ(low.width, 5);
    EXPECT_EQ(low.height, 2);
    const Animation narrow = ReadOrFail(test::BuildGif(test::Gif(0, 5, {test::Part("RGB/RGB")})));
    EXPECT_EQ(narrow.width, 3);
    EXPECT_EQ(narrow.height, 5);
    EXPECT_EQ(ErrorOf(test::BuildGif(test::Gif(5, 0, {}))), "the GIF file has no frames");
}

TEST(GifEdges, An_empty_image_whose_data_are_cut_is_damage) {
    for (const auto& [width, height] : {std::pair{0, 2}, std::pair{2, 0}, std::pair{0, 0}}) {
        test::TestImage empty = test::Part("R");
        empty.width = width;
        empty.height = height;
        const Bytes file = test::BuildGif(test::Gif(2, 2, {test::Part("RG/RG"), empty}));
        const Animation cut = ReadOrFail({file.begin(), file.end() - 3});
        EXPECT_EQ(cut.frames.size(), 1u) << width << " x " << height;
        EXPECT_EQ(cut.warning, DamageWarning(1));
    }
}

TEST(GifEdges, XMP_without_its_end_is_none) {
    Bytes file = test::BuildGif(test::Gif(1, 1, {test::Part("R")}));
    file.pop_back();  // the trailer
    file = Joined(Joined(file, {0x21, 0xFF, 11}), BytesOf("XMP DataXMP"));
    // A 1 stands where the end begins, but no 0 where it ends; then no 1.
    for (const uint8_t length : Bytes{1, 2}) {
        Bytes blocks(257, 'x');
        blocks[0] = length;
        blocks[length + 1u] = static_cast<uint8_t>(255 - length);
        const Animation animation = ReadOrFail(Joined(Joined(file, blocks), {0, 0x3B}));
        EXPECT_TRUE(animation.metadata.xmp.empty());
        EXPECT_EQ(animation.warning, "");
    }
}

TEST(GifEdges, Clear_codes_alone_are_an_empty_step) {
    Bytes file = test::BuildGif(test::Gif(2, 1, {test::Part("RG")}));
    file.pop_back();  // the trailer
    const Bytes image = {0x2C, 0, 0, 0, 0, 2, 0, 1, 0, 0, 2};
    const Bytes clears = {3, 0x24, 0x49, 0x92};  // eight codes of three bits
    const Bytes end = {1, 0x05}, pixels = {2, 0x41, 0x01};
    for (const Bytes& data : {clears, Joined(clears, clears), Joined(clears, end), Joined(clears, pixels)}) {
        const Animation animation = ReadOrFail(Joined(Joined(Joined(file, image), data), {0, 0x3B}));
        EXPECT_EQ(animation.warning, "");
        ASSERT_EQ(animation.frames.size(), 2u) << data.size();
        EXPECT_EQ(test::ShowFrame(animation, 1), data.size() == 7 ? "RK" : "RG") << data.size();
    }
}

// Codes of as many bits as a byte has end where bytes end.
TEST(GifEdges, An_image_that_only_ends_is_an_empty_step_at_any_code_size) {
    Bytes file = test::BuildGif(test::Gif(2, 1, {test::Part("RG")}));
    file.pop_back();  // the trailer
    const Bytes descriptor = {0x2C, 0, 0, 0, 0, 2, 0, 1, 0, 0};
    const struct {
        uint8_t codeSize;
        Bytes codes;  // clear, and the end
    } kImages[] = {{3, {0x98, 0x00}}, {7, {0x80, 0x81}}, {8, {0x00, 0x03, 0x02}}, {7, {0x80, 0x80, 0x81}}};
    for (const auto& [codeSize, codes] : kImages) {
        Bytes whole = Joined(file, descriptor);
        whole.push_back(codeSize);
        whole.push_back(static_cast<uint8_t>(codes.size()));
        const Animation animation = ReadOrFail(Joined(Joined(whole, codes), {0, 0x3B}));
        EXPECT_EQ(animation.warning, "") << int{codeSize};
        ASSERT_EQ(animation.frames.size(), 2u) << int{codeSize};
        EXPECT_EQ(test::ShowFrame(animation, 1), "RG");
    }
}

TEST(GifEdges, An_image_that_ends_with_a_pixel_is_no_empty_step) {
    Bytes file = test::BuildGif(test::Gif(2, 1, {test::Part("RG")}));
    file.pop_back();
    const Bytes image = {0x2C, 0, 0, 0, 0, 2, 0, 1, 0, 0, 7, 2, 0x80, 0x05, 0, 0x3B};
    const Animation animation = ReadOrFail(Joined(file, image));
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.warning, DamageWarning(1));
}

TEST(Y4mEdges, Fields_may_be_far_apart_and_frames_are_limited) {
    const Animation spaced = ReadOrFail(BytesOf("YUV4MPEG2   W1  H1   Cmono  \nFRAME\nx"));
    EXPECT_EQ(spaced.width, 1);
    EXPECT_EQ(spaced.frames.size(), 1u);
    std::string many = "YUV4MPEG2 W1 H1 Cmono\n";
    for (int i = 0; i < 1000001; ++i) many += "FRAME\nx";
    EXPECT_EQ(ErrorOf(BytesOf(many)), "the video has more than 1000000 frames");
}

}  // namespace
}  // namespace kfx
