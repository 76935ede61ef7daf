// SPDX-License-Identifier: MIT
#include "commands/sheet_file.h"

#include "commands/report.h"
#include "commands/text.h"
#include "media/animation_writer.h"
#include "media/file_io.h"

namespace kfx::commands {

Report WriteSheet(const Picture& sheet, const std::string& output, Report report) {
    std::string error;
    if (sheet.width == 0) return FailedReport(kExitBadInput, "there is nothing to draw.");
    size_t bytes = 0;
    const auto encode = [&](size_t, std::vector<uint8_t>* file, std::string* clause) {
        if (!EncodePng(sheet.width, sheet.height, sheet.pixels.data(), file, clause)) return false;
        bytes = file->size();
        return true;
    };
    if (!WriteWholeFiles({SystemPath(output)}, encode, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, output));
    report.text = output + ": " + std::to_string(sheet.width) + " x " + std::to_string(sheet.height) + ", " +
                  std::to_string(bytes) + " bytes.\n";
    report.result["output"] = output;
    report.result["width"] = sheet.width;
    report.result["height"] = sheet.height;
    report.result["bytes"] = bytes;
    return report;
}

}  // namespace kfx::commands
