// SPDX-License-Identifier: MIT
#include "commands/edit_options.h"

#include <charconv>
#include <cmath>
#include <string>

#include "commands/parser_words.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

constexpr int kLargestNumber = 1000000;
constexpr int kMostShowings = 65536;  // GIF files store the repeats, up to 65535
constexpr double kMostPerSecond = 100;

// What is left to read of an option's value.
struct Rest {
    const char* at;
    const char* end;
};

Rest All(const std::string& text) { return {text.data(), text.data() + text.size()}; }

// A whole number of at least `least`, written in digits only.
bool TakeNumber(Rest* rest, int least, int* number) {
    if (rest->at == rest->end || *rest->at < '0' || *rest->at > '9') return false;
    const auto result = std::from_chars(rest->at, rest->end, *number);
    rest->at = result.ptr;
    return result.ec == std::errc() && *number >= least && *number <= kLargestNumber;
}

// A number with or without decimals, as 2, 0.5 or .5.
bool TakeDecimal(Rest* rest, double* number) {
    if (rest->at == rest->end || ((*rest->at < '0' || *rest->at > '9') && *rest->at != '.')) return false;
    const auto result = std::from_chars(rest->at, rest->end, *number, std::chars_format::fixed);
    rest->at = result.ptr;
    return result.ec == std::errc() && std::isfinite(*number);
}

bool TakeCharacter(Rest* rest, char wanted) {
    if (rest->at == rest->end || *rest->at != wanted) return false;
    ++rest->at;
    return true;
}

bool TakeTimes(Rest* rest) { return TakeCharacter(rest, 'x') || TakeCharacter(rest, 'X'); }

bool IsAtEnd(const Rest& rest) { return rest.at == rest.end; }

// 3-10, 3- or 3, counted from 0.
bool ReadFrames(const std::string& text, FrameEdits* edits) {
    Rest rest = All(text);
    int first = 0;
    if (!TakeNumber(&rest, 0, &first)) return false;
    int last = first;
    edits->singleNumber = IsAtEnd(rest);
    if (TakeCharacter(&rest, '-')) {
        last = kLastFrame;
        if (!IsAtEnd(rest) && (!TakeNumber(&rest, 0, &last) || last < first)) return false;
    }
    edits->firstFrame = first;
    edits->lastFrame = last;
    return IsAtEnd(rest);
}

// 320x240+10+20, or 320x240 for the middle.
bool ReadCrop(const std::string& text, FrameEdits* edits) {
    Rest rest = All(text);
    CropArea crop;
    if (!TakeNumber(&rest, 1, &crop.width) || !TakeTimes(&rest) || !TakeNumber(&rest, 1, &crop.height))
        return false;
    if (!IsAtEnd(rest)) {
        crop.centered = false;
        if (!TakeCharacter(&rest, '+') || !TakeNumber(&rest, 0, &crop.left) || !TakeCharacter(&rest, '+') ||
            !TakeNumber(&rest, 0, &crop.top))
            return false;
    }
    edits->crop = crop;
    return IsAtEnd(rest);
}

// 320x240, 320x, x240 or 50%.
bool ReadResize(const std::string& text, FrameEdits* edits) {
    Rest rest = All(text);
    NewSize size;
    if (!text.empty() && text.back() == '%') {
        if (!TakeDecimal(&rest, &size.percent) || !TakeCharacter(&rest, '%') || size.percent <= 0)
            return false;
    } else if (TakeTimes(&rest)) {
        if (!TakeNumber(&rest, 1, &size.height)) return false;
    } else {
        if (!TakeNumber(&rest, 1, &size.width) || !TakeTimes(&rest)) return false;
        if (!IsAtEnd(rest) && !TakeNumber(&rest, 1, &size.height)) return false;
    }
    edits->resize = size;
    return IsAtEnd(rest);
}

bool ReadSpeed(const std::string& text, FrameEdits* edits) {
    Rest rest = All(text);
    return TakeDecimal(&rest, &edits->speed) && IsAtEnd(rest) && edits->speed >= kSlowestSpeed &&
           edits->speed <= kFastestSpeed;
}

bool ReadFramesPerSecond(const std::string& text, FrameEdits* edits) {
    Rest rest = All(text);
    return TakeDecimal(&rest, &edits->framesPerSecond) && IsAtEnd(rest) && edits->framesPerSecond >= 0.01 &&
           edits->framesPerSecond <= kMostPerSecond;
}

// The file stores how often the animation is repeated.
bool ReadLoop(const std::string& text, FrameEdits* edits) {
    Rest rest = All(text);
    const std::string plain = PlainName(text);
    int showings = 0;
    edits->setsLoop = true;
    if (plain == "forever" || plain == "once") {
        edits->loopCount = plain == "once" ? kLoopNone : kLoopForever;
        return true;
    }
    if (!TakeNumber(&rest, 1, &showings) || !IsAtEnd(rest) || showings > kMostShowings) return false;
    edits->loopCount = showings == 1 ? kLoopNone : showings - 1;
    return true;
}

struct EditOption {
    const char* name;
    const char* typeName;
    const char* description;
    const char* takes;
    bool (*read)(const std::string& text, FrameEdits* edits);
};

constexpr EditOption kEditOptions[] = {
    {.name = "--frames",
     .typeName = "A-B",
     .description =
         "Only these frames, counted from 0: 0-9, 10- (to the end) or 5; a still picture becomes an "
         "animation of 5 frames with --frames 5",
     .takes = "frames, counted from 0, as 0-9, 10- or 5",
     .read = ReadFrames},
    {.name = "--crop",
     .typeName = "WxH+X+Y",
     .description = "Only this part of the picture; without +X+Y its middle",
     .takes = "width, height, column and row as 320x240+10+20, or 320x240 for the middle",
     .read = ReadCrop},
    {.name = "--resize",
     .typeName = "WxH",
     .description = "Scale to 320x240, 320x or x240 (the shape stays), or 50%",
     .takes = "a size as 320x240, 320x, x240 or 50%",
     .read = ReadResize},
    {.name = "--speed",
     .typeName = "N",
     .description = "So many times as fast: 2, 0.5",
     .takes = "numbers from 0.01 to 100",
     .read = ReadSpeed},
    {.name = "--fps",
     .typeName = "N",
     .description = "Show so many frames a second; none is dropped",
     .takes = "numbers from 0.01 to 100",
     .read = ReadFramesPerSecond},
    {.name = "--loop",
     .typeName = "N",
     .description = "Play so many times, `forever` or `once`",
     .takes = "forever, once, or how many times to play, from 1 to 65536",
     .read = ReadLoop},
};

}  // namespace

void AddEditOptions(CLI::App* command, FrameEdits* edits) {
    AddFlag(command, "--reverse", &edits->reverse, "Play backwards");
    for (const EditOption& option : kEditOptions) {
        const auto read = [&option, edits](const std::string& text) {
            return option.read(text, edits) ? std::string()
                                            : std::string("takes ") + option.takes + ", not \"" + text + "\"";
        };
        AddReadText(command,
                    {.name = option.name, .typeName = option.typeName, .description = option.description},
                    read);
    }
}

}  // namespace kfx::commands
