// SPDX-License-Identifier: MIT
// The note that says how a file was made: where each format has it, and what is no such note.
#include <gtest/gtest.h>

#include <functional>

#include "media/animation_writer.h"
#include "media/recipe_note.h"
#include "tests/media/gif_builder.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::ReadOrFail;

std::string Recipe(size_t bytes = 300) {
    std::string text(kRecipeStart);
    while (text.size() + kRecipeEnd.size() < bytes) text += static_cast<char>('a' + text.size() % 26);
    return text.append(kRecipeEnd);
}

GifAnimation Dots(const std::string& comment, const std::string& recipe) {
    GifAnimation gif;
    gif.width = gif.height = 2;
    gif.globalPalette = {{0, 0, 0}, {255, 255, 255}};
    gif.comment = comment;
    gif.recipe = recipe;
    gif.frames.push_back({.indices = {0, 1, 1, 0}, .palette = {}});
    return gif;
}

Animation Picture(const std::string& comment, const std::string& recipe) {
    Animation animation;
    animation.width = animation.height = 1;
    animation.comment = comment;
    animation.recipe = recipe;
    for (const uint8_t grey : {uint8_t{10}, uint8_t{20}}) {
        Frame frame;
        frame.pixels = {grey, grey, grey, 255};
        frame.delay = 10;
        animation.frames.push_back(frame);
    }
    return animation;
}

struct Format {
    const char* name;
    bool hasComment;
    std::function<Bytes(const std::string& comment, const std::string& recipe)> write;
};

void PrintTo(const Format& format, std::ostream* out) { *out << format.name; }

Bytes GifWith(const std::string& comment, const std::string& recipe) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeGif(Dots(comment, recipe), &file, &error)) << error;
    return file;
}

Bytes Webp(const std::string& comment, const std::string& recipe) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeWebp(Picture(comment, recipe), &file, &error)) << error;
    return file;
}

// A still without anything else beside the picture has the simplest kind of file.
Bytes StillWebp(const std::string& comment, const std::string& recipe) {
    Animation still = Picture(comment, recipe);
    still.frames.pop_back();
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeWebp(still, &file, &error)) << error;
    return file;
}

Bytes Apng(const std::string& comment, const std::string& recipe) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeApng(Picture(comment, recipe), &file, &error)) << error;
    return file;
}

Bytes Png(const std::string& comment, const std::string& recipe) {
    const Animation notes = Picture(comment, recipe);
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodePng(1, 1, notes.frames[0].pixels.data(), &file, &error, notes)) << error;
    return file;
}

class RecipeNotes : public ::testing::TestWithParam<Format> {};

TEST_P(RecipeNotes, Comment_and_recipe_come_back_each_by_itself) {
    for (const char* comment : {"", "a comment"}) {
        for (const size_t bytes : {size_t{0}, size_t{200}, size_t{300}, size_t{5000}}) {
            const std::string recipe = bytes == 0 ? "" : Recipe(bytes);
            const Animation read = ReadOrFail(GetParam().write(comment, recipe));
            EXPECT_EQ(read.recipe, recipe);
            EXPECT_EQ(read.comment, GetParam().hasComment ? comment : "");
        }
    }
}

TEST_P(RecipeNotes, Letters_beyond_ASCII_come_back) {
    const std::string recipe = std::string(kRecipeStart) + "caf\xC3\xA9" + std::string(kRecipeEnd);
    EXPECT_EQ(ReadOrFail(GetParam().write("", recipe)).recipe, recipe);
}

TEST_P(RecipeNotes, What_is_too_long_or_begins_otherwise_is_none) {
    EXPECT_EQ(ReadOrFail(GetParam().write("", Recipe(kMostRecipeBytes))).recipe.size(), kMostRecipeBytes);
    EXPECT_EQ(ReadOrFail(GetParam().write("", Recipe(kMostRecipeBytes + 1))).recipe, "");
    EXPECT_EQ(ReadOrFail(GetParam().write("", " " + Recipe())).recipe, "");
}

INSTANTIATE_TEST_SUITE_P(Formats, RecipeNotes,
                         ::testing::Values(Format{.name = "Gif", .hasComment = true, .write = GifWith},
                                           Format{.name = "Webp", .hasComment = false, .write = Webp},
                                           Format{
                                               .name = "StillWebp", .hasComment = false, .write = StillWebp},
                                           Format{.name = "Apng", .hasComment = true, .write = Apng},
                                           Format{.name = "Png", .hasComment = true, .write = Png}),
                         [](const auto& one) { return one.param.name; });

// Such as a document of the plug-in's window that somebody has put there.
TEST(RecipeNotesOfGif, A_comment_that_only_begins_or_ends_as_a_recipe_stays_a_comment) {
    const std::string document = std::string(kRecipeStart.substr(0, kRecipeStart.find(";kestrel"))) +
                                 "SCROLL100=18\n;End of document\n";
    const std::string begun = std::string(kRecipeStart) + "and more";
    for (const std::string& comment : {document, begun, "a" + Recipe(), Recipe() + "a"}) {
        const Animation read = ReadOrFail(GifWith(comment, Recipe(220)));
        EXPECT_EQ(read.comment, comment);
        EXPECT_EQ(read.recipe, Recipe(220));
    }
}

TEST(RecipeNotesOfGif, The_last_one_counts_and_comments_around_it_stay) {
    test::TestGif gif = test::Gif(1, 1, {test::Part("R")});
    gif.comments = {"before", Recipe(200), Recipe(220), "behind"};
    const Animation read = ReadOrFail(BuildGif(gif));
    EXPECT_EQ(read.recipe, Recipe(220));
    EXPECT_EQ(read.comment, "before\nbehind");
}

// Half a recipe would be repeated as if it were whole.
TEST(RecipeNotesOfGif, A_cut_one_is_none) {
    Bytes file = GifWith("whole", Recipe(600));
    const std::string text(file.begin(), file.end());
    const size_t start = text.find(kRecipeStart);
    ASSERT_NE(start, std::string::npos);
    file.resize(start + 400);
    Animation read;
    std::string error;
    EXPECT_FALSE(ReadAnimationFromMemory(file.data(), file.size(), &read, &error));
    EXPECT_EQ(read.recipe, "");
}

TEST(RecipeNotesOfPng, From_256_bytes_on_it_is_compressed) {
    const auto isPlain = [](size_t bytes) {
        const Bytes file = Png("", Recipe(bytes));
        return std::string(file.begin(), file.end()).find(Recipe(bytes)) != std::string::npos;
    };
    EXPECT_TRUE(isPlain(255));
    EXPECT_FALSE(isPlain(256));
}

TEST(RecipeNotesOfPng, Each_picture_of_a_series_has_its_own) {
    const std::string path = ::testing::TempDir() + "kfx-recipe-series.png";
    std::string error;
    ASSERT_TRUE(WritePngFrames(path, Picture("", "not this one"), &error,
                               [](size_t frame) { return Recipe(200 + frame); }));
    const std::vector<std::string> paths = PngFramePaths(path, 2);
    for (size_t i = 0; i < paths.size(); ++i) {
        Animation read;
        ASSERT_TRUE(ReadAnimation(paths[i], &read, &error)) << error;
        EXPECT_EQ(read.recipe, Recipe(200 + i));
        std::remove(paths[i].c_str());
    }
}

}  // namespace
}  // namespace kfx
