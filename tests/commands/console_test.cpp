// SPDX-License-Identifier: MIT
// What the program prints, read from files and from a terminal in the streams' place.
#include "commands/console.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "commands/report.h"
#include "commands/survey_text.h"
#include "tests/support/wait_for.h"

namespace kfx::commands {
namespace {

using test::WaitFor;

// Another file in a stream's place for a scope.
struct Redirection {
    Redirection(int number, int file) : stream(number), before(dup(number)) { dup2(file, number); }
    ~Redirection() {
        dup2(before, stream);
        close(before);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

    const int stream;
    const int before;
};

// A file without a name that receives both streams.
struct Printed {
    std::FILE* const output = std::tmpfile();
    std::FILE* const errors = std::tmpfile();

    Printed() = default;
    ~Printed() {
        std::fclose(output);
        std::fclose(errors);
    }
    Printed(const Printed&) = delete;
    Printed& operator=(const Printed&) = delete;

    bool Print(const Report& report, bool json, bool quiet) const {
        std::fflush(stdout);
        const Redirection first(STDOUT_FILENO, fileno(output)), second(STDERR_FILENO, fileno(errors));
        return PrintReport(report, json, quiet);
    }
};

std::string TextIn(std::FILE* file) {
    std::string text(4096, '\0');
    const ssize_t size = pread(fileno(file), text.data(), text.size(), 0);
    text.resize(size < 0 ? 0 : static_cast<size_t>(size));
    return text;
}

// A terminal that shows characters as they are written; `end` is the program's side, `screen` the other.
struct Terminal {
    const int screen = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    int end = -1;

    Terminal() {
        if (grantpt(screen) != 0 || unlockpt(screen) != 0) return;
        end = open(ptsname(screen), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings = {};
        tcgetattr(end, &settings);
        cfmakeraw(&settings);
        tcsetattr(end, TCSANOW, &settings);
    }
    ~Terminal() {
        close(end);
        close(screen);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
};

// Adds to `*shown` what has come since. True: it ends in `text`.
bool Shows(const Terminal& terminal, const std::string& text, std::string* shown) {
    char part[256];
    const ssize_t size = read(terminal.screen, part, sizeof part);
    if (size > 0) shown->append(part, static_cast<size_t>(size));
    return shown->size() >= text.size() && shown->substr(shown->size() - text.size()) == text;
}

Report ReportOf(const std::string& text) {
    Report report;
    report.text = text;
    report.notes = {"out.gif: a note."};
    return report;
}

TEST(Console, Results_go_to_the_output_and_notes_to_the_errors) {
    const Printed printed;
    EXPECT_TRUE(printed.Print(ReportOf("done.\n"), false, false));
    EXPECT_EQ(TextIn(printed.output), "done.\n");
    EXPECT_EQ(TextIn(printed.errors), "kestrel: note: out.gif: a note.\n");
}

TEST(Console, An_output_that_takes_nothing_is_told) {
    std::FILE* const errors = std::tmpfile();
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    bool written = true;
    {
        std::fflush(stdout);
        const Redirection first(STDOUT_FILENO, full), second(STDERR_FILENO, fileno(errors));
        written = PrintReport(ReportOf("done.\n"), false, true);
    }
    close(full);
    EXPECT_FALSE(written);
    EXPECT_EQ(TextIn(errors), "The standard output cannot be written; is its disk full?\n");
    std::fclose(errors);
}

TEST(Console, A_progress_line_is_for_terminals) {
    HostSession session;
    session.status = "Building";
    std::FILE* const errors = std::tmpfile();
    {
        const Redirection redirection(STDERR_FILENO, fileno(errors));
        EXPECT_FALSE(ErrorsAreWatched());
        ShowProgressLine(session);
        ClearProgressLine();
    }
    EXPECT_EQ(TextIn(errors), "");
    std::fclose(errors);
}

TEST(Console, A_progress_line_is_drawn_over_the_last_and_cleared_before_a_report) {
    HostSession session;
    session.status = "Quantizing";
    const Terminal terminal;
    ASSERT_GE(terminal.end, 0);
    std::string shown;
    // Lines follow each other after a short while only, so each is asked for until it comes.
    const auto showUntil = [&](const std::string& text) {
        return WaitFor([&] {
            const Redirection redirection(STDERR_FILENO, terminal.end);
            ShowProgressLine(session);
            return Shows(terminal, text, &shown);
        });
    };
    EXPECT_TRUE(showUntil("\rQuantizing")) << shown;
    session.status = "Remap";
    session.progressTotal = 3;  // at the first part there is no time left to tell, however slow this is
    EXPECT_TRUE(showUntil("\rRemap  1 of 3")) << shown;
    session.progressTotal = 0;
    EXPECT_TRUE(showUntil("\rRemap        ")) << shown;
    {
        const Redirection redirection(STDERR_FILENO, terminal.end);
        PrintReport(FailedReport(kExitEngine, "no."), false, false);
    }
    EXPECT_TRUE(WaitFor([&] { return Shows(terminal, "\r     \rkestrel: no.\n", &shown); })) << shown;
}

TEST(Console, A_survey_from_an_input_that_cannot_be_read_is_refused) {
    const int folder = open("/", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(folder, 0);
    const Redirection input(STDIN_FILENO, folder);
    close(folder);
    Survey survey;
    std::string text;
    Failure failure;
    EXPECT_FALSE(ReadSurveyFile("-", &survey, &text, &failure));
    EXPECT_EQ(failure.exitCode, kExitBadInput);
    EXPECT_EQ(failure.error.substr(0, 36), "standard input: it cannot be read (t") << failure.error;
}

}  // namespace
}  // namespace kfx::commands
