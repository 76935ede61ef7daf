// SPDX-License-Identifier: MIT
#include "commands/frame_edits.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
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

// The frames that stay, and how often each is repeated.
struct Stay {
    size_t first;
    size_t end;  // behind the last
    size_t times;
};

// Whether a still picture is to become an animation.
bool RepeatsStill(const FrameEdits& edits, const Animation& animation) {
    return edits.singleNumber && edits.firstFrame > 0 && animation.frames.size() == 1;
}

bool FindFrames(const FrameEdits& edits, const Animation& animation, Stay* stay, Failure* failure) {
    const size_t count = animation.frames.size();
    const auto first = static_cast<size_t>(edits.firstFrame);
    *stay = {first, edits.lastFrame == kLastFrame ? count : static_cast<size_t>(edits.lastFrame) + 1, 1};
    if (RepeatsStill(edits, animation)) {
        *stay = {0, 1, first};
        return first > 1 ||
               Refuse("--frames: a still picture becomes an animation of 2 frames or more, not 1.", failure);
    }
    if (first < count && stay->end <= count) return true;
    return Refuse("--frames: there is no frame " +
                      std::to_string(std::max(edits.firstFrame, edits.lastFrame)) + "; the animation has " +
                      (count == 1 ? "only frame 0." : "frames 0 to " + std::to_string(count - 1) + "."),
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
bool CheckSize(const char* option, Sides sides, size_t frames, const ReadLimits& limits, Failure* failure) {
    PixelBudget budget = {.limits = limits};
    std::string clause;
    if (SpendFrames(&budget, static_cast<uint64_t>(sides.width), static_cast<uint64_t>(sides.height), frames,
                    &clause))
        return true;
    return Refuse(option + (": " + clause) + ".", failure);
}

double TimeOf(const FrameEdits& edits, int milliseconds) {
    return edits.framesPerSecond > 0 ? 1000 / edits.framesPerSecond : milliseconds / edits.speed;
}

// Of the frames that stay.
bool CheckTimes(const FrameEdits& edits, const Animation& animation, const Stay& stay, Failure* failure) {
    for (size_t number = stay.first; number < stay.end; ++number) {
        const int time = stay.times > 1 ? edits.stillDelay : MillisecondsOf(animation.frames[number]);
        if (TimeOf(edits, time) <= kLongestFrame) continue;
        return Refuse("--speed: frame " + std::to_string(number) + " would be shown for more than " +
                          std::to_string(kLongestFrame / 1000) + " seconds, which files cannot hold.",
                      failure);
    }
    return true;
}

void KeepFrames(const Stay& stay, Animation* animation) {
    auto& frames = animation->frames;
    frames.erase(frames.begin() + static_cast<std::ptrdiff_t>(stay.end), frames.end());
    frames.erase(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(stay.first));
}

void FreePixels(const NeededFrames& needed, std::vector<Frame>* frames) {
    for (size_t i = 0; i < frames->size(); ++i) {
        const bool isNeeded = i >= needed.first && i < needed.end && (i - needed.first) % needed.step == 0;
        if (isNeeded) continue;
        Frame& frame = (*frames)[i];
        frame.pixels = {};
        frame.indices = {};
        frame.indexed = false;
    }
}

// The still picture as an animation.
void RepeatFrame(size_t times, int delay, Animation* animation) {
    Frame& still = animation->frames[0];
    int carry = 0;
    still.milliseconds = delay;
    still.delay = HundredthsOf(delay, &carry);
    const Frame repeated = still;
    animation->frames.resize(times, repeated);
    animation->loopCount = kLoopForever;
    for (size_t i = 1; i < times; ++i) animation->frames[i].delay = HundredthsOf(delay, &carry);
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
        if (frame.pixels.empty()) continue;
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
        if (frame.pixels.empty()) continue;
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
        end += TimeOf(edits, MillisecondsOf(frame));
        const long long now = std::llround(end);
        frame.milliseconds = static_cast<int>(now - shown);
        frame.delay = HundredthsOf(frame.milliseconds, &carry);
        shown = now;
    }
}

}  // namespace

bool HasEdits(const FrameEdits& edits) {
    return edits.firstFrame != 0 || edits.lastFrame != kLastFrame || edits.reverse || edits.crop.width > 0 ||
           edits.resize.percent > 0 || edits.resize.width > 0 || edits.resize.height > 0 ||
           edits.speed != 1 || edits.framesPerSecond > 0 || edits.setsLoop;
}

bool EditFrames(const FrameEdits& edits, const ReadLimits& limits, Animation* animation, Failure* failure,
                const NeededFrames& needed) {
    Stay stay = {};
    if (!FindFrames(edits, *animation, &stay, failure)) return false;
    const size_t count = (stay.end - stay.first) * stay.times;
    const bool changesTimes = edits.speed != 1 || edits.framesPerSecond > 0;
    CropArea crop = edits.crop;
    Sides sides = {animation->width, animation->height};
    if (!CheckCrop(&crop, &sides, failure)) return false;
    const Sides resized = ResizedSides(edits.resize, sides);
    const bool resizes = resized.width != sides.width || resized.height != sides.height;
    if (resizes && !CheckSize("--resize", resized, count, limits, failure)) return false;
    if (stay.times > 1 && !CheckSize("--frames", resized, count, limits, failure)) return false;
    if (changesTimes && !CheckTimes(edits, *animation, stay, failure)) return false;

    KeepFrames(stay, animation);
    if (edits.reverse) std::reverse(animation->frames.begin(), animation->frames.end());
    if (stay.times == 1) FreePixels(needed, &animation->frames);
    if (crop.width > 0) Crop(crop, animation);
    if (resizes && !Resize(resized, animation)) {
        *failure = {kExitEngine, "there is not enough memory to resize the frames."};
        return false;
    }
    if (stay.times > 1) {
        RepeatFrame(stay.times, edits.stillDelay, animation);
        FreePixels(needed, &animation->frames);
    }
    if (changesTimes) SetTimes(edits, animation);
    if (edits.setsLoop) animation->loopCount = edits.loopCount;
    return true;
}

}  // namespace kfx::commands
