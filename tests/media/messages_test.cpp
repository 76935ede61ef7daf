// SPDX-License-Identifier: MIT
// What is said of damaged files, whatever the damage: one plain clause in the project's own words.
#include <gtest/gtest.h>

#include <set>

#include "media/animation.h"
#include "media/animation_writer.h"
#include "media/apng.h"
#include "media/file_io.h"
#include "tests/media/gif_builder.h"
#include "tests/support/plain_message.h"

namespace kfx {
namespace {

using test::Bytes;
using test::RandomAnimation;

constexpr size_t kPlaces = 300;  // of damage in each file

void ExpectPlain(const std::string& clause, const std::string& damage) {
    EXPECT_EQ(test::LibraryWordIn(clause), "") << damage << ": " << clause;
    EXPECT_EQ(clause.find('\n'), std::string::npos) << damage << ": " << clause;
    EXPECT_NE(clause.back(), '.') << damage << ": the caller ends the sentence: " << clause;
    EXPECT_NE(clause.find(' '), std::string::npos) << damage << ": a code is no clause: " << clause;
}

// Reads the file and keeps what is said of it.
void Collect(const Bytes& file, const std::string& damage, std::set<std::string>* clauses) {
    Animation animation;
    std::string error;
    const bool read = ReadAnimationFromMemory(file.data(), file.size(), &animation, &error);
    EXPECT_EQ(read, error.empty()) << damage;
    for (const std::string& clause : {error, animation.warning}) {
        if (!clause.empty() && clauses->insert(clause).second) ExpectPlain(clause, damage);
    }
}

// The file cut, with a bit turned, and with a byte set, at places all over it.
std::set<std::string> ClausesFor(const Bytes& file) {
    std::set<std::string> clauses;
    for (size_t i = 0; i < kPlaces; ++i) {
        // Every byte of the head, then farther and farther apart.
        const size_t place =
            i < kPlaces / 2 ? i : kPlaces / 2 + (i - kPlaces / 2) * file.size() / kPlaces * 2;
        if (place >= file.size()) break;
        const std::string name = " at " + std::to_string(place);
        Collect(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(place)), "cut" + name, &clauses);
        for (const int bit : {0, 4, 7}) {
            Bytes damaged = file;
            damaged[place] = static_cast<uint8_t>(damaged[place] ^ 1 << bit);
            Collect(damaged, "bit " + std::to_string(bit) + name, &clauses);
        }
        Bytes filled = file;
        filled[place] = 255;
        Collect(filled, "255" + name, &clauses);
    }
    return clauses;
}

Bytes Encoded(bool (*encode)(const Animation&, Bytes*, std::string*), const Animation& animation) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(encode(animation, &file, &error)) << error;
    return file;
}

// One of the small files from which the fuzzers start.
Bytes Sample(const std::string& name) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(ReadWholeFile("tests/data/fuzz/" + name, &file, &error)) << error;
    return file;
}

TEST(Messages, Damaged_gif_files_are_told_in_plain_words) {
    test::TestGif gif;
    gif.width = 3;
    gif.height = 2;
    gif.loopCount = 2;
    gif.comments = {"a comment"};
    test::TestImage image;
    image.picture = "RGB/CMY";
    gif.images = {image, image};
    EXPECT_GE(ClausesFor(test::BuildGif(gif)).size(), 4u);
}

TEST(Messages, Damaged_webp_files_are_told_in_plain_words) {
    const auto encode = [](const Animation& animation, Bytes* file, std::string* error) {
        return EncodeWebp(animation, file, error);
    };
    EXPECT_GE(ClausesFor(Encoded(encode, RandomAnimation(9, 7, 2, 1, true))).size(), 2u);
}

TEST(Messages, Damaged_png_files_are_told_in_plain_words) {
    const auto encode = [](const Animation& animation, Bytes* file, std::string* error) {
        return EncodeApng(animation, file, error);
    };
    EXPECT_GE(ClausesFor(Encoded(encode, RandomAnimation(9, 7, 3, 2, true))).size(), 2u);
    EXPECT_GE(ClausesFor(Encoded(encode, RandomAnimation(9, 7, 1, 3, false))).size(), 2u);
}

TEST(Messages, Damaged_jpeg_files_are_told_in_plain_words) {
    for (const char* name : {"jpeg/grey.jpg", "jpeg/progressive.jpg", "jpeg/arithmetic.jpg", "jpeg/cmyk.jpg"})
        EXPECT_GE(ClausesFor(Sample(name)).size(), 2u) << name;
}

TEST(Messages, Damaged_bmp_files_are_told_in_plain_words) {
    for (const char* name : {"bmp/indexed.bmp", "bmp/true-colour.bmp", "bmp/v4-alpha.bmp"})
        EXPECT_GE(ClausesFor(Sample(name)).size(), 2u) << name;
}

TEST(Messages, Damaged_y4m_streams_are_told_in_plain_words) {
    for (const char* name : {"y4m/grey.y4m", "y4m/subsampled.y4m", "y4m/full-range.y4m"})
        EXPECT_GE(ClausesFor(Sample(name)).size(), 4u) << name;
}

}  // namespace
}  // namespace kfx
