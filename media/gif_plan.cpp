// SPDX-License-Identifier: MIT
#include "media/gif_plan.h"

#include <algorithm>
#include <cstring>

namespace kfx {
namespace {

constexpr size_t kMostColors = 256;
// An unchanged pixel that has to be stored costs about this share of a changed one.
constexpr size_t kChangedToUnchanged = 16;

struct Planner {
    const GifAnimation* gif;
    bool asGiven;  // keep each frame's own disposal
    GifPlan plan;
    // Frame numbers from 1: by number of a colour, the last frame that needed it, and that only had it.
    std::vector<size_t> neededBy;
    std::vector<size_t> shownBy;
};

// How a picture differs from a canvas.
struct Difference {
    Rectangle part;             // where they differ
    size_t changed = 0;         // pixels
    bool hasVanishing = false;  // the canvas has a colour where the picture is transparent
};

void CompareRow(const ColorNumber* from, const ColorNumber* to, size_t width, Difference* difference,
                Rectangle* rowPart) {
    size_t left = 0;
    while (from[left] == to[left]) ++left;
    size_t right = width;
    while (from[right - 1] == to[right - 1]) --right;
    uint32_t changed = 0;
    uint32_t vanishing = 0;
    for (size_t x = left; x < right; ++x) {
        changed += from[x] != to[x];
        vanishing |= static_cast<uint32_t>(from[x] != to[x]) & static_cast<uint32_t>(to[x] == kClear);
    }
    difference->changed += changed;
    difference->hasVanishing |= vanishing != 0;
    rowPart->left = static_cast<int>(left);
    rowPart->width = static_cast<int>(right - left);
}

// `rowOf(y)` is row y of the canvas.
template <typename Row>
Difference DifferenceOf(const GifAnimation& gif, const Row& rowOf, const NumberedPicture& picture) {
    Difference difference;
    const auto width = static_cast<size_t>(gif.width);
    for (int y = 0; y < gif.height; ++y) {
        const ColorNumber* from = rowOf(static_cast<size_t>(y));
        const ColorNumber* to = picture.data() + static_cast<size_t>(y) * width;
        if (std::memcmp(from, to, width * sizeof *from) == 0) continue;
        Rectangle row = {.left = 0, .top = y, .width = 0, .height = 1};
        CompareRow(from, to, width, &difference, &row);
        difference.part = Around(difference.part, row);
    }
    return difference;
}

Difference DifferenceOf(const GifAnimation& gif, const NumberedCanvas& canvas,
                        const NumberedPicture& picture) {
    return DifferenceOf(
        gif, [&](size_t y) { return RowOf(canvas, y); }, picture);
}

Difference DifferenceOf(const GifAnimation& gif, const NumberedPicture& from,
                        const NumberedPicture& picture) {
    const auto width = static_cast<size_t>(gif.width);
    return DifferenceOf(
        gif, [&](size_t y) { return from.data() + y * width; }, picture);
}

// The same for a canvas that shows `from`, of which a part is cleared.
Difference DifferenceOfCleared(const GifAnimation& gif, const NumberedPicture& from, const Rectangle& part,
                               const NumberedPicture& picture) {
    const auto width = static_cast<size_t>(gif.width);
    NumberedPicture cleared(width);
    const auto rowOf = [&](size_t y) -> const ColorNumber* {
        const ColorNumber* const row = from.data() + y * width;
        if (static_cast<int>(y) < part.top || static_cast<int>(y) >= part.top + part.height) return row;
        std::copy(row, row + width, cleared.begin());
        std::fill_n(cleared.begin() + part.left, part.width, kClear);
        return cleared.data();
    };
    return DifferenceOf(gif, rowOf, picture);
}

// The part that has to become transparent between two pictures.
Rectangle VanishingPart(const GifAnimation& gif, const NumberedPicture& from, const NumberedPicture& to) {
    Rectangle part;
    const auto width = static_cast<size_t>(gif.width);
    for (int y = 0; y < gif.height; ++y) {
        const ColorNumber* const before = from.data() + static_cast<size_t>(y) * width;
        const ColorNumber* const after = to.data() + static_cast<size_t>(y) * width;
        if (std::memcmp(before, after, width * sizeof *before) == 0) continue;
        const auto vanishes = [&](size_t x) { return before[x] != kClear && after[x] == kClear; };
        size_t left = 0, right = width;
        while (left < width && !vanishes(left)) ++left;
        if (left == width) continue;
        while (!vanishes(right - 1)) --right;
        part = Around(
            part,
            {.left = static_cast<int>(left), .top = y, .width = static_cast<int>(right - left), .height = 1});
    }
    return part;
}

// A frame needs at least one pixel.
Rectangle AtLeastOnePixel(Rectangle part) {
    if (part.width > 0) return part;
    return {.left = 0, .top = 0, .width = 1, .height = 1};
}

// A way to dispose of a frame, and how the next picture differs from the canvas that it leaves.
struct Choice {
    int disposal = kDisposalKeep;
    Rectangle part;  // what the frame has to store then
    Difference next = {};
};

// What the frame and the next one cost, roughly, in unchanged pixels.
size_t CostOf(const Choice& choice) {
    return choice.next.changed * kChangedToUnchanged + AreaOf(choice.next.part) - choice.next.changed +
           AreaOf(choice.part);
}

// `own` is how the picture differs from the canvas before it.
Choice ChooseDisposal(const GifAnimation& gif, const Difference& own, const NumberedCanvas& canvas,
                      const NumberedPicture& picture, const NumberedPicture& next) {
    const Choice keep = {
        .disposal = kDisposalKeep, .part = own.part, .next = DifferenceOf(gif, picture, next)};
    // The next picture differs from the canvas before this frame in no fewer pixels than the difference of
    // the two numbers. Clearing is no better as long as nothing vanishes.
    if (!keep.next.hasVanishing && 2 * keep.next.changed <= own.changed) return keep;
    const Choice previous = {
        .disposal = kDisposalPrevious, .part = own.part, .next = DifferenceOf(gif, canvas, next)};
    if (!keep.next.hasVanishing)
        return !previous.next.hasVanishing && CostOf(previous) < CostOf(keep) ? previous : keep;
    Choice background = {.disposal = kDisposalBackground,
                         .part = AtLeastOnePixel(Around(own.part, VanishingPart(gif, picture, next)))};
    background.next = DifferenceOfCleared(gif, picture, background.part, next);
    return !previous.next.hasVanishing && CostOf(previous) < CostOf(background) ? previous : background;
}

// Whether the source clears something after its last frame. After that one, some viewers clear the canvas and
// others draw the first frame on what is there.
bool ClearsAtEnd(const GifAnimation& gif) {
    const int given = gif.frames.back().disposal;
    return given == kDisposalBackground || RestoresCanvas(given);
}

// What the source clears at its end is cleared. `first` is the first frame's picture, needed only then.
Choice ChooseLastDisposal(const GifAnimation& gif, const Rectangle& part, const NumberedPicture& picture,
                          const NumberedPicture& first) {
    const Choice keep = {.disposal = kDisposalKeep, .part = part};
    if (first.empty()) return keep;
    const Rectangle vanishing = VanishingPart(gif, picture, first);
    if (vanishing.width == 0) return keep;
    return {.disposal = kDisposalBackground, .part = Around(part, vanishing)};
}

Choice GivenDisposal(const GifAnimation& gif, const Rectangle& part, int disposal,
                     const NumberedPicture& picture) {
    if (RestoresCanvas(disposal)) return {.disposal = kDisposalPrevious, .part = part};
    if (disposal != kDisposalBackground) return {.disposal = kDisposalKeep, .part = part};
    const Rectangle colored =
        BoundsOf(gif.width, gif.height, [&](size_t pixel) { return picture[pixel] != kClear; });
    return {.disposal = kDisposalBackground, .part = Around(part, colored)};
}

void CollectColors(Planner* planner, size_t frame, const NumberedCanvas& canvas,
                   const NumberedPicture& picture) {
    FramePlan& plan = planner->plan.frames[frame];
    planner->neededBy.resize(planner->plan.numbers.colors.size());
    planner->shownBy.resize(planner->plan.numbers.colors.size());
    const auto collect = [&](ColorNumber number, ColorNumber before) {
        if (number == kClear) {
            plan.hasClear = true;
        } else if (number != before) {
            if (planner->neededBy[number] != frame + 1) plan.needed.push_back(number);
            planner->neededBy[number] = frame + 1;
        } else {
            ++plan.unchanged;
            if (planner->shownBy[number] != frame + 1) plan.shown.push_back(number);
            planner->shownBy[number] = frame + 1;
        }
    };
    for (int y = plan.part.top; y < plan.part.top + plan.part.height; ++y) {
        const ColorNumber* const before = RowOf(canvas, static_cast<size_t>(y));
        const ColorNumber* const row = picture.data() + static_cast<size_t>(y) * canvas.width;
        for (int x = plan.part.left; x < plan.part.left + plan.part.width; ++x) collect(row[x], before[x]);
    }
    std::erase_if(plan.shown, [&](ColorNumber number) { return planner->neededBy[number] == frame + 1; });
}

// Whether a palette can have what the frame needs: its colours, and an index for transparent pixels unless
// every pixel has one of these colours.
bool FitsPalette(const FramePlan& plan) {
    if (plan.needed.size() < kMostColors) return true;
    return plan.needed.size() == kMostColors && !plan.hasClear && plan.shown.empty();
}

// False: a frame that builds on other canvases than in the source needs more colours than a palette has.
bool PlanFrames(Planner* planner) {
    const GifAnimation& gif = *planner->gif;
    GifPlayer player = MakeGifPlayer(gif, &planner->plan.numbers);
    NumberedCanvas canvas = MakeNumberedCanvas(gif.width);
    NumberedPicture first, before;
    const NumberedPicture* picture = &ShowNextFrame(&player);
    // A single frame clears nothing that it does not show again.
    if (gif.frames.size() > 1 && ClearsAtEnd(gif)) first = *picture;
    planner->plan.frames.resize(gif.frames.size());
    Difference own = DifferenceOf(gif, canvas, *picture);
    // The first frame stays whole: some viewers take the animation's size from it.
    own.part = {.left = 0, .top = 0, .width = gif.width, .height = gif.height};
    for (size_t i = 0; i < gif.frames.size(); ++i) {
        const bool isLast = i + 1 == gif.frames.size();
        const NumberedPicture* next = nullptr;
        if (!isLast) {
            before = *picture;
            picture = &before;
            next = &ShowNextFrame(&player);
        }
        const Choice choice = planner->asGiven
                                  ? GivenDisposal(gif, own.part, gif.frames[i].disposal, *picture)
                              : isLast ? ChooseLastDisposal(gif, own.part, *picture, first)
                                       : ChooseDisposal(gif, own, canvas, *picture, *next);
        FramePlan& plan = planner->plan.frames[i];
        plan.part = AtLeastOnePixel(choice.part);
        plan.disposal = choice.disposal;
        CollectColors(planner, i, canvas, *picture);
        if (!FitsPalette(plan)) return false;
        if (isLast) break;
        DisposePicture(plan, *picture, &canvas);
        own = planner->asGiven ? DifferenceOf(gif, canvas, *next) : choice.next;
        picture = next;
    }
    return true;
}

}  // namespace

GifPlan PlanGif(const GifAnimation& gif) {
    Planner planner = {.gif = &gif, .asGiven = false, .plan = {}, .neededBy = {}, .shownBy = {}};
    if (PlanFrames(&planner)) return std::move(planner.plan);
    planner = {.gif = &gif, .asGiven = true, .plan = {}, .neededBy = {}, .shownBy = {}};
    PlanFrames(&planner);
    return std::move(planner.plan);
}

void DisposePicture(const FramePlan& frame, const NumberedPicture& picture, NumberedCanvas* canvas) {
    if (frame.disposal == kDisposalPrevious) return;
    const bool isCleared = frame.disposal == kDisposalBackground;
    if (isCleared && AreaOf(frame.part) == picture.size()) {
        canvas->pixels.clear();
        return;
    }
    canvas->pixels = picture;
    if (isCleared)
        ForEachPixel(static_cast<int>(canvas->width), frame.part,
                     [&](size_t pixel) { canvas->pixels[pixel] = kClear; });
}

}  // namespace kfx
