// SPDX-License-Identifier: MIT
#include "commands/picture_header.h"

#include <gtest/gtest.h>

#include "media/png_chunks.h"
#include "tests/cli/test_files.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace kfx::commands {
namespace {

using Bytes = std::vector<uint8_t>;

struct PictureHeaders : ::testing::Test {
    test::TemporaryFolder folder;

    std::string Path(const std::string& name) const { return folder.path + name; }

    // The sentence, without the folder; empty where the header is read.
    std::string ErrorOf(const std::string& name, PictureHeader* header) const {
        std::string error;
        const bool isRead = ReadPictureHeader(Path(name), header, &error);
        EXPECT_EQ(isRead, error.empty());
        const size_t at = error.find(folder.path);
        return at == std::string::npos ? error : error.erase(at, folder.path.size());
    }

    PictureHeader Read(const Bytes& file) const {
        test::WriteText(Path("file"), {file.begin(), file.end()});
        PictureHeader header;
        EXPECT_EQ(ErrorOf("file", &header), "");
        return header;
    }
};

// A PNG file that begins with these chunks.
Bytes Png(const std::vector<uint32_t>& names) {
    Bytes file;
    PutPngSignature(&file);
    for (const uint32_t name : names) PutPngChunk(&file, name, Bytes(3));
    return file;
}

constexpr uint32_t kNote = PngName("tEXt"), kAnnounces = PngName("acTL"), kPixels = PngName("IDAT"),
                   kEnd = PngName("IEND");

TEST_F(PictureHeaders, An_animation_is_announced_before_the_pixels) {
    EXPECT_TRUE(Read(Png({kNote, kAnnounces, kPixels})).isApng);
    EXPECT_FALSE(Read(Png({kNote, kPixels, kAnnounces})).isApng);
    EXPECT_FALSE(Read(Png({kNote, kEnd, kAnnounces})).isApng);
    EXPECT_FALSE(Read(Png({kNote})).isApng);
    EXPECT_EQ(Read(Png({kNote})).format, "png");
}

TEST_F(PictureHeaders, Notes_without_end_are_not_gone_through) {
    std::vector<uint32_t> names(999, kNote);
    names.push_back(kAnnounces);
    EXPECT_TRUE(Read(Png(names)).isApng);
    names.insert(names.begin(), kNote);
    EXPECT_FALSE(Read(Png(names)).isApng);
}

TEST_F(PictureHeaders, What_cannot_be_opened_is_told) {
    PictureHeader header;
    EXPECT_EQ(ErrorOf("none.gif", &header),
              "none.gif: the file cannot be opened (there is no such file or folder).");
    EXPECT_EQ(ErrorOf("", &header), ": this is a folder, not a file.");
    EXPECT_EQ(header.format, "");
}

#ifndef _WIN32
TEST_F(PictureHeaders, A_pipe_is_left_to_its_reader) {
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    PictureHeader header;
    EXPECT_EQ(ErrorOf("pipe", &header), "");
    EXPECT_EQ(header.format, "");
}
#endif

}  // namespace
}  // namespace kfx::commands
