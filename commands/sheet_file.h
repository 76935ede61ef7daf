// SPDX-License-Identifier: MIT
// Sheets of pictures as files.
#pragma once

#include <string>

#include "media/contact_sheet.h"

namespace kfx::commands {

struct Report;

// Writes the sheet as a PNG file and adds its name and size to the report. The report that is returned says
// what went wrong, if anything has.
Report WriteSheet(const Picture& sheet, const std::string& output, Report report);

}  // namespace kfx::commands
