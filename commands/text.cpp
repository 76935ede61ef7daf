// SPDX-License-Identifier: MIT
#include "commands/text.h"

namespace kfx::commands {

std::string WithFolderAsGiven(const std::string& sentence, const std::string& path) {
    const std::string folder = FolderOf(SystemPath(path));
    if (folder.empty() || sentence.compare(0, folder.size(), folder) != 0) return sentence;
    return FolderOf(path) + sentence.substr(folder.size());
}

}  // namespace kfx::commands
