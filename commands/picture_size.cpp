// SPDX-License-Identifier: MIT
#include "commands/picture_size.h"

#include "commands/parameter.h"
#include "commands/parser_words.h"

namespace kfx::commands {
namespace {

constexpr int kLeast = 16;
constexpr int kMost = 2000;

bool ParseSide(const std::string& text, int* side) {
    return ReadNumber(text, side) && *side >= kLeast && *side <= kMost;
}

}  // namespace

void AddPictureSize(CLI::App* command, CommandLine* line, const std::string& standard) {
    AddText(command,
            {.name = "--size",
             .typeName = "WxH",
             .description = "The most that one picture takes (" + standard + ")"},
            &line->look.pictureSize);
}

bool ParsePictureSize(const std::string& text, PictureSize* size) {
    PictureSize read = {};
    const size_t times = text.find_first_of("xX");
    if (times == std::string::npos || !ParseSide(text.substr(0, times), &read.width) ||
        !ParseSide(text.substr(times + 1), &read.height)) {
        return false;
    }
    *size = read;
    return true;
}

bool CheckPictureSize(const std::string& text, std::string* error) {
    PictureSize ignored = {};
    if (text.empty() || ParsePictureSize(text, &ignored)) return true;
    *error = "--size takes a width and a height from 16 to 2000, such as 160x120, not \"" + text + "\".";
    return false;
}

}  // namespace kfx::commands
