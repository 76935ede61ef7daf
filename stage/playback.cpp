// SPDX-License-Identifier: MIT
#include "stage/playback.h"

#include <algorithm>
#include <iterator>

namespace kfx::stage {
namespace {

struct Speed {
    const char* text;
    uint64_t numerator;
    uint64_t denominator;
};

constexpr Speed kSpeeds[] = {
    {"¼×", 1, 4}, {"½×", 1, 2}, {"1×", 1, 1}, {"2×", 2, 1}, {"4×", 4, 1},
};

const Speed& SpeedOf(const Playback& playback) {
    return kSpeeds[std::clamp(playback.speed, 0, SpeedCount() - 1)];
}

// How often the film is shown in all; 0: without end.
int RoundsOf(const Playback& playback, const Film& film) {
    const int loops = film.facts.loopCount;
    if (playback.forever || loops == kLoopForever) return 0;
    return loops == kLoopNone ? 1 : loops + 1;
}

bool HasEnded(const Playback& playback, const Film& film) {
    const int rounds = RoundsOf(playback, film);
    return rounds > 0 && playback.roundsDone >= rounds;
}

std::string SecondsText(uint64_t milliseconds) {
    const uint64_t hundredths = (milliseconds + 5) / 10;
    const std::string rest = std::to_string(hundredths % 100);
    return std::to_string(hundredths / 100) + "." + (rest.size() < 2 ? "0" : "") + rest;
}

}  // namespace

int SpeedCount() { return static_cast<int>(std::size(kSpeeds)); }

std::string SpeedText(int speed) { return kSpeeds[std::clamp(speed, 0, SpeedCount() - 1)].text; }

void Restart(Playback* playback, uint64_t now) {
    playback->position = 0;
    playback->roundsDone = 0;
    playback->frame = 0;
    playback->clock = now;
}

void SetPlaying(Playback* playback, const Film& film, bool playing, uint64_t now) {
    if (playing && HasEnded(*playback, film)) Restart(playback, now);
    playback->playing = playing;
    playback->clock = now;
}

bool Advance(Playback* playback, const Film& film, uint64_t now) {
    const uint64_t length = LengthOf(film);
    if (!playback->playing || length == 0 || film.frames.size() < 2) {
        playback->clock = now;
        return false;
    }
    const Speed& speed = SpeedOf(*playback);
    const uint64_t passed = (now - playback->clock) * speed.numerator / speed.denominator;
    // What the division has left stays for the next time.
    playback->clock += passed * speed.denominator / speed.numerator;
    uint64_t position = playback->position + passed;
    playback->roundsDone = static_cast<int>(
        std::min<uint64_t>(static_cast<uint64_t>(playback->roundsDone) + position / length, 1u << 30));
    position %= length;
    if (HasEnded(*playback, film)) {
        playback->playing = false;
        position = length - 1;
    }
    playback->position = position;
    const size_t frame = FrameAt(film, position);
    const bool changed = frame != playback->frame || !playback->playing;
    playback->frame = frame;
    return changed;
}

uint64_t UntilNextFrame(const Playback& playback, const Film& film) {
    if (film.ends.empty()) return 1;
    const size_t frame = FrameAt(film, playback.position);
    const Speed& speed = SpeedOf(playback);
    const uint64_t rest = film.ends[frame] - std::min(playback.position, film.ends[frame]);
    return std::max<uint64_t>((rest * speed.denominator + speed.numerator - 1) / speed.numerator, 1);
}

void ShowFrame(Playback* playback, const Film& film, size_t frame) {
    playback->playing = false;
    playback->roundsDone = 0;
    playback->frame = film.frames.empty() ? 0 : std::min(frame, film.frames.size() - 1);
    playback->position = StartOf(film, playback->frame);
}

void ChangeSpeed(Playback* playback, int rows, uint64_t now, const Film& film) {
    Advance(playback, film, now);
    playback->speed = std::clamp(playback->speed + rows, 0, SpeedCount() - 1);
}

std::string PositionText(const Playback& playback, const Film& film) {
    if (film.frames.empty()) return "";
    if (film.frames.size() == 1) return "One picture";
    const uint64_t shown = StartOf(film, playback.frame);
    return "Frame " + std::to_string(playback.frame + 1) + " of " + std::to_string(film.frames.size()) +
           "    " + SecondsText(shown) + " of " + SecondsText(LengthOf(film)) + " s";
}

}  // namespace kfx::stage
