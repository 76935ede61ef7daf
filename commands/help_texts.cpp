// SPDX-License-Identifier: MIT
#include "commands/help_texts.h"

#include "commands/parser.h"

namespace kfx::commands {
namespace {

constexpr size_t kMeaningColumn = 6;

}  // namespace

const std::vector<ExitCodeRow>& ExitCodeRows() {
    static const std::vector<ExitCodeRow> kRows = {
        {kExitDone, "done"},
        {kExitDifferent, "compare: the animations do not look equal"},
        {kExitBadCommand, "wrong option, unknown name, value out of range"},
        {kExitBadInput, "a file that cannot be read or is no animation"},
        {kExitBadOutput, "an output that cannot be written"},
        {kExitEngine, "nothing was built: memory ran out, or the plug-in failed"},
        {kExitTimeout, "the plug-in stopped answering"},
        {kExitUnverified, "verify: the file is not what its recipe makes of the source"},
        {kExitTooLarge, "nothing fits into --max-size"},
        {kExitInterrupted, "interrupted"},
    };
    return kRows;
}

std::string ExitCodesText() {
    std::string text = "Exit codes:\n";
    for (const ExitCodeRow& row : ExitCodeRows()) {
        std::string line = "  " + std::to_string(row.code);
        line.resize(kMeaningColumn, ' ');
        text += line + " " + row.meaning + "\n";
    }
    return text;
}

std::string Indented(const std::string& lines) {
    std::string indented = "  ";
    for (const char c : lines) {
        indented += c;
        if (c == '\n') indented += "  ";
    }
    return indented;
}

void ShowExamplesFirst(CLI::App* command, const std::string& examples) {
    ShowBeforeUsage(command, "\nExamples:\n" + Indented(examples) + "\n\n");
}

}  // namespace kfx::commands
