// SPDX-License-Identifier: MIT
#include "media/gif_frame.h"

#include <algorithm>

namespace kfx {
namespace {

constexpr size_t kMostColors = 256;
// Parts of so many pixels are compressed in every way; of others, this share of the rows decides, in so many
// stripes.
constexpr size_t kSmallArea = 12000;
constexpr size_t kSampleShare = 8;
constexpr size_t kStripes = 4;
// With fewer unchanged pixels than one in so many, nothing depends on how they are stored.
constexpr size_t kFewUnchanged = 32;

// What pixels that the canvas shows already are stored as.
enum class Unchanged { Either, Transparent, Color };

struct FrameTask {
    const FramePlan* plan;
    const ColorNumbers* numbers;
    const GlobalColors* global;
    const NumberedCanvas* canvas;
    const NumberedPicture* picture;
    GifFrameMemory* memory;
    bool isLocal;  // the global colours are not enough
    int lossy;     // 0: every pixel is shown exactly
};

// Whether one colour may be shown in place of the other.
bool IsNear(const FrameTask& task, ColorNumber a, ColorNumber b) {
    if (a == b) return true;
    if (task.lossy == 0 || a == kClear || b == kClear) return false;
    const RgbColor first = task.numbers->colors[a];
    const RgbColor second = task.numbers->colors[b];
    const int red = first.red - second.red;
    const int green = first.green - second.green;
    const int blue = first.blue - second.blue;
    return 16 * (red * red + green * green + blue * blue) <= task.lossy * task.lossy;
}

// The symbols of a frame: first the colours, then the transparent one, if any.
struct Alphabet {
    std::vector<ColorNumber> colors;
    int transparentSymbol = -1;
};

Alphabet MakeAlphabet(const FrameTask& task, Unchanged unchanged) {
    const FramePlan& plan = *task.plan;
    Alphabet alphabet = {.colors = plan.needed};
    const bool wantsTransparent =
        plan.hasClear || (unchanged != Unchanged::Color && plan.needed.size() < kMostColors);
    const size_t room = kMostColors - (wantsTransparent ? 1 : 0);
    bool leftOut = false;
    if (unchanged != Unchanged::Transparent || !wantsTransparent) {
        for (const ColorNumber number : plan.shown) {
            if (alphabet.colors.size() < room && (task.isLocal || task.global->contains[number]))
                alphabet.colors.push_back(number);
            else
                leftOut = true;
        }
    }
    if (leftOut && alphabet.colors.size() == kMostColors) alphabet.colors.pop_back();
    if (wantsTransparent || leftOut) {
        alphabet.transparentSymbol = static_cast<int>(alphabet.colors.size());
        alphabet.colors.push_back(kClear);
    }
    return alphabet;
}

// What a pixel of each colour is stored as, by the colour's number, while the canvas shows another one or the
// same.
struct SymbolTables {
    const uint8_t* changed;
    const uint8_t* shown;
    const uint8_t* open;  // not 0 where the transparent symbol may stand for a colour that is shown
};

// Rows of the part.
struct RowRange {
    size_t first;
    size_t count;
};

template <typename IsShown>
void FillRows(const FrameTask& task, const SymbolTables& tables, const IsShown& isShown, const RowRange& rows,
              uint8_t* symbols, uint8_t* open) {
    const Rectangle& part = task.plan->part;
    const auto left = static_cast<size_t>(part.left);
    const auto width = static_cast<size_t>(part.width);
    const size_t top = static_cast<size_t>(part.top) + rows.first;
    for (size_t y = top; y < top + rows.count; ++y) {
        const ColorNumber* const picture = task.picture->data() + y * task.canvas->width + left;
        const ColorNumber* const canvas = RowOf(*task.canvas, y) + left;
        for (size_t x = 0; x < width; ++x) {
            const ColorNumber number = picture[x];
            const bool shown = isShown(number, canvas[x]);
            *symbols++ = shown ? tables.shown[number] : tables.changed[number];
            *open++ = shown ? tables.open[number] : 0;
        }
    }
}

// A way to store a frame.
struct Attempt {
    Unchanged unchanged;
    Alphabet alphabet;
    std::vector<uint8_t> nears;  // as LzwPixels has them; empty when every pixel is shown exactly
    int codeSize;
};

// Which colours may stand for which.
std::vector<uint8_t> NearsOf(const FrameTask& task, const Alphabet& alphabet) {
    std::vector<uint8_t> nears;
    for (const ColorNumber a : alphabet.colors)
        for (const ColorNumber b : alphabet.colors) nears.push_back(IsNear(task, a, b));
    return nears;
}

Attempt MakeAttempt(const FrameTask& task, Unchanged unchanged) {
    Attempt attempt;
    attempt.unchanged = unchanged;
    attempt.alphabet = MakeAlphabet(task, unchanged);
    if (task.lossy > 0) attempt.nears = NearsOf(task, attempt.alphabet);
    const auto symbols = static_cast<int>(attempt.alphabet.colors.size());
    attempt.codeSize = task.isLocal ? LzwCodeSize(symbols) : task.global->codeSize;
    return attempt;
}

SymbolTables FillTables(const FrameTask& task, const Attempt& attempt) {
    GifFrameMemory& memory = *task.memory;
    const Alphabet& alphabet = attempt.alphabet;
    const bool hasTransparent = alphabet.transparentSymbol >= 0;
    const bool staysTransparent = hasTransparent && attempt.unchanged == Unchanged::Transparent;
    const bool canStayOpen = hasTransparent && attempt.unchanged == Unchanged::Either;
    const auto transparent = static_cast<uint8_t>(std::max(alphabet.transparentSymbol, 0));
    for (std::vector<uint8_t>* table : {&memory.changed, &memory.shown, &memory.open})
        if (table->size() < task.numbers->colors.size()) table->resize(task.numbers->colors.size());
    // Colours that the alphabet lacks are shown already.
    for (const ColorNumber number : task.plan->shown) {
        memory.changed[number] = memory.shown[number] = transparent;
        memory.open[number] = 0;
    }
    for (size_t i = 0; i < alphabet.colors.size(); ++i) {
        const ColorNumber number = alphabet.colors[i];
        const auto symbol = static_cast<uint8_t>(i);
        memory.changed[number] = symbol;
        memory.shown[number] = staysTransparent ? transparent : symbol;
        memory.open[number] = canStayOpen && symbol != transparent;
    }
    return {.changed = memory.changed.data(), .shown = memory.shown.data(), .open = memory.open.data()};
}

// The pixels of some rows, which refer to the attempt.
LzwPixels PixelsOf(const FrameTask& task, const Attempt& attempt, const std::vector<RowRange>& rows) {
    const auto width = static_cast<size_t>(task.plan->part.width);
    size_t area = 0;
    for (const RowRange& range : rows) area += range.count * width;
    LzwPixels pixels = {.symbols = std::vector<uint8_t>(area),
                        .open = std::vector<uint8_t>(area),
                        .symbolCount = static_cast<int>(attempt.alphabet.colors.size()),
                        .transparentSymbol = attempt.alphabet.transparentSymbol,
                        .nears = attempt.nears.empty() ? nullptr : attempt.nears.data()};
    const SymbolTables tables = FillTables(task, attempt);
    const auto isSame = [](ColorNumber a, ColorNumber b) { return a == b; };
    const auto isNear = [&](ColorNumber a, ColorNumber b) { return IsNear(task, a, b); };
    size_t at = 0;
    for (const RowRange& range : rows) {
        uint8_t* const symbols = pixels.symbols.data() + at;
        uint8_t* const open = pixels.open.data() + at;
        if (task.lossy == 0)
            FillRows(task, tables, isSame, range, symbols, open);
        else
            FillRows(task, tables, isNear, range, symbols, open);
        at += range.count * width;
    }
    return pixels;
}

LzwPixels AllPixels(const FrameTask& task, const Attempt& attempt) {
    return PixelsOf(task, attempt, {{.first = 0, .count = static_cast<size_t>(task.plan->part.height)}});
}

// The colours of the symbols that occur. Every string begins as a single symbol, so that these are all.
std::vector<ColorNumber> UsedColors(const Alphabet& alphabet, const LzwCodes& codes) {
    std::vector<ColorNumber> used(alphabet.colors.size(), kUnused);
    for (const uint16_t code : codes)
        if (code < kLzwFirstEntry) used[code] = alphabet.colors[code];
    return used;
}

// The bytes of the frame with the global palette or its own, whichever are fewer.
size_t StoredSize(const FrameTask& task, CompressedFrame* frame) {
    const auto count = static_cast<size_t>(std::count_if(
        frame->colors.begin(), frame->colors.end(), [](ColorNumber number) { return number != kUnused; }));
    const size_t local = LzwSize(frame->codes, LzwCodeSize(static_cast<int>(count))) + PaletteBytes(count);
    if (task.isLocal) return local;
    // The transparent symbol has an index that the frame needs for nothing else.
    const size_t indices = std::max(count, task.global->colors.size());
    const size_t shared = LzwSize(frame->codes, LzwCodeSize(static_cast<int>(indices)));
    frame->isLocal = local < shared;
    return std::min(local, shared);
}

// The size of some rows from the middle of each quarter.
size_t SampleSize(const FrameTask& task, const Attempt& attempt) {
    const auto height = static_cast<size_t>(task.plan->part.height);
    constexpr size_t kShare = kSampleShare * kStripes;
    const size_t most = (height + kShare - 1) / kShare;
    std::vector<RowRange> rows;
    for (size_t i = 0; i < kStripes; ++i) {
        const size_t first = (2 * i + 1) * height / (2 * kStripes);
        rows.push_back({.first = first, .count = std::min(most, height - first)});
    }
    const LzwPixels sample = PixelsOf(task, attempt, rows);
    return LzwSize(CompressLzw(task.memory->lzw.get(), sample, attempt.codeSize, nullptr), attempt.codeSize);
}

bool IsSmall(const FramePlan& plan) {
    return static_cast<size_t>(plan.part.width) * static_cast<size_t>(plan.part.height) <= kSmallArea;
}

// The attempts that are worth to be carried out: all for a small part, else the one that does best on some
// rows.
std::vector<Attempt> ChooseAttempts(const FrameTask& task) {
    std::vector<Attempt> attempts;
    const size_t area =
        static_cast<size_t>(task.plan->part.width) * static_cast<size_t>(task.plan->part.height);
    attempts.push_back(MakeAttempt(task, Unchanged::Either));
    if (task.plan->unchanged * kFewUnchanged < area) return attempts;
    attempts.push_back(MakeAttempt(task, Unchanged::Color));
    if (IsSmall(*task.plan)) {
        attempts.push_back(MakeAttempt(task, Unchanged::Transparent));
        return attempts;
    }
    const bool second = SampleSize(task, attempts[1]) < SampleSize(task, attempts[0]);
    attempts.erase(attempts.begin() + (second ? 0 : 1));
    return attempts;
}

// What the canvas shows with the frame.
void ShowStored(const FrameTask& task, const CompressedFrame& frame, const std::vector<uint8_t>& stored,
                NumberedPicture* shown) {
    if (task.canvas->pixels.empty())
        shown->assign(task.picture->size(), kClear);
    else
        *shown = task.canvas->pixels;
    size_t next = 0;
    ForEachPixel(static_cast<int>(task.canvas->width), frame.part, [&](size_t pixel) {
        const ColorNumber number = frame.colors[stored[next++]];
        if (number != kClear) (*shown)[pixel] = number;
    });
}

}  // namespace

size_t PaletteBytes(size_t colors) {
    size_t stored = 2;
    while (stored < colors) stored *= 2;
    return 3 * stored;
}

CompressedFrame CompressFrame(const FramePlan& plan, const ColorNumbers& numbers, const GlobalColors& global,
                              const NumberedCanvas& canvas, const NumberedPicture& picture, int lossy,
                              NumberedPicture* shown, GifFrameMemory* memory) {
    FrameTask task = {.plan = &plan,
                      .numbers = &numbers,
                      .global = &global,
                      .canvas = &canvas,
                      .picture = &picture,
                      .memory = memory,
                      .isLocal = false,
                      .lossy = lossy};
    for (const ColorNumber number : plan.needed)
        if (!global.contains[number]) task.isLocal = true;
    const std::vector<Attempt> attempts = ChooseAttempts(task);
    CompressedFrame best;
    std::vector<uint8_t> bestStored;
    size_t least = SIZE_MAX;
    const auto carryOut = [&](const Attempt& attempt, bool looksAhead) {
        LzwPixels pixels = AllPixels(task, attempt);
        pixels.looksAhead = looksAhead;
        CompressedFrame frame = {.part = plan.part, .disposal = plan.disposal, .codes = {}, .colors = {}};
        std::vector<uint8_t> stored;
        frame.codes = CompressLzw(memory->lzw.get(), pixels, attempt.codeSize, lossy > 0 ? &stored : nullptr);
        frame.colors = UsedColors(attempt.alphabet, frame.codes);
        frame.isLocal = task.isLocal;
        const size_t size = StoredSize(task, &frame);
        if (size >= least) return false;
        least = size;
        best = std::move(frame);
        bestStored = std::move(stored);
        return true;
    };
    size_t winner = 0;
    for (size_t i = 0; i < attempts.size(); ++i)
        if (carryOut(attempts[i], true)) winner = i;
    if (IsSmall(plan)) carryOut(attempts[winner], false);
    if (lossy > 0) ShowStored(task, best, bestStored, shown);
    return best;
}

}  // namespace kfx
