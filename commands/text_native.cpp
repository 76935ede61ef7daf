// SPDX-License-Identifier: MIT
#include "commands/text.h"

namespace kfx::commands {

const char* const kFolderEnds = "/";

std::string ToPluginText(const std::string& utf8) { return utf8; }
std::string FromPluginText(const std::string& text) { return text; }
std::string SystemPath(const std::string& path) { return path; }

}  // namespace kfx::commands
