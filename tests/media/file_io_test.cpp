// SPDX-License-Identifier: MIT
#include "media/file_io.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "media/animation.h"
#include "media/animation_writer.h"
#include "media/utf8_path.h"
#include "tests/media/gif_builder.h"

#ifdef _WIN32
#include <process.h>
#else
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#endif

namespace kfx {
namespace {

namespace fs = std::filesystem;
using test::Bytes;

// Both sides run their tests at the same time, and so may two checkouts.
long ProcessId() {
#ifdef _WIN32
    return _getpid();
#else
    return getpid();
#endif
}

// An empty folder of the test's own, removed with all that is in it.
struct Folder {
    fs::path path;
    Folder() {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        path = fs::temp_directory_path() /
               ("kfx-media-" + std::to_string(ProcessId()) + "-" + std::string(test->name()));
        fs::remove_all(path);
        fs::create_directories(path);
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    std::string File(const std::string& name) const { return Utf8Of(path) + "/" + name; }
    std::size_t Count() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(path), fs::directory_iterator()));
    }
};

Bytes ContentOf(const std::string& path) {
    Bytes content;
    std::string error;
    EXPECT_TRUE(ReadWholeFile(path, &content, &error)) << error;
    return content;
}

TEST(FileIo, ContentSurvivesAndNoTemporaryNameStays) {
    const Folder folder;
    std::string error;
    for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 300000u}) {
        Bytes content(size);
        for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<std::uint8_t>(i * 31 >> 3);
        ASSERT_TRUE(WriteWholeFile(folder.File("data"), content, &error)) << error;
        EXPECT_TRUE(ContentOf(folder.File("data")) == content) << size;
        EXPECT_EQ(folder.Count(), 1u);
    }
}

TEST(FileIo, NamesAreUtf8) {
    const Folder folder;
    std::string error;
    const std::string name =
        "\xC3\xBC"
        "bung \xE2\x82\xAC \xE9\xB3\xA5.gif";
    ASSERT_TRUE(WriteWholeFile(folder.File(name), {1, 2, 3}, &error)) << error;
    EXPECT_EQ(ContentOf(folder.File(name)), (Bytes{1, 2, 3}));
    EXPECT_TRUE(fs::exists(folder.path / PathOf(name)));
}

TEST(FileIo, AMissingFileIsNamedInTheError) {
    const Folder folder;
    Bytes content;
    std::string error;
    EXPECT_FALSE(ReadWholeFile(folder.File("none.gif"), &content, &error));
    EXPECT_EQ(error, folder.File("none.gif") + ": the file cannot be opened (No such file or directory).");
    EXPECT_FALSE(ReadWholeFile(folder.File(""), &content, &error));
    EXPECT_EQ(error, folder.File("") + ": this is a folder, not a file.");
    EXPECT_FALSE(ReadWholeFile("", &content, &error));
    EXPECT_FALSE(ReadWholeFile(std::string("a\0b", 3), &content, &error));
}

TEST(FileIo, AFolderThatIsMissingIsNamedInTheError) {
    const Folder folder;
    std::string error;
    EXPECT_FALSE(WriteWholeFile(folder.File("none/x.gif"), {1}, &error));
    EXPECT_EQ(error, folder.File("none/x.gif") + ": the file cannot be written (No such file or directory).");
}

TEST(FileIo, AFolderOfTheFinalNameStaysAndNoTemporaryFileDoes) {
    const Folder folder;
    fs::create_directories(folder.path / "x.gif" / "inner");
    std::string error;
    EXPECT_FALSE(WriteWholeFile(folder.File("x.gif"), {1}, &error));
    EXPECT_NE(error.find("x.gif: the file cannot be written ("), std::string::npos) << error;
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, AFileThatHasTheTemporaryNameIsLeftAlone) {
    const Folder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif.part"), {7}, &error));
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {8}, &error));
    EXPECT_EQ(ContentOf(folder.File("x.gif.part")), Bytes{7});
    EXPECT_EQ(ContentOf(folder.File("x.gif")), Bytes{8});
}

TEST(FileIo, WhenOneOfSeveralFilesCannotBeMadeNoneAppears) {
    const Folder folder;
    std::string error;
    const auto makeContent = [](std::size_t i, Bytes* content, std::string* clause) {
        *content = {static_cast<std::uint8_t>(i)};
        *clause = "the third one fails";
        return i != 2;
    };
    EXPECT_FALSE(
        WriteWholeFiles({folder.File("a"), folder.File("b"), folder.File("c")}, makeContent, &error));
    EXPECT_EQ(error, folder.File("c") + ": the third one fails.");
    EXPECT_EQ(folder.Count(), 0u);
}

TEST(FileIo, WhenOneOfSeveralFilesCannotBePlacedTheOthersAreRemoved) {
    const Folder folder;
    fs::create_directories(folder.path / "b" / "inner");
    std::string error;
    const auto makeContent = [](std::size_t, Bytes* content, std::string*) {
        *content = {1};
        return true;
    };
    EXPECT_FALSE(
        WriteWholeFiles({folder.File("a"), folder.File("b"), folder.File("c")}, makeContent, &error));
    EXPECT_EQ(folder.Count(), 1u);  // the folder
}

TEST(FileIo, WritersPutFilesInPlaceAndReadersTakeThem) {
    const Folder folder;
    std::string error;
    const Animation source = test::RandomAnimation(9, 7, 3, 21, false);
    ASSERT_TRUE(WriteWebp(folder.File("a.webp"), source, &error)) << error;
    ASSERT_TRUE(WritePngFrames(folder.File("a.png"), source, &error)) << error;
    ASSERT_TRUE(WritePng(folder.File("single.png"), {9, 7, source.frames[2].pixels}, &error)) << error;
    GifAnimation gif;
    gif.width = 2;
    gif.height = 1;
    gif.globalPalette = test::TextPalette();
    gif.frames.resize(1);
    gif.frames[0].indices = {1, 2};
    ASSERT_TRUE(WriteGif(folder.File("a.gif"), gif, &error)) << error;
    EXPECT_EQ(folder.Count(), 6u);

    Animation animation;
    ASSERT_TRUE(ReadAnimation(folder.File("a.webp"), &animation, &error)) << error;
    EXPECT_EQ(animation.frames.size(), 3u);
    ASSERT_TRUE(ReadAnimation(folder.File("a-001.png"), &animation, &error)) << error;
    EXPECT_TRUE(animation.frames[0].pixels == source.frames[1].pixels);
    ASSERT_TRUE(ReadAnimation(folder.File("single.png"), &animation, &error)) << error;
    EXPECT_TRUE(animation.frames[0].pixels == source.frames[2].pixels);
    ASSERT_TRUE(ReadAnimation(folder.File("a.gif"), &animation, &error)) << error;
    EXPECT_EQ(test::ShowFrame(animation, 0), "RG");
}

TEST(FileIo, AFailedWriterLeavesTheOldFile) {
    const Folder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {9}, &error));
    EXPECT_FALSE(WriteGif(folder.File("x.gif"), GifAnimation(), &error));
    EXPECT_EQ(error, folder.File("x.gif") + ": a GIF animation may have 1 to 65535 pixels a side.");
    EXPECT_EQ(ContentOf(folder.File("x.gif")), Bytes{9});
    EXPECT_EQ(folder.Count(), 1u);
    EXPECT_FALSE(WritePngFrames(folder.File("x.png"), Animation(), &error));
    EXPECT_EQ(error, folder.File("x.png") + ": there are no frames to write.");
}

TEST(FileIo, AFileOfNoKnownFormatIsNamedInTheError) {
    const Folder folder;
    std::string error;
    Animation animation;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {'h', 'e', 'l', 'l', 'o'}, &error));
    EXPECT_FALSE(ReadAnimation(folder.File("x.gif"), &animation, &error));
    EXPECT_EQ(error, folder.File("x.gif") + ": the file is not a GIF, WebP, PNG or BMP picture.");
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {}, &error));
    EXPECT_FALSE(ReadAnimation(folder.File("x.gif"), &animation, &error));
    EXPECT_EQ(error, folder.File("x.gif") + ": the file is empty.");
}

#ifndef _WIN32
// The kernel refuses bytes beyond this size, as a full disk would.
struct FileSizeLimit {
    rlimit before;
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }
};

TEST(FileIo, WhenTheBytesDoNotFitThePartialFileIsRemoved) {
    const Folder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {9}, &error));
    {
        const FileSizeLimit limit(4096);
        EXPECT_FALSE(WriteWholeFile(folder.File("x.gif"), Bytes(100000, 1), &error));
    }
    EXPECT_EQ(error, folder.File("x.gif") + ": the file cannot be written (File too large).");
    EXPECT_EQ(ContentOf(folder.File("x.gif")), Bytes{9});
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, ALinkStaysALinkAndItsTargetIsReplaced) {
    const Folder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("real"), {1}, &error));
    fs::create_symlink("real", folder.path / "link");
    ASSERT_TRUE(WriteWholeFile(folder.File("link"), {2}, &error)) << error;
    EXPECT_TRUE(fs::is_symlink(folder.path / "link"));
    EXPECT_EQ(ContentOf(folder.File("real")), Bytes{2});
    EXPECT_EQ(folder.Count(), 2u);
}

TEST(FileIo, APipeGetsTheBytesAndIsNotReplaced) {
    const Folder folder;
    std::string error;
    ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
    const int reader = open(folder.File("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(WriteWholeFile(folder.File("pipe"), {7, 8, 9}, &error)) << error;
    std::uint8_t bytes[4] = {};
    EXPECT_EQ(read(reader, bytes, sizeof(bytes)), 3);
    EXPECT_EQ(bytes[2], 9);
    close(reader);
    EXPECT_TRUE(fs::is_fifo(folder.path / "pipe"));
    EXPECT_EQ(folder.Count(), 1u);
}
#endif

}  // namespace
}  // namespace kfx
