// SPDX-License-Identifier: MIT
#include "commands/sequence.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "commands/console.h"
#include "commands/output_format.h"
#include "commands/part_file.h"
#include "commands/report.h"
#include "commands/text.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr size_t kMostColors = 256;

// A whole file, or standard input. On failure *error is a sentence, name first.
bool ReadContent(const std::string& file, const ReadLimits& limits, Animation* animation,
                 std::string* error) {
    if (!IsStream(file)) {
        if (ReadAnimation(SystemPath(file), animation, error, limits)) return true;
        *error = WithFolderAsGiven(*error, file);
        return false;
    }
    std::vector<uint8_t> content;
    if (ReadStandardInput(&content, error) &&
        ReadAnimationFromMemory(content.data(), content.size(), animation, error, limits))
        return true;
    *error = "standard input: " + *error + ".";
    return false;
}

bool ReadFile(const std::string& file, const ReadLimits& limits, Animation* animation, Report* report) {
    std::string error;
    if (!ReadContent(file, limits, animation, &error)) {
        if (!IsStream(file)) ExplainPart(file, &error);
        *report = FailedReport(kExitBadInput, error);
        return false;
    }
    const std::string shown = ShownInput(file);
    if (animation->frames.empty()) {
        *report = FailedReport(kExitBadInput, shown + ": holds no picture.");
        return false;
    }
    if (!animation->warning.empty()) report->notes.push_back(shown + ": " + animation->warning + ".");
    return true;
}

std::string SizeText(const Animation& animation) {
    return std::to_string(animation.width) + " x " + std::to_string(animation.height);
}

uint64_t PixelsOf(const Animation& animation) {
    return static_cast<uint64_t>(animation.width) * static_cast<uint64_t>(animation.height);
}

// Adds the colours that are not there yet and says where each stands. False: there is no place for them.
bool AddColors(const std::vector<RgbColor>& colors, std::vector<RgbColor>* palette,
               std::array<uint8_t, kMostColors>* places) {
    if (colors == *palette) {
        for (size_t i = 0; i < colors.size(); ++i) (*places)[i] = static_cast<uint8_t>(i);
        return true;
    }
    for (size_t i = 0; i < colors.size(); ++i) {
        const auto found = std::find(palette->begin(), palette->end(), colors[i]);
        const auto place = static_cast<size_t>(found - palette->begin());
        if (place == kMostColors) return false;
        if (found == palette->end()) palette->push_back(colors[i]);
        (*places)[i] = static_cast<uint8_t>(place);
    }
    return true;
}

void DropPalette(Animation* animation) {
    animation->hasGlobalPalette = false;
    animation->globalPalette.clear();
    for (Frame& frame : animation->frames) {
        frame.indexed = false;
        frame.indices = {};
    }
}

// Moves the frames behind those of the animation.
void Append(Animation* part, Animation* animation) {
    std::array<uint8_t, kMostColors> places = {};
    const bool keepsPalette = animation->hasGlobalPalette && part->hasGlobalPalette &&
                              AddColors(part->globalPalette, &animation->globalPalette, &places);
    if (!keepsPalette) {
        DropPalette(animation);
        DropPalette(part);
    }
    for (Frame& frame : part->frames) {
        for (uint8_t& index : frame.indices) index = places[index];
    }
    animation->frames.insert(animation->frames.end(), std::make_move_iterator(part->frames.begin()),
                             std::make_move_iterator(part->frames.end()));
}

void SetTimes(int delay, bool onlyMissing, Animation* animation) {
    int carry = 0;
    for (Frame& frame : animation->frames) {
        if (onlyMissing && MillisecondsOf(frame) != 0) continue;
        frame.milliseconds = delay;
        frame.delay = HundredthsOf(delay, &carry);
    }
}

// Whether so many pictures like the first one can be held, before the others are read.
bool CanHold(const Animation& first, const SourceFiles& source, const ReadLimits& limits, Report* report) {
    PixelBudget budget = {.limits = limits};
    std::string clause;
    if (SpendFrames(&budget, static_cast<uint64_t>(first.width), static_cast<uint64_t>(first.height),
                    source.files.size(), &clause))
        return true;
    *report = FailedReport(kExitBadInput, source.files.front() + ": " + clause + ".");
    return false;
}

}  // namespace

bool ReadSequence(const SourceFiles& source, ReadLimits limits, int delay, Animation* animation,
                  Report* report) {
    if (!ReadFile(source.files.front(), limits, animation, report)) return false;
    const bool isJoined = source.files.size() > 1;
    if (isJoined && !CanHold(*animation, source, limits, report)) return false;
    if (isJoined && animation->frames.size() == 1) animation->loopCount = kLoopForever;
    limits.pixelsBefore += PixelsOf(*animation) * animation->frames.size();
    for (size_t i = 1; i < source.files.size(); ++i) {
        Animation part;
        if (!ReadFile(source.files[i], limits, &part, report)) return false;
        if (part.width != animation->width || part.height != animation->height) {
            *report = FailedReport(kExitBadInput, source.files[i] + ": is " + SizeText(part) +
                                                      " pixels large, but " + source.files.front() + " is " +
                                                      SizeText(*animation) +
                                                      "; joined pictures must have one size.");
            return false;
        }
        limits.pixelsBefore += PixelsOf(part) * part.frames.size();
        Append(&part, animation);
    }
    if (delay >= 0) SetTimes(delay, false, animation);
    if (delay < 0 && isJoined) SetTimes(kStillMilliseconds, true, animation);
    if (!source.note.empty()) report->notes.push_back(source.note);
    return true;
}

}  // namespace kfx::commands
