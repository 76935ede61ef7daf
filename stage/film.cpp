// SPDX-License-Identifier: MIT
#include "stage/film.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "commands/fingerprint.h"
#include "stage/wall_source.h"

namespace kfx::stage {
namespace {

// Only finds frames that may be equal; the bytes decide.
uint64_t HashOf(const Pixels& pixels) {
    uint64_t hash = pixels.size();
    size_t i = 0;
    for (; i + 8 <= pixels.size(); i += 8) {
        uint64_t word;
        std::memcpy(&word, pixels.data() + i, 8);
        hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 29;
    }
    for (; i < pixels.size(); ++i) hash = (hash ^ pixels[i]) * 0x9E3779B97F4A7C15u;
    return hash;
}

std::shared_ptr<const Pixels> Share(Pixels&& pixels, FramePool* pool) {
    const uint64_t hash = HashOf(pixels);
    const std::lock_guard<std::mutex> lock(pool->lock);
    const auto [first, last] = pool->known.equal_range(hash);
    for (auto entry = first; entry != last;) {
        const auto there = entry->second.lock();
        if (!there) {
            entry = pool->known.erase(entry);
        } else if (*there == pixels) {
            return there;
        } else {
            ++entry;
        }
    }
    auto shared = std::make_shared<const Pixels>(std::move(pixels));
    pool->known.emplace(hash, shared);
    return shared;
}

// A frame that nobody has any more still takes a little: its entry, and the record that the entry counts in.
void ForgetGone(FramePool* pool) {
    const std::lock_guard<std::mutex> lock(pool->lock);
    std::erase_if(pool->known, [](const auto& entry) { return entry.second.expired(); });
}

}  // namespace

std::shared_ptr<const Film> MakeFilm(Animation animation, FramePool* pool) {
    ForgetGone(pool);
    auto film = std::make_shared<Film>();
    uint64_t end = 0;
    film->frames.reserve(animation.frames.size());
    for (Frame& frame : animation.frames) {
        FilmFrame kept;
        kept.pixels = Share(std::exchange(frame.pixels, {}), pool);
        if (frame.indexed) kept.indices = Share(std::exchange(frame.indices, {}), pool);
        kept.facts = std::move(frame);
        end += ShownMilliseconds(MillisecondsOf(kept.facts));
        film->ends.push_back(end);
        film->frames.push_back(std::move(kept));
    }
    animation.frames.clear();
    film->facts = std::move(animation);
    return film;
}

Animation AnimationOf(const Film& film) {
    Animation animation = film.facts;
    animation.frames.reserve(film.frames.size());
    for (const FilmFrame& kept : film.frames) {
        Frame frame = kept.facts;
        frame.pixels = *kept.pixels;
        if (kept.indices) frame.indices = *kept.indices;
        animation.frames.push_back(std::move(frame));
    }
    return animation;
}

std::string FingerprintOf(const Film& film) {
    Frame frame;
    const auto show = [&film, &frame](size_t number) {
        frame = film.frames[number].facts;
        frame.pixels = *film.frames[number].pixels;
        return commands::ShownFrame{&frame, MillisecondsOf(frame)};
    };
    return commands::FingerprintOf(
        {film.facts.width, film.facts.height, film.facts.loopCount, film.frames.size()}, show);
}

uint64_t LengthOf(const Film& film) { return film.ends.empty() ? 0 : film.ends.back(); }

size_t FrameAt(const Film& film, uint64_t milliseconds) {
    if (film.ends.empty()) return 0;
    const auto end = std::upper_bound(film.ends.begin(), film.ends.end(), milliseconds);
    return std::min(static_cast<size_t>(end - film.ends.begin()), film.ends.size() - 1);
}

uint64_t StartOf(const Film& film, size_t frame) {
    return frame == 0 || film.ends.empty() ? 0 : film.ends[std::min(frame, film.ends.size()) - 1];
}

uint64_t BytesOf(const std::vector<const Film*>& films) {
    std::unordered_set<const Pixels*> counted;
    uint64_t bytes = 0;
    for (const Film* film : films) {
        for (const FilmFrame& frame : film->frames) {
            for (const auto& part : {frame.pixels, frame.indices}) {
                if (part && counted.insert(part.get()).second) bytes += part->size();
            }
        }
    }
    return bytes;
}

}  // namespace kfx::stage
