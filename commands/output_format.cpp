// SPDX-License-Identifier: MIT
#include "commands/output_format.h"

#include <algorithm>
#include <iterator>

#include "commands/command_line.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

// RGB and RGBA have no headers, so that their files are seldom meant by an ending alone.
struct Format {
    const char* name;
    bool isRaw;
    bool hasEnding;
};

constexpr Format kFormats[] = {
    {.name = "gif", .isRaw = false, .hasEnding = true},  {.name = "webp", .isRaw = false, .hasEnding = true},
    {.name = "png", .isRaw = false, .hasEnding = true},  {.name = "apng", .isRaw = false, .hasEnding = true},
    {.name = "y4m", .isRaw = true, .hasEnding = true},   {.name = "rgb", .isRaw = true, .hasEnding = false},
    {.name = "rgba", .isRaw = true, .hasEnding = false},
};

const Format* FindFormat(const std::string& name) {
    const auto* found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                     [&](const Format& format) { return name == format.name; });
    return found == std::end(kFormats) ? nullptr : found;
}

std::string JoinedEndings() {
    std::vector<std::string> endings;
    for (const Format& format : kFormats) {
        if (format.hasEnding) endings.push_back(std::string(".") + format.name);
    }
    return JoinNames(endings);
}

}  // namespace

std::vector<std::string> FormatNames() {
    std::vector<std::string> names;
    for (const Format& format : kFormats) names.emplace_back(format.name);
    return names;
}

bool NamesStandardOutput(const std::string& path) {
    return IsStream(path) || path == "/dev/stdout" || path == "/dev/fd/1" || path == "/proc/self/fd/1";
}

bool IsRawFormat(const std::string& format) {
    const Format* const found = FindFormat(format);
    return found && found->isRaw;
}

std::string ResolveFormat(const std::string& output, const std::string& given, std::string* error) {
    const std::string ending = IsStream(output) ? "" : EndingOf(output);
    const Format* const named = FindFormat(PlainName(given));
    const Format* const ended = ending.empty() ? nullptr : FindFormat(ending.substr(1));
    if (!given.empty() && !named) {
        *error = "--format takes " + JoinNames(FormatNames()) + ", not \"" + given + "\".";
        return "";
    }
    if (!named && IsStream(output)) {
        *error = "standard output needs a --format: " + JoinNames(FormatNames()) + ".";
        return "";
    }
    if (!named && !(ended && ended->hasEnding)) {
        *error = "the output must end in " + JoinedEndings() + ", not \"" + output + "\"";
        // A name that has an ending has a wrong one.
        *error += ending.empty() ? "; or add --format, or end a folder's name in \"/\"." : ".";
        return "";
    }
    // An animated PNG file may have the ending of a still one.
    const bool isAnimatedPng = named && named == FindFormat("apng") && ending == ".png";
    if (named && ended && named != ended && !isAnimatedPng) {
        *error = "--format " + std::string(named->name) + " and the ending of \"" + output +
                 "\" contradict each other.";
        return "";
    }
    return (named ? named : ended)->name;
}

}  // namespace kfx::commands
