// SPDX-License-Identifier: MIT
#include "commands/result_edits.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "commands/frame_edits.h"
#include "commands/parser_words.h"
#include "commands/resize_frame.h"

namespace kfx::commands {
namespace {

constexpr int kLongestDelay = kLongestFrame / 10;

std::string ReadShrink(const std::string& text, int* percent) {
    std::string digits = text;
    if (!digits.empty() && digits.back() == '%') digits.pop_back();
    const bool isNumber =
        !digits.empty() && digits.size() <= 3 && digits.find_first_not_of("0123456789") == std::string::npos;
    const int number = isNumber ? std::stoi(digits) : 0;
    if (number < 1 || number > 100) return "takes whole percents from 1% to 100%, not \"" + text + "\"";
    *percent = number;
    return "";
}

// A frame's time goes to the one that stays before it.
void AddTime(const Frame& gone, Frame* frame) {
    if (gone.milliseconds != kNoMilliseconds || frame->milliseconds != kNoMilliseconds)
        frame->milliseconds = std::min(MillisecondsOf(*frame) + MillisecondsOf(gone), kLongestFrame);
    frame->delay = std::min(frame->delay + gone.delay, kLongestDelay);
}

void LeaveOut(int every, std::vector<Frame>* frames) {
    std::vector<Frame> kept;
    for (size_t i = 0; i < frames->size(); ++i) {
        if (i % static_cast<size_t>(every) == 0)
            kept.push_back(std::move((*frames)[i]));
        else
            AddTime((*frames)[i], &kept.back());
    }
    *frames = std::move(kept);
}

}  // namespace

void AddResultEditOptions(CLI::App* command, ResultEdits* edits) {
    AddReadText(
        command,
        {.name = "--shrink",
         .typeName = "PERCENT",
         .description = "Scale the result to so many percent, behind the effect (--resize is before it)"},
        [edits](const std::string& text) { return ReadShrink(text, &edits->shrink); });
    AddNumber(command, "--every", &edits->every, 1, kMostEvery,
              "Keep each Nth frame of the result, for the time of those left out, too");
}

bool HasResultEdits(const ResultEdits& edits) { return edits.shrink != 100 || edits.every != 1; }

int ShrunkSide(int side, int percent) {
    return std::max(1, static_cast<int>((static_cast<int64_t>(side) * percent + 50) / 100));
}

size_t KeptFrames(const ResultEdits& edits, size_t frames) {
    const auto every = static_cast<size_t>(edits.every);
    return (frames + every - 1) / every;
}

bool EditResult(const ResultEdits& edits, Animation* animation) {
    if (edits.every > 1) LeaveOut(edits.every, &animation->frames);
    if (edits.shrink == 100) return true;
    const int width = ShrunkSide(animation->width, edits.shrink);
    const int height = ShrunkSide(animation->height, edits.shrink);
    for (Frame& frame : animation->frames) {
        if (!ResizeFrame(animation->width, animation->height, width, height, &frame)) return false;
    }
    animation->width = width;
    animation->height = height;
    return true;
}

}  // namespace kfx::commands
