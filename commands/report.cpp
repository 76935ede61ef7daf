// SPDX-License-Identifier: MIT
#include "commands/report.h"

template class nlohmann::basic_json<nlohmann::ordered_map>;

namespace kfx::commands {
namespace {

constexpr int kOnOneLine = -1;
// So begins what readers, writers and engines say when memory runs out.
constexpr char kNoMemory[] = "there is not enough memory";
constexpr char kMemoryRemedy[] = "; take smaller pictures or fewer frames, and for a batch --jobs 1.";

std::string JsonText(const Report& report) {
    nlohmann::ordered_json object = {{"ok", report.exitCode == kExitDone}, {"exitCode", report.exitCode}};
    if (!report.error.empty()) object["error"] = report.error;
    object["notes"] = report.notes;
    object.update(report.result);
    // Bytes that are no UTF-8, from a damaged comment say, must not stop the output.
    return object.dump(kOnOneLine, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

// A file's name or its comment may hold what would move a terminal's cursor or change its colours: control
// characters are shown as question marks, but those that break lines and make columns.
std::string Shown(const std::string& text) {
    std::string shown;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool endsLine = byte == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        const bool breaks = byte == '\n' || endsLine || byte == '\t';
        // U+0080 to U+009F are control characters, too.
        const bool isPair = byte == 0xC2 && i + 1 < text.size() && (text[i + 1] & 0xE0) == 0x80;
        shown += isPair || (byte < 0x20 && !breaks) || byte == 0x7F ? '?' : text[i];
        i += isPair;
    }
    return shown;
}

void AddTo(PrintedReport* printed, const Report& report, bool json, bool quiet) {
    if (json) {
        printed->output += JsonText(report);
        return;
    }
    printed->output += Shown(report.text);
    if (!quiet) {
        for (const std::string& note : report.notes)
            printed->errors += "kestrel: note: " + Shown(note) + "\n";
    }
    if (!report.error.empty()) printed->errors += "kestrel: " + Shown(report.error) + "\n";
}

}  // namespace

Report FailedReport(ExitCode exitCode, const std::string& error) {
    Report report;
    report.exitCode = exitCode;
    report.error = error;
    // Whether it is the input or the output that does not fit, the exit code is the same.
    if (error.find(kNoMemory) != std::string::npos) {
        report.exitCode = kExitEngine;
        if (report.error.back() == '.') report.error.pop_back();
        report.error += kMemoryRemedy;
    }
    return report;
}

Report FailedReport(const Failure& failure) { return FailedReport(failure.exitCode, failure.error); }

PrintedReport FormatReport(const Report& report, bool json, bool quiet) {
    PrintedReport printed;
    if (report.parts.empty()) {
        AddTo(&printed, report, json, quiet);
    } else {
        for (const Report& part : report.parts) AddTo(&printed, part, json, quiet);
    }
    return printed;
}

}  // namespace kfx::commands
