// SPDX-License-Identifier: MIT
// A batch whose processes are ended from outside. The second of three files is a series whose second picture
// is a pipe that nobody reads: its process stands still with its first picture unfinished.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include <fcntl.h>
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

struct BatchInterrupt : ::testing::Test {
    TemporaryFolder folder;
    const std::string out = folder.path + "out/", errors = folder.path + "errors";
    const std::string unfinished = out + "b-000.png.kestrel-part";
    pid_t process = -1;

    // Returns when the first and the last file are done and the second stands still.
    void SetUp() override {
        std::vector<std::string> words = {"apply",    "-o",  out,      "--effect", "Bump",
                                          "--format", "png", "--jobs", "2"};
        for (const char* name : {"a", "b", "c"}) {
            const std::string input = folder.path + name + ".gif";
            WriteTestGif(input, *name == 'b' ? 2 : 1);
            words.push_back(input);
        }
        std::filesystem::create_directory(out);
        ASSERT_EQ(mkfifo((out + "b-001.png").c_str(), 0600), 0);
        const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const int none = open("/dev/null", O_WRONLY | O_CLOEXEC);
        process = StartKestrel(words, none, err);
        close(err);
        close(none);
        ASSERT_GT(process, 0);
        EXPECT_TRUE(WaitFor([&] {
            return FileExists(unfinished) && FileExists(out + "a.png") && FileExists(out + "c.png");
        }));
    }

    void ExpectOnlyWholeFiles() const {
        EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"a.png", "b-001.png", "c.png"}));
        EXPECT_EQ(ReadBack(out + "a.png").frames.size(), 1u);
        EXPECT_EQ(ReadBack(out + "c.png").frames.size(), 1u);
    }
};

TEST_F(BatchInterrupt, What_is_finished_stays_and_is_counted) {
    kill(process, SIGINT);
    EXPECT_EQ(WaitForEnd(process), 130);
    ExpectOnlyWholeFiles();
    EXPECT_THAT(ReadText(errors), EndsWith("kestrel: interrupted: 2 of 3 done.\n"));
}

// A terminal's Ctrl+C interrupts the processes of the files, too, and one of them may end first.
TEST_F(BatchInterrupt, A_process_that_is_interrupted_is_no_failure) {
    EXPECT_TRUE(WaitFor([&] { return ChildrenOf(process).size() == 1; })) << "the other two have ended";
    const std::vector<pid_t> children = ChildrenOf(process);
    ASSERT_EQ(children.size(), 1u);
    kill(children[0], SIGINT);
    EXPECT_EQ(WaitForEnd(process), 130);
    ExpectOnlyWholeFiles();
    EXPECT_EQ(ReadText(errors), "kestrel: interrupted: 2 of 3 done.\n");
}

TEST_F(BatchInterrupt, Ends_by_any_signal_to_end) {
    kill(process, SIGTERM);
    EXPECT_EQ(WaitForEnd(process), 130);
    ExpectOnlyWholeFiles();
}

TEST_F(BatchInterrupt, A_process_that_is_killed_is_a_failure_of_its_file_only) {
    EXPECT_TRUE(WaitFor([&] { return ChildrenOf(process).size() == 1; })) << "the other two have ended";
    const std::vector<pid_t> children = ChildrenOf(process);
    ASSERT_EQ(children.size(), 1u);
    kill(children[0], SIGKILL);
    EXPECT_EQ(WaitForEnd(process), 5);
    ExpectOnlyWholeFiles();
    EXPECT_THAT(ReadText(errors),
                HasSubstr("b.gif: the command's process was ended before it was done (signal 9)."));
    EXPECT_THAT(ReadText(errors), EndsWith("kestrel: 2 done, 1 failed.\n"));
}

TEST_F(BatchInterrupt, No_process_outlives_a_killed_program) {
    kill(process, SIGKILL);
    EXPECT_EQ(WaitForEnd(process), -SIGKILL);
    EXPECT_TRUE(WaitFor([&] { return !FileExists(unfinished); }));
    ExpectOnlyWholeFiles();
}

}  // namespace
}  // namespace kfx::test
