// SPDX-License-Identifier: MIT
// A batch that is killed in the middle, with all its processes, as when the machine is switched off.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <map>

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

constexpr int kStills = 39;
constexpr size_t kWaitFor = 12;

struct BatchResume : ::testing::Test {
    TemporaryFolder folder;
    const std::string in = folder.path + "in/", out = folder.path + "out/", whole = folder.path + "whole/";
    // The second picture of one of the results: a pipe that nobody reads. The process that makes it stands
    // still with its first picture unfinished.
    const std::string pipe = out + "05-series-001.png";
    const std::string unfinished = out + "05-series-000.png.kestrel-part";

    void SetUp() override {
        for (const std::string& path : {in, out}) std::filesystem::create_directory(path);
        for (int i = 0; i < kStills; ++i)
            WriteTestGif(in + (i < 10 ? "0" : "") + std::to_string(i) + ".gif", 1, false, 1 + i % 3);
        WriteTestGif(in + "05-series.gif", 2);
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    }

    std::vector<std::string> Words(const std::string& output) const {
        return {"apply", in, "-o", output, "--effect", "Emboss", "--format", "png", "--jobs", "4"};
    }

    // Results that have their names; others may still be written.
    std::vector<std::string> Finished() const {
        std::vector<std::string> names = FilesIn(out);
        std::erase_if(names, [&](const std::string& name) {
            return out + name == pipe || name.find(".kestrel-part") != std::string::npos;
        });
        return names;
    }

    // The program must not see its processes end: it would tidy up.
    void Kill(pid_t process) const {
        kill(process, SIGSTOP);
        for (const pid_t child : ChildrenOf(process)) kill(child, SIGKILL);
        kill(process, SIGKILL);
        EXPECT_EQ(WaitForEnd(process), -SIGKILL);
    }
};

TEST_F(BatchResume, A_killed_batch_goes_on_where_it_was) {
    const int none = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const pid_t process = StartKestrel(Words(out), none, none);
    close(none);
    ASSERT_GT(process, 0);
    EXPECT_TRUE(WaitFor([&] { return FileExists(unfinished) && Finished().size() >= kWaitFor; }));
    Kill(process);
    EXPECT_TRUE(FileExists(unfinished));
    DeleteFileAt(pipe);
    std::map<std::string, std::filesystem::file_time_type> there;
    for (const std::string& name : Finished()) {
        there[name] = std::filesystem::last_write_time(out + name);
        EXPECT_EQ(ReadBack(out + name).frames.size(), 1u) << name;
    }
    EXPECT_GE(there.size(), kWaitFor);

    std::vector<std::string> again = Words(out);
    again.emplace_back("--skip-done");
    const ProgramResult result = RunKestrel(again);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.err,
                EndsWith("kestrel: " + std::to_string(kStills + 1 - static_cast<int>(there.size())) +
                         " done, " + std::to_string(there.size()) + " there before.\n"));
    for (const auto& [name, time] : there)
        EXPECT_EQ(std::filesystem::last_write_time(out + name), time) << name;
    ASSERT_EQ(RunKestrel(Words(whole)).exitCode, 0);
    EXPECT_EQ(FilesIn(out), FilesIn(whole));
    EXPECT_EQ(FilesIn(out).size(), static_cast<size_t>(kStills) + 2);
    for (const std::string& name : FilesIn(whole))
        EXPECT_TRUE(ReadText(out + name) == ReadText(whole + name)) << name;
}

}  // namespace
}  // namespace kfx::test
