// SPDX-License-Identifier: MIT
// Text between Stage (UTF-8), the system (UTF-16) and the plug-in (the process's 8-bit code page, which
// Stage's manifest sets to UTF-8 where the system can).
#pragma once

#include <string>

namespace kfx::stage {

std::wstring Widen(const std::string& utf8);
std::string Narrow(const std::wstring& wide);

std::string ToPluginText(const std::string& utf8);
std::string FromPluginText(const std::string& text);

// A path as the user wrote it, made fit for the system: forward slashes, and under Wine a leading slash as
// the root of the Unix file system. Relative paths stay relative.
std::string SystemPath(const std::string& path);

// The absolute form of a path; the path itself when the system has none.
std::string AbsolutePath(const std::string& path);

std::string FolderOf(const std::string& path);  // with its final backslash; empty for a bare name
std::string FileNameOf(const std::string& path);

// The system's sentence for an error code, without its line end and final full stop.
std::string SystemErrorText(unsigned long code);

}  // namespace kfx::stage
