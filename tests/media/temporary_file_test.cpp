// SPDX-License-Identifier: MIT
// Files that are not whole yet: several programs at one result, and what a killed one leaves.
#include "media/temporary_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <thread>

#include "media/file_io.h"
#include "media/rename.h"
#include "media/utf8_path.h"
#include "tests/media/own_folder.h"

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace kfx {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

struct TemporaryFiles : ::testing::Test {
    const test::OwnFolder ownFolder;
    const fs::path& folder = ownFolder.path;
    const std::string target = Utf8Of(folder / "x.gif");

    void Put(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    bool Has(const std::string& name) const { return fs::exists(folder / name); }
    size_t Count() const { return ownFolder.Count(); }
    void Write(const Bytes& content) const {
        std::string error;
        EXPECT_TRUE(WriteWholeFile(target, content, &error)) << error;
    }
};

TEST_F(TemporaryFiles, What_a_killed_program_left_is_removed_when_its_result_is_made) {
    for (const char* name : {"x.gif.kestrel-part", "x.gif.kestrel-part1", "x.gif.kestrel-part3"})
        Put(name, "half");
    Put("y.gif.kestrel-part", "of another result");
    Put("x.gif.part", "of another program");
    Write({1, 2, 3});
    EXPECT_TRUE(Has("y.gif.kestrel-part"));
    EXPECT_TRUE(Has("x.gif.part"));
    EXPECT_EQ(Count(), 3u);
    Bytes content;
    std::string error;
    EXPECT_TRUE(ReadWholeFile(target, &content, &error));
    EXPECT_EQ(content, (Bytes{1, 2, 3}));
}

TEST_F(TemporaryFiles, Without_a_free_name_there_is_none) {
    for (int number = 0; number < 1000; ++number)
        Put("x.gif.kestrel-part" + (number > 0 ? std::to_string(number) : std::string()), "");
    TemporaryFile file;
    int reason = 0;
    EXPECT_FALSE(MakeTemporaryFile(PathOf(target), nullptr, true, &file, &reason));
    EXPECT_EQ(reason, EEXIST);
    EXPECT_TRUE(file.path.empty());
    EXPECT_TRUE(Has("x.gif.kestrel-part999"));
}

#ifndef _WIN32
TEST_F(TemporaryFiles, A_file_that_is_replaced_keeps_its_permissions) {
    const fs::perms own = fs::perms::owner_read | fs::perms::owner_write;
    Put("x.gif", "before");
    fs::permissions(folder / "x.gif", own);
    Write(Bytes(10, 1));
    EXPECT_EQ(fs::status(folder / "x.gif").permissions(), own);
    EXPECT_EQ(fs::file_size(folder / "x.gif"), 10u);
}
#endif

TEST_F(TemporaryFiles, A_folder_and_a_link_of_the_temporary_name_are_left_alone) {
    fs::create_directories(folder / "x.gif.kestrel-part" / "inner");
    Put("mine", "mine");
    std::error_code failure;
    fs::create_symlink("mine", folder / "x.gif.kestrel-part1", failure);
    const bool hasLink = !failure;
    Write({1});
    EXPECT_TRUE(Has("x.gif.kestrel-part/inner"));
    EXPECT_TRUE(Has("mine"));
    EXPECT_EQ(Count(), hasLink ? 4u : 3u);
}

TEST_F(TemporaryFiles, Each_of_several_writers_of_one_result_has_a_file_of_its_own) {
    std::vector<TemporaryFile> files(6);
    for (TemporaryFile& file : files) {
        int reason = 0;
        ASSERT_TRUE(MakeTemporaryFile(PathOf(target), nullptr, true, &file, &reason)) << reason;
#ifdef _WIN32
        // Files that are not open there may be removed: one is at work at a time.
        file.path.clear();
#endif
    }
#ifndef _WIN32
    for (const TemporaryFile& file : files) EXPECT_TRUE(fs::exists(file.path)) << file.path;
    files.clear();
    EXPECT_EQ(Count(), 0u);
#endif
}

#ifndef _WIN32
// A program may be started with its standard input closed: the first file that it opens gets that number.
TEST_F(TemporaryFiles, A_file_that_gets_the_number_of_standard_input_is_as_good_as_any) {
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    {
        TemporaryFile file;
        int reason = 0;
        EXPECT_TRUE(MakeTemporaryFile(PathOf(target), nullptr, true, &file, &reason)) << reason;
        EXPECT_EQ(file.lock, STDIN_FILENO);
        EXPECT_TRUE(Has("x.gif.kestrel-part"));
    }
    EXPECT_EQ(Count(), 0u);
    if (input < 0) return;  // it was closed before
    EXPECT_EQ(dup2(input, STDIN_FILENO), STDIN_FILENO);
    close(input);
}

// Whoever opens the result at any moment sees one writer's bytes, all of them.
TEST_F(TemporaryFiles, Writers_of_one_result_at_the_same_time_never_show_a_part) {
    constexpr size_t kSize = 200000;
    constexpr int kWriters = 4, kTimes = 40;
    std::atomic<int> running = kWriters;
    std::atomic<int> failures = 0;
    std::vector<std::thread> writers;
    writers.reserve(kWriters);
    Write(Bytes(kSize, 9));
    for (int writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([&, writer] {
            std::string error;
            for (int i = 0; i < kTimes; ++i)
                failures += !WriteWholeFile(target, Bytes(kSize, static_cast<uint8_t>(writer)), &error);
            --running;
        });
    }
    int partial = 0;
    while (running > 0) {
        Bytes content;
        std::string error;
        if (!ReadWholeFile(target, &content, &error) || content.size() != kSize ||
            content != Bytes(kSize, content[0]))
            ++partial;
    }
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(partial, 0);
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(Count(), 1u);
}

// The child writes into a file of its own and is killed then.
TEST_F(TemporaryFiles, A_file_counts_as_left_behind_only_when_its_program_has_ended) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        TemporaryFile file;
        int reason = 0;
        const bool isMade = MakeTemporaryFile(PathOf(target), nullptr, true, &file, &reason);
        if (write(ready[1], isMade ? "y" : "n", 1) != 1) _exit(1);
        for (;;) pause();
    }
    char made = 0;
    ASSERT_EQ(read(ready[0], &made, 1), 1);
    ASSERT_EQ(made, 'y');
    Write({1});
    EXPECT_TRUE(Has("x.gif.kestrel-part")) << "somebody writes it";
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(Has("x.gif.kestrel-part"));
    Write({2});
    EXPECT_EQ(Count(), 1u);
    close(ready[0]);
    close(ready[1]);
}
#endif

TEST_F(TemporaryFiles, A_name_that_another_program_takes_in_the_meantime_stays_its) {
    std::string error;
    ASSERT_TRUE(MayWriteFile(target, {}, false, &error));
    Put("x.gif", "other");
    EXPECT_FALSE(WriteWholeFile(target, {1}, &error));
    EXPECT_EQ(error, target + ": the file exists; use --force to replace it.");
    EXPECT_EQ(fs::file_size(folder / "x.gif"), 5u);
    EXPECT_EQ(Count(), 1u);

    // The first file of a series is taken away again when the second has no place.
    const std::string first = Utf8Of(folder / "a");
    fs::remove(folder / "x.gif");
    ASSERT_TRUE(MayWriteFile(first, {}, false, &error));
    ASSERT_TRUE(MayWriteFile(target, {}, false, &error));
    Put("x.gif", "other");
    const auto make = [](size_t, Bytes* content, std::string*) {
        *content = {2};
        return true;
    };
    EXPECT_FALSE(WriteWholeFiles({first, target}, make, &error));
    EXPECT_EQ(fs::file_size(folder / "x.gif"), 5u);
    EXPECT_EQ(Count(), 1u);

    // Who asks again, to replace it, may.
    ASSERT_TRUE(MayWriteFile(target, {}, true, &error));
    Write({1});
    EXPECT_EQ(fs::file_size(folder / "x.gif"), 1u);
}

TEST_F(TemporaryFiles, A_file_is_not_renamed_to_a_name_that_is_taken) {
    std::error_code failure;
    Put("a", "a");
    Put("b", "other");
    RenameFile(folder / "a", folder / "b", false, &failure);
    EXPECT_EQ(failure, std::errc::file_exists);
    EXPECT_EQ(fs::file_size(folder / "b"), 5u);
    RenameFile(folder / "a", folder / "c", false, &failure);
    EXPECT_FALSE(failure) << failure.message();
    RenameFile(folder / "a", folder / "d", false, &failure);
    EXPECT_EQ(failure, std::errc::no_such_file_or_directory);
    EXPECT_EQ(Count(), 2u);
    RenameFile(folder / "c", folder / "b", true, &failure);
    EXPECT_FALSE(failure) << failure.message();
    EXPECT_EQ(fs::file_size(folder / "b"), 1u);
    EXPECT_EQ(Count(), 1u);
}

}  // namespace
}  // namespace kfx
