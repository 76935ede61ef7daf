// SPDX-License-Identifier: MIT
#include "commands/child_lines.h"

namespace kfx::commands {
namespace {

std::string LineOf(const nlohmann::ordered_json& object) {
    // Bytes that are no UTF-8 must not stop the command.
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

// Throws where it does not hold what it should.
Report ReceivedReport(const nlohmann::ordered_json& sent) {
    Report report;
    report.exitCode = static_cast<ExitCode>(sent.at("exitCode").get<int>());
    report.error = sent.at("error").get<std::string>();
    report.notes = sent.at("notes").get<std::vector<std::string>>();
    report.text = sent.at("text").get<std::string>();
    report.result = sent.at("result");
    for (const nlohmann::ordered_json& part : sent.at("parts")) report.parts.push_back(ReceivedReport(part));
    return report;
}

nlohmann::ordered_json SentReport(const Report& report) {
    auto parts = nlohmann::ordered_json::array();
    for (const Report& part : report.parts) parts.push_back(SentReport(part));
    return {{"exitCode", report.exitCode}, {"error", report.error},   {"notes", report.notes},
            {"text", report.text},         {"result", report.result}, {"parts", parts}};
}

// Throws where a line does not hold what it should.
void TakeObject(const nlohmann::ordered_json& line, ChildWords* words) {
    if (line.contains("temporary")) words->temporary.push_back(line.at("temporary").get<std::string>());
    if (line.contains("plugin")) words->usedPlugin = true;
    if (line.contains("progress")) {
        const auto& sent = line.at("progress");
        words->progress = {.stage = sent.at("stage").get<std::string>(),
                           .current = sent.at("current").get<int>(),
                           .total = sent.at("total").get<int>()};
    }
    if (!line.contains("report")) return;
    words->report = ReceivedReport(line.at("report"));
    words->reported = true;
}

}  // namespace

std::string TemporaryLine(const std::string& path) { return LineOf({{"temporary", path}}); }
std::string PluginLine() { return LineOf({{"plugin", true}}); }

std::string ProgressLine(const StageProgress& progress) {
    return LineOf({{"progress",
                    {{"stage", progress.stage}, {"current", progress.current}, {"total", progress.total}}}});
}

std::string ReportLine(const Report& report) { return LineOf({{"report", SentReport(report)}}); }

void TakeChildLine(const std::string& line, ChildWords* words) {
    const auto object = nlohmann::ordered_json::parse(line, nullptr, false);
    if (!object.is_object()) return;
    try {
        TakeObject(object, words);
    } catch (const nlohmann::json::exception&) {
        return;
    }
}

Report ReportOf(const ChildWords& words, bool interrupted, const std::string& how) {
    if (words.reported) return words.report;
    if (interrupted) return FailedReport(kExitInterrupted, "interrupted.");
    const char* const ended = words.usedPlugin ? "the plug-in has ended the command before it was done"
                                               : "the command's process was ended before it was done";
    return FailedReport(kExitEngine, ended + (" (" + how + ")."));
}

}  // namespace kfx::commands
