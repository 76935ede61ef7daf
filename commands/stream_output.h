// SPDX-License-Identifier: MIT
// A built animation's way into one stream of bytes: standard output, or a file for video programs.
#pragma once

#include <string>

#include "commands/result_files.h"

namespace kfx::commands {

// One PNG picture, or an animation in another format, as a whole file in memory. False: `*error` is a clause.
bool EncodeResult(BuiltAnimation built, const SourceRecord& source, const ResultOptions& options,
                  WrittenResult* written, std::vector<uint8_t>* file, std::string* error);

// Writes the animation to standard output in options.format. Nothing is written when `*error`, one sentence,
// says that it cannot be made.
bool WriteToStandardOutput(BuiltAnimation built, const SourceRecord& source, const ResultOptions& options,
                           WrittenResult* written, std::string* error);

// Writes uncompressed frames into a file (the path is the system's).
bool WriteRawFile(const std::string& path, BuiltAnimation built, const SourceRecord& source,
                  const ResultOptions& options, WrittenResult* written, std::string* error);

}  // namespace kfx::commands
