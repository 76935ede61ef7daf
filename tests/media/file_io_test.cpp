// SPDX-License-Identifier: MIT
#include "media/file_io.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include "media/animation.h"
#include "media/animation_writer.h"
#include "media/utf8_path.h"
#include "tests/media/gif_builder.h"
#include "tests/media/own_folder.h"

#ifndef _WIN32
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#endif

namespace kfx {
namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::OwnFolder;

Bytes ContentOf(const std::string& path) {
    Bytes content;
    std::string error;
    EXPECT_TRUE(ReadWholeFile(path, &content, &error)) << error;
    return content;
}

TEST(FileIo, Content_survives_and_no_temporary_name_stays) {
    const OwnFolder folder;
    std::string error;
    for (const size_t size : {0u, 1u, 65535u, 65536u, 65537u, 300000u}) {
        Bytes content(size);
        for (size_t i = 0; i < size; ++i) content[i] = static_cast<uint8_t>(i * 31 >> 3);
        ASSERT_TRUE(WriteWholeFile(folder.File("data"), content, &error)) << error;
        EXPECT_TRUE(ContentOf(folder.File("data")) == content) << size;
        EXPECT_EQ(folder.Count(), 1u);
    }
}

TEST(FileIo, Names_are_UTF_8) {
    const OwnFolder folder;
    std::string error;
    const std::string name =
        "\xC3\xBC"
        "bung \xE2\x82\xAC \xE9\xB3\xA5.gif";
    ASSERT_TRUE(WriteWholeFile(folder.File(name), {1, 2, 3}, &error)) << error;
    EXPECT_EQ(ContentOf(folder.File(name)), (Bytes{1, 2, 3}));
    EXPECT_TRUE(fs::exists(folder.path / PathOf(name)));
}

TEST(FileIo, A_missing_file_is_named_in_the_error) {
    const OwnFolder folder;
    Bytes content;
    std::string error;
    EXPECT_FALSE(ReadWholeFile(folder.File("none.gif"), &content, &error));
    EXPECT_EQ(error,
              folder.File("none.gif") + ": the file cannot be opened (there is no such file or folder).");
    EXPECT_FALSE(ReadWholeFile(folder.File(""), &content, &error));
    EXPECT_EQ(error, folder.File("") + ": this is a folder, not a file.");
    EXPECT_FALSE(ReadWholeFile("", &content, &error));
}

TEST(FileIo, A_name_with_a_NUL_byte_is_refused_and_not_cut_short) {
    const OwnFolder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("a"), {5}, &error)) << error;
    const std::string name = folder.File("a") + std::string("\0b", 2);
    Bytes content;
    EXPECT_FALSE(ReadWholeFile(name, &content, &error));
    EXPECT_EQ(error, name + ": this is not a file name.");
    error.clear();
    EXPECT_FALSE(WriteWholeFile(name, {6}, &error));
    EXPECT_EQ(error, name + ": this is not a file name.");
    EXPECT_EQ(ContentOf(folder.File("a")), Bytes{5});
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, A_folder_that_is_missing_is_named_in_the_error) {
    const OwnFolder folder;
    std::string error;
    EXPECT_FALSE(WriteWholeFile(folder.File("none/x.gif"), {1}, &error));
    EXPECT_EQ(error,
              folder.File("none/x.gif") + ": the file cannot be written (there is no such file or folder).");
}

TEST(FileIo, A_folder_of_the_final_name_stays_and_no_temporary_file_does) {
    const OwnFolder folder;
    fs::create_directories(folder.path / "x.gif" / "inner");
    std::string error;
    EXPECT_FALSE(WriteWholeFile(folder.File("x.gif"), {1}, &error));
    EXPECT_NE(error.find("x.gif: the file cannot be written ("), std::string::npos) << error;
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, When_one_of_several_files_cannot_be_made_none_appears) {
    const OwnFolder folder;
    std::string error;
    const auto makeContent = [](size_t i, Bytes* content, std::string* clause) {
        *content = {static_cast<uint8_t>(i)};
        *clause = "the third one fails";
        return i != 2;
    };
    EXPECT_FALSE(
        WriteWholeFiles({folder.File("a"), folder.File("b"), folder.File("c")}, makeContent, &error));
    EXPECT_EQ(error, folder.File("c") + ": the third one fails.");
    EXPECT_EQ(folder.Count(), 0u);
}

int askedToGoOn = 0;

TEST(FileIo, Writing_that_is_stopped_leaves_what_was_there) {
    const OwnFolder folder;
    const std::string first = folder.File("a"), second = folder.File("b");
    std::string error;
    ASSERT_TRUE(WriteWholeFile(first, {1}, &error)) << error;
    const auto make = [](size_t, std::vector<uint8_t>* content, std::string*) {
        content->assign(3, 7);
        return true;
    };
    askedToGoOn = 0;
    WatchWriting({.goesOn = [] { return ++askedToGoOn < 2; }});
    EXPECT_FALSE(WriteWholeFiles({first, second}, make, &error));
    EXPECT_EQ(error, second + ": the writing was stopped.");
    WatchWriting({.mayPlace = [] { return false; }});
    EXPECT_FALSE(WriteWholeFiles({first, second}, make, &error));
    EXPECT_EQ(error, first + ": the writing was stopped.");
    WatchWriting({});
    EXPECT_EQ(ContentOf(first), Bytes{1});
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, When_one_of_several_files_cannot_be_placed_the_others_are_removed) {
    const OwnFolder folder;
    fs::create_directories(folder.path / "b" / "inner");
    std::string error;
    const auto makeContent = [](size_t, Bytes* content, std::string*) {
        *content = {1};
        return true;
    };
    EXPECT_FALSE(
        WriteWholeFiles({folder.File("a"), folder.File("b"), folder.File("c")}, makeContent, &error));
    EXPECT_EQ(folder.Count(), 1u);  // the folder
}

TEST(FileIo, Writers_put_files_in_place_and_readers_take_them) {
    const OwnFolder folder;
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

TEST(FileIo, A_failed_writer_leaves_the_old_file) {
    const OwnFolder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {9}, &error));
    EXPECT_FALSE(WriteGif(folder.File("x.gif"), GifAnimation(), &error));
    EXPECT_EQ(error, folder.File("x.gif") + ": a GIF animation may have 1 to 65535 pixels a side.");
    EXPECT_EQ(ContentOf(folder.File("x.gif")), Bytes{9});
    EXPECT_EQ(folder.Count(), 1u);
    EXPECT_FALSE(WritePngFrames(folder.File("x.png"), Animation(), &error));
    EXPECT_EQ(error, folder.File("x.png") + ": there are no frames to write.");
}

TEST(FileIo, A_result_may_not_replace_its_source_under_any_name) {
    const OwnFolder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("a.gif"), {1}, &error));
    ASSERT_TRUE(WriteWholeFile(folder.File("b.gif"), {1}, &error));
    fs::create_hard_link(folder.path / "a.gif", folder.path / "hard.gif");
    const std::vector<std::string> inputs = {folder.File("b.gif"), folder.File("a.gif")};
    for (const char* name : {"a.gif", "./a.gif", "hard.gif", "b.gif"}) {
        EXPECT_FALSE(MayWriteFile(folder.File(name), inputs, true, &error)) << name;
        EXPECT_EQ(error,
                  folder.File(name) + ": the result cannot replace its own source; choose another name.");
    }
    EXPECT_TRUE(IsSameFile(folder.File("a.gif"), folder.File("./hard.gif")));
    EXPECT_FALSE(IsSameFile(folder.File("a.gif"), folder.File("b.gif")));
    EXPECT_FALSE(IsSameFile(folder.File("a.gif"), folder.File("none")));
    EXPECT_FALSE(IsSameFile(folder.File("none"), folder.File("none")));
}

TEST(FileIo, An_existing_file_is_replaced_only_on_request) {
    const OwnFolder folder;
    std::string error;
    EXPECT_TRUE(MayWriteFile(folder.File("x.gif"), {}, false, &error));
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {1}, &error));
    EXPECT_FALSE(MayWriteFile(folder.File("x.gif"), {}, false, &error));
    EXPECT_EQ(error, folder.File("x.gif") + ": the file exists; use --force to replace it.");
    EXPECT_TRUE(MayWriteFile(folder.File("x.gif"), {}, true, &error));
    EXPECT_FALSE(MayWriteFile("", {}, true, &error));
}

TEST(FileIo, A_file_of_no_known_format_is_named_in_the_error) {
    const OwnFolder folder;
    std::string error;
    Animation animation;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {'h', 'e', 'l', 'l', 'o'}, &error));
    EXPECT_FALSE(ReadAnimation(folder.File("x.gif"), &animation, &error));
    EXPECT_EQ(error, folder.File("x.gif") +
                         ": the file is not a GIF, WebP, PNG, JPEG or BMP picture, nor Y4M video.");
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

TEST(FileIo, When_the_bytes_do_not_fit_the_partial_file_is_removed) {
    const OwnFolder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("x.gif"), {9}, &error));
    {
        const FileSizeLimit limit(4096);
        EXPECT_FALSE(WriteWholeFile(folder.File("x.gif"), Bytes(100000, 1), &error));
    }
    EXPECT_EQ(error, folder.File("x.gif") +
                         ": the file cannot be written (the file would be too large for its place).");
    EXPECT_EQ(ContentOf(folder.File("x.gif")), Bytes{9});
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, A_link_to_a_file_that_does_not_exist_yet_stays_and_the_file_is_made) {
    const OwnFolder folder;
    std::error_code failure;
    fs::create_directory(folder.path / "there");
    fs::create_symlink("there/second", folder.path / "first", failure);
    fs::create_symlink("file", folder.path / "there" / "second", failure);
    if (failure) GTEST_SKIP() << "no links here";
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("first"), {1, 2, 3}, &error)) << error;
    EXPECT_TRUE(fs::is_symlink(folder.path / "first"));
    EXPECT_TRUE(fs::is_symlink(folder.path / "there" / "second"));
    EXPECT_EQ(ContentOf(folder.File("there/file")), (Bytes{1, 2, 3}));
}

TEST(FileIo, A_link_stays_a_link_and_its_target_is_replaced) {
    const OwnFolder folder;
    std::string error;
    ASSERT_TRUE(WriteWholeFile(folder.File("real"), {1}, &error));
    fs::create_symlink("real", folder.path / "link");
    ASSERT_TRUE(WriteWholeFile(folder.File("link"), {2}, &error)) << error;
    EXPECT_TRUE(fs::is_symlink(folder.path / "link"));
    EXPECT_EQ(ContentOf(folder.File("real")), Bytes{2});
    EXPECT_EQ(folder.Count(), 2u);
}

TEST(FileIo, A_pipe_gets_the_bytes_and_is_not_replaced) {
    const OwnFolder folder;
    std::string error;
    ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
    const int reader = open(folder.File("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(WriteWholeFile(folder.File("pipe"), {7, 8, 9}, &error)) << error;
    uint8_t bytes[4] = {};
    EXPECT_EQ(read(reader, bytes, sizeof(bytes)), 3);
    EXPECT_EQ(bytes[2], 9);
    close(reader);
    EXPECT_TRUE(fs::is_fifo(folder.path / "pipe"));
    EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileIo, A_pipe_that_takes_only_a_part_is_an_error_and_stays) {
    const OwnFolder folder;
    std::string error;
    ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
    const int reader = open(folder.File("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    // The reader closes while the writer waits for room in the pipe.
    std::signal(SIGPIPE, SIG_IGN);
    std::atomic<bool> written = false;
    std::thread closing([reader, &written] {
        uint8_t byte = 0;
        while (read(reader, &byte, 1) != 1 && !written) std::this_thread::yield();
        close(reader);
    });
    EXPECT_TRUE(MayWriteFile(folder.File("pipe"), {folder.File("pipe")}, false, &error));
    EXPECT_FALSE(WriteWholeFile(folder.File("pipe"), Bytes(4 << 20, 1), &error));
    written = true;
    closing.join();
    EXPECT_EQ(error, folder.File("pipe") + ": the file cannot be written (nobody reads the pipe any more).");
    EXPECT_TRUE(fs::is_fifo(folder.path / "pipe"));
    EXPECT_EQ(folder.Count(), 1u);
}

// A terminal of the test's own is a device that any user may write to; nothing can be renamed over it.
TEST(FileIo, A_device_gets_the_bytes_also_through_a_link) {
    const OwnFolder folder;
    std::string error;
    const int controller = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(controller, 0);
    ASSERT_EQ(grantpt(controller), 0);
    ASSERT_EQ(unlockpt(controller), 0);
    const std::string terminal = ptsname(controller);
    const int keepOpen = open(terminal.c_str(), O_RDWR | O_NOCTTY);
    ASSERT_GE(keepOpen, 0);
    fs::create_symlink(terminal, folder.path / "link");
    for (const std::string& path : {terminal, folder.File("link")}) {
        EXPECT_TRUE(WriteWholeFile(path, {'a', 'b', 'c'}, &error)) << error;
        char bytes[8] = {};
        EXPECT_EQ(read(controller, bytes, sizeof(bytes)), 3);
        EXPECT_EQ(std::string(bytes, 3), "abc");
    }
    EXPECT_TRUE(fs::is_symlink(folder.path / "link"));
    EXPECT_TRUE(fs::is_character_file(terminal));
    close(keepOpen);
    close(controller);
}
#endif

TEST(FileIo, Whoever_takes_the_writing_gets_each_file_whole_and_nothing_is_written) {
    const OwnFolder folder;
    std::vector<std::pair<std::string, Bytes>> taken;
    TakeWriting([&](const std::string& path, Bytes* content) { taken.emplace_back(path, *content); });
    const std::vector<std::string> paths = {folder.File("a"), folder.File("b"), folder.File("c")};
    const auto make = [](size_t index, Bytes* content, std::string* error) {
        *content = Bytes(index + 1, static_cast<uint8_t>(index));
        *error = "this one cannot be made";
        return index < 2;
    };
    std::string error;
    EXPECT_FALSE(WriteWholeFiles(paths, make, &error));
    EXPECT_EQ(error, paths[2] + ": this one cannot be made.");
    TakeWriting(nullptr);
    EXPECT_FALSE(IsWritingTaken());
    ASSERT_EQ(taken.size(), 2u);
    EXPECT_EQ(taken[0], std::make_pair(paths[0], Bytes{0}));
    EXPECT_EQ(taken[1], std::make_pair(paths[1], Bytes{1, 1}));
    EXPECT_EQ(folder.Count(), 0u);
}

}  // namespace
}  // namespace kfx
