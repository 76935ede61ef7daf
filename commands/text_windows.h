// SPDX-License-Identifier: MIT
// Text between the program (UTF-8) and the system (UTF-16), beside what text.h declares.
#pragma once

#include <string>

#include "commands/text.h"

namespace kfx::commands {

std::wstring Widen(const std::string& utf8);
std::string Narrow(const std::wstring& wide);

// The absolute form of a path; the path itself when the system has none.
std::string AbsolutePath(const std::string& path);

// The system's sentence for an error code, without its line end and final full stop.
std::string SystemErrorText(unsigned long code);

// The argument in quotes, as the system's splitting of command lines undoes it.
std::wstring QuotedArgument(const std::string& argument);

}  // namespace kfx::commands
