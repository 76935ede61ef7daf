// SPDX-License-Identifier: MIT
// Journeys: a parameter that moves from value to value while the animation plays, as in --set Angle=0..720.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/parameter.h"
#include "media/animation.h"

namespace kfx::commands {

struct JourneyOptions {
    bool seamless = false;  // say when the last frame does not lead into the first
};

// A value that a journey comes to.
struct KeyValue {
    int time = 0;  // in parts of the journey's whole time
    int value = 0;
};

struct Journey {
    std::vector<KeyValue> keys;  // their times rise; before the first and behind the last, values stay
    int wholeTime = 1;           // how many parts the animation's time has
    bool untilEnd = false;  // the whole time is up when the last frame has been shown; else when it appears
    bool switches = false;  // a value stays until the next one; else values move
    bool ease = false;      // slow at each key and fast between
    int period = 0;         // values this far apart mean the same, and are moved into the range; 0: none do
};

// When the frames of an animation appear, in milliseconds.
struct Timeline {
    std::vector<int64_t> starts;
    int64_t end = 0;  // of the last frame
};

// Frames without a time count as stills do, so that each takes part.
Timeline TimelineOf(const std::vector<Frame>& frames);

// Whether a parameter's text is more than one value.
bool IsJourney(const std::string& text);

// Whether the words behind the values say more than once how they are passed through, or that they loop. The
// last one counts.
bool SaysPaceTwice(const std::string& text);

// Reads "0..720", "4,20,8" or "4@0%,20@30%,8@100%", with ":linear", ":ease" and ":loop" behind it, for the
// parameter of `effect`. The first value is that of the first frame and the last value that of the last
// frame; values between them follow the time. With "loop" the first value comes again when the last frame has
// been shown. What turns all the way round, as Motion Blur's angle does, goes on in its direction then. Check
// boxes and lists switch from value to value and take no range. False: `*error` is one sentence.
bool ParseJourney(const Parameter& parameter, const std::string& effect, const std::string& text,
                  Journey* journey, std::string* error);

// The parameter's value, as shown, for each frame: the whole position that is nearest, halves upwards.
std::vector<int> ValuesOver(const Timeline& timeline, const Parameter& parameter, const Journey& journey);

}  // namespace kfx::commands
