// SPDX-License-Identifier: MIT
// kestrel sheet: a source and its result beside each other.
#include <utility>

#include "commands/common_options.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/sheet_file.h"
#include "commands/text.h"

namespace kfx::commands {
namespace {

constexpr int kSheetColumns = 6;
constexpr int kSheetWidth = 200;
constexpr int kSheetHeight = 150;

Report RunSheet(const CommandLine& line, const CommandContext&) {
    Report report;
    Animation source, result;
    if (!ReadSource(line, 0, &source, &report) || !ReadSource(line, 1, &result, &report) ||
        !CheckOutput(line, {line.output}, &report)) {
        return report;
    }
    report.result["inputs"] = line.inputs;
    const std::string title =
        FileNameOf(line.sources[0].files[0]) + " and " + FileNameOf(line.sources[1].files[0]);
    return WriteSheet(DrawComparison(title, source, result, kSheetColumns, kSheetWidth, kSheetHeight),
                      line.output, std::move(report));
}

void AddSheet(CLI::App* app, const OptionTarget& target) {
    CLI::App* const sheet =
        AddCommand(app, "sheet", "Draw frames of a source and of its result on one contact sheet");
    RequireOption(AddInput(sheet, target.line, "source", "Source animation"));
    RequireOption(AddInput(sheet, target.line, "result", "Its result"));
    AddJoinOptions(sheet, target.line);
    AddReadLimit(sheet, target.line);
    AddOutput(sheet, target.line, "-o,--output", "PNG file");
    AddReportOptions(sheet, target.line);
}

bool FinishSheet(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, {".png"}, error);
}

}  // namespace

const CommandRow kSheetCommand = {.name = "sheet",
                                  .inputs = InputUse::Each,
                                  .add = AddSheet,
                                  .finish = FinishSheet,
                                  .run = RunSheet,
                                  .examples = "kestrel sheet IN.gif OUT.gif -o SHEET.png"};

}  // namespace kfx::commands
