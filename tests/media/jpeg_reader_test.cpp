// SPDX-License-Identifier: MIT
// The files of tests/data/jpeg, with markers that the tests put in byte by byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "media/animation.h"
#include "media/file_io.h"
#include "media/orientation.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::ErrorOf;

constexpr int kWidth = 37;
constexpr int kHeight = 29;

const std::string kFolder = "tests/data/jpeg/";
const std::string kWarning = "the file is damaged or cut; what is missing of the picture is grey or blurred";
const std::string kDamaged = "the JPEG file is damaged before its picture can be shown";

Bytes Load(const std::string& name) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(ReadWholeFile(kFolder + name, &file, &error)) << error;
    return file;
}

Animation ReadOrFail(const Bytes& file) {
    Animation animation = test::ReadOrFail(file);
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.loopCount, kLoopNone);
    if (animation.frames.empty()) animation.frames.emplace_back();
    return animation;
}

Animation ReadWhole(const Bytes& file) {
    Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.warning, "");
    return animation;
}

int LargestDifference(const Bytes& left, const Bytes& right) {
    EXPECT_EQ(left.size(), right.size());
    int largest = 0;
    for (size_t i = 0; i < std::min(left.size(), right.size()); ++i)
        largest = std::max(largest, std::abs(left[i] - right[i]));
    return largest;
}

// The file with a marker behind its first two bytes.
Bytes WithMarker(const Bytes& file, uint8_t code, const std::string& content) {
    const size_t length = content.size() + 2;
    Bytes marker = {0xFF, code, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length)};
    marker.insert(marker.end(), content.begin(), content.end());
    Bytes result = file;
    result.insert(result.begin() + 2, marker.begin(), marker.end());
    return result;
}

size_t FindMarker(const Bytes& file, uint8_t code) {
    const Bytes marker = {0xFF, code};
    return static_cast<size_t>(std::search(file.begin(), file.end(), marker.begin(), marker.end()) -
                               file.begin());
}

std::string Number(unsigned value, unsigned bytes, bool bigEndian) {
    std::string text;
    for (unsigned i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * (bigEndian ? bytes - 1 - i : i) & 0xFF);
    return text;
}

// TIFF data with the camera's name and the orientation.
std::string MakeExif(unsigned orientation, bool bigEndian) {
    const auto entry = [&](unsigned tag, unsigned type, unsigned count, const std::string& value) {
        return Number(tag, 2, bigEndian) + Number(type, 2, bigEndian) + Number(count, 4, bigEndian) + value;
    };
    return (bigEndian ? "MM" : "II") + Number(42, 2, bigEndian) + Number(8, 4, bigEndian) +
           Number(2, 2, bigEndian) + entry(0x0110, 2, 4, std::string("Cam\0", 4)) +
           entry(0x0112, 3, 1, Number(orientation, 2, bigEndian) + Number(0, 2, bigEndian)) +
           Number(0, 4, bigEndian);
}

Bytes WithExif(const Bytes& file, const std::string& exif) {
    return WithMarker(file, 0xE1, std::string("Exif\0\0", 6) + exif);
}

std::string TextOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(JpegReader, Every_kind_has_the_pixels_of_another_decoder) {
    struct Kind {
        const char* file;
        const char* expected;
    };
    constexpr Kind kKinds[] = {{"grey", "grey"},
                               {"full", "full"},
                               {"halved-columns", "halved-columns"},
                               {"halved-rows", "halved-rows"},
                               {"halved-both-ways", "halved-both-ways"},
                               {"progressive", "halved-both-ways"},
                               {"arithmetic", "halved-both-ways"},
                               {"restarts", "halved-both-ways"},
                               {"component-by-component", "halved-both-ways"},
                               {"rgb", "rgb"},
                               {"cmyk", "cmyk"},
                               {"ycck", "ycck"}};
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.file);
        const Animation picture = ReadWhole(Load(kind.file + std::string(".jpg")));
        const Animation expected = ReadOrFail(Load(kind.expected + std::string(".png")));
        EXPECT_EQ(picture.width, kWidth);
        EXPECT_EQ(picture.height, kHeight);
        EXPECT_EQ(LargestDifference(picture.frames[0].pixels, expected.frames[0].pixels), 0);
        EXPECT_FALSE(picture.frames[0].transparent);
        EXPECT_FALSE(picture.hasGlobalPalette);
    }
}

TEST(JpegReader, The_pixels_are_turned_as_EXIF_says) {
    // Where a shown pixel is stored, in a picture with this last column and row.
    struct Turn {
        bool swaps;
        void (*store)(int x, int y, int* column, int* row);
    };
    constexpr int kRight = kWidth - 1;
    constexpr int kBottom = kHeight - 1;
    const Turn turns[] = {
        {false, [](int x, int y, int* column, int* row) { *column = x, *row = y; }},
        {false, [](int x, int y, int* column, int* row) { *column = kRight - x, *row = y; }},
        {false, [](int x, int y, int* column, int* row) { *column = kRight - x, *row = kBottom - y; }},
        {false, [](int x, int y, int* column, int* row) { *column = x, *row = kBottom - y; }},
        {true, [](int x, int y, int* column, int* row) { *column = y, *row = x; }},
        {true, [](int x, int y, int* column, int* row) { *column = y, *row = kBottom - x; }},
        {true, [](int x, int y, int* column, int* row) { *column = kRight - y, *row = kBottom - x; }},
        {true, [](int x, int y, int* column, int* row) { *column = kRight - y, *row = x; }},
    };
    const Bytes file = Load("full.jpg");
    const Bytes stored = ReadWhole(file).frames[0].pixels;
    for (unsigned number = 1; number <= 8; ++number) {
        for (const bool bigEndian : {false, true}) {
            SCOPED_TRACE(number);
            const Turn& turn = turns[number - 1];
            const Animation shown = ReadWhole(WithExif(file, MakeExif(number, bigEndian)));
            ASSERT_EQ(shown.width, turn.swaps ? kHeight : kWidth);
            ASSERT_EQ(shown.height, turn.swaps ? kWidth : kHeight);
            Bytes expected;
            for (int y = 0; y < shown.height; ++y) {
                for (int x = 0; x < shown.width; ++x) {
                    int column = 0, row = 0;
                    turn.store(x, y, &column, &row);
                    const uint8_t* pixel = stored.data() + 4 * (row * kWidth + column);
                    expected.insert(expected.end(), pixel, pixel + 4);
                }
            }
            EXPECT_EQ(shown.frames[0].pixels, expected);
            EXPECT_EQ(TextOf(shown.metadata.exif), MakeExif(1, bigEndian)) << "nobody turns it again";
        }
    }
}

TEST(JpegReader, XMP_says_that_a_turned_picture_is_upright) {
    const std::string name("http://ns.adobe.com/xap/1.0/\0", 29);
    const std::string xmp = "<a tiff:Orientation=\"6\"/><tiff:Orientation>6</tiff:Orientation>";
    const Bytes file = WithMarker(Load("grey.jpg"), 0xE1, name + xmp);
    EXPECT_EQ(TextOf(ReadWhole(file).metadata.xmp), xmp);
    EXPECT_EQ(TextOf(ReadWhole(WithExif(file, MakeExif(6, false))).metadata.xmp),
              "<a tiff:Orientation=\"1\"/><tiff:Orientation>1</tiff:Orientation>");
    const std::string unknown =
        std::string("tiff:Orientation='0' tiff:Orientation=\0'6' tiff:Orientation='9' tiff:Orientation=", 79);
    EXPECT_EQ(
        TextOf(ReadWhole(WithExif(WithMarker(Load("grey.jpg"), 0xE1, name + unknown), MakeExif(6, false)))
                   .metadata.xmp),
        unknown);
}

TEST(JpegReader, EXIF_without_a_sound_orientation_is_kept_as_it_is) {
    const Bytes file = Load("grey.jpg");
    const std::string whole = MakeExif(6, true);
    std::vector<std::string> unsound = {MakeExif(0, true), MakeExif(9, false), "XX" + whole.substr(2), "MM"};
    for (size_t length = 1; length < 30; ++length) {
        unsound.push_back(whole.substr(0, length));
        EXPECT_EQ(OrientationNumber(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length))), 0);
    }
    std::string other = whole;
    other[25] = 4;  // the type
    unsound.push_back(other);
    std::string unnamed = whole;
    unnamed[23] = 0x13;  // the tag
    unsound.push_back(unnamed);
    std::string several = whole;
    several[29] = 2;  // how many values
    unsound.push_back(several);
    std::string far = whole;
    far[4] = 0x7F;  // where the entries begin
    unsound.push_back(far);
    for (const std::string& exif : unsound) {
        const Animation picture = ReadWhole(WithExif(file, exif));
        EXPECT_EQ(picture.width, kWidth);
        EXPECT_EQ(TextOf(picture.metadata.exif), exif);
    }
}

TEST(JpegReader, Comments_and_metadata_are_kept) {
    Bytes file = WithMarker(Load("progressive.jpg"), 0xFE, "second");
    file = WithMarker(file, 0xFE, "first");
    file = WithMarker(file, 0xE2, std::string("ICC_PROFILE\0\2\2", 14) + "file");
    file = WithMarker(file, 0xE2, std::string("ICC_PROFILE\0\1\2", 14) + "pro");
    const Animation picture = ReadWhole(file);
    EXPECT_EQ(picture.comment, "first\nsecond");
    EXPECT_EQ(TextOf(picture.metadata.colorProfile), "profile");
    EXPECT_TRUE(picture.metadata.exif.empty());
    EXPECT_TRUE(picture.metadata.xmp.empty());
}

TEST(JpegReader, A_colour_profile_with_missing_parts_is_left_out) {
    const Bytes file =
        WithMarker(Load("grey.jpg"), 0xE2, std::string("ICC_PROFILE\0\1\2", 14) + "half of it");
    EXPECT_TRUE(ReadWhole(file).metadata.colorProfile.empty());
}

// Bytes of the file up to its first pixel data.
size_t DataStart(const Bytes& file) {
    const size_t scan = FindMarker(file, 0xDA);
    return scan + 2 + (size_t{file[scan + 2]} << 8 | file[scan + 3]);
}

TEST(JpegReader, A_cut_file_shows_what_is_there) {
    for (const char* name : {"full.jpg", "progressive.jpg", "component-by-component.jpg", "arithmetic.jpg"}) {
        const Bytes file = Load(name);
        const size_t start = DataStart(file);
        testing::internal::CaptureStderr();
        for (size_t length = 3; length < file.size() - 2; ++length) {
            SCOPED_TRACE(std::string(name) + " cut to " + std::to_string(length));
            const Bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(length));
            if (length <= start) {
                EXPECT_EQ(ErrorOf(cut), kDamaged);
            } else {
                EXPECT_EQ(ReadOrFail(cut).warning, kWarning);
            }
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the library prints nothing";
    }
}

TEST(JpegReader, What_stands_before_the_cut_is_exact) {
    const Bytes file = Load("full.jpg");
    const size_t length = DataStart(file) + (file.size() - DataStart(file)) / 2;
    const Bytes whole = ReadWhole(file).frames[0].pixels;
    const Bytes cut =
        ReadOrFail(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(length))).frames[0].pixels;
    const ptrdiff_t row = 4 * kWidth;
    EXPECT_TRUE(std::equal(cut.begin(), cut.begin() + 8 * row, whole.begin()));
    EXPECT_EQ(Bytes(cut.end() - 4, cut.end()), (Bytes{128, 128, 128, 255}));
}

TEST(JpegReader, A_missing_end_marker_alone_is_no_damage) {
    for (const char* name : {"full.jpg", "progressive.jpg"}) {
        SCOPED_TRACE(name);
        const Bytes file = Load(name);
        const Bytes cut(file.begin(), file.end() - 2);
        EXPECT_EQ(ReadWhole(cut).frames[0].pixels, ReadWhole(file).frames[0].pixels);
    }
}

TEST(JpegReader, What_follows_the_end_is_no_matter) {
    Bytes file = Load("progressive.jpg");
    file.insert(file.end(), {0xFF, 0xD8, 0xFF, 0xDA, 1, 2, 3});
    EXPECT_EQ(ReadWhole(file).frames[0].pixels, ReadWhole(Load("progressive.jpg")).frames[0].pixels);
}

TEST(JpegReader, Damaged_data_are_shown_with_a_warning) {
    Bytes file = Load("restarts.jpg");
    const size_t start = FindMarker(file, 0xD0);
    ASSERT_LT(start, file.size());
    const auto restart = file.begin() + static_cast<ptrdiff_t>(start);
    file.erase(restart - 60, restart);
    EXPECT_EQ(ReadOrFail(file).warning, kWarning);
}

TEST(JpegReader, Kinds_that_cannot_be_read_are_named) {
    const std::string unknown =
        "the JPEG file is of a kind that cannot be read (lossless, or more than 8 bits a sample)";
    const Bytes file = Load("full.jpg");
    const size_t frame = FindMarker(file, 0xC0);
    ASSERT_LT(frame, file.size());
    Bytes changed = file;
    changed[frame + 1] = 0xC3;
    EXPECT_EQ(ErrorOf(changed), unknown) << "lossless";
    changed = file;
    changed[frame + 4] = 12;
    EXPECT_EQ(ErrorOf(changed), unknown) << "12 bits";
    changed = file;
    changed[frame + 5] = changed[frame + 6] = 0;
    EXPECT_EQ(ErrorOf(changed), "the JPEG file does not say how high its picture is");
}

// The frame's header with these components: number, sampling across and down, table.
Bytes WithComponents(const Bytes& file, const std::vector<Bytes>& components) {
    const size_t frame = FindMarker(file, 0xC0);
    const size_t length = size_t{file[frame + 2]} << 8 | file[frame + 3];
    Bytes changed(file.begin(), file.begin() + static_cast<ptrdiff_t>(frame) + 9);
    changed[frame + 3] = static_cast<uint8_t>(8 + 3 * components.size());
    changed.push_back(static_cast<uint8_t>(components.size()));
    for (const Bytes& component : components)
        changed.insert(changed.end(), component.begin(), component.end());
    changed.insert(changed.end(), file.begin() + static_cast<ptrdiff_t>(frame + 2 + length), file.end());
    return changed;
}

TEST(JpegReader, Components_that_make_no_colours_are_of_a_kind_that_cannot_be_read) {
    const std::string unknown =
        "the JPEG file is of a kind that cannot be read (lossless, or more than 8 bits a sample)";
    const Bytes file = Load("full.jpg");
    std::vector<Bytes> many;
    for (uint8_t number = 1; number <= 11; ++number) many.push_back({number, 0x11, 0});
    EXPECT_EQ(ErrorOf(WithComponents(file, many)), unknown) << "eleven";
    EXPECT_EQ(ErrorOf(WithComponents(file, {{1, 0x31, 0}, {2, 0x21, 0}, {3, 0x11, 0}})), unknown)
        << "two and a third";
    const Bytes grey = Load("grey.jpg");
    EXPECT_EQ(ErrorOf(WithComponents(grey, {{1, 0x11, 0}, {2, 0x11, 0}})), unknown) << "two";
}

TEST(JpegReader, A_file_that_ends_before_its_pixels_is_damaged) {
    const Bytes file = Load("full.jpg");
    Bytes empty(file.begin(), file.begin() + static_cast<ptrdiff_t>(DataStart(file)));
    EXPECT_EQ(ErrorOf(empty), kDamaged);
    empty.insert(empty.end(), {0xFF, 0xD9});
    EXPECT_EQ(ErrorOf(empty), kDamaged);
}

TEST(JpegReader, A_cut_marker_is_found_behind_what_looks_like_one) {
    const Bytes file = Load("progressive.jpg");
    const Bytes scan = {0xFF, 0xDA};
    const auto last = std::find_end(file.begin(), file.end(), scan.begin(), scan.end());
    Bytes cut(file.begin(), last);
    const Bytes before = ReadOrFail(cut).frames[0].pixels;
    // A table that has too many codes, from its number on.
    cut.insert(cut.end(), {0xFF, 0xC4, 0, 60, 0xFF, 0xD0, 0xFF, 0xFF, 0xFF, 0});
    const Animation picture = ReadOrFail(cut);
    EXPECT_EQ(picture.warning, kWarning);
    EXPECT_EQ(picture.frames[0].pixels, before);
}

TEST(JpegReader, Sizes_are_refused_before_anything_is_allocated) {
    Bytes file = Load("progressive.jpg");
    const size_t frame = FindMarker(file, 0xC2);
    ASSERT_LT(frame, file.size());
    ReadLimits limits;
    limits.maxPixels = kWidth * kHeight - 1;
    EXPECT_EQ(ErrorOf(file, limits), "the picture of " + std::to_string(kWidth) + " x " +
                                         std::to_string(kHeight) + " has 1073 pixels; the limit is 1072");
    for (const size_t at : {5u, 7u}) file[frame + at] = 0xF0;
    EXPECT_EQ(ErrorOf(file, {.maxSide = 60000, .maxPixels = 1 << 20}),
              "the picture of 61477 x 61469 pixels is too large: a side may have 60000");
    EXPECT_EQ(ErrorOf(file, {.maxSide = 65535, .maxPixels = 1 << 20}),
              "the picture of 61477 x 61469 has 3778929713 pixels; the limit is 1048576");
    for (const size_t at : {5u, 6u, 7u, 8u}) file[frame + at] = 0xFF;
    EXPECT_EQ(ErrorOf(file), "the JPEG picture is too large: a side may have 65500 pixels");
}

// The file with a picture of this size, whose data mostly are missing then.
Bytes WithSize(Bytes file, uint8_t frameMarker, int width, int height) {
    const size_t frame = FindMarker(file, frameMarker);
    EXPECT_LT(frame, file.size());
    const std::string sides =
        Number(static_cast<unsigned>(height), 2, true) + Number(static_cast<unsigned>(width), 2, true);
    std::copy(sides.begin(), sides.end(), file.begin() + static_cast<ptrdiff_t>(frame) + 5);
    return file;
}

TEST(JpegReader, A_large_picture_in_a_tiny_file_is_refused_before_anything_is_allocated) {
    EXPECT_EQ(ErrorOf(WithSize(Load("grey.jpg"), 0xC0, 2000, 1600)), kDamaged);
    EXPECT_EQ(ErrorOf(WithSize(Load("progressive.jpg"), 0xC2, 20000, 20000)), kDamaged);
    EXPECT_EQ(ReadOrFail(WithSize(Load("grey.jpg"), 0xC0, 2000, 1000)).warning, kWarning);
    // In arithmetic coding, a large picture of one colour is a few bytes.
    EXPECT_EQ(ReadOrFail(WithSize(Load("arithmetic.jpg"), 0xC9, 2000, 1600)).width, 2000);
}

TEST(JpegReader, Endless_passes_are_refused) {
    const Bytes file = Load("progressive.jpg");
    const Bytes scan = {0xFF, 0xDA};
    const auto last = std::find_end(file.begin(), file.end(), scan.begin(), scan.end());
    const Bytes pass(last, file.end() - 2);
    size_t passes = 0;
    for (size_t i = 1; i < file.size(); ++i) passes += file[i - 1] == scan[0] && file[i] == scan[1];
    Bytes many(file.begin(), file.end() - 2);
    for (; passes < 100; ++passes) many.insert(many.end(), pass.begin(), pass.end());
    ReadOrFail(many);
    many.insert(many.end(), pass.begin(), pass.end());
    EXPECT_EQ(ErrorOf(many), "the JPEG file draws its picture in too many passes");
}

}  // namespace
}  // namespace kfx
