// SPDX-License-Identifier: MIT
// Survey, part and join that are interrupted, killed, or find no room: nothing is half written, and what was
// there before stays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/cli/native_program.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;

using Words = std::vector<std::string>;

// A command with its output, without `-o`.
struct SplitStep {
    std::string output;
    Words words;
};

struct SplitInterrupt : ::testing::Test {
    TemporaryFolder folder;
    const std::string errors = folder.path + "errors";
    std::vector<SplitStep> steps;  // survey, part, join to one file

    std::string Path(const std::string& name) const { return folder.path + name; }

    // The folder has all results.
    void SetUp() override {
        WriteTestGif(Path("in.gif"), 3, false, 4);
        steps = {
            {Path("whole.survey"), {"survey", Path("in.gif"), "--format=gif", "--effect=Bump", "--dither"}},
            {Path("a.kpart"), {"apply", Path("in.gif"), "--survey", Path("whole.survey"), "--frames=0-1"}},
            {Path("out.gif"), {"join", Path("a.kpart"), Path("b.kpart")}},
        };
        for (const SplitStep& step : steps) {
            ASSERT_EQ(RunKestrel(To(step, step.output)).exitCode, 0) << step.words[0];
            if (step.words[0] != "apply") continue;
            ASSERT_EQ(RunKestrel({"apply", Path("in.gif"), "--survey", Path("whole.survey"), "--frames=2",
                                  "-o", Path("b.kpart")})
                          .exitCode,
                      0);
        }
    }

    static Words To(const SplitStep& step, const std::string& output, const Words& more = {}) {
        Words words = step.words;
        words.insert(words.end(), {"-o", output});
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    // The name of a result that there is not.
    std::string NewNameOf(const SplitStep& step) const {
        return Path("new" + std::filesystem::path(step.output).extension().string());
    }

    // Runs the words until the result `output` has a file that is not whole, and gives it the signal then.
    int EndByWhileWriting(int number, const Words& words, const std::string& output) const {
        const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const pid_t process = StartKestrelUntil(output + ".kestrel-part", words, err);
        close(err);
        EXPECT_GT(process, 0) << words[0] << ": " << ReadText(errors);
        if (process <= 0) return -1;
        EXPECT_FALSE(words.back() != "--force" && FileExists(output)) << output;
        LetGo(process, number);
        return WaitForEnd(process);
    }
};

TEST_F(SplitInterrupt, An_interrupt_leaves_nothing_of_an_unfinished_file) {
    WriteText(errors, "");
    const Words before = FilesIn(folder.path);
    for (const SplitStep& step : steps) {
        const std::string output = NewNameOf(step);
        for (const int number : {SIGINT, SIGTERM}) {
            EXPECT_EQ(EndByWhileWriting(number, To(step, output), output), 130) << output;
            EXPECT_EQ(ReadText(errors), "kestrel: interrupted.\n");
            EXPECT_EQ(FilesIn(folder.path), before) << output;
        }
    }
}

TEST_F(SplitInterrupt, An_interrupt_keeps_the_file_that_was_to_be_replaced) {
    WriteText(errors, "");
    const Words before = FilesIn(folder.path);
    for (const SplitStep& step : steps) {
        const std::string content = ReadText(step.output);
        EXPECT_EQ(EndByWhileWriting(SIGINT, To(step, step.output, {"--force"}), step.output), 130);
        EXPECT_TRUE(ReadText(step.output) == content) << step.output;
        EXPECT_EQ(FilesIn(folder.path), before) << step.output;
    }
}

TEST_F(SplitInterrupt, What_a_killed_program_leaves_is_removed_by_the_next) {
    WriteText(errors, "");
    const Words before = FilesIn(folder.path);
    for (const SplitStep& step : steps) {
        const std::string content = ReadText(step.output), output = NewNameOf(step);
        EXPECT_EQ(EndByWhileWriting(SIGKILL, To(step, output), output), -SIGKILL);
        EXPECT_FALSE(FileExists(output));
        EXPECT_TRUE(FileExists(output + ".kestrel-part"));
        EXPECT_EQ(RunKestrel(To(step, output)).exitCode, 0);
        EXPECT_TRUE(ReadText(output) == content) << output;
        DeleteFileAt(output);
        EXPECT_EQ(FilesIn(folder.path), before) << output;
    }
}

// The second of the joined pictures is a pipe that nobody reads.
TEST_F(SplitInterrupt, An_interrupted_join_places_none_of_several_pictures) {
    ASSERT_EQ(RunKestrel({"survey", Path("in.gif"), "--format=png", "-o", Path("png.survey")}).exitCode, 0);
    ASSERT_EQ(RunKestrel({"apply", Path("in.gif"), "--survey", Path("png.survey"), "--frames=0-", "-o",
                          Path("png.kpart")})
                  .exitCode,
              0);
    WriteText(errors, "");
    const Words before = FilesIn(folder.path);
    const Words words = {"join", Path("png.kpart"), "-o", Path("out.png")};
    EXPECT_EQ(EndByWhileWriting(SIGINT, words, Path("out-001.png")), 130);
    EXPECT_EQ(FilesIn(folder.path), before);
}

// The most bytes that a file of this process and of those that it starts may have.
struct LargestFile {
    explicit LargestFile(size_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit limit = {bytes, before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~LargestFile() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    LargestFile(const LargestFile&) = delete;
    LargestFile& operator=(const LargestFile&) = delete;

    rlimit before = {};
    void (*handler)(int);
};

TEST_F(SplitInterrupt, A_file_that_finds_no_room_leaves_nothing_and_keeps_what_was_there) {
    const Words before = FilesIn(folder.path);
    for (const SplitStep& step : steps) {
        const std::string content = ReadText(step.output), output = NewNameOf(step);
        for (const Words& words : {To(step, output), To(step, step.output, {"--force"})}) {
            ProgramResult result;
            {
                const LargestFile limit(content.size() - 1);
                result = RunKestrel(words);
            }
            EXPECT_EQ(result.exitCode, 4);
            EXPECT_THAT(result.err, HasSubstr(": the file cannot be written (the file would be too large for "
                                              "its place).\n"));
            EXPECT_EQ(FilesIn(folder.path), before) << step.output;
            EXPECT_TRUE(ReadText(step.output) == content) << step.output;
        }
    }
}

TEST_F(SplitInterrupt, Standard_output_that_finds_no_room_is_said) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    for (const SplitStep& step : steps) {
        const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        EXPECT_EQ(WaitForEnd(StartKestrel(To(step, "-"), full, err)), 4) << step.output;
        close(err);
        EXPECT_THAT(ReadText(errors), HasSubstr("standard output: it cannot be written ("));
    }
    close(full);
}

}  // namespace
}  // namespace kfx::test
