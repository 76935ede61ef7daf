// SPDX-License-Identifier: MIT
// kestrel help-book: one document with a picture of each value that it talks about.
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "effects/effect_table.h"
#include "media/animation.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kStart[] = "src=\"data:image/webp;base64,";
constexpr char kWindowStart[] = "<img src=\"data:image/png;base64,";

struct BookPicture {
    Animation animation;
    std::string caption;
};

std::vector<uint8_t> FromBase64(const std::string& text) {
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<uint8_t> bytes;
    uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        if (c == '=') break;
        bits = bits << 6 | static_cast<uint32_t>(digits.find(c));
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes.push_back(static_cast<uint8_t>(bits >> count));
    }
    return bytes;
}

// The bytes of the file that stands in a text between `data` and the next quotation mark.
std::vector<uint8_t> FileAt(const std::string& book, size_t data) {
    return FromBase64(book.substr(data, book.find('"', data) - data));
}

std::vector<BookPicture> PicturesOf(const std::string& book) {
    std::vector<BookPicture> pictures;
    for (size_t at = book.find(kStart); at != std::string::npos; at = book.find(kStart, at + 1)) {
        const std::vector<uint8_t> file = FileAt(book, at + sizeof kStart - 1);
        const size_t caption = book.find("<figcaption>", at) + 12;
        BookPicture& picture = pictures.emplace_back();
        std::string error;
        EXPECT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &picture.animation, &error)) << error;
        picture.caption = book.substr(caption, book.find('<', caption) - caption);
    }
    return pictures;
}

size_t PicturesWith(const std::vector<BookPicture>& pictures, const std::string& beginning) {
    size_t count = 0;
    for (const BookPicture& picture : pictures) count += picture.caption.starts_with(beginning);
    return count;
}

TEST(HelpBook, Each_value_that_the_help_talks_about_has_a_picture) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "book.html";
    const ProgramResult result = RunKestrel({"help-book", "-o", path});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const std::string book = ReadText(path);
    EXPECT_THAT(book, Not(HasSubstr("KFXPLUG1.PNG"))) << "it stands alone";
    EXPECT_THAT(book, Not(HasSubstr("plugin-window.png")));
    const size_t window = book.find(kWindowStart);
    ASSERT_NE(window, std::string::npos);
    const std::string shown = ReadText("docs/help/plugin-window.png");
    EXPECT_TRUE(FileAt(book, window + sizeof kWindowStart - 1) ==
                std::vector<uint8_t>(shown.begin(), shown.end()));
    EXPECT_EQ(book.find(kWindowStart, window + 1), std::string::npos) << "nothing else is a PNG";
    const std::vector<BookPicture> pictures = PicturesOf(book);
    for (const BookPicture& picture : pictures) {
        EXPECT_EQ(picture.animation.width, 240) << picture.caption;
        EXPECT_EQ(picture.animation.height, 180) << picture.caption;
    }
    for (size_t i = 0; i < EffectCount(); ++i)
        EXPECT_GE(PicturesWith(pictures, EffectAt(i)->name), 1u) << EffectAt(i)->name;
    // The least, the default and the greatest value; where two are the same, only two pictures.
    EXPECT_EQ(PicturesWith(pictures, "Block size: "), 3u);
    EXPECT_EQ(PicturesWith(pictures, "Dissipate: "), 2u);
    EXPECT_EQ(PicturesWith(pictures, "Channels: "), 7u);
    EXPECT_EQ(PicturesWith(pictures, "216-color safe"), 2u);
    EXPECT_EQ(PicturesWith(pictures, "Local background: "), 3u);
    EXPECT_THAT(book, HasSubstr("Block size: 20 (standard)"));
}

TEST(HelpBook, What_a_control_changes_shows) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKestrel({"help-book", "-o", folder.path + "book.html"}).exitCode, 0);
    const std::vector<BookPicture> pictures = PicturesOf(ReadText(folder.path + "book.html"));
    for (const char* control :
         {"Block size: ", "Channels: ", "Threshold: ", "Level: ", "Local background: "}) {
        std::set<std::vector<uint8_t>> different;
        for (const BookPicture& picture : pictures)
            if (picture.caption.starts_with(control)) different.insert(picture.animation.frames[0].pixels);
        EXPECT_EQ(different.size(), PicturesWith(pictures, control)) << control;
    }
}

TEST(HelpBook, A_picture_of_the_users_own_is_shown_in_place_of_the_sample) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    ASSERT_EQ(RunKestrel({"help-book", folder.path + "in.gif", "-o", folder.path + "book.html"}).exitCode, 0);
    const Animation source = ReadBack(folder.path + "in.gif");
    for (const BookPicture& picture : PicturesOf(ReadText(folder.path + "book.html"))) {
        EXPECT_EQ(picture.animation.width, source.width) << picture.caption;
        EXPECT_EQ(picture.animation.height, source.height) << picture.caption;
    }
}

TEST(HelpBook, What_is_wrong_is_said_and_nothing_is_written) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "book.html";
    EXPECT_EQ(RunKestrel({"help-book", folder.path + "none.gif", "-o", path}).exitCode, 3);
    EXPECT_FALSE(FileExists(path));
    EXPECT_THAT(RunKestrel({"help-book", "-o", folder.path + "book.png"}).err,
                HasSubstr("the output must end in .html or .htm"));
    WriteText(path, "mine");
    EXPECT_EQ(RunKestrel({"help-book", "-o", path}).exitCode, 4);
    EXPECT_EQ(ReadText(path), "mine");
}

}  // namespace
}  // namespace kfx::test
