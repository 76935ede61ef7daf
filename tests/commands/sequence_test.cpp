// SPDX-License-Identifier: MIT
#include "commands/sequence.h"

#include <gtest/gtest.h>

#include "commands/report.h"
#include "media/animation_writer.h"
#include "tests/cli/test_files.h"

namespace kfx::commands {
namespace {

using test::TemporaryFolder;

using Bytes = std::vector<uint8_t>;

struct Sequence : ::testing::Test {
    const TemporaryFolder folder;
    ReadLimits limits = {.raisedBy = "--max-pixels"};
    Animation joined;
    Report report;

    // A GIF of 2 x 1 pixels a frame; its frames' two indices are given.
    void WriteIndexed(const std::string& name, const std::vector<RgbColor>& palette,
                      const std::vector<Bytes>& frames, int delay = 0) const {
        GifAnimation gif;
        gif.width = 2;
        gif.height = 1;
        gif.globalPalette = palette;
        gif.loopCount = 5;
        gif.comment = name;
        for (const Bytes& indices : frames) {
            GifFrame frame;
            frame.indices = indices;
            frame.delay = delay;
            gif.frames.push_back(frame);
        }
        std::string error;
        ASSERT_TRUE(WriteGif(folder.path + name, gif, &error)) << error;
    }
    void WriteRgba(const std::string& name, int width, int height, const Bytes& pixels) const {
        Picture picture;
        picture.width = width;
        picture.height = height;
        picture.pixels = pixels;
        std::string error;
        ASSERT_TRUE(WritePng(folder.path + name, picture, &error)) << error;
    }
    bool Join(const std::vector<std::string>& names, int delay = -1) {
        SourceFiles source;
        for (const std::string& name : names) source.files.push_back(folder.path + name);
        report = {};
        joined = {};
        return ReadSequence(source, limits, delay, &joined, &report);
    }
    std::vector<int> Times() const {
        std::vector<int> times;
        for (const Frame& frame : joined.frames) times.push_back(MillisecondsOf(frame));
        return times;
    }
};

const Bytes kOpaque = {1, 2, 3, 255, 4, 5, 6, 255};
const Bytes kHalf = {7, 8, 9, 128, 0, 0, 0, 0};

TEST_F(Sequence, Stills_become_frames_in_their_order_and_keep_their_alpha) {
    WriteRgba("a.png", 2, 1, kOpaque);
    WriteRgba("b.png", 2, 1, kHalf);
    ASSERT_TRUE(Join({"b.png", "a.png", "b.png"})) << report.error;
    ASSERT_EQ(joined.frames.size(), 3u);
    EXPECT_EQ(joined.frames[0].pixels, kHalf);
    EXPECT_EQ(joined.frames[1].pixels, kOpaque);
    EXPECT_TRUE(joined.frames[0].transparent);
    EXPECT_FALSE(joined.frames[1].transparent);
    EXPECT_EQ(joined.loopCount, kLoopForever);
}

TEST_F(Sequence, Times_are_those_of_the_command_line_or_of_the_files) {
    WriteRgba("a.png", 2, 1, kOpaque);
    WriteIndexed("b.gif", {{0, 0, 0}, {9, 9, 9}}, {{0, 1}, {1, 0}}, 7);
    ASSERT_TRUE(Join({"a.png", "b.gif"}));
    EXPECT_EQ(Times(), (std::vector<int>{kStillMilliseconds, 70, 70}));
    ASSERT_TRUE(Join({"a.png", "b.gif"}, 33));
    EXPECT_EQ(Times(), (std::vector<int>{33, 33, 33}));
    EXPECT_EQ(joined.frames[0].delay + joined.frames[1].delay + joined.frames[2].delay, 10);
    ASSERT_TRUE(Join({"b.gif"}, 0));
    EXPECT_EQ(Times(), (std::vector<int>{0, 0}));
}

TEST_F(Sequence, A_single_file_stays_as_it_is) {
    WriteRgba("a.png", 2, 1, kOpaque);
    ASSERT_TRUE(Join({"a.png"}));
    EXPECT_EQ(joined.loopCount, kLoopNone);
    EXPECT_EQ(Times(), std::vector<int>{0});
}

TEST_F(Sequence, The_first_file_says_how_often_and_what_about) {
    WriteIndexed("a.gif", {{0, 0, 0}, {9, 9, 9}}, {{0, 1}, {1, 0}});
    WriteRgba("b.png", 2, 1, kOpaque);
    ASSERT_TRUE(Join({"a.gif", "b.png"}));
    EXPECT_EQ(joined.loopCount, 5);
    EXPECT_EQ(joined.comment, "a.gif");
    ASSERT_TRUE(Join({"b.png", "a.gif"}));
    EXPECT_EQ(joined.loopCount, kLoopForever);
    EXPECT_EQ(joined.comment, "");
}

TEST_F(Sequence, Palettes_are_joined_while_there_is_room) {
    const RgbColor black, red = {255, 0, 0}, blue = {0, 0, 255}, white = {255, 255, 255};
    WriteIndexed("a.gif", {black, red}, {{0, 1}});
    WriteIndexed("b.gif", {blue, red, white, black}, {{2, 1}});
    ASSERT_TRUE(Join({"a.gif", "b.gif"}));
    ASSERT_TRUE(joined.hasGlobalPalette);
    for (const Frame& frame : joined.frames) {
        ASSERT_TRUE(frame.indexed);
        for (size_t i = 0; i < 2; ++i) {
            const RgbColor color = joined.globalPalette.at(frame.indices[i]);
            EXPECT_EQ((Bytes{color.red, color.green, color.blue, 255}),
                      Bytes(frame.pixels.begin() + 4 * static_cast<ptrdiff_t>(i),
                            frame.pixels.begin() + 4 * static_cast<ptrdiff_t>(i) + 4));
        }
    }
    EXPECT_EQ(joined.globalPalette[0], black);
    EXPECT_EQ(joined.globalPalette[1], red);
    EXPECT_EQ(joined.frames[1].pixels, (Bytes{255, 255, 255, 255, 255, 0, 0, 255}));
}

TEST_F(Sequence, Without_room_or_without_a_palette_there_is_none) {
    std::vector<RgbColor> many(256);
    std::vector<Bytes> all;  // the writer leaves out colours that nobody uses
    for (size_t i = 0; i < many.size(); ++i) many[i].red = static_cast<uint8_t>(i);
    for (int i = 0; i < 256; i += 2) all.push_back({static_cast<uint8_t>(i), static_cast<uint8_t>(i + 1)});
    WriteIndexed("a.gif", many, all);
    WriteIndexed("b.gif", {{0, 9, 9}, {0, 0, 9}}, {{0, 1}});
    WriteRgba("c.png", 2, 1, kOpaque);
    for (const char* other : {"b.gif", "c.png"}) {
        ASSERT_TRUE(Join({"a.gif", other}));
        EXPECT_FALSE(joined.hasGlobalPalette);
        EXPECT_TRUE(joined.globalPalette.empty());
        for (const Frame& frame : joined.frames) EXPECT_TRUE(!frame.indexed && frame.indices.empty());
    }
    ASSERT_TRUE(Join({"c.png", "b.gif", "b.gif"}));
    EXPECT_FALSE(joined.hasGlobalPalette);
    ASSERT_TRUE(Join({"a.gif", "a.gif"}));
    EXPECT_EQ(joined.globalPalette.size(), 256u);
    EXPECT_EQ(joined.frames[255].indices, joined.frames[127].indices);
    EXPECT_TRUE(joined.frames[255].indexed);
}

TEST_F(Sequence, A_file_of_another_size_is_named) {
    WriteRgba("a.png", 2, 1, kOpaque);
    WriteRgba("b.png", 1, 2, kOpaque);
    EXPECT_FALSE(Join({"a.png", "a.png", "b.png"}));
    EXPECT_EQ(report.exitCode, kExitBadInput);
    EXPECT_EQ(report.error, folder.path + "b.png: is 1 x 2 pixels large, but " + folder.path +
                                "a.png is 2 x 1; joined pictures must have one size.");
}

TEST_F(Sequence, A_file_that_cannot_be_read_is_named) {
    WriteRgba("a.png", 2, 1, kOpaque);
    EXPECT_FALSE(Join({"a.png", "unknown.png"}));
    EXPECT_EQ(report.exitCode, kExitBadInput);
    EXPECT_EQ(report.error.find(folder.path + "unknown.png: "), 0u) << report.error;
}

TEST_F(Sequence, What_cannot_be_held_is_refused_before_it_is_read) {
    WriteRgba("a.png", 1024, 1024, Bytes(4 << 20, 90));
    std::vector<std::string> names(512, "a.png");
    names.emplace_back("unknown.png");
    EXPECT_FALSE(Join(names));
    EXPECT_EQ(report.error,
              folder.path +
                  "a.png: the 513 frames of 1024 x 1024 together have 537919488 pixels; the limit is "
                  "536870912 (--max-pixels 538 raises it).");
}

TEST_F(Sequence, A_file_beyond_the_limit_is_refused_with_the_pixels_of_all) {
    WriteIndexed("a.gif", {{1, 2, 3}, {4, 5, 6}}, {{0, 1}});
    WriteIndexed("b.gif", {{1, 2, 3}, {4, 5, 6}}, {{0, 1}, {1, 0}});
    limits.maxPixels = 5;
    EXPECT_FALSE(Join({"a.gif", "b.gif"}));
    EXPECT_EQ(report.error, folder.path +
                                "b.gif: the pictures together have at least 6 pixels; the limit is 5 "
                                "(--max-pixels 1 raises it).");
    limits.maxPixels = 6;
    EXPECT_TRUE(Join({"a.gif", "b.gif"})) << report.error;
}

}  // namespace
}  // namespace kfx::commands
