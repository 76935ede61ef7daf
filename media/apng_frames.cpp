// SPDX-License-Identifier: MIT
#include "media/apng_frames.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "media/gif_pictures.h"
#include "media/png_compress.h"
#include "media/png_notes.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

// Up to so many pixels in all frames together a palette can take more bytes than it saves.
constexpr uint64_t kSmallAnimation = 4096;
constexpr size_t kManyGreys = 128;
constexpr PackedColor kRgb = 0xFFFFFF;

// The frame's pixels; fully transparent ones are all zero.
Bytes ShownPixels(const Frame& frame) {
    Bytes pixels = frame.pixels;
    for (size_t i = 0; i < pixels.size(); i += 4)
        if (pixels[i + 3] == 0) std::fill_n(pixels.data() + i, 3, uint8_t{0});
    return pixels;
}

// Finds the lowest colour value that no opaque pixel has; with `isGrey` only greys are looked at. False:
// there is none.
bool FindFreeColor(const Animation& animation, bool isGrey, PackedColor* color) {
    constexpr PackedColor kGreyStep = 0x010101;
    std::vector<bool> isTaken(size_t{1} << 24);
    for (const Frame& frame : animation.frames)
        for (size_t i = 0; i < frame.pixels.size(); i += 4)
            if (frame.pixels[i + 3] == 255) isTaken[PackedColorAt(frame.pixels.data() + i) & kRgb] = true;
    const PackedColor step = isGrey ? kGreyStep : 1;
    *color = 0;
    while (*color <= kRgb && isTaken[*color]) *color += step;
    return *color <= kRgb;
}

// Whether a pixel of this format can be transparent.
bool HasHole(const PngFormat& format) {
    if (format.colors == kPngRgba || format.colors == kPngGreyAlpha || format.hasKey) return true;
    return std::find(format.alphas.begin(), format.alphas.end(), 0) != format.alphas.end();
}

// A way from one picture to the next.
struct Change {
    int disposal = kApngKeep;  // of the frame before
    Bytes canvas;              // what that leaves
    Rectangle place;           // where the next picture differs from the canvas
};

bool IsSame(const Bytes& a, const Bytes& b, size_t pixel) {
    return std::memcmp(a.data() + 4 * pixel, b.data() + 4 * pixel, 4) == 0;
}

Change ChangeOf(const Animation& animation, const Bytes& shown, int disposal, Bytes canvas) {
    const Rectangle place = BoundsOf(animation.width, animation.height,
                                     [&](size_t pixel) { return !IsSame(shown, canvas, pixel); });
    // The format has no frames without pixels.
    const Rectangle least = {.left = 0, .top = 0, .width = 1, .height = 1};
    return {.disposal = disposal, .canvas = std::move(canvas), .place = place.width == 0 ? least : place};
}

Bytes PartOf(const Animation& animation, const Bytes& shown, const Rectangle& place) {
    Bytes part;
    ForEachPixel(animation.width, place, [&](size_t pixel) {
        part.insert(part.end(), shown.data() + 4 * pixel, shown.data() + 4 * pixel + 4);
    });
    return part;
}

// Appends the pixels of the change's place, transparent where the canvas stays as it is. False: such a part,
// drawn over the canvas, does not give the picture.
bool PartWithHoles(const Animation& animation, const Bytes& shown, const Change& change, Bytes* part) {
    constexpr uint8_t kHole[4] = {};
    bool isPossible = true;
    ForEachPixel(animation.width, change.place, [&](size_t pixel) {
        const uint8_t* rgba = shown.data() + 4 * pixel;
        const bool same = IsSame(shown, change.canvas, pixel);
        // A half-transparent colour would be mixed with the canvas, and no pixel can be made transparent.
        if (!same && (rgba[3] == 0 || (rgba[3] != 255 && change.canvas[4 * pixel + 3] != 0)))
            isPossible = false;
        part->insert(part->end(), same ? kHole : rgba, (same ? kHole : rgba) + 4);
    });
    return isPossible;
}

struct Candidate {
    size_t estimate = SIZE_MAX;
    Rectangle place;
    int disposal = kApngKeep;  // of the frame before
    int blend = kApngReplace;
    PngRows rows;
};

void TryPart(const PngFormat& format, const Change& change, int blend, const Bytes& part, Candidate* best) {
    PngRows rows = MakePngRows(format, part.data(), change.place.width, change.place.height);
    const size_t estimate = EstimatePngRows(rows);
    if (estimate >= best->estimate) return;
    *best = {.estimate = estimate,
             .place = change.place,
             .disposal = change.disposal,
             .blend = blend,
             .rows = std::move(rows)};
}

void TryChange(const Animation& animation, const PngFormat& format, const Bytes& shown, const Change& change,
               Candidate* best) {
    TryPart(format, change, kApngReplace, PartOf(animation, shown, change.place), best);
    Bytes part;
    if (HasHole(format) && PartWithHoles(animation, shown, change, &part))
        TryPart(format, change, kApngOver, part, best);
}

// What was shown last, and the canvas on which that was drawn.
struct Shown {
    Bytes pixels;
    Bytes canvas;
    Rectangle place;
    bool isFirst = true;
};

// The change to the next picture that takes the fewest bytes. `*canvas` receives the canvas that it is drawn
// on.
Candidate BestChange(const Animation& animation, const PngFormat& format, const Shown& last,
                     const Bytes& shown, Bytes* canvas) {
    Candidate best;
    const Change keep = ChangeOf(animation, shown, kApngKeep, last.pixels);
    TryChange(animation, format, shown, keep, &best);
    *canvas = keep.canvas;
    const auto tryOther = [&](int disposal, Bytes before) {
        const Change other = ChangeOf(animation, shown, disposal, std::move(before));
        // A larger place takes fewer bytes so rarely that it is not tried.
        if (AreaOf(other.place) >= AreaOf(keep.place)) return;
        const size_t least = best.estimate;
        TryChange(animation, format, shown, other, &best);
        if (best.estimate < least) *canvas = other.canvas;
    };
    Bytes cleared = last.pixels;
    ClearPart(animation.width, last.place, &cleared);
    tryOther(kApngBackground, std::move(cleared));
    if (!last.isFirst) tryOther(kApngPrevious, last.canvas);
    return best;
}

}  // namespace

PngFormat ChooseApngFormat(const Animation& animation) {
    ColorCensus census;
    uint64_t pixels = 0;
    for (const Frame& frame : animation.frames) {
        CountColors(ShownPixels(frame).data(), frame.pixels.size() / 4, &census);
        pixels += frame.pixels.size() / 4;
    }
    const bool wantsHole = animation.frames.size() > 1 || !census.isOpaque;
    // Some decoders lose parts of animations whose samples are narrower than a byte.
    PngFormatOptions options = {.mayBeGrey = MayBeGrey(animation.metadata), .mayBeNarrow = false};
    options.hasKey = wantsHole && census.isSolid &&
                     FindFreeColor(animation, census.isGrey && options.mayBeGrey, &options.key);
    if (wantsHole && census.isFew) AddColor(kNoColor, &census.numbering);
    std::vector<PngFormat> formats = PngFormatsFor(census, options);
    // The parts of later frames compress better as indices than as greys. The estimate below looks at whole
    // frames, which do not show that, so greys are a choice only where there are many.
    const bool isDense = IsGrey(formats.back()) && census.numbering.colors.size() > kManyGreys;
    if (census.isFew && pixels > kSmallAnimation && !isDense) formats.pop_back();
    if (formats.size() == 1) return formats[0];
    const PngFormat* best = &formats[0];
    size_t least = SIZE_MAX;
    for (const PngFormat& format : formats) {
        size_t size = PngPaletteBytes(format);
        for (const size_t i : {size_t{0}, animation.frames.size() / 2}) {
            const Bytes shown = ShownPixels(animation.frames[i]);
            size += EstimatePngRows(MakePngRows(format, shown.data(), animation.width, animation.height));
        }
        if (size >= least) continue;
        least = size;
        best = &format;
    }
    return *best;
}

std::vector<StoredFrame> StoreFrames(const Animation& animation, const PngFormat& format,
                                     const PngOptions& options) {
    std::vector<StoredFrame> stored(animation.frames.size());
    std::mutex lock;  // for the next three variables, and for all in `stored` but the data
    size_t next = 0;
    bool failed = false;  // a frame's change could not be found: later frames depend on it
    Shown last;
    // A frame's change depends on the frame before: the threads find changes one after the other and compress
    // them side by side.
    const auto takeNext = [&](PngRows* rows) {
        const std::scoped_lock held(lock);
        if (failed) throw std::bad_alloc();
        failed = true;
        const size_t number = next++;
        Bytes shown = ShownPixels(animation.frames[number]);
        Bytes canvas;
        Candidate best;
        if (number == 0) {
            best.place = {.left = 0, .top = 0, .width = animation.width, .height = animation.height};
            best.rows = MakePngRows(format, shown.data(), animation.width, animation.height);
        } else {
            best = BestChange(animation, format, last, shown, &canvas);
            stored[number - 1].disposal = best.disposal;
        }
        last = {.pixels = std::move(shown),
                .canvas = std::move(canvas),
                .place = best.place,
                .isFirst = number == 0};
        stored[number].place = best.place;
        stored[number].blend = best.blend;
        *rows = std::move(best.rows);
        failed = false;
        return number;
    };
    RunJobs(options.jobs, stored.size(), [&](size_t, size_t) {
        PngRows rows;
        const size_t number = takeNext(&rows);
        stored[number].data = CompressPngRows(rows, options.effort);
    });
    return stored;
}

}  // namespace kfx
