// SPDX-License-Identifier: MIT
// Text and paths between the program (UTF-8), the system and the plug-in.
#pragma once

#include <string>

namespace kfx::commands {

// The plug-in's text is 8-bit: on Windows in the process's code page, which the programs' manifests set to
// UTF-8 where the system can; elsewhere UTF-8.
std::string ToPluginText(const std::string& utf8);
std::string FromPluginText(const std::string& text);

// A path as the user wrote it, made fit for the system. On Windows forward slashes become backslashes, and
// under Wine a leading slash is the root of the Unix file system. Relative paths stay relative.
std::string SystemPath(const std::string& path);

// A sentence that begins with SystemPath(path), or with a file beside it, begins with the folder as the user
// wrote it instead.
std::string WithFolderAsGiven(const std::string& sentence, const std::string& path);

// The characters that a folder's name may end in.
extern const char* const kFolderEnds;

std::string FolderOf(const std::string& path);  // with its final separator; empty for a bare name
std::string FileNameOf(const std::string& path);

}  // namespace kfx::commands
