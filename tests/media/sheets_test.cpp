// SPDX-License-Identifier: MIT
// What the project draws itself: labels, contact sheets, palettes, the sample animation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "media/bitmap_font.h"
#include "media/contact_sheet.h"
#include "media/quantize.h"
#include "media/sample_animation.h"
#include "tests/media/gif_builder.h"

namespace kfx {
namespace {

using test::Bytes;

Picture FlatPicture(int width, int height, RgbColor color, uint8_t alpha = 255) {
    Picture picture;
    picture.width = width;
    picture.height = height;
    for (int i = 0; i < width * height; ++i)
        picture.pixels.insert(picture.pixels.end(), {color.red, color.green, color.blue, alpha});
    return picture;
}

SheetPicture Shown(const Picture& picture, const std::string& label) {
    return {picture.width, picture.height, picture.pixels.data(), label};
}

size_t CountPixels(const Picture& picture, RgbColor color) {
    size_t count = 0;
    for (size_t i = 0; i < picture.pixels.size(); i += 4) {
        const uint8_t* pixel = picture.pixels.data() + i;
        count += RgbColor{pixel[0], pixel[1], pixel[2]} == color;
    }
    return count;
}

std::string ShowGlyph(char character) {
    std::string rows;
    for (int row = 0; row < kGlyphHeight; ++row) {
        for (int column = 0; column < kGlyphWidth; ++column)
            rows += HasInk(character, column, row) ? '#' : '.';
        rows += '/';
    }
    return rows;
}

TEST(BitmapFont, Every_visible_character_looks_different) {
    std::set<std::string> shapes;
    for (char character = ' '; character <= '~'; ++character) shapes.insert(ShowGlyph(character));
    EXPECT_EQ(shapes.size(), 95u);
    EXPECT_EQ(ShowGlyph(' ').find('#'), std::string::npos);
    EXPECT_EQ(ShowGlyph('\xE4'), ShowGlyph('?'));
    EXPECT_EQ(ShowGlyph('T'), "#####/..#../..#../..#../..#../..#../..#../...../...../");
}

TEST(BitmapFont, Text_is_cut_at_the_border) {
    Picture picture = FlatPicture(20, 10, {0, 0, 0});
    DrawBitmapText(&picture, -8, -4, "WWWWWWWW", 3, {255, 255, 255});
    EXPECT_GT(CountPixels(picture, {255, 255, 255}), 0u);
    EXPECT_EQ(TextWidth("", 2), 0);
    EXPECT_EQ(TextWidth("ab", 2), 22);
}

void Fill(Picture* picture, const SheetPlace& place, RgbColor color) {
    for (int y = place.top; y < place.top + place.height; ++y) {
        for (int x = place.left; x < place.left + place.width; ++x) {
            const int pixel = y * picture->width + x;
            uint8_t* bytes = picture->pixels.data() + 4 * static_cast<ptrdiff_t>(pixel);
            bytes[0] = color.red;
            bytes[1] = color.green;
            bytes[2] = color.blue;
        }
    }
}

TEST(ContactSheet, Everything_stands_at_its_place) {
    const RgbColor ink = {34, 38, 46}, faint = {104, 108, 116}, red = {200, 10, 20};
    const Picture picture = FlatPicture(4, 6, red);
    SheetPicture noted = Shown(picture, "ab");
    noted.note = "c";
    const std::vector<SheetRow> rows = {{"R", {noted, Shown(picture, "d")}}, {"", {Shown(picture, "e")}}};
    std::vector<SheetPlace> places;
    const Picture sheet = DrawContactSheet("T", rows, 50, 50, &places);

    // A cell is as wide as the widest label, 11 pixels; 16 pixels around, 10 between cells, 12 between rows.
    Picture expected =
        FlatPicture(16 + 11 + 10 + 11 + 16, 16 + 30 + (16 + 6 + 28 + 12) + (6 + 14) + 16, {244, 244, 241});
    DrawBitmapText(&expected, 16, 16, "T", 2, ink);
    DrawBitmapText(&expected, 16, 46, "R", 1, ink);
    const SheetPlace cells[] = {{16, 62, 11, 6}, {37, 62, 11, 6}, {16, 108, 11, 6}};
    for (const SheetPlace& cell : cells) {
        Fill(&expected, {cell.left - 1, cell.top - 1, cell.width + 2, cell.height + 2}, {184, 184, 178});
        Fill(&expected, cell, {226, 226, 222});
        Fill(&expected, {cell.left + 3, cell.top, 4, 6}, red);
    }
    DrawBitmapText(&expected, 16, 73, "ab", 1, ink);
    DrawBitmapText(&expected, 19, 87, "c", 1, faint);
    DrawBitmapText(&expected, 40, 73, "d", 1, faint);
    DrawBitmapText(&expected, 19, 119, "e", 1, faint);
    ASSERT_EQ(sheet.width, expected.width);
    ASSERT_EQ(sheet.height, expected.height);
    EXPECT_TRUE(sheet.pixels == expected.pixels);
    ASSERT_EQ(places.size(), 3u);
    EXPECT_EQ(places[2].left, 19);
    EXPECT_EQ(places[2].top, 108);
}

TEST(ContactSheet, Small_pictures_may_be_shown_several_times_as_large) {
    const Picture picture = FlatPicture(5, 7, {1, 200, 3});
    SheetPicture large = Shown(picture, "");
    large.timesAsLarge = 3;
    std::vector<SheetPlace> places;
    const Picture sheet = DrawContactSheet("", {{"", {large}}}, 4, 4, &places);
    EXPECT_EQ(CountPixels(sheet, {1, 200, 3}), 9u * 35u);
    EXPECT_EQ(places[0].width, 15);
    EXPECT_EQ(places[0].height, 21);
}

TEST(ContactSheet, Titles_are_cut_at_the_margins) {
    const Picture picture = FlatPicture(30, 6, {1, 2, 3});
    const auto titled = [&](const std::string& sheet, const std::string& row) {
        return DrawContactSheet(sheet, {{row, {Shown(picture, "")}}}, 30, 50).pixels;
    };
    EXPECT_TRUE(titled("", "abcdef") == titled("", "abc.."));
    EXPECT_FALSE(titled("", "abcde") == titled("", "abc.."));
    EXPECT_TRUE(titled("abcd", "") == titled("ab", ""));
}

TEST(ContactSheet, Thumbnails_may_be_single_pixels_but_not_less) {
    const Picture picture = FlatPicture(4, 4, {1, 200, 3});
    const std::vector<SheetRow> rows = {{"", {Shown(picture, "")}}};
    EXPECT_EQ(CountPixels(DrawContactSheet("", rows, 1, 1), {1, 200, 3}), 1u);
    EXPECT_EQ(DrawContactSheet("", rows, 0, 1).width, 0);
    EXPECT_EQ(DrawContactSheet("", rows, 1, 0).width, 0);
}

TEST(ContactSheet, A_label_is_cut_where_it_would_not_fit) {
    const Picture picture = FlatPicture(30, 6, {1, 2, 3});
    const auto labelled = [&](const std::string& label) {
        return DrawContactSheet("", {{"", {Shown(picture, label)}}}, 30, 50).pixels;
    };
    EXPECT_TRUE(labelled("abcdef") == labelled("abc.."));
    EXPECT_FALSE(labelled("abcde") == labelled("abc.."));
    const Picture narrow = FlatPicture(11, 6, {1, 2, 3});
    EXPECT_TRUE(DrawContactSheet("", {{"", {Shown(narrow, "abc")}}}, 11, 50).pixels ==
                DrawContactSheet("", {{"", {Shown(narrow, "ab")}}}, 11, 50).pixels);
}

TEST(ContactSheet, Pictures_that_fit_are_shown_pixel_for_pixel) {
    const Picture red = FlatPicture(40, 30, {200, 10, 20});
    const Picture blue = FlatPicture(40, 30, {20, 10, 200});
    const Picture sheet =
        DrawContactSheet("", {{"", {Shown(red, "")}}, {"", {Shown(blue, ""), Shown(blue, "")}}}, 100, 100);
    EXPECT_EQ(CountPixels(sheet, {200, 10, 20}), 1200u);
    EXPECT_EQ(CountPixels(sheet, {20, 10, 200}), 2400u);
}

TEST(ContactSheet, Large_pictures_are_reduced_in_shape_and_averaged) {
    Picture stripes = FlatPicture(200, 100, {0, 0, 0});
    for (size_t i = 0; i < stripes.pixels.size(); i += 8) stripes.pixels[i] = 255;
    const Picture sheet = DrawContactSheet("", {{"", {Shown(stripes, "")}}}, 50, 50);
    EXPECT_EQ(CountPixels(sheet, {128, 0, 0}), 50u * 25u);
}

TEST(ContactSheet, Transparency_shows_a_chequered_ground) {
    const Picture clear = FlatPicture(16, 16, {0, 0, 0}, 0);
    const Picture sheet = DrawContactSheet("", {{"", {Shown(clear, "")}}}, 50, 50);
    EXPECT_EQ(CountPixels(sheet, {255, 255, 255}), 128u);
    EXPECT_EQ(CountPixels(sheet, {208, 208, 208}), 128u);
}

TEST(ContactSheet, Nothing_to_show_gives_an_empty_picture) {
    EXPECT_EQ(DrawContactSheet("title", {}, 100, 100).width, 0);
    EXPECT_EQ(DrawGallery("title", {}, 3, 100, 100).width, 0);
    EXPECT_EQ(DrawGallery("title", {SheetPicture()}, 3, 100, 100).width, 0);
}

TEST(ContactSheet, A_gallery_breaks_into_rows) {
    const Picture tile = FlatPicture(10, 10, {1, 200, 3});
    const std::vector<SheetPicture> pictures(5, Shown(tile, "a long label that is cut"));
    const Picture wide = DrawGallery("", pictures, 5, 50, 50);
    const Picture tall = DrawGallery("", pictures, 2, 50, 50);
    EXPECT_EQ(CountPixels(wide, {1, 200, 3}), 500u);
    EXPECT_EQ(CountPixels(tall, {1, 200, 3}), 500u);
    EXPECT_GT(wide.width, tall.width);
    EXPECT_GT(tall.height, wide.height);
}

TEST(ContactSheet, A_comparison_shows_the_same_frames_of_both) {
    Animation source;
    source.width = 8;
    source.height = 8;
    Animation result = source;
    for (uint8_t i = 0; i < 10; ++i) {
        source.frames.emplace_back();
        source.frames.back().pixels = FlatPicture(8, 8, {static_cast<uint8_t>(100 + i), 0, 0}).pixels;
        result.frames.emplace_back();
        result.frames.back().pixels = FlatPicture(8, 8, {0, static_cast<uint8_t>(100 + i), 0}).pixels;
    }
    const Picture sheet = DrawComparison("compared", source, result, 3, 50, 50);
    for (const int frame : {0, 3, 6}) {
        EXPECT_EQ(CountPixels(sheet, {static_cast<uint8_t>(100 + frame), 0, 0}), 64u);
        EXPECT_EQ(CountPixels(sheet, {0, static_cast<uint8_t>(100 + frame), 0}), 64u);
    }
    EXPECT_EQ(CountPixels(sheet, {101, 0, 0}), 0u);
    EXPECT_EQ(DrawComparison("", source, result, 0, 50, 50).pixels,
              DrawComparison("", source, result, 1, 50, 50).pixels);
}

TEST(ContactSheet, Small_pictures_are_up_to_eight_times_as_large) {
    EXPECT_EQ(TimesAsLarge(10, 10, 9, 100), 1);
    EXPECT_EQ(TimesAsLarge(10, 20, 60, 60), 3);
    EXPECT_EQ(TimesAsLarge(20, 10, 60, 60), 3);
    EXPECT_EQ(TimesAsLarge(1, 1, 100, 100), 8);
}

TEST(ContactSheet, A_comparison_counts_frames_from_0) {
    Animation animation;
    animation.width = animation.height = 8;
    const Picture tile = FlatPicture(8, 8, {100, 0, 0});
    animation.frames.resize(2);
    for (Frame& frame : animation.frames) frame.pixels = tile.pixels;
    const SheetRow row = {"Source", {Shown(tile, "frame 0"), Shown(tile, "frame 1")}};
    const SheetRow below = {"Result", row.pictures};
    EXPECT_EQ(DrawComparison("", animation, animation, 2, 50, 50).pixels,
              DrawContactSheet("", {row, below}, 50, 50).pixels);
}

TEST(ContactSheet, A_comparison_goes_by_time_when_equal_frames_were_joined) {
    Animation source;
    source.width = 8;
    source.height = 8;
    Animation result = source;
    for (const int level : {10, 10, 30}) {
        source.frames.emplace_back();
        source.frames.back().pixels = FlatPicture(8, 8, {static_cast<uint8_t>(level), 0, 0}).pixels;
        source.frames.back().delay = 5;
    }
    result.frames = {source.frames[0], source.frames[2]};
    result.frames[0].delay = 10;
    const Picture sheet = DrawComparison("", source, result, 3, 50, 50);
    EXPECT_EQ(CountPixels(sheet, {10, 0, 0}), 4u * 64u);
    EXPECT_EQ(CountPixels(sheet, {30, 0, 0}), 2u * 64u);
    EXPECT_EQ(DrawComparison("", source, Animation(), 3, 50, 50).width, 0);
}

TEST(Quantize, Few_colours_are_kept_exactly) {
    const Animation noise = test::RandomAnimation(16, 16, 1, 41, false);
    GifFrame frame;
    QuantizeFrame(noise.frames[0].pixels.data(), 16, 16, 256, &frame);
    EXPECT_EQ(frame.transparentIndex, -1);
    for (size_t i = 0; i < 256; ++i) {
        const RgbColor shown = frame.palette[frame.indices[i]];
        EXPECT_EQ(shown.red, noise.frames[0].pixels[4 * i]);
        EXPECT_EQ(shown.green, noise.frames[0].pixels[4 * i + 1]);
        EXPECT_EQ(shown.blue, noise.frames[0].pixels[4 * i + 2]);
    }
}

TEST(Quantize, Transparent_pixels_take_an_index_of_their_own) {
    const Animation noise = test::RandomAnimation(40, 40, 1, 42, true);
    GifFrame frame;
    QuantizeFrame(noise.frames[0].pixels.data(), 40, 40, 256, &frame);
    EXPECT_EQ(frame.palette.size(), 256u);
    ASSERT_EQ(frame.transparentIndex, 255);
    for (size_t i = 0; i < frame.indices.size(); ++i)
        EXPECT_EQ(frame.indices[i] == 255, noise.frames[0].pixels[4 * i + 3] == 0);
}

TEST(Quantize, Few_colours_stand_before_the_entry_of_transparent_pixels) {
    Picture picture = FlatPicture(2, 2, {10, 20, 30});
    const Bytes others = {0, 0, 0, 0, 200, 90, 90, 255};
    std::copy(others.begin(), others.end(), picture.pixels.begin() + 4);
    GifFrame frame;
    QuantizeFrame(picture.pixels.data(), 2, 2, 256, &frame);
    EXPECT_EQ(frame.indices, (Bytes{0, 2, 1, 0}));
    EXPECT_EQ(frame.transparentIndex, 2);
    EXPECT_EQ(frame.palette.size(), 3u);
}

TEST(Quantize, A_single_transparent_pixel_takes_one_of_256_entries) {
    Picture picture = FlatPicture(257, 1, {0, 0, 0});
    for (size_t i = 0; i < 256; ++i) picture.pixels[4 * i] = static_cast<uint8_t>(i);
    picture.pixels[4 * 256 + 3] = 0;
    GifFrame frame;
    EXPECT_FALSE(IndexFrame(picture.pixels.data(), 257, 1, &frame));
    EXPECT_TRUE(IndexFrame(picture.pixels.data(), 256, 1, &frame));
    QuantizeFrame(picture.pixels.data(), 257, 1, 256, &frame);
    EXPECT_EQ(frame.palette.size(), 256u);
    EXPECT_EQ(frame.transparentIndex, 255);
}

TEST(Quantize, Each_colour_goes_to_its_nearest_entry_of_a_small_palette) {
    const Animation noise = test::RandomAnimation(30, 30, 1, 43, false);
    GifFrame frame;
    QuantizeFrame(noise.frames[0].pixels.data(), 30, 30, 16, &frame);
    ASSERT_EQ(frame.palette.size(), 16u);
    const auto distance = [](const uint8_t* pixel, RgbColor color) {
        const int red = pixel[0] - color.red;
        const int green = pixel[1] - color.green;
        const int blue = pixel[2] - color.blue;
        return red * red + green * green + blue * blue;
    };
    for (size_t i = 0; i < frame.indices.size(); ++i) {
        const uint8_t* pixel = noise.frames[0].pixels.data() + 4 * i;
        const int chosen = distance(pixel, frame.palette[frame.indices[i]]);
        for (const RgbColor color : frame.palette) ASSERT_LE(chosen, distance(pixel, color));
    }
}

TEST(Quantize, Two_far_groups_of_colours_get_an_entry_each) {
    Picture picture = FlatPicture(2, 2, {10, 20, 30});
    const Bytes others = {12, 20, 30, 255, 200, 90, 90, 255, 202, 90, 90, 255};
    std::copy(others.begin(), others.end(), picture.pixels.begin() + 4);
    GifFrame frame;
    QuantizeFrame(picture.pixels.data(), 2, 2, 2, &frame);
    ASSERT_EQ(frame.palette.size(), 2u);
    EXPECT_EQ(frame.palette[frame.indices[0]], (RgbColor{11, 20, 30}));
    EXPECT_EQ(frame.palette[frame.indices[2]], (RgbColor{201, 90, 90}));
    EXPECT_EQ(frame.indices[0], frame.indices[1]);
    EXPECT_EQ(frame.indices[2], frame.indices[3]);
}

// FNV-1a, 64 bits.
uint64_t HashOf(const Bytes& bytes) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (const uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3u;
    return hash;
}

TEST(SampleAnimation, Every_build_draws_the_same_pixels) {
    const Picture picture = DrawSampleFrame(5);
    ASSERT_EQ(picture.pixels.size(), 4u * 320 * 240);
    EXPECT_EQ(HashOf(picture.pixels), 0x8997D7020B2D3D40u);
}

TEST(SampleAnimation, It_loops_moves_and_needs_more_than_a_palette_of_colours) {
    const Picture first = DrawSampleFrame(0);
    const Picture second = DrawSampleFrame(1);
    EXPECT_TRUE(first.pixels == DrawSampleFrame(kSampleFrameCount).pixels);
    std::set<uint32_t> colors;
    size_t moved = 0;
    for (size_t i = 0; i < first.pixels.size(); i += 4) {
        colors.insert(
            static_cast<uint32_t>(first.pixels[i] << 16 | first.pixels[i + 1] << 8 | first.pixels[i + 2]));
        moved += !std::equal(first.pixels.begin() + static_cast<ptrdiff_t>(i),
                             first.pixels.begin() + static_cast<ptrdiff_t>(i + 4),
                             second.pixels.begin() + static_cast<ptrdiff_t>(i));
        ASSERT_EQ(first.pixels[i + 3], 255);
    }
    EXPECT_GT(colors.size(), 10000u);
    EXPECT_GT(moved, 5000u);
}

TEST(SampleAnimation, Its_frames_are_stored_with_palettes_of_their_own) {
    const GifAnimation gif = DrawSampleAnimation();
    ASSERT_EQ(gif.frames.size(), static_cast<size_t>(kSampleFrameCount));
    EXPECT_EQ(gif.loopCount, kLoopForever);
    Bytes file;
    std::string error;
    ASSERT_TRUE(EncodeGif(gif, &file, &error)) << error;
    Animation animation;
    ASSERT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error)) << error;
    ASSERT_EQ(animation.frames.size(), gif.frames.size());
    EXPECT_EQ(animation.comment, gif.comment);
    for (size_t i = 0; i < gif.frames.size(); ++i) {
        EXPECT_EQ(animation.frames[i].delay, kSampleDelay);
        const GifFrame& stored = gif.frames[i];
        for (size_t pixel = 0; pixel < stored.indices.size(); ++pixel) {
            const RgbColor color = stored.palette[stored.indices[pixel]];
            const uint8_t* shown = animation.frames[i].pixels.data() + 4 * pixel;
            ASSERT_EQ(shown[0] << 16 | shown[1] << 8 | shown[2],
                      color.red << 16 | color.green << 8 | color.blue);
        }
    }
}

}  // namespace
}  // namespace kfx
