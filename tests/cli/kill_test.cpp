// SPDX-License-Identifier: MIT
// kestrel is killed, or interrupted by Ctrl+C, at moments spread over its whole run, counted in its system
// calls: a result is the old file or the whole new one, an interrupted run leaves nothing else, and the run
// after a killed one tidies up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <ostream>

#include <fcntl.h>
#include <unistd.h>

#include "tests/cli/native_program.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using ::testing::Not;

using Words = std::vector<std::string>;

constexpr char kOld[] = "what was there before";

// KFX_KILLS: how many moments of each command.
size_t Moments() {
    const char* const wish = std::getenv("KFX_KILLS");
    return wish ? std::strtoul(wish, nullptr, 10) : 12;
}

// A command and the files that it makes.
struct Command {
    const char* name;
    Words words;  // with "in.gif" and the first output left out
    Words outputs;
};
const Command kCommands[] = {
    {"Gif", {"--effect", "Emboss"}, {"out.gif"}},
    {"Webp", {"--effect", "Solarize"}, {"out.webp"}},
    {"Apng", {"--effect", "Swirl", "--format", "apng"}, {"out.png"}},
    {"Series", {"--effect", "Bump", "--format", "png"}, {"out-000.png", "out-001.png", "out-002.png"}},
};

std::ostream& operator<<(std::ostream& stream, const Command& command) { return stream << command.name; }

// The search for leaks at a program's end needs that nobody else traces it: for its scope, programs start
// without. Whatever else is asked of the sanitizer stays, and other tests have the search.
struct NoLeakSearch {
    NoLeakSearch() {
        const char* const options = std::getenv(kName);
        wasSet = options != nullptr;
        if (wasSet) before = options;
        setenv(kName, (before.empty() ? kOff : before + ":" + kOff).c_str(), 1);
    }
    ~NoLeakSearch() { wasSet ? setenv(kName, before.c_str(), 1) : unsetenv(kName); }
    NoLeakSearch(const NoLeakSearch&) = delete;
    NoLeakSearch& operator=(const NoLeakSearch&) = delete;

    static constexpr char kName[] = "ASAN_OPTIONS";
    static constexpr char kOff[] = "detect_leaks=0";
    std::string before;
    bool wasSet = false;
};

class Killed : public testing::TestWithParam<Command> {
protected:
    void SetUp() override {
        WriteTestGif(Path("in.gif"), 3);
        Restore();
        size_t calls = 0;
        // One that is never time: it runs to its end, and counts its stops.
        StartUntil([&] { return ++calls == 0; });
        stops = calls;
        for (const std::string& output : GetParam().outputs) results.push_back(ReadText(Path(output)));
        ASSERT_THAT(results, testing::Each(Not(std::string(kOld)))) << "the command makes them";
        ASSERT_GT(stops, 100u);
    }
    ~Killed() override { close(errors); }

    std::string Path(const std::string& name) const { return folder.path + name; }

    Words All() const {
        const std::string first = GetParam().outputs.size() > 1 ? "out.png" : GetParam().outputs[0];
        Words words = {"apply", Path("in.gif"), "-o", Path(first), "--force", "--quiet"};
        words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
        return words;
    }

    void Restore() const {
        for (const std::string& output : GetParam().outputs) WriteText(Path(output), kOld);
    }

    // Every output is whole, old or new.
    void ExpectWhole(size_t moment) const {
        for (size_t i = 0; i < results.size(); ++i) {
            const std::string content = ReadText(Path(GetParam().outputs[i]));
            EXPECT_TRUE(content == kOld || content == results[i])
                << GetParam().outputs[i] << " at stop " << moment << " of " << stops;
        }
    }

    // What is in the folder beside the input and the outputs.
    Words Strangers() const {
        Words names = FilesIn(folder.path);
        std::erase_if(names, [](const std::string& name) {
            const Words& outputs = GetParam().outputs;
            return name == "in.gif" || std::find(outputs.begin(), outputs.end(), name) != outputs.end();
        });
        return names;
    }

    // -1: it has ended by itself.
    pid_t StartUntil(const std::function<bool()>& isTime) const {
        const NoLeakSearch forTraced;
        return StartKestrelUntil(isTime, All(), errors);
    }

    // Sends the signal at that stop. Answers how the program ended.
    int EndAt(size_t moment, int number) const {
        size_t calls = 0;
        const pid_t process = StartUntil([&] { return ++calls == moment; });
        if (process < 0) return 0;  // it needed fewer calls this time
        LetGo(process, number);
        return WaitForEnd(process);
    }

    // Moments from the beginning to the end. Most calls come before the work begins: each second one is among
    // the last tenth, where files are written and placed.
    std::vector<size_t> SpreadMoments() const {
        std::vector<size_t> moments;
        for (size_t i = 0; i < Moments(); ++i) {
            const size_t part = stops * (i + 1) / (Moments() + 1);
            moments.push_back(i % 2 ? stops - part / 10 : part);
        }
        return moments;
    }

    TemporaryFolder folder;
    const int errors = open("/dev/null", O_WRONLY | O_CLOEXEC);
    size_t stops = 0;
    std::vector<std::string> results;
};

TEST_P(Killed, At_any_moment_leaves_whole_files_and_the_next_run_tidies_up) {
    size_t killed = 0;
    for (const size_t moment : SpreadMoments()) {
        Restore();
        const bool wasKilled = EndAt(moment, SIGKILL) == -SIGKILL;
        killed += wasKilled;
        ExpectWhole(moment);
        for (const std::string& name : Strangers())
            EXPECT_NE(name.find(".kestrel-part"), std::string::npos) << name << " at stop " << moment;
        ASSERT_EQ(RunKestrel(All()).exitCode, 0);
        for (size_t i = 0; i < results.size(); ++i)
            EXPECT_TRUE(ReadText(Path(GetParam().outputs[i])) == results[i]) << moment;
        EXPECT_EQ(Strangers(), Words{}) << "what the killed run left at stop " << moment;
        AddTried("kills of kestrel", wasKilled);
    }
    // Threads that wait for each other need more calls at one time than at another.
    EXPECT_GE(killed, Moments() / 3);
}

TEST_P(Killed, By_Ctrl_C_at_any_moment_leaves_whole_files_and_nothing_else) {
    size_t interrupted = 0;
    for (const size_t moment : SpreadMoments()) {
        Restore();
        const int end = EndAt(moment, SIGINT);
        // Before the program has told the system what it does on SIGINT, it is ended by it.
        EXPECT_TRUE(end == 0 || end == 130 || end == -SIGINT) << end << " at stop " << moment;
        interrupted += end != 0;
        ExpectWhole(moment);
        EXPECT_EQ(Strangers(), Words{}) << "at stop " << moment;
        AddTried("interrupts of kestrel", end != 0);
    }
    EXPECT_GT(interrupted, 0u);
}

INSTANTIATE_TEST_SUITE_P(Commands, Killed, testing::ValuesIn(kCommands),
                         [](const auto& command) { return command.param.name; });

}  // namespace
}  // namespace kfx::test
