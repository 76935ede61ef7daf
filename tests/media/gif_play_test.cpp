// SPDX-License-Identifier: MIT
// Written files show what was to be written: the same pictures for the same times, whatever parts, palettes
// and disposals the writer has chosen.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "media/animation_writer.h"
#include "media/quantize.h"
#include "media/sample_animation.h"
#include "tests/media/gif_decoder.h"
#include "tests/media/gif_scenes.h"
#include "tests/media/gif_text.h"

namespace kfx::test {
namespace {

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
    const Animation read = test::ReadWhole(file);
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

TEST(GifPlay, Every_scene_plays_the_same_and_is_no_larger_than_a_peer_makes_it) {
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

TEST(GifPlay, Frames_of_the_sample_play_the_same) {
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
    const size_t area = static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height);
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

TEST(GifPlay, Random_animations_of_many_palettes_play_the_same) {
    for (unsigned seed = 0; seed < 120; ++seed) {
        SCOPED_TRACE(seed);
        const GifAnimation gif = RandomGif(seed);
        ExpectSamePlay(gif, EncodeOrFail(gif));
        if (HasFailure()) return;
    }
}

// The last picture is nearly the one before it, which would be kept, but shows 200 colours of the first frame
// and 200 new ones.
GifAnimation ManyColorsComeBack() {
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
    return gif;
}

TEST(GifPlay, More_colours_than_a_palette_has_come_back_behind_a_frame_that_is_taken_away) {
    const GifAnimation gif = ManyColorsComeBack();
    ExpectSamePlay(gif, EncodeOrFail(gif));
}

// The topmost row is that of the first frame: the one that is cleared draws below it only.
TEST(GifPlay, A_frame_of_an_animation_that_needs_its_own_disposals_clears_what_others_drew) {
    GifAnimation gif = ManyColorsComeBack();
    gif.frames[2].disposal = kDisposalBackground;
    GifFrame dot;
    dot.palette = {{0, 0, 0}, {77, 88, 99}};
    dot.transparentIndex = 0;
    dot.indices.assign(12800, 0);
    dot.indices[6400] = 1;
    gif.frames.push_back(dot);
    ExpectSamePlay(gif, EncodeOrFail(gif));
}

TEST(GifPlay, The_last_frame_is_cleared_when_the_source_clears_it_and_the_first_one_needs_it) {
    const GifAnimation gif =
        TextGif(3, 1, {TextFrame("R..", kDisposalBackground), TextFrame(".GG", kDisposalBackground)});
    EXPECT_EQ(RoundTrip(gif).frames[1].disposal, kDisposalBackground);
    const GifAnimation kept =
        TextGif(3, 1, {TextFrame("R..", kDisposalBackground), TextFrame(".GG", kDisposalKeep)});
    EXPECT_EQ(RoundTrip(kept).frames[1].disposal, kDisposalKeep);
}

TEST(GifPlay, Unused_colours_are_left_out) {
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

TEST(GifPlay, Lossy_files_are_smaller_and_no_pixel_is_off_by_more_than_the_bound) {
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

TEST(GifPlay, A_loss_that_no_two_colours_allow_gives_the_exact_file) {
    for (const test::GifScene& scene : test::kGifScenes) {
        SCOPED_TRACE(scene.name);
        const GifAnimation gif = scene.make(100, 70, 6);
        Bytes file;
        std::string error;
        ASSERT_TRUE(EncodeGif(gif, &file, &error, {.lossy = 1})) << error;
        EXPECT_EQ(file.size(), EncodeOrFail(gif).size());
        EXPECT_TRUE(file == EncodeOrFail(gif));
    }
}

TEST(GifPlay, Lossy_random_animations_keep_transparency_and_the_bound) {
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

TEST(GifPlay, Colour_profile_XMP_and_background_survive) {
    GifAnimation gif = TextGif(3, 1, {TextFrame("RGB"), TextFrame("BGR")});
    gif.metadata.colorProfile = Bytes(700, 0);
    gif.metadata.colorProfile[300] = 7;
    const std::string xmp = "<x:xmpmeta>" + std::string(1000, 'x') + "</x:xmpmeta>";
    gif.metadata.xmp.assign(xmp.begin(), xmp.end());
    gif.hasBackground = true;
    gif.background = {1, 2, 3};  // not in the palette, which has three colours and so a free entry
    const Bytes file = EncodeOrFail(gif);
    const Animation animation = test::ReadWhole(file);
    EXPECT_EQ(animation.metadata.colorProfile, gif.metadata.colorProfile);
    EXPECT_EQ(animation.metadata.xmp, gif.metadata.xmp);
    EXPECT_EQ(animation.background, gif.background);
    ExpectSamePlay(gif, file);
    gif.background = {0, 255, 0};
    EXPECT_EQ(RoundTrip(gif).background, gif.background);
}

TEST(GifPlay, XMP_of_every_length_is_followed_by_frames_that_are_read) {
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

}  // namespace
}  // namespace kfx::test
