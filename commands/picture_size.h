// SPDX-License-Identifier: MIT
// The option --size of commands that draw sheets: the most that one picture takes.
#pragma once

#include <string>

#include "commands/command_row.h"
#include "media/contact_sheet.h"

namespace kfx::commands {

// Adds --size; `standard` names what holds without it.
void AddPictureSize(CLI::App* command, CommandLine* line, const std::string& standard);

// Reads WxH, 16 to 2000 each. False, also for an empty text: *size stays as it is.
bool ParsePictureSize(const std::string& text, PictureSize* size);

// Whether the option's value can be read; an empty one was not given. False: `*error` is one sentence.
bool CheckPictureSize(const std::string& text, std::string* error);

}  // namespace kfx::commands
