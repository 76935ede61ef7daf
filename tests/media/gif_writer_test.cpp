// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "media/animation_writer.h"
#include "media/quantize.h"
#include "media/sample_animation.h"
#include "tests/media/gif_builder.h"
#include "tests/media/gif_decoder.h"
#include "tests/media/gif_scenes.h"

namespace kfx {
namespace {

using test::Bytes;
using test::RandomAnimation;
using test::ShowFrame;

// Letters of the text palette as indices; '.' is 8.
Bytes IndicesOf(const std::string& picture) {
    static const std::string letters = "KRGBYMCW.";
    Bytes indices;
    for (const char letter : picture)
        if (letter != '/') indices.push_back(static_cast<uint8_t>(letters.find(letter)));
    return indices;
}

GifFrame TextFrame(const std::string& picture, int disposal = kDisposalKeep) {
    GifFrame frame;
    frame.indices = IndicesOf(picture);
    frame.disposal = disposal;
    if (picture.find('.') != std::string::npos) frame.transparentIndex = 8;
    return frame;
}

GifAnimation TextGif(int width, int height, const std::vector<GifFrame>& frames) {
    GifAnimation gif;
    gif.width = width;
    gif.height = height;
    gif.globalPalette = test::TextPalette();
    gif.frames = frames;
    return gif;
}

Bytes EncodeOrFail(const GifAnimation& gif) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeGif(gif, &file, &error)) << error;
    return file;
}

Animation ReadOrFail(const Bytes& file) {
    Animation animation;
    std::string error;
    EXPECT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error)) << error;
    EXPECT_EQ(animation.warning, "");
    return animation;
}

Animation RoundTrip(const GifAnimation& gif) { return ReadOrFail(EncodeOrFail(gif)); }

std::string ErrorOf(const GifAnimation& gif) {
    Bytes file;
    std::string error;
    EXPECT_FALSE(EncodeGif(gif, &file, &error));
    EXPECT_TRUE(file.empty());
    return error;
}

TEST(GifWriter, What_was_written_is_read_back) {
    GifAnimation gif = TextGif(4, 2, {TextFrame("KRGB/YMCW"), TextFrame("WCMY/BGRK")});
    gif.frames[0].delay = 12;
    gif.frames[1].delay = 65535;
    gif.loopCount = 258;
    gif.comment = "two frames";
    const Animation animation = RoundTrip(gif);
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(ShowFrame(animation, 0), "KRGB/YMCW");
    EXPECT_EQ(ShowFrame(animation, 1), "WCMY/BGRK");
    EXPECT_EQ(animation.frames[0].indices, gif.frames[0].indices);
    EXPECT_EQ(animation.frames[0].delay, 12);
    EXPECT_EQ(animation.frames[1].delay, 65535);
    EXPECT_EQ(animation.loopCount, 258);
    EXPECT_EQ(animation.comment, "two frames");
    EXPECT_EQ(animation.globalPalette, test::TextPalette());
}

TEST(GifWriter, Every_loop_count_survives) {
    for (const int loopCount : {kLoopNone, kLoopForever, 1, 255, 256, 65535}) {
        GifAnimation gif = TextGif(1, 1, {TextFrame("R")});
        gif.loopCount = loopCount;
        EXPECT_EQ(RoundTrip(gif).loopCount, loopCount);
    }
}

TEST(GifWriter, Long_comments_are_divided_and_come_back_whole) {
    for (const size_t length : {1u, 254u, 255u, 256u, 510u, 1000u}) {
        GifAnimation gif = TextGif(1, 1, {TextFrame("R")});
        for (size_t i = 0; i < length; ++i) gif.comment += static_cast<char>(i * 7);
        EXPECT_EQ(RoundTrip(gif).comment, gif.comment) << length;
    }
}

TEST(GifWriter, Only_the_changed_rectangle_is_stored) {
    const Animation animation = RoundTrip(
        TextGif(5, 4, {TextFrame("RRRRR/RRRRR/RRRRR/RRRRR"), TextFrame("RRRRR/RRGRR/RRRGR/RRRRR")}));
    EXPECT_EQ(ShowFrame(animation, 1), "RRRRR/RRGRR/RRRGR/RRRRR");
    EXPECT_EQ(animation.frames[1].left, 2);
    EXPECT_EQ(animation.frames[1].top, 1);
}

TEST(GifWriter, An_unchanged_frame_is_kept_with_its_time) {
    GifAnimation gif = TextGif(3, 1, {TextFrame("RGB"), TextFrame("RGB"), TextFrame("...")});
    gif.frames[1].delay = 50;
    gif.frames[2].delay = 60;
    const Animation animation = RoundTrip(gif);
    ASSERT_EQ(animation.frames.size(), 3u);
    EXPECT_EQ(ShowFrame(animation, 1), "RGB");
    EXPECT_EQ(ShowFrame(animation, 2), "RGB");
    EXPECT_EQ(animation.frames[1].delay, 50);
    EXPECT_EQ(animation.frames[2].delay, 60);
}

TEST(GifWriter, A_frame_that_is_cleared_afterwards_keeps_all_that_there_is_to_clear) {
    // The second frame changes one pixel, but its disposal clears the red ones too.
    const Animation animation = RoundTrip(
        TextGif(4, 1, {TextFrame("RR.."), TextFrame("..G.", kDisposalBackground), TextFrame("...B")}));
    EXPECT_EQ(ShowFrame(animation, 1), "RRG.");
    EXPECT_EQ(ShowFrame(animation, 2), "...B");
}

TEST(GifWriter, A_frame_disposed_to_the_previous_is_cropped_to_what_it_changes) {
    const Animation animation = RoundTrip(
        TextGif(4, 1, {TextFrame("RRRR"), TextFrame("RRGR", kDisposalPrevious), TextFrame("B...")}));
    EXPECT_EQ(ShowFrame(animation, 1), "RRGR");
    EXPECT_EQ(animation.frames[1].left, 2);
    EXPECT_EQ(ShowFrame(animation, 2), "BRRR");
}

TEST(GifWriter, Random_frames_of_every_kind_look_the_same_cropped_or_not) {
    // Small pictures of few colours and many transparent pixels, so that cropping has something to do; what a
    // viewer shows is composed here from the uncropped frames.
    std::srand(1);
    for (int round = 0; round < 200; ++round) {
        const int width = 1 + std::rand() % 5;
        const int height = 1 + std::rand() % 4;
        std::vector<GifFrame> frames;
        std::vector<std::string> expected;
        std::string canvas(static_cast<size_t>(width * height), '.');
        for (int i = 0; i < 6; ++i) {
            std::string picture(canvas.size(), '.');
            for (char& letter : picture) letter = "R....GB...."[std::rand() % 11];
            const int disposal = std::rand() % 4;
            frames.push_back(TextFrame(picture, disposal));
            frames.back().transparentIndex = 8;
            const std::string before = canvas;
            for (size_t p = 0; p < canvas.size(); ++p)
                if (picture[p] != '.') canvas[p] = picture[p];
            expected.push_back(canvas);
            if (disposal == kDisposalBackground) canvas.assign(canvas.size(), '.');
            if (disposal == kDisposalPrevious) canvas = before;
        }
        const Animation animation = RoundTrip(TextGif(width, height, frames));
        for (size_t i = 0; i < expected.size(); ++i) {
            std::string shown = ShowFrame(animation, i);
            shown.erase(std::remove(shown.begin(), shown.end(), '/'), shown.end());
            ASSERT_EQ(shown, expected[i]) << "round " << round << ", frame " << i;
        }
    }
}

TEST(GifWriter, Local_palettes_of_any_size_colour_their_frames) {
    for (const size_t count : {1u, 2u, 3u, 17u, 255u, 256u}) {
        GifAnimation gif;
        gif.width = 16;
        gif.height = 16;
        GifFrame frame;
        for (size_t i = 0; i < count; ++i)
            frame.palette.push_back({static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), 77});
        for (size_t i = 0; i < 256; ++i) frame.indices.push_back(static_cast<uint8_t>(i % count));
        gif.frames = {frame};
        const Animation animation = RoundTrip(gif);
        for (size_t i = 0; i < 256; ++i) {
            const uint8_t* pixel = animation.frames[0].pixels.data() + 4 * i;
            ASSERT_EQ(pixel[0], i % count) << count;
            ASSERT_EQ(pixel[1], 255 - i % count);
            ASSERT_EQ(pixel[2], 77);
            ASSERT_EQ(pixel[3], 255);
        }
    }
}

TEST(GifWriter, Colours_that_stand_twice_in_the_palette_are_shown_alike) {
    GifAnimation gif = TextGif(4, 1, {TextFrame("KRGB")});
    gif.globalPalette = {{255, 0, 0}, {0, 255, 0}, {255, 0, 0}, {0, 255, 0}};
    EXPECT_EQ(ShowFrame(RoundTrip(gif), 0), "RGRG");
}

TEST(GifWriter, Large_frames_of_noise_survive) {
    GifAnimation gif;
    gif.width = 199;
    gif.height = 131;
    for (int i = 0; i < 256; ++i) gif.globalPalette.push_back({static_cast<uint8_t>(i), 0, 0});
    const Animation noise = RandomAnimation(199, 131, 2, 5, false);
    for (const Frame& source : noise.frames) {
        GifFrame frame;
        for (size_t i = 0; i < source.pixels.size(); i += 4) frame.indices.push_back(source.pixels[i]);
        gif.frames.push_back(frame);
    }
    const Animation animation = RoundTrip(gif);
    for (size_t i = 0; i < 2; ++i) EXPECT_TRUE(animation.frames[i].indices == gif.frames[i].indices);
}

// What a viewer shows of the frames as they are given: RGBA.
std::vector<Bytes> ShownPictures(const GifAnimation& gif) {
    const size_t area = static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height);
    Bytes canvas(4 * area);
    std::vector<Bytes> pictures;
    for (const GifFrame& frame : gif.frames) {
        const Bytes before = canvas;
        const std::vector<RgbColor>& palette = frame.palette.empty() ? gif.globalPalette : frame.palette;
        for (size_t i = 0; i < area; ++i) {
            if (frame.indices[i] == frame.transparentIndex) continue;
            const RgbColor color = palette[frame.indices[i]];
            const uint8_t pixel[] = {color.red, color.green, color.blue, 255};
            std::copy_n(pixel, 4, canvas.begin() + static_cast<ptrdiff_t>(4 * i));
        }
        pictures.push_back(canvas);
        if (frame.disposal == kDisposalBackground) canvas.assign(4 * area, 0);
        if (frame.disposal == kDisposalPrevious) canvas = before;
    }
    return pictures;
}

// The file plays as it was given: in the project's reader, and in a decoder that shares no code with it.
void ExpectSamePlay(const GifAnimation& gif, const Bytes& file) {
    const std::vector<Bytes> expected = ShownPictures(gif);
    const Animation read = ReadOrFail(file);
    const test::DecodedGif decoded = test::DecodeGif(file);
    ASSERT_EQ(decoded.fault, "");
    ASSERT_EQ(read.frames.size(), expected.size());
    ASSERT_EQ(decoded.frames.size(), expected.size());
    EXPECT_EQ(read.loopCount, gif.loopCount);
    EXPECT_EQ(decoded.loopCount, gif.loopCount);
    EXPECT_EQ(read.comment, gif.comment);
    EXPECT_EQ(read.width, gif.width);
    EXPECT_EQ(read.height, gif.height);
    for (size_t i = 0; i < expected.size(); ++i) {
        ASSERT_TRUE(read.frames[i].pixels == expected[i]) << "frame " << i;
        ASSERT_TRUE(decoded.frames[i].pixels == expected[i]) << "frame " << i;
        EXPECT_EQ(read.frames[i].delay, gif.frames[i].delay);
        EXPECT_EQ(decoded.frames[i].delay, gif.frames[i].delay);
    }
}

// Bytes that gifsicle 1.93 makes with -O3 of the frames of each scene in the size of the test.
struct PeerSize {
    const char* scene;
    size_t bytes;
};
constexpr PeerSize kPeerSizes[] = {
    {.scene = "sprite_over_picture", .bytes = 15656}, {.scene = "transparent_sprite", .bytes = 4079},
    {.scene = "typed_text", .bytes = 2001},           {.scene = "noise", .bytes = 129421},
    {.scene = "scrolling_gradient", .bytes = 34549},  {.scene = "fading_picture", .bytes = 82448},
    {.scene = "turning_line", .bytes = 2598},         {.scene = "blinking_lamps", .bytes = 10411},
    {.scene = "dithered_zoom", .bytes = 28785},       {.scene = "growing_rings", .bytes = 4941},
    {.scene = "blinking_cursor", .bytes = 1325},
};

TEST(GifWriter, Every_scene_plays_the_same_and_is_no_larger_than_a_peer_makes_it) {
    ASSERT_EQ(std::size(kPeerSizes), test::kGifSceneCount);
    for (size_t i = 0; i < test::kGifSceneCount; ++i) {
        SCOPED_TRACE(test::kGifScenes[i].name);
        ASSERT_STREQ(kPeerSizes[i].scene, test::kGifScenes[i].name);
        const GifAnimation gif = test::kGifScenes[i].make(120, 90, 12);
        const Bytes file = EncodeOrFail(gif);
        ExpectSamePlay(gif, file);
        EXPECT_LE(file.size(), kPeerSizes[i].bytes);
    }
}

TEST(GifWriter, Frames_of_the_sample_play_the_same) {
    GifAnimation gif;
    gif.width = kSampleWidth;
    gif.height = kSampleHeight;
    gif.frames.resize(2);
    for (int i = 0; i < 2; ++i) {
        GifFrame& frame = gif.frames[static_cast<size_t>(i)];
        QuantizeFrame(DrawSampleFrame(i).pixels.data(), kSampleWidth, kSampleHeight, 256, &frame);
        frame.delay = kSampleDelay;
    }
    ExpectSamePlay(gif, EncodeOrFail(gif));
}

// Frames with palettes of their own, few or many colours, any disposal and many transparent pixels.
GifAnimation RandomGif(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](size_t limit) { return random() % limit; };
    GifAnimation gif;
    gif.width = 1 + static_cast<int>(below(40));
    gif.height = 1 + static_cast<int>(below(30));
    gif.loopCount = static_cast<int>(below(4)) - 1;
    const size_t colors = 1 + below(below(2) ? 256 : 12);
    for (size_t i = 0; i < colors; ++i)
        gif.globalPalette.push_back({static_cast<uint8_t>(random() % 3 * 100), static_cast<uint8_t>(i), 0});
    const size_t area = static_cast<size_t>(gif.width * gif.height);
    for (size_t i = 0; i < 1 + below(7); ++i) {
        GifFrame frame;
        frame.delay = static_cast<int>(below(5));
        frame.disposal = static_cast<int>(below(4));
        if (below(2)) {
            const size_t own = 1 + below(256);
            for (size_t k = 0; k < own; ++k)
                frame.palette.push_back(
                    {static_cast<uint8_t>(k), static_cast<uint8_t>(random() % 3 * 100), 9});
        }
        const size_t count = frame.palette.empty() ? colors : frame.palette.size();
        if (below(3) > 0) frame.transparentIndex = static_cast<int>(below(count));
        const size_t share = below(11);
        for (size_t pixel = 0; pixel < area; ++pixel) {
            const bool through = frame.transparentIndex >= 0 && below(10) < share;
            frame.indices.push_back(
                static_cast<uint8_t>(through ? static_cast<size_t>(frame.transparentIndex) : below(count)));
        }
        gif.frames.push_back(frame);
    }
    return gif;
}

TEST(GifWriter, Random_animations_of_many_palettes_play_the_same) {
    for (unsigned seed = 0; seed < 120; ++seed) {
        SCOPED_TRACE(seed);
        const GifAnimation gif = RandomGif(seed);
        ExpectSamePlay(gif, EncodeOrFail(gif));
        if (HasFailure()) return;
    }
}

TEST(GifWriter, More_colours_than_a_palette_has_come_back_behind_a_frame_that_is_taken_away) {
    // The last picture is nearly the one before it, which would be kept, but shows 200 colours of the first
    // frame and 200 new ones.
    GifAnimation gif;
    gif.width = 128;
    gif.height = 100;
    gif.frames.resize(3);
    for (int i = 0; i < 256; ++i) {
        gif.frames[0].palette.push_back({static_cast<uint8_t>(i), 1, 1});
        gif.frames[2].palette.push_back({1, static_cast<uint8_t>(i), 1});
    }
    gif.frames[1].palette = {{9, 9, 9}};
    gif.frames[2].palette[255] = {9, 9, 9};
    gif.frames[2].transparentIndex = 254;
    gif.frames[0].disposal = kDisposalKeep;
    gif.frames[1].disposal = kDisposalPrevious;
    for (size_t i = 0; i < 12800; ++i) {
        gif.frames[0].indices.push_back(static_cast<uint8_t>(i % 256));
        gif.frames[1].indices.push_back(0);
        gif.frames[2].indices.push_back(i < 200 ? 254 : i < 400 ? static_cast<uint8_t>(i - 200) : 255);
    }
    ExpectSamePlay(gif, EncodeOrFail(gif));
}

TEST(GifWriter, The_last_frame_is_cleared_when_the_source_clears_it_and_the_first_one_needs_it) {
    const GifAnimation gif =
        TextGif(3, 1, {TextFrame("R..", kDisposalBackground), TextFrame(".GG", kDisposalBackground)});
    EXPECT_EQ(RoundTrip(gif).frames[1].disposal, kDisposalBackground);
    const GifAnimation kept =
        TextGif(3, 1, {TextFrame("R..", kDisposalBackground), TextFrame(".GG", kDisposalKeep)});
    EXPECT_EQ(RoundTrip(kept).frames[1].disposal, kDisposalKeep);
}

TEST(GifWriter, Unused_colours_are_left_out) {
    GifAnimation gif = TextGif(3, 1, {TextFrame("KRG")});
    const size_t small = EncodeOrFail(gif).size();
    gif.globalPalette.resize(256);
    EXPECT_EQ(EncodeOrFail(gif).size(), small);
}

// The largest distance of a pixel from what was to be shown; -1 when transparency differs.
double LargestError(const GifAnimation& gif, const Bytes& file) {
    const std::vector<Bytes> expected = ShownPictures(gif);
    const test::DecodedGif decoded = test::DecodeGif(file);
    double largest = decoded.frames.size() == expected.size() ? 0 : -1;
    for (size_t frame = 0; frame < expected.size() && largest >= 0; ++frame) {
        const Bytes& shown = decoded.frames[frame].pixels;
        for (size_t i = 0; i < shown.size(); i += 4) {
            double sum = 0;
            for (size_t channel = 0; channel < 3; ++channel) {
                const double difference = shown[i + channel] - expected[frame][i + channel];
                sum += difference * difference;
            }
            largest = std::max(largest, std::sqrt(sum));
            if (shown[i + 3] != expected[frame][i + 3]) return -1;
        }
    }
    return largest;
}

TEST(GifWriter, Lossy_files_are_smaller_and_no_pixel_is_off_by_more_than_the_bound) {
    for (const test::GifScene& scene : test::kGifScenes) {
        SCOPED_TRACE(scene.name);
        const GifAnimation gif = scene.make(100, 70, 6);
        const size_t exact = EncodeOrFail(gif).size();
        size_t smallest = exact;
        for (const int lossy : {20, 80, 200}) {
            Bytes file;
            std::string error;
            ASSERT_TRUE(EncodeGif(gif, &file, &error, {.lossy = lossy})) << error;
            const double largest = LargestError(gif, file);
            EXPECT_GE(largest, 0);
            EXPECT_LE(largest, lossy / 4.0);
            smallest = std::min(smallest, file.size());
        }
        // Few colours are too far from each other to stand for one another.
        const bool hasNears = gif.globalPalette.empty() || gif.globalPalette.size() > 16;
        EXPECT_LE(smallest, hasNears ? exact * 9 / 10 : exact);
    }
}

TEST(GifWriter, Lossy_random_animations_keep_transparency_and_the_bound) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        const GifAnimation gif = RandomGif(seed);
        Bytes file;
        std::string error;
        ASSERT_TRUE(EncodeGif(gif, &file, &error, {.lossy = 200})) << error;
        const double largest = LargestError(gif, file);
        ASSERT_GE(largest, 0);
        ASSERT_LE(largest, 50);
    }
}

TEST(GifWriter, Colour_profile_XMP_and_background_survive) {
    GifAnimation gif = TextGif(3, 1, {TextFrame("RGB"), TextFrame("BGR")});
    gif.metadata.colorProfile = Bytes(700, 0);
    gif.metadata.colorProfile[300] = 7;
    const std::string xmp = "<x:xmpmeta>" + std::string(1000, 'x') + "</x:xmpmeta>";
    gif.metadata.xmp.assign(xmp.begin(), xmp.end());
    gif.hasBackground = true;
    gif.background = {1, 2, 3};  // not in the palette, which has three colours and so a free entry
    const Bytes file = EncodeOrFail(gif);
    const Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.metadata.colorProfile, gif.metadata.colorProfile);
    EXPECT_EQ(animation.metadata.xmp, gif.metadata.xmp);
    EXPECT_EQ(animation.background, gif.background);
    ExpectSamePlay(gif, file);
    gif.background = {0, 255, 0};
    EXPECT_EQ(RoundTrip(gif).background, gif.background);
}

TEST(GifWriter, XMP_of_every_length_is_followed_by_frames_that_are_read) {
    for (size_t length = 1; length < 300; ++length) {
        GifAnimation gif = TextGif(2, 1, {TextFrame("RG"), TextFrame("GR")});
        for (size_t i = 0; i < length; ++i) gif.metadata.xmp.push_back(static_cast<uint8_t>(' ' + i % 90));
        const Animation animation = RoundTrip(gif);
        ASSERT_EQ(animation.frames.size(), 2u) << length;
        ASSERT_EQ(animation.metadata.xmp, gif.metadata.xmp);
    }
    GifAnimation gif = TextGif(2, 1, {TextFrame("RG")});
    gif.metadata.xmp = {'a', 0, 'b'};
    EXPECT_TRUE(RoundTrip(gif).metadata.xmp.empty());
}

TEST(GifWriter, What_the_format_cannot_hold_is_refused_with_a_reason) {
    EXPECT_EQ(ErrorOf(TextGif(1, 1, {})), "a GIF animation needs at least one frame");
    EXPECT_EQ(ErrorOf(TextGif(0, 1, {TextFrame("")})), "a GIF animation may have 1 to 65535 pixels a side");
    EXPECT_EQ(ErrorOf(TextGif(65536, 1, {TextFrame("R")})),
              "a GIF animation may have 1 to 65535 pixels a side");
    EXPECT_EQ(ErrorOf(TextGif(2, 1, {TextFrame("R")})), "a GIF frame must cover the whole animation");
    GifAnimation withoutPalette = TextGif(1, 1, {TextFrame("R")});
    withoutPalette.globalPalette.clear();
    EXPECT_EQ(ErrorOf(withoutPalette), "a GIF frame needs a palette");
    GifAnimation beyond = TextGif(1, 1, {TextFrame("R")});
    beyond.frames[0].indices = {8};
    EXPECT_EQ(ErrorOf(beyond), "a GIF frame has pixels beyond its palette");
    GifAnimation large = TextGif(1, 1, {TextFrame("R")});
    large.globalPalette.resize(257);
    EXPECT_EQ(ErrorOf(large), "a GIF palette may have 256 colours at most");
}

}  // namespace
}  // namespace kfx
