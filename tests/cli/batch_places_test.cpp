// SPDX-License-Identifier: MIT
// Batches whose results have no place: a full disk, a folder that may not be written to or goes away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/native_program.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

using Words = std::vector<std::string>;

struct BatchPlaces : ::testing::Test {
    TemporaryFolder folder;
    const std::string in = folder.path + "in/", out = folder.path + "out/";

    void SetUp() override {
        std::filesystem::create_directory(in);
        std::filesystem::create_directory(out);
        WriteTestGif(in + "a.gif", 2);
        WriteTestGif(in + "large.gif", 4, false, 20);  // 800 x 600
        WriteTestGif(in + "z.gif", 2);
    }

    Words All(const Words& more = {}) const {
        Words words = {"apply", in, "-o", out, "--effect", "Bump", "--jobs", "2"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    void ExpectTheSmallOnes(const ProgramResult& result, const std::string& reason) const {
        EXPECT_EQ(result.exitCode, 4);
        EXPECT_THAT(result.err, HasSubstr("kestrel: " + out + "large.gif: the file cannot be written (" +
                                          reason + ").\n"));
        EXPECT_THAT(result.err, EndsWith("kestrel: 2 done, 1 failed.\n"));
        EXPECT_EQ(FilesIn(out), (Words{"a.gif", "z.gif"}));
        for (const char* name : {"a.gif", "z.gif"}) EXPECT_EQ(ReadBack(out + name).frames.size(), 2u) << name;
    }
};

// What stands at a place only for the time of a test.
struct Mounted {
    Mounted(const std::string& path, const char* kind, unsigned long flags, const char* options)
        : place(path), failure(mount(kind, path.c_str(), kind, flags, options) == 0 ? 0 : errno) {}
    ~Mounted() {
        if (failure == 0) umount2(place.c_str(), MNT_DETACH);
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    std::string place;
    int failure;
};

TEST_F(BatchPlaces, A_full_disk_fails_the_files_that_do_not_fit_and_no_other) {
    const Mounted disk(out, "tmpfs", 0, "size=32k");
    if (disk.failure != 0) GTEST_SKIP() << "no disk can be mounted here: " << std::strerror(disk.failure);
    ExpectTheSmallOnes(RunKestrel(All()), "the disk is full");
}

TEST_F(BatchPlaces, A_file_that_is_too_large_for_its_place_fails_alone) {
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {30000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const ProgramResult result = RunKestrel(All());
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    ExpectTheSmallOnes(result, "the file would be too large for its place");
}

// For root nothing is write-protected but what is mounted so.
TEST_F(BatchPlaces, A_folder_that_may_not_be_written_to_is_told_once_and_before_any_work) {
    std::filesystem::permissions(out, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::remove);
    const Mounted disk(out, "tmpfs", MS_RDONLY, "size=64k");
    if (geteuid() == 0 && disk.failure != 0)
        GTEST_SKIP() << "no disk can be mounted here: " << std::strerror(disk.failure);
    const ProgramResult result = RunKestrel(All());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "kestrel: note: 3 of 3 results are refused; --dry-run lists them.\nkestrel: " + out +
                  "a.gif: cannot be written: you may not write to the folder " + out + ".\n");
    EXPECT_TRUE(FilesIn(out).empty());
}

TEST_F(BatchPlaces, A_name_that_is_too_long_is_refused_before_any_work) {
    // It is longer while it is unfinished.
    const std::string name = std::string(NAME_MAX - 8, 'n') + ".gif";
    WriteTestGif(folder.path + "n.gif", 1);
    std::filesystem::rename(folder.path + "n.gif", in + name);
    const ProgramResult result = RunKestrel(All());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.err, "kestrel: " + out + name + ": cannot be written: the name is too long.\n");
    EXPECT_TRUE(FilesIn(out).empty());
}

TEST_F(BatchPlaces, Folders_that_are_one_by_a_link_have_one_place_for_a_name) {
    for (const char* name : {"x", "y"}) std::filesystem::create_directory(in + name);
    std::filesystem::create_directory(out + "x");
    std::filesystem::create_directory_symlink("x", out + "y");
    WriteTestGif(in + "x/s.gif", 2);
    WriteTestGif(in + "y/s-001.gif", 1);
    const ProgramResult result = RunKestrel(All({"--recursive", "--format", "png"}));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("x/s.gif and " + in + "y/s-001.gif: both results would have a file "));
    EXPECT_EQ(FilesIn(out + "x"), Words());
}

// The second file's process stands still, because the second picture of its series is a pipe that nobody
// reads, until the folder has gone.
TEST_F(BatchPlaces, A_folder_that_goes_away_keeps_what_is_done_and_fails_the_rest) {
    const std::string gone = folder.path + "gone/", errors = folder.path + "errors";
    DeleteFileAt(in + "large.gif");
    WriteTestGif(in + "m.gif", 2);
    for (const char* name : {"a.gif", "z.gif"}) WriteTestGif(in + name, 1);
    ASSERT_EQ(mkfifo((out + "m-001.png").c_str(), 0600), 0);
    const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const int none = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const pid_t process = StartKestrel(
        {"apply", in, "-o", out, "--effect", "Bump", "--format", "png", "--jobs", "1"}, none, err);
    close(err);
    close(none);
    ASSERT_GT(process, 0);
    EXPECT_TRUE(WaitFor([&] { return FileExists(out + "m-000.png.kestrel-part"); }));
    std::filesystem::rename(folder.path + "out", folder.path + "gone");
    // The process may wait for a reader already, or find no pipe any more.
    const int reader = open((gone + "m-001.png").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(WaitForEnd(process), 4);
    close(reader);
    EXPECT_THAT(ReadText(errors), HasSubstr(out + "m-00"));
    EXPECT_THAT(ReadText(errors),
                HasSubstr(".png: the file cannot be written (there is no such file or folder).\n"));
    EXPECT_THAT(ReadText(errors), HasSubstr("kestrel: " + out + "z.png: cannot be written: the folder " +
                                            out + " does not exist.\n"));
    EXPECT_THAT(ReadText(errors), EndsWith("kestrel: 1 done, 2 failed.\n"));
    EXPECT_EQ(ReadBack(gone + "a.png").frames.size(), 1u);
    EXPECT_FALSE(FileExists(gone + "m-000.png"));
    EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
}  // namespace kfx::test
