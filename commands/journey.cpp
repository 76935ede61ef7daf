// SPDX-License-Identifier: MIT
#include "commands/journey.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "commands/frame_edits.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

constexpr int kPercentParts = 100;  // times are read to a hundredth of a percent
constexpr int kFullTime = 100 * kPercentParts;
constexpr int kFullTurn = 360;

// Parameters that are the same again after a full turn. A hue is none: it is not wrapped.
struct TurningParameter {
    const char* effect;
    const char* parameter;
};

constexpr TurningParameter kTurning[] = {
    {.effect = "Motion Blur", .parameter = "Angle"},
};

bool Turns(const std::string& effect, const std::string& parameter) {
    return std::any_of(std::begin(kTurning), std::end(kTurning), [&](const TurningParameter& row) {
        return effect == row.effect && parameter == row.parameter;
    });
}

// "Distributed" measures all frames together, and cannot be on for some of them.
bool IsForAllFrames(const std::string& effect, const std::string& parameter) {
    return effect == "Normalize" && parameter == "Distributed";
}

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    for (size_t start = 0, end = 0; end != std::string::npos; start = end + separator.size()) {
        end = text.find(separator, start);
        parts.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    }
    return parts;
}

// What is being read, and where it goes.
struct Reader {
    const Parameter& parameter;
    const std::string& effect;
    const std::string& text;
    Journey* journey;
    std::string* error;
    bool hasTimes = false;  // of its keys' own
    bool loops = false;
};

bool Refuse(const Reader& reader, const std::string& clause) {
    *reader.error = "--set " + reader.parameter.name + "=" + reader.text + ": " + clause + ".";
    return false;
}

bool AddKey(Reader* reader, const std::string& text, int time) {
    int value = 0;
    if (!ParseValue(reader->parameter, reader->effect, text, &value, reader->error)) return false;
    reader->journey->keys.push_back({.time = time, .value = value});
    return true;
}

bool ReadRange(Reader* reader, const std::string& text) {
    const Parameter& parameter = reader->parameter;
    const std::vector<std::string> ends = Split(text, "..");
    if (reader->journey->switches) {
        const std::string example =
            parameter.kind == Parameter::CheckBox ? "off,on" : parameter.items[0] + "," + parameter.items[1];
        return Refuse(*reader, "a range is for sliders; write the values one after another, as " + example);
    }
    if (text.find_first_of(",@") != std::string::npos || ends.size() > 2)
        return Refuse(*reader, "a range has two values; write several with commas, as 1,2,3");
    if (ends[0].empty() || ends[1].empty()) {
        return Refuse(*reader, std::string("the ") + (ends[0].empty() ? "first" : "last") +
                                   " value is missing; write it as " + std::to_string(parameter.minimum) +
                                   ".." + std::to_string(parameter.maximum));
    }
    return AddKey(reader, ends[0], 0) && AddKey(reader, ends[1], 1);
}

// "0", "50%" or "33.3%".
bool ReadTime(const std::string& text, int* time) {
    const bool hasSign = !text.empty() && text.back() == '%';
    const std::string digits = hasSign ? text.substr(0, text.size() - 1) : text;
    const size_t point = digits.find('.');
    std::string decimals = point == std::string::npos ? "" : digits.substr(point + 1);
    if (decimals.size() > 2 || (point != std::string::npos && decimals.empty())) return false;
    decimals.resize(2, '0');
    const std::string all = digits.substr(0, point) + decimals;
    if (digits.empty() || point == 0 || all.find_first_not_of("0123456789") != std::string::npos)
        return false;
    return ReadNumber(all, time) && *time <= kFullTime && (hasSign || *time == 0);
}

bool ReadList(Reader* reader, const std::string& text) {
    const std::vector<std::string> items = Split(text, ",");
    reader->hasTimes = text.find('@') != std::string::npos;
    for (size_t i = 0; i < items.size(); ++i) {
        const std::vector<std::string> parts = Split(items[i], "@");
        auto time = static_cast<int>(i);
        if (parts[0].empty()) return Refuse(*reader, "a value is missing; write them as 1,2,3");
        if (parts.size() != (reader->hasTimes ? 2u : 1u))
            return Refuse(*reader, "give every value one time, as 1@0%,2@30%,3@100%, or none");
        if (reader->hasTimes && !ReadTime(parts[1], &time))
            return Refuse(*reader,
                          "a time is from 0% to 100%, as in " + parts[0] + "@50%, not \"" + parts[1] + "\"");
        const std::vector<KeyValue>& keys = reader->journey->keys;
        if (!keys.empty() && time <= keys.back().time)
            return Refuse(*reader, "each time must be later than the one before it");
        if (!AddKey(reader, parts[0], time)) return false;
    }
    return true;
}

bool ReadWords(Reader* reader, const std::vector<std::string>& words) {
    const std::vector<std::string> known = {"linear", "ease", "loop"};
    for (size_t i = 1; i < words.size(); ++i) {
        const int word = FindName(words[i], known);
        if (word < 0)
            return Refuse(*reader,
                          "behind the values may stand linear, ease or loop, not \"" + words[i] + "\"");
        if (reader->journey->switches)
            return Refuse(*reader, "this parameter switches from value to value; leave out :" + words[i]);
        if (word == 1) reader->journey->ease = true;
        if (word == 2) reader->loops = true;
    }
    return true;
}

// How much of the animation's time the keys take, before there is a loop.
void SetWholeTime(const Reader& reader) {
    Journey* journey = reader.journey;
    const auto count = static_cast<int>(journey->keys.size());
    journey->wholeTime = reader.hasTimes ? kFullTime : journey->switches ? count : count - 1;
    // Each of the values that switch is shown equally long, the last one, too.
    journey->untilEnd = journey->switches && !reader.hasTimes;
}

bool CloseLoop(const Reader& reader) {
    Journey* journey = reader.journey;
    std::vector<KeyValue>& keys = journey->keys;
    const KeyValue first = keys.front(), last = keys.back();
    const int way = last.value - first.value;
    journey->untilEnd = true;
    // A slider's range may end one before the full turn.
    if (keys.size() == 2 && !reader.hasTimes && Turns(reader.effect, reader.parameter.name) &&
        std::abs(way) >= kFullTurn - 1) {
        journey->period = kFullTurn;
        keys.back().value = first.value + (way > 0 ? kFullTurn : -kFullTurn);
        return true;
    }
    if (way == 0) return true;
    if (!reader.hasTimes) ++journey->wholeTime;
    if (last.time == journey->wholeTime) {
        return Refuse(reader, "no time is left for the way back to " +
                                  ValueText(reader.parameter, first.value) +
                                  "; give the last value an earlier time, or leave out :loop");
    }
    keys.push_back({.time = journey->wholeTime, .value = first.value});
    return true;
}

// The share of the way between two keys that is done after `done` of `all` of the time between them.
double Moved(const Journey& journey, int way, double done, double all) {
    if (!journey.ease) return way * done / all;  // products are whole numbers, so that halves are exact
    const double share = done / all;
    return way * (share * share * (3 - 2 * share));
}

int ValueAt(const Journey& journey, int64_t start, int64_t whole) {
    const std::vector<KeyValue>& keys = journey.keys;
    const int64_t now = start * journey.wholeTime;
    const auto next =
        std::find_if(keys.begin(), keys.end(), [&](const KeyValue& key) { return now < key.time * whole; });
    if (next == keys.begin()) return next->value;
    const KeyValue before = *(next - 1);
    if (next == keys.end() || journey.switches) return before.value;
    const double moved =
        Moved(journey, next->value - before.value, static_cast<double>(now - before.time * whole),
              static_cast<double>((next->time - before.time) * whole));
    return static_cast<int>(std::floor(before.value + moved + 0.5));
}

}  // namespace

Timeline TimelineOf(const std::vector<Frame>& frames) {
    Timeline timeline;
    for (const Frame& frame : frames) {
        timeline.starts.push_back(timeline.end);
        const int time = MillisecondsOf(frame);
        timeline.end += time > 0 ? time : kStillMilliseconds;
    }
    return timeline;
}

bool IsJourney(const std::string& text) {
    return text.find("..") != std::string::npos || text.find_first_of(",@:") != std::string::npos;
}

bool SaysPaceTwice(const std::string& text) {
    const std::vector<std::string> words = Split(text, ":");
    const std::vector<std::string> known = {"linear", "ease", "loop"};
    int paces = 0, loops = 0;
    for (size_t i = 1; i < words.size(); ++i) {
        const int word = FindName(words[i], known);
        paces += word == 0 || word == 1;
        loops += word == 2;
    }
    return paces > 1 || loops > 1;
}

bool ParseJourney(const Parameter& parameter, const std::string& effect, const std::string& text,
                  Journey* journey, std::string* error) {
    *journey = {};
    journey->switches = parameter.kind != Parameter::Slider;
    Reader reader = {
        .parameter = parameter, .effect = effect, .text = text, .journey = journey, .error = error};
    if (IsForAllFrames(effect, parameter.name))
        return Refuse(reader, effect + " measures all frames together; choose " + RangeText(parameter));
    const std::vector<std::string> words = Split(text, ":");
    const bool isRange = words[0].find("..") != std::string::npos;
    if (!(isRange ? ReadRange(&reader, words[0]) : ReadList(&reader, words[0])) || !ReadWords(&reader, words))
        return false;
    const std::vector<KeyValue>& keys = journey->keys;
    if (keys.size() < 2)
        return Refuse(reader, "a parameter that moves needs two values or more, as " +
                                  ValueText(parameter, parameter.minimum) + "," +
                                  ValueText(parameter, parameter.maximum));
    if (std::all_of(keys.begin(), keys.end(),
                    [&](const KeyValue& key) { return key.value == keys[0].value; })) {
        return Refuse(reader, "all values are the same; write " + parameter.name + "=" +
                                  ValueText(parameter, keys[0].value));
    }
    SetWholeTime(reader);
    return !reader.loops || CloseLoop(reader);
}

std::vector<int> ValuesOver(const Timeline& timeline, const Parameter& parameter, const Journey& journey) {
    std::vector<int> values;
    if (timeline.starts.empty()) return values;
    // One frame has no time before it appears.
    const int64_t whole = journey.untilEnd ? timeline.end : std::max<int64_t>(timeline.starts.back(), 1);
    for (const int64_t start : timeline.starts) {
        int value = ValueAt(journey, start, whole);
        if (value > parameter.maximum) value -= journey.period;
        if (value < parameter.minimum) value += journey.period;
        values.push_back(value);
    }
    return values;
}

}  // namespace kfx::commands
