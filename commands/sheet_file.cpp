// SPDX-License-Identifier: MIT
#include "commands/sheet_file.h"

#include "commands/text.h"
#include "media/animation_writer.h"

namespace kfx::commands {

Report WriteSheet(const Picture& sheet, const std::string& output, Report report) {
    std::string error;
    if (sheet.width == 0) return FailedReport(kExitBadInput, "there is nothing to draw.");
    if (!WritePng(SystemPath(output), sheet, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, output));
    report.text = output + ": " + std::to_string(sheet.width) + " x " + std::to_string(sheet.height) + ".\n";
    report.result["output"] = output;
    report.result["width"] = sheet.width;
    report.result["height"] = sheet.height;
    return report;
}

}  // namespace kfx::commands
