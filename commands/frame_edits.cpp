// SPDX-License-Identifier: MIT
#include "commands/frame_edits.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "commands/resize_frame.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

struct Sides {
    int width;
    int height;
};

bool Refuse(const std::string& error, Failure* failure) {
    *failure = {kExitBadCommand, error};
    return false;
}

std::string SidesText(Sides sides) {
    return std::to_string(sides.width) + " x " + std::to_string(sides.height);
}

// From 1, up to and with the last one.
int LastOf(const FrameEdits& edits, const Animation& animation) {
    return edits.lastFrame == kLastFrame ? static_cast<int>(animation.frames.size()) : edits.lastFrame;
}

bool CheckFrames(const FrameEdits& edits, const Animation& animation, Failure* failure) {
    const size_t count = animation.frames.size();
    const int wanted = std::max(edits.firstFrame, edits.lastFrame);
    if (static_cast<size_t>(wanted) <= count) return true;
    return Refuse("--frames: there is no frame " + std::to_string(wanted) + "; the animation has " +
                      (count == 1 ? "only one." : "frames 1 to " + std::to_string(count) + "."),
                  failure);
}

// Sets the crop's place, when that is the middle, and the sides that it leaves.
bool CheckCrop(CropArea* crop, Sides* sides, Failure* failure) {
    if (crop->width == 0) return true;
    if (crop->centered) {
        crop->left = std::max(0, (sides->width - crop->width) / 2);
        crop->top = std::max(0, (sides->height - crop->height) / 2);
    }
    if (crop->left > sides->width - crop->width || crop->top > sides->height - crop->height) {
        return Refuse("--crop: " + SidesText({crop->width, crop->height}) + " pixels from column " +
                          std::to_string(crop->left) + " and row " + std::to_string(crop->top) +
                          " are not inside the picture of " + SidesText(*sides) + ".",
                      failure);
    }
    *sides = {crop->width, crop->height};
    return true;
}

int Scaled(int side, double factor) {
    return static_cast<int>(std::clamp(std::floor(side * factor + 0.5), 1.0, 1e9));
}

Sides ResizedSides(const NewSize& resize, Sides sides) {
    if (resize.percent > 0)
        return {Scaled(sides.width, resize.percent / 100), Scaled(sides.height, resize.percent / 100)};
    if (resize.width > 0 && resize.height > 0) return {resize.width, resize.height};
    if (resize.width > 0)
        return {resize.width, Scaled(sides.height, static_cast<double>(resize.width) / sides.width)};
    if (resize.height > 0)
        return {Scaled(sides.width, static_cast<double>(resize.height) / sides.height), resize.height};
    return sides;
}

// A larger animation than the readers would take is not made either.
bool CheckSize(Sides sides, size_t frames, const ReadLimits& limits, Failure* failure) {
    PixelBudget budget = {.limits = limits};
    std::string clause;
    if (SpendFrames(&budget, static_cast<uint64_t>(sides.width), static_cast<uint64_t>(sides.height), frames,
                    &clause))
        return true;
    return Refuse("--resize: " + clause + ".", failure);
}

double TimeOf(const FrameEdits& edits, const Frame& frame) {
    return edits.framesPerSecond > 0 ? 1000 / edits.framesPerSecond : MillisecondsOf(frame) / edits.speed;
}

// Of the frames that stay.
bool CheckTimes(const FrameEdits& edits, const Animation& animation, int last, Failure* failure) {
    for (int number = edits.firstFrame; number <= last; ++number) {
        if (TimeOf(edits, animation.frames[static_cast<size_t>(number - 1)]) <= kLongestFrame) continue;
        return Refuse("--speed: frame " + std::to_string(number) + " would be shown for more than " +
                          std::to_string(kLongestFrame / 1000) + " seconds, which files cannot hold.",
                      failure);
    }
    return true;
}

void KeepFrames(int first, int last, Animation* animation) {
    auto& frames = animation->frames;
    frames.erase(frames.begin() + last, frames.end());
    frames.erase(frames.begin(), frames.begin() + (first - 1));
}

// Moves the rows of the area to the front: each goes to a place that is not behind its own.
void CropRows(const CropArea& area, int sourceWidth, size_t pixelBytes, std::vector<uint8_t>* rows) {
    const auto width = static_cast<size_t>(area.width), height = static_cast<size_t>(area.height);
    const size_t rowBytes = width * pixelBytes;
    const size_t stride = static_cast<size_t>(sourceWidth) * pixelBytes;
    const uint8_t* from =
        rows->data() + static_cast<size_t>(area.top) * stride + static_cast<size_t>(area.left) * pixelBytes;
    for (size_t y = 0; y < height; ++y, from += stride)
        std::memmove(rows->data() + y * rowBytes, from, rowBytes);
    rows->resize(height * rowBytes);
    rows->shrink_to_fit();
}

void Crop(const CropArea& area, Animation* animation) {
    for (Frame& frame : animation->frames) {
        CropRows(area, animation->width, 4, &frame.pixels);
        if (frame.indexed) CropRows(area, animation->width, 1, &frame.indices);
        NoteTransparency(&frame);
        frame.left = 0;
        frame.top = 0;
    }
    animation->width = area.width;
    animation->height = area.height;
}

bool Resize(Sides sides, Animation* animation) {
    for (Frame& frame : animation->frames) {
        if (!ResizeFrame(animation->width, animation->height, sides.width, sides.height, &frame))
            return false;
    }
    animation->width = sides.width;
    animation->height = sides.height;
    return true;
}

// What rounding to milliseconds takes from one frame goes to the next, and so with hundredths.
void SetTimes(const FrameEdits& edits, Animation* animation) {
    double end = 0;
    long long shown = 0;
    int carry = 0;
    for (Frame& frame : animation->frames) {
        end += TimeOf(edits, frame);
        const long long now = std::llround(end);
        frame.milliseconds = static_cast<int>(now - shown);
        frame.delay = HundredthsOf(frame.milliseconds, &carry);
        shown = now;
    }
}

}  // namespace

bool HasEdits(const FrameEdits& edits) {
    return edits.firstFrame != 1 || edits.lastFrame != kLastFrame || edits.reverse || edits.crop.width > 0 ||
           edits.resize.percent > 0 || edits.resize.width > 0 || edits.resize.height > 0 ||
           edits.speed != 1 || edits.framesPerSecond > 0 || edits.setsLoop;
}

bool EditFrames(const FrameEdits& edits, const ReadLimits& limits, Animation* animation, Failure* failure) {
    if (!CheckFrames(edits, *animation, failure)) return false;
    const int last = LastOf(edits, *animation);
    const bool changesTimes = edits.speed != 1 || edits.framesPerSecond > 0;
    CropArea crop = edits.crop;
    Sides sides = {animation->width, animation->height};
    if (!CheckCrop(&crop, &sides, failure)) return false;
    const Sides resized = ResizedSides(edits.resize, sides);
    const bool resizes = resized.width != sides.width || resized.height != sides.height;
    if (resizes && !CheckSize(resized, static_cast<size_t>(last) - static_cast<size_t>(edits.firstFrame) + 1,
                              limits, failure))
        return false;
    if (changesTimes && !CheckTimes(edits, *animation, last, failure)) return false;

    KeepFrames(edits.firstFrame, last, animation);
    if (edits.reverse) std::reverse(animation->frames.begin(), animation->frames.end());
    if (crop.width > 0) Crop(crop, animation);
    if (resizes && !Resize(resized, animation)) {
        *failure = {kExitEngine, "there is not enough memory to resize the frames."};
        return false;
    }
    if (changesTimes) SetTimes(edits, animation);
    if (edits.setsLoop) animation->loopCount = edits.loopCount;
    return true;
}

}  // namespace kfx::commands
