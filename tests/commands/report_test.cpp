// SPDX-License-Identifier: MIT
#include "commands/report.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kfx::commands {
namespace {

Report NotedReport() {
    Report report;
    report.notes = {"a first.", "a second."};
    report.text = "out.gif: 2 frames.\n";
    report.result = {{"output", "out.gif"}, {"frames", 2}};
    return report;
}

TEST(Report, Results_are_output_and_notes_are_errors) {
    const PrintedReport printed = FormatReport(NotedReport(), false, false);
    EXPECT_EQ(printed.output, "out.gif: 2 frames.\n");
    EXPECT_EQ(printed.errors, "kestrel: note: a first.\nkestrel: note: a second.\n");
}

TEST(Report, Quiet_leaves_out_notes_but_no_error) {
    Report report = NotedReport();
    EXPECT_EQ(FormatReport(report, false, true).errors, "");
    report.error = "it went wrong.";
    EXPECT_EQ(FormatReport(report, false, true).errors, "kestrel: it went wrong.\n");
}

TEST(Report, For_scripts_everything_is_one_object_in_the_output) {
    const PrintedReport done = FormatReport(NotedReport(), true, true);
    EXPECT_EQ(done.errors, "");
    EXPECT_EQ(nlohmann::json::parse(done.output), (nlohmann::json{{"ok", true},
                                                                  {"exitCode", 0},
                                                                  {"notes", {"a first.", "a second."}},
                                                                  {"output", "out.gif"},
                                                                  {"frames", 2}}));
    const PrintedReport failed = FormatReport(FailedReport(Failure{kExitBadInput, "no."}), true, false);
    EXPECT_EQ(nlohmann::json::parse(failed.output),
              (nlohmann::json{
                  {"ok", false}, {"exitCode", 3}, {"error", "no."}, {"notes", nlohmann::json::array()}}));
}

TEST(Report, Parts_are_printed_one_after_another_and_for_scripts_one_a_line) {
    Report report;
    report.exitCode = kExitBadInput;
    report.parts = {NotedReport(), FailedReport(kExitBadInput, "no."), NotedReport()};
    const PrintedReport printed = FormatReport(report, false, true);
    EXPECT_EQ(printed.output, "out.gif: 2 frames.\nout.gif: 2 frames.\n");
    EXPECT_EQ(printed.errors, "kestrel: no.\n");
    const std::string lines = FormatReport(report, true, false).output;
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3);
    const size_t second = lines.find('\n') + 1;
    const auto failed = nlohmann::json::parse(lines.substr(second, lines.find('\n', second) - second));
    EXPECT_EQ(failed["error"], "no.");
}

TEST(Report, Where_memory_runs_out_the_exit_code_is_the_same_and_a_remedy_is_named) {
    const char* const remedy = "; take smaller pictures or fewer frames, and for a batch --jobs 1.";
    for (const ExitCode code : {kExitBadInput, kExitBadOutput, kExitEngine}) {
        const Report report = FailedReport(code, "a.gif: there is not enough memory for the picture.");
        EXPECT_EQ(report.exitCode, kExitEngine);
        EXPECT_EQ(report.error, std::string("a.gif: there is not enough memory for the picture") + remedy);
    }
    EXPECT_EQ(FailedReport(kExitBadInput, "a.gif: no.").exitCode, kExitBadInput);
}

TEST(Report, What_would_move_a_terminals_cursor_is_not_printed) {
    Report report;
    report.text = "a\x1B[2J\rb\tc\r\nd\x7F\u009Be\u00E9\n";
    report.notes = {"x\x07y"};
    report.error = "in\bput.";
    const PrintedReport printed = FormatReport(report, false, false);
    EXPECT_EQ(printed.output, "a?[2J?b\tc\r\nd??e\u00E9\n");
    EXPECT_EQ(printed.errors, "kestrel: note: x?y\nkestrel: in?put.\n");
}

// A line of output is an object, whatever stands in its texts.
TEST(Report, For_scripts_the_object_stands_on_one_line) {
    Report report = NotedReport();
    report.error = "two\nlines.";
    const std::string output = FormatReport(report, true, false).output;
    EXPECT_EQ(output.find('\n'), output.size() - 1);
}

TEST(Report, Bytes_that_are_no_text_are_replaced) {
    Report report;
    report.error = "caf\xE9.gif: no.";
    const auto object = nlohmann::json::parse(FormatReport(report, true, false).output, nullptr, false);
    ASSERT_TRUE(object.is_object());
    EXPECT_EQ(object["error"], "caf\xEF\xBF\xBD.gif: no.");
}

}  // namespace
}  // namespace kfx::commands
