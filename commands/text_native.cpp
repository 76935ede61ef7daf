// SPDX-License-Identifier: MIT
#include "commands/text.h"

namespace kfx::commands {

std::string ToPluginText(const std::string& utf8) { return utf8; }
std::string FromPluginText(const std::string& text) { return text; }
std::string SystemPath(const std::string& path) { return path; }

std::string FolderOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::string FileNameOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace kfx::commands
