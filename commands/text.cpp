// SPDX-License-Identifier: MIT
#include "commands/text.h"

namespace kfx::commands {

std::string FolderOf(const std::string& path) {
    const size_t end = path.find_last_of(kFolderEnds);
    return end == std::string::npos ? "" : path.substr(0, end + 1);
}

std::string FileNameOf(const std::string& path) { return path.substr(FolderOf(path).size()); }

std::string WithFolderAsGiven(const std::string& sentence, const std::string& path) {
    const std::string folder = FolderOf(SystemPath(path));
    if (folder.empty() || sentence.compare(0, folder.size(), folder) != 0) return sentence;
    return FolderOf(path) + sentence.substr(folder.size());
}

}  // namespace kfx::commands
