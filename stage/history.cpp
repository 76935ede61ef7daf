// SPDX-License-Identifier: MIT
#include "stage/history.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "stage/picture_drawing.h"

namespace kfx::stage {
namespace {

uint64_t BytesOf(const commands::BuiltAnimation& built) {
    uint64_t bytes = 0;
    for (const auto& frame : built.frames) bytes += frame.pixels.size();
    return bytes;
}

uint64_t BytesOf(const commands::SourceRecord& record) {
    uint64_t bytes = 0;
    for (const auto& frame : record.frames) bytes += frame.alpha.size();
    return bytes;
}

}  // namespace

Thumbnail ThumbnailOf(const Film& film, int side) {
    const SIZE picture = {film.facts.width, film.facts.height};
    if (film.frames.empty() || picture.cx <= 0 || picture.cy <= 0) return {};
    const int longer = static_cast<int>(std::max(picture.cx, picture.cy));
    const SIZE size = {std::max(MulDiv(picture.cx, side, longer), 1),
                       std::max(MulDiv(picture.cy, side, longer), 1)};
    return {size, ScaledPicture(film.frames.front().pixels->data(), picture, size)};
}

std::vector<Step> StartHistory(History* history, Step opened) {
    std::vector<Step> gone = std::move(history->steps);
    if (history->test) gone.push_back(std::move(*history->test));
    history->test.reset();
    history->steps.clear();
    opened.number = ++history->numbered;
    history->steps.push_back(std::move(opened));
    history->current = 0;
    return gone;
}

std::vector<Step> AddStep(History* history, Step step, uint64_t mostBytes) {
    std::vector<Step> gone;
    auto& steps = history->steps;
    const auto undone = steps.begin() + static_cast<std::ptrdiff_t>(history->current) + 1;
    std::move(undone, steps.end(), std::back_inserter(gone));
    steps.erase(undone, steps.end());
    step.number = ++history->numbered;
    steps.push_back(std::move(step));
    history->current = steps.size() - 1;
    for (Step& old : DropOldest(history, mostBytes)) gone.push_back(std::move(old));
    return gone;
}

std::vector<Step> DropOldest(History* history, uint64_t mostBytes) {
    std::vector<Step> gone;
    auto& steps = history->steps;
    while (history->current > 1 && (steps.size() > kMostSteps || BytesOf(*history) > mostBytes)) {
        gone.push_back(std::move(steps[1]));
        steps.erase(steps.begin() + 1);
        --history->current;
    }
    return gone;
}

bool CanUndo(const History& history) { return history.current > 0; }

bool CanRedo(const History& history) { return history.current + 1 < history.steps.size(); }

const Film* SourceFilm(const History& history) {
    return history.steps.empty() ? nullptr : history.steps.front().film.get();
}

const Step* ShownStep(const History& history) {
    if (history.test) return &*history.test;
    return history.current > 0 ? &history.steps[history.current] : nullptr;
}

const Film* ShownFilm(const History& history) {
    const Step* step = ShownStep(history);
    return step ? step->film.get() : SourceFilm(history);
}

bool HasUnsavedStep(const History& history) {
    return history.current > 0 && !history.steps[history.current].saved;
}

uint64_t BytesOf(const History& history) {
    std::vector<const Film*> films;
    uint64_t bytes = 0;
    const auto add = [&films, &bytes](const Step& step) {
        films.push_back(step.film.get());
        if (step.built) bytes += BytesOf(*step.built);
        if (step.record) bytes += BytesOf(*step.record);
    };
    for (const Step& step : history.steps) add(step);
    if (history.test) add(*history.test);
    return bytes + BytesOf(films);
}

}  // namespace kfx::stage
