// SPDX-License-Identifier: MIT
// In which format a result is written, and whether that is to a file or to standard output.
#pragma once

#include <string>
#include <vector>

namespace kfx::commands {

// The name that stands for standard input or standard output.
inline bool IsStream(const std::string& path) { return path == "-"; }

// Whether an output is standard output, also by the names that Unix has for it: the result's words must not
// get between its bytes.
bool NamesStandardOutput(const std::string& path);

// How a source or a result is named to the user.
inline std::string ShownInput(const std::string& path) { return IsStream(path) ? "standard input" : path; }
inline std::string ShownPath(const std::string& path) { return IsStream(path) ? "standard output" : path; }

// All formats that --format takes.
std::vector<std::string> FormatNames();

// "y4m", "rgb" and "rgba": frames for video programs.
bool IsRawFormat(const std::string& format);

// The format of an output: `given`, what --format names, or what the output's ending says. Lower case, as
// "gif". Empty: neither says it, or they contradict each other; `*error` is one sentence then.
std::string ResolveFormat(const std::string& output, const std::string& given, std::string* error);

}  // namespace kfx::commands
