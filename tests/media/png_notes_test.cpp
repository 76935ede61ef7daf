// SPDX-License-Identifier: MIT
// Comments, profiles and other notes of PNG files, chunk by chunk and from file to file.
#include "media/png_notes.h"

#include <gtest/gtest.h>

#include "media/animation_writer.h"
#include "media/png_deflate.h"
#include "tests/media/gif_builder.h"

namespace kfx {
namespace {

using test::Bytes;

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

Bytes Joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes Packed(const Bytes& data) { return Pack(data.data(), data.size(), kFastestPacking); }

// What a picture in this format with these chunks says.
Animation NotesOf(const PngFormat& format, const std::vector<std::pair<uint32_t, Bytes>>& chunks) {
    Animation animation;
    PngNoteReader reader = {.animation = &animation};
    for (const auto& [name, data] : chunks) {
        Bytes file;
        PutPngChunk(&file, name, data);
        size_t at = 0;
        PngChunk chunk;
        EXPECT_TRUE(NextPngChunk(file.data(), file.size(), &at, &chunk));
        TakePngNote(chunk, format, &reader);
    }
    return animation;
}

std::string CommentOf(const std::vector<std::pair<uint32_t, Bytes>>& chunks) {
    return NotesOf(PngFormat(), chunks).comment;
}

constexpr uint32_t kLatin = PngName("tEXt");
constexpr uint32_t kPackedLatin = PngName("zTXt");
constexpr uint32_t kUtf8 = PngName("iTXt");
const Bytes kKey = {'C', 'o', 'm', 'm', 'e', 'n', 't', 0};

TEST(PngNotes, Comments_stand_in_three_kinds_of_chunk) {
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {'c', 'a', 'f', 0xE9})}}), "caf\xC3\xA9");
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {0xC3, 0xA9})}}), "\xC3\xA9") << "is UTF-8 by mistake";
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {0xF0, 0x9F, 0x8E, 0xA8})}}), "\xF0\x9F\x8E\xA8")
        << "so are these";
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {0xF5, 0x80, 0x80, 0x80})}}),
              "\xC3\xB5\xC2\x80\xC2\x80\xC2\x80");
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {0xE2, 0x82})}}), "\xC3\xA2\xC2\x82") << "half a letter";
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {0x7F, 0xE9})}}), "\x7F\xC3\xA9");
    EXPECT_EQ(CommentOf({{kPackedLatin, Joined(Joined(kKey, {0}), Packed({'h', 'i'}))}}), "hi");
    const Bytes names = {'e', 'n', 0, 'K', 0};
    EXPECT_EQ(CommentOf({{kUtf8, Joined(Joined(kKey, {0, 0}), Joined(names, {'y'}))}}), "y");
    EXPECT_EQ(CommentOf({{kUtf8, Joined(Joined(kKey, {1, 0}), Joined(names, Packed({'z'})))}}), "z");
    EXPECT_EQ(CommentOf({{kLatin, Joined(kKey, {'a'})}, {kLatin, Joined(kKey, {'b'})}}), "a\nb");
    EXPECT_EQ(CommentOf({{kLatin, BytesOf(std::string("Author\0me", 9))}}), "");
}

TEST(PngNotes, Damaged_notes_say_nothing) {
    EXPECT_EQ(CommentOf({{kLatin, BytesOf("Comment")}, {kLatin, {}}}), "");
    EXPECT_EQ(CommentOf({{kPackedLatin, kKey}, {kPackedLatin, Joined(kKey, {1, 2, 3})}}), "");
    EXPECT_EQ(CommentOf({{kPackedLatin, Joined(kKey, {0, 1, 2, 3})}}), "");
    EXPECT_EQ(CommentOf({{kUtf8, Joined(kKey, {0, 0, 'e', 'n', 0, 'x'})}}), "");
    EXPECT_EQ(CommentOf({{kUtf8, Joined(kKey, {2, 0, 0, 0, 'x'})}}), "");
    EXPECT_EQ(CommentOf({{kUtf8, kKey}, {kUtf8, Joined(kKey, {0})}, {kUtf8, Joined(kKey, {0, 0, 'e', 'n'})}}),
              "");
    EXPECT_TRUE(NotesOf({}, {{PngName("iCCP"), {'n'}}}).metadata.colorProfile.empty());
    EXPECT_TRUE(
        NotesOf({}, {{PngName("iCCP"), Joined({'n', 0, 1}, Packed({1}))}}).metadata.colorProfile.empty());
    EXPECT_TRUE(NotesOf({}, {{PngName("iCCP"), {'n', 0, 0, 1, 2}}}).metadata.colorProfile.empty());
    EXPECT_TRUE(NotesOf({}, {{PngName("iCCP"), {'n', 0}}}).metadata.colorProfile.empty());
    Bytes file;
    PutPngChunk(&file, kLatin, Joined(kKey, {'x'}));
    file.back() ^= 1;
    size_t at = 0;
    PngChunk chunk;
    ASSERT_TRUE(NextPngChunk(file.data(), file.size(), &at, &chunk));
    Animation animation;
    PngNoteReader reader = {.animation = &animation};
    TakePngNote(chunk, PngFormat(), &reader);
    EXPECT_EQ(animation.comment, "") << "the checksum is wrong";
}

// A few kilobytes that unpack to gigabytes, if all of them were followed.
TEST(PngNotes, Compressed_notes_unpack_to_a_limited_size_together) {
    const Bytes fits = Packed(Bytes(kMostUnpackedNotes / 2, 'a'));
    const Bytes tooLarge = Packed(Bytes(kMostUnpackedNotes + 1, 'a'));
    const auto comment = [](const Bytes& data) { return Joined(Joined(kKey, {0}), data); };
    EXPECT_EQ(CommentOf({{kPackedLatin, comment(tooLarge)}}), "");
    const std::string some =
        CommentOf(std::vector<std::pair<uint32_t, Bytes>>(9, {kPackedLatin, comment(fits)}));
    EXPECT_EQ(some.size(), kMostUnpackedNotes + 1) << "two, and a line feed";
    const Bytes profile = Joined({'n', 0, 0}, tooLarge);
    EXPECT_TRUE(NotesOf({}, {{PngName("iCCP"), profile}}).metadata.colorProfile.empty());
}

RgbColor BackgroundOf(const PngFormat& format, const Bytes& data) {
    const Animation animation = NotesOf(format, {{PngName("bKGD"), data}});
    EXPECT_TRUE(animation.hasBackground);
    return animation.background;
}

TEST(PngNotes, The_background_is_a_colour_in_the_pictures_format) {
    const PngFormat palette = {.colors = kPngPalette, .palette = {{1, 2, 3}, {4, 5, 6}}, .alphas = {}};
    EXPECT_EQ(BackgroundOf(palette, {1}), (RgbColor{4, 5, 6}));
    EXPECT_EQ(BackgroundOf(PngFormat(), {0, 7, 0, 8, 0, 9}), (RgbColor{7, 8, 9}));
    const PngFormat narrow = {.colors = kPngGrey, .depth = 2, .palette = {}, .alphas = {}};
    EXPECT_EQ(BackgroundOf(narrow, {0, 2}), (RgbColor{170, 170, 170}));
    const PngFormat deep = {.colors = kPngRgb, .depth = 16, .palette = {}, .alphas = {}};
    EXPECT_EQ(BackgroundOf(deep, {0, 0x80, 0, 0x81, 0xFF, 0x80}), (RgbColor{0, 1, 255}));
    for (const Bytes& wrong : {Bytes{2}, Bytes{}, Bytes{0, 1}})
        EXPECT_FALSE(NotesOf(palette, {{PngName("bKGD"), wrong}}).hasBackground);
}

Animation WithNotes(int frames) {
    Animation animation = test::RandomAnimation(9, 7, frames, 3, false);
    animation.comment = "r\xC3\xA9sum\xC3\xA9\nsecond line";
    animation.metadata = {
        .colorProfile = Bytes(3000, 5), .exif = {'I', 'I', 42, 0}, .xmp = {'<', 'x', '/', '>'}};
    animation.hasBackground = true;
    animation.background = {10, 20, 30};
    return animation;
}

void ExpectNotes(const Bytes& file, const Animation& source) {
    Animation animation;
    std::string error;
    ASSERT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error)) << error;
    EXPECT_EQ(animation.comment, source.comment);
    EXPECT_EQ(animation.metadata.colorProfile, source.metadata.colorProfile);
    EXPECT_EQ(animation.metadata.exif, source.metadata.exif);
    EXPECT_EQ(animation.metadata.xmp, source.metadata.xmp);
    EXPECT_EQ(animation.hasBackground, source.hasBackground);
    EXPECT_EQ(animation.background, source.background);
}

TEST(PngNotes, Written_notes_are_read_back) {
    const std::string comments[] = {"", "plain", "r\xC3\xA9sum\xC3\xA9", std::string(5000, 'a'),
                                    std::string(3000, 'a') + "\xC3\xA9"};
    for (const std::string& comment : comments) {
        Animation source = WithNotes(3);
        source.comment = comment;
        Bytes file;
        std::string error;
        ASSERT_TRUE(EncodeApng(source, &file, &error)) << error;
        ExpectNotes(file, source);
        ASSERT_TRUE(EncodePng(9, 7, source.frames[1].pixels.data(), &file, &error, source)) << error;
        ExpectNotes(file, source);
    }
}

// Its colour space stands at bytes 16 to 19 of a profile.
TEST(PngNotes, Only_a_profile_of_greys_goes_with_a_grey_picture) {
    Metadata metadata;
    EXPECT_TRUE(MayBeGrey(metadata));
    metadata.colorProfile = Joined(Bytes(16, 0), {'G', 'R', 'A', 'Y'});
    EXPECT_TRUE(MayBeGrey(metadata));
    metadata.colorProfile.pop_back();
    EXPECT_FALSE(MayBeGrey(metadata));
    metadata.colorProfile = Joined(Bytes(16, 0), {'R', 'G', 'B', ' '});
    EXPECT_FALSE(MayBeGrey(metadata));
}

TEST(PngNotes, A_grey_picture_can_say_a_grey_background_only) {
    Bytes pixels;
    for (int i = 0; i < 64 * 64; ++i) {
        const auto level = static_cast<uint8_t>(i * 37);
        pixels.insert(pixels.end(), {level, level, level, 255});
    }
    for (const RgbColor background : {RgbColor{77, 77, 77}, RgbColor{77, 77, 78}}) {
        Animation notes, read;
        notes.hasBackground = true;
        notes.background = background;
        Bytes file;
        std::string error;
        ASSERT_TRUE(EncodePng(64, 64, pixels.data(), &file, &error, notes)) << error;
        ASSERT_EQ(file[25], kPngGrey);  // in the header
        ASSERT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &read, &error)) << error;
        EXPECT_EQ(read.hasBackground, background.blue == 77);
        if (read.hasBackground) {
            EXPECT_EQ(read.background, background);
        }
    }
}

TEST(PngNotes, A_comment_without_a_known_alphabet_is_latin) {
    Animation source = WithNotes(1);
    source.comment = std::string("caf\xE9\0", 5);
    Bytes file;
    std::string error;
    ASSERT_TRUE(EncodeApng(source, &file, &error)) << error;
    source.comment = "caf\xC3\xA9";
    ExpectNotes(file, source);
}

}  // namespace
}  // namespace kfx
