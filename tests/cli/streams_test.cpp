// SPDX-License-Identifier: MIT
// Outputs that are no files, readers that go away, and interrupts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/cli/native_program.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using Words = std::vector<std::string>;

struct Streams : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";
    std::string output = folder.path + "out.gif";

    void SetUp() override { WriteTestGif(input, 3); }

    std::vector<std::string> Apply(const std::string& to) const {
        return {"apply", input, "-o", to, "--effect", "Bump"};
    }
};

TEST_F(Streams, A_pipe_gets_the_whole_file_and_stays_a_pipe) {
    ASSERT_EQ(RunKestrel(Apply(folder.path + "file.gif")).exitCode, 0);
    ASSERT_EQ(mkfifo(output.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = ReadText(output); });
    const ProgramResult result = RunKestrel(Apply(output));
    // A program that never opens the pipe would leave the reader waiting.
    const int pipe = open(output.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    reader.join();
    if (pipe >= 0) close(pipe);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, Not(HasSubstr("bytes"))) << "a pipe does not say how many it got";
    EXPECT_TRUE(received == ReadText(folder.path + "file.gif"));
    struct stat found = {};
    ASSERT_EQ(stat(output.c_str(), &found), 0);
    EXPECT_TRUE(S_ISFIFO(found.st_mode));
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"file.gif", "in.gif", "out.gif"}));
}

// The words about the result would get between its bytes.
TEST_F(Streams, The_systems_names_of_standard_output_are_that_too) {
    ASSERT_EQ(RunKestrel(Apply(output)).exitCode, 0);
    for (const char* name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        const ProgramResult result =
            RunKestrel({"apply", input, "-o", name, "--format", "gif", "--effect", "Bump"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(result.out == ReadText(output)) << name;
        EXPECT_THAT(result.err, HasSubstr("standard output: 3 frames"));
        // Neither does what is wrong with the command line stand there.
        const ProgramResult refused =
            RunKestrel({"apply", input, std::string("--output=") + name, "--effect"});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_EQ(refused.out, "");
    }
}

TEST_F(Streams, A_link_to_a_device_is_written_through_and_stays) {
    ASSERT_EQ(symlink("/dev/null", output.c_str()), 0);
    EXPECT_EQ(RunKestrel(Apply(output)).exitCode, 0);
    EXPECT_EQ(std::filesystem::read_symlink(output), "/dev/null");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out.gif"}));
}

TEST_F(Streams, A_device_that_is_full_is_an_output_that_cannot_be_written) {
    ASSERT_EQ(symlink("/dev/full", output.c_str()), 0);
    const ProgramResult result = RunKestrel(Apply(output));
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, HasSubstr("out.gif: the file cannot be written"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(Streams, Output_that_is_lost_is_no_success) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"effects"}, {"effects", "--json"}, {"--help"}, {"--version"}}) {
        const pid_t process = StartKestrel(arguments, full, STDERR_FILENO);
        EXPECT_EQ(WaitForEnd(process), 4) << arguments.back();
    }
    close(full);
}

// What the program does when nobody reads what it prints.
int RunWithoutReader(const std::vector<std::string>& arguments) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    const pid_t process = StartKestrel(arguments, ends[1], ends[1]);
    close(ends[1]);
    return WaitForEnd(process);
}

TEST_F(Streams, A_reader_that_goes_away_neither_ends_nor_holds_up_the_program) {
    EXPECT_EQ(RunWithoutReader({"effects"}), 0);
    EXPECT_EQ(RunWithoutReader({"effects", "--json"}), 0);
    EXPECT_EQ(RunWithoutReader({"--help"}), 0);
    EXPECT_EQ(RunWithoutReader({"nonsense"}), 2);
    EXPECT_EQ(RunWithoutReader(Apply(output)), 0);
    EXPECT_EQ(ReadBack(output).frames.size(), 3u) << "the work is done all the same";
}

TEST_F(Streams, A_result_that_nobody_reads_is_lost_and_that_is_said) {
    for (const char* format : {"y4m", "gif"}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        close(ends[0]);
        const std::string errors = folder.path + format;
        const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const pid_t process = StartKestrel({"apply", input, "-o", "-", "--format", format}, ends[1], err);
        close(ends[1]);
        close(err);
        EXPECT_EQ(WaitForEnd(process), 4);
        EXPECT_EQ(ReadText(errors),
                  "kestrel: standard output: its reader has ended before it had everything.\n");
    }
}

TEST_F(Streams, A_result_that_finds_no_room_is_lost_and_that_is_said) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const std::string errors = folder.path + "errors";
    const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const pid_t process = StartKestrel({"apply", input, "-o", "-", "--format", "y4m"}, full, err);
    close(full);
    close(err);
    EXPECT_EQ(WaitForEnd(process), 4);
    EXPECT_THAT(ReadText(errors), HasSubstr("standard output: it cannot be written (the disk is full)."));
}

TEST_F(Streams, A_picture_is_not_written_to_a_terminal) {
    const int controller = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(controller, 0);
    ASSERT_EQ(grantpt(controller), 0);
    ASSERT_EQ(unlockpt(controller), 0);
    const int terminal = open(ptsname(controller), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(terminal, 0);
    const std::string errors = folder.path + "errors";
    const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const pid_t process = StartKestrel(
        {"apply", input, "-o", "-", "--format", "gif", "--frames", "0-0", "--effect", "Bump"}, terminal, err);
    close(err);
    EXPECT_EQ(WaitForEnd(process), 4);
    EXPECT_EQ(ReadText(errors),
              "kestrel: standard output is a terminal, which cannot show a picture; send it to a file or a "
              "program, or name a file with -o.\n");
    fcntl(controller, F_SETFL, O_NONBLOCK);
    char byte = 0;
    EXPECT_LT(read(controller, &byte, 1), 0) << "something was written";
    close(terminal);
    close(controller);
}

// The second file of the series is a pipe that nobody reads: the program has written the first file under its
// temporary name then, waits for a reader, and places none of its files before it gets one.
TEST_F(Streams, An_interrupt_leaves_nothing_of_an_unfinished_file) {
    ASSERT_EQ(mkfifo((folder.path + "out-001.png").c_str(), 0600), 0);
    const pid_t process = StartKestrel({"apply", input, "-o", folder.path + "out.png", "--effect", "Bump"},
                                       STDOUT_FILENO, STDERR_FILENO);
    ASSERT_GT(process, 0);
    EXPECT_TRUE(WaitFor([&] { return FileExists(folder.path + "out-000.png.kestrel-part"); }));
    EXPECT_FALSE(FileExists(folder.path + "out-000.png"));
    kill(process, SIGINT);
    EXPECT_EQ(WaitForEnd(process), 130);
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out-001.png"}));
}

// The same place in the work, for a script.
TEST_F(Streams, An_interrupt_is_said_as_everything_else_is) {
    ASSERT_EQ(mkfifo((folder.path + "out-001.png").c_str(), 0600), 0);
    const std::string printed = folder.path + "printed";
    for (const bool json : {false, true}) {
        const int out = open(printed.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        Words words = {"apply", input, "-o", folder.path + "out.png", "--effect", "Bump"};
        if (json) words.emplace_back("--json");
        const pid_t process = StartKestrel(words, out, out);
        close(out);
        ASSERT_GT(process, 0);
        EXPECT_TRUE(WaitFor([&] { return FileExists(folder.path + "out-000.png.kestrel-part"); }));
        kill(process, SIGTERM);
        EXPECT_EQ(WaitForEnd(process), 130);
        EXPECT_EQ(ReadText(printed),
                  json ? "{\"ok\":false,\"exitCode\":130,\"error\":\"interrupted.\",\"notes\":[]}\n"
                       : "kestrel: interrupted.\n");
    }
}

// The names that appeared in a folder since `watch` was made.
std::set<std::string> NamesSeen(int watch) {
    std::set<std::string> names;
    alignas(inotify_event) char events[65536];
    for (ssize_t size = 0; (size = read(watch, events, sizeof events)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(events + at);
            names.insert(event->name);
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
    }
    return names;
}

// An interrupt removes the temporary file and knows of no other.
TEST_F(Streams, No_file_but_the_temporary_one_appears_beside_the_output) {
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, folder.path.c_str(), IN_CREATE | IN_MOVED_TO), 0);
    EXPECT_EQ(RunKestrel(Apply(output)).exitCode, 0);
    EXPECT_EQ(NamesSeen(watch), (std::set<std::string>{"out.gif", "out.gif.kestrel-part"}));
    close(watch);
}

// A program that is killed could leave what it has written.
TEST_F(Streams, Verifying_writes_no_file) {
    const char* const before = getenv("TMPDIR");
    const std::string kept = before ? before : "";
    const std::string temporary = folder.path + "temporary";
    std::filesystem::create_directory(temporary);
    ASSERT_EQ(RunKestrel(Apply(output)).exitCode, 0);
    ASSERT_EQ(RunKestrel(Apply(folder.path + "series.png")).exitCode, 0);
    for (const std::string& made : {output, folder.path + "series-001.png"}) {
        const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ASSERT_GE(inotify_add_watch(watch, temporary.c_str(), IN_CREATE | IN_MOVED_TO), 0);
        ASSERT_GE(inotify_add_watch(watch, folder.path.c_str(), IN_CREATE | IN_MOVED_TO), 0);
        setenv("TMPDIR", (temporary + "/there is none").c_str(), 1);
        const pid_t process = StartKestrel({"verify", made, "--source", input}, STDOUT_FILENO, STDERR_FILENO);
        const int exitCode = WaitForEnd(process);
        if (before)
            setenv("TMPDIR", kept.c_str(), 1);
        else
            unsetenv("TMPDIR");
        EXPECT_EQ(exitCode, 0) << made;
        EXPECT_EQ(NamesSeen(watch), std::set<std::string>()) << made;
        close(watch);
    }
}

TEST_F(Streams, A_name_that_is_too_long_is_found_before_the_work) {
    // The temporary name is longer.
    const std::string name(NAME_MAX - 4, 'n');
    const ProgramResult result = RunKestrel(Apply(folder.path + name + ".gif"));
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, HasSubstr("cannot be written: the name is too long."));
}

}  // namespace
}  // namespace kfx::test
