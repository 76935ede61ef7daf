// SPDX-License-Identifier: MIT
#include "commands/built_animation.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <optional>
#include <unordered_set>
#include <utility>

#include "commands/frame_colors.h"
#include "host/animation_layout.h"
#include "media/quantize.h"

namespace kfx::commands {
namespace {

constexpr int kLargestSide = 65535;

// The index at column x of a row of 1, 4 or 8 bits a pixel, the leftmost pixel in the highest bits.
uint8_t IndexAt(const uint8_t* row, size_t x, uint32_t bitCount) {
    const size_t bit = x * bitCount;
    const uint32_t shift = static_cast<uint32_t>(8 - bitCount - bit % 8);
    return static_cast<uint8_t>(row[bit / 8] >> shift & ((1u << bitCount) - 1));
}

void CopyRow(const uint8_t* row, size_t width, uint32_t bitCount, uint8_t* out) {
    if (bitCount == 8) {
        std::memcpy(out, row, width);
    } else if (bitCount < 8) {
        for (size_t x = 0; x < width; ++x) out[x] = IndexAt(row, x, bitCount);
    } else {
        const size_t step = bitCount / 8;
        for (size_t x = 0; x < width; ++x, row += step, out += 3) {
            out[0] = row[2];
            out[1] = row[1];
            out[2] = row[0];
        }
    }
}

size_t PixelCount(const BuiltAnimation& built) {
    return static_cast<size_t>(built.width) * static_cast<size_t>(built.height);
}

// The source frame of a built one; an opaque one without delay when the plug-in made up more frames.
const SourceFrame& SourceOf(const BuiltFrame& frame, const SourceRecord& source) {
    static const SourceFrame none;
    return frame.sourceIndex < source.frames.size() ? source.frames[frame.sourceIndex] : none;
}

// Draws what the frame changes onto the picture (RGBA).
void DrawOnto(const BuiltFrame& frame, std::vector<uint8_t>* picture) {
    const size_t count = picture->size() / 4;
    uint8_t* out = picture->data();
    const uint8_t* const pixels = frame.pixels.data();
    if (!frame.indexed) {
        // Four bytes at a time are quicker; alpha replaces the fourth.
        for (size_t i = 0; i < count; ++i, out += 4) {
            std::memcpy(out, pixels + 3 * i, i + 1 < count ? 4 : 3);
            out[3] = 255;
        }
        return;
    }
    uint8_t colors[256][4];
    for (size_t i = 0; i < std::size(colors); ++i) {
        const RgbColor color = i < frame.palette.size() ? frame.palette[i] : RgbColor();
        const uint8_t pixel[] = {color.red, color.green, color.blue, 255};
        std::memcpy(colors[i], pixel, sizeof pixel);
    }
    for (size_t i = 0; i < count; ++i, out += 4)
        if (pixels[i] != frame.transparentIndex) std::memcpy(out, colors[pixels[i]], 4);
}

bool TakeAlpha(const SourceFrame& source, std::vector<uint8_t>* picture) {
    if (source.alpha.size() * 4 != picture->size()) return false;
    for (size_t i = 0; i < source.alpha.size(); ++i) (*picture)[4 * i + 3] = source.alpha[i];
    return true;
}

int SquaredDistance(RgbColor a, RgbColor b) {
    const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
    return red * red + green * green + blue * blue;
}

// Frees one entry of a full palette: the one that the fewest pixels use gives way to the colour nearest to
// it.
int FreeOneEntry(std::vector<uint8_t>* indices, const std::vector<RgbColor>& palette) {
    size_t uses[256] = {};
    for (const uint8_t index : *indices) ++uses[index];
    const auto rarest = static_cast<uint8_t>(std::min_element(uses, uses + palette.size()) - uses);
    if (uses[rarest] == 0) return rarest;
    uint8_t nearest = rarest == 0 ? 1 : 0;
    for (size_t i = 0; i < palette.size(); ++i) {
        if (i != rarest && SquaredDistance(palette[i], palette[rarest]) <
                               SquaredDistance(palette[nearest], palette[rarest])) {
            nearest = static_cast<uint8_t>(i);
        }
    }
    std::replace(indices->begin(), indices->end(), rarest, nearest);
    return rarest;
}

// Gives the see-through pixels of a whole frame an index of their own: `spare`, or an entry made free when it
// is -1.
void MakeSeeThrough(const std::vector<uint8_t>& alpha, const std::vector<RgbColor>& palette, int spare,
                    GifFrame* frame) {
    if (alpha.size() != frame->indices.size()) return;
    const int index = spare >= 0 ? spare : FreeOneEntry(&frame->indices, palette);
    for (size_t i = 0; i < alpha.size(); ++i) {
        if (alpha[i] < kOpaqueFrom) frame->indices[i] = static_cast<uint8_t>(index);
    }
    frame->transparentIndex = index;
}

// The built frames' own indices with every pixel drawn: see-through ones repeat what stands in the frames
// before. All frames share the palette, so indices can be carried over.
void DrawIndicesOnto(const BuiltFrame& frame, std::vector<uint8_t>* indices) {
    for (size_t i = 0; i < indices->size(); ++i) {
        if (frame.pixels[i] != frame.transparentIndex) (*indices)[i] = frame.pixels[i];
    }
}

// Indices beyond the announced depth are black; they must stay inside the table that is written.
size_t HighestIndex(const BuiltAnimation& built) {
    uint8_t highest = 0;
    for (const BuiltFrame& frame : built.frames) {
        for (const uint8_t index : frame.pixels) highest = std::max(highest, index);
    }
    return highest;
}

// The source's comment first. A result that becomes a source again does not get the plug-in's comment twice.
std::string JoinComments(const std::string& source, const std::string& added) {
    if (source.empty() || added.empty()) return source + added;
    return source.find(added) == std::string::npos ? source + "\n" + added : source;
}

GifAnimation StartGif(const BuiltAnimation& built, const SourceRecord& source) {
    GifAnimation gif;
    gif.width = built.width;
    gif.height = built.height;
    gif.loopCount = source.loopCount;
    gif.comment = JoinComments(source.comment, built.comment);
    gif.hasBackground = source.hasBackground;
    gif.background = source.background;
    gif.metadata = source.metadata;
    return gif;
}

// In true colour every frame is a whole picture.
int DisposalOf(const SourceRecord& source) {
    return source.transparent ? kDisposalBackground : kDisposalKeep;
}

uint32_t PackColor(RgbColor color) {
    return static_cast<uint32_t>(color.red | color.green << 8 | color.blue << 16);
}

// Each entry of a frame's own palette is drawn, but for the transparent one.
size_t CountColors(const GifAnimation& gif) {
    std::unordered_set<uint32_t> colors;
    for (const GifFrame& frame : gif.frames) {
        for (size_t i = 0; i < frame.palette.size(); ++i) {
            const RgbColor color = frame.palette[i];
            if (static_cast<int>(i) != frame.transparentIndex) colors.insert(PackColor(color));
        }
    }
    return colors.size();
}

// Marks the indices that occur. A row that the frame before had with the same colours is passed over.
void NoteIndices(const BuiltFrame& frame, const BuiltFrame* before, size_t width, bool (&used)[256]) {
    const bool isSameKind = before && before->indexed && before->pixels.size() == frame.pixels.size() &&
                            before->transparentIndex == frame.transparentIndex &&
                            before->palette == frame.palette;
    for (size_t row = 0; row < frame.pixels.size(); row += width) {
        const uint8_t* const indices = frame.pixels.data() + row;
        if (isSameKind && std::memcmp(indices, before->pixels.data() + row, width) == 0) continue;
        for (size_t x = 0; x < width; ++x) used[indices[x]] = true;
    }
}

// The colours of pixels that are not fully transparent; `alpha` is null when none is.
void NotePaletteColors(const BuiltFrame& frame, const BuiltFrame* before, const uint8_t* alpha, size_t width,
                       std::unordered_set<uint32_t>* colors) {
    bool used[256] = {};
    if (!alpha) NoteIndices(frame, before, width, used);
    for (size_t i = 0; i < frame.pixels.size() && alpha; ++i) used[frame.pixels[i]] |= alpha[i] != 0;
    for (size_t i = 0; i < frame.palette.size(); ++i)
        if (used[i] && static_cast<int>(i) != frame.transparentIndex)
            colors->insert(PackColor(frame.palette[i]));
}

void NotePixelColors(const BuiltFrame& frame, const uint8_t* alpha, ColorSet* colors) {
    RgbColor neighbor;  // most pixels have its colour
    bool hasNeighbor = false;
    for (size_t i = 0; 3 * i < frame.pixels.size(); ++i) {
        const uint8_t* const pixel = frame.pixels.data() + 3 * i;
        const RgbColor color = {pixel[0], pixel[1], pixel[2]};
        if ((hasNeighbor && color == neighbor) || (alpha && alpha[i] == 0)) continue;
        neighbor = color;
        hasNeighbor = true;
        AddColor(colors, color.red, color.green, color.blue);
    }
}

// Whether the frame shows nothing of those before it.
bool DrawsEveryPixel(const BuiltFrame& frame) {
    return !frame.indexed || frame.transparentIndex < 0 || frame.transparentIndex > 255;
}

GifAnimation MakeTrueColorGif(const BuiltAnimation& built, const SourceRecord& source,
                              const JobRunner& given) {
    GifAnimation gif = StartGif(built, source);
    gif.frames.resize(built.frames.size());
    const bool inAnyOrder = std::all_of(built.frames.begin(), built.frames.end(), DrawsEveryPixel);
    const JobRunner jobs = inAnyOrder ? given : JobRunner();
    std::vector<std::vector<uint8_t>> pictures(static_cast<size_t>(WorkersFor(jobs, built.frames.size())));
    RunJobs(jobs, built.frames.size(), [&](size_t number, size_t worker) {
        const BuiltFrame& handed = built.frames[number];
        const SourceFrame& from = SourceOf(handed, source);
        std::vector<uint8_t>& picture = pictures[worker];
        picture.resize(4 * PixelCount(built));
        DrawOnto(handed, &picture);
        TakeAlpha(from, &picture);
        GifFrame& frame = gif.frames[number];
        QuantizeFrame(picture.data(), built.width, built.height, 256, &frame);
        frame.delay = from.delay;
        frame.disposal = DisposalOf(source);
    });
    return gif;
}

}  // namespace

bool BeginTask(const FileObjectRecord& task, BuiltAnimation* built) {
    *built = {};
    if (task.width < 1 || task.width > kLargestSide || task.height < 1 || task.height > kLargestSide)
        return false;
    built->width = static_cast<int>(task.width);
    built->height = static_cast<int>(task.height);
    const uint32_t bits = task.bitsPerPixel < 1 ? 1 : task.bitsPerPixel > 8 ? 8 : task.bitsPerPixel;
    for (size_t i = 0; i < size_t{1} << bits; ++i) {
        built->palette.push_back({task.palette[3 * i], task.palette[3 * i + 1], task.palette[3 * i + 2]});
    }
    built->open = true;
    return true;
}

bool AddBuiltFrame(const AddImageRecord& record, const uint8_t* bitmap, size_t bytes, BuiltAnimation* built) {
    if (!built->open || bytes < kBitmapHeaderBytes || Word32(bitmap) != kBitmapHeaderBytes) return false;
    const uint32_t bitCount = Word16(bitmap + 14);
    if (bitCount != 1 && bitCount != 4 && bitCount != 8 && bitCount != 24 && bitCount != 32) return false;
    if (Word32(bitmap + 4) != static_cast<uint32_t>(built->width)) return false;
    if (Word32(bitmap + 8) != static_cast<uint32_t>(built->height)) return false;

    const auto width = static_cast<size_t>(built->width);
    const auto height = static_cast<size_t>(built->height);
    const size_t stride = (width * bitCount + 31) / 32 * 4;
    const size_t colors = bitCount <= 8 ? size_t{1} << bitCount : 0;
    if (bytes < kBitmapHeaderBytes + 4 * colors + stride * height) return false;

    BuiltFrame frame;
    frame.indexed = bitCount <= 8;
    frame.transparentIndex = record.transparentIndex;
    frame.sourceIndex = record.index;
    for (size_t i = 0; i < colors; ++i) {
        const uint8_t* entry = bitmap + kBitmapHeaderBytes + 4 * i;
        frame.palette.push_back({entry[2], entry[1], entry[0]});
    }
    const size_t pixelBytes = frame.indexed ? 1 : 3;
    frame.pixels.resize(width * height * pixelBytes);
    const uint8_t* rows = bitmap + kBitmapHeaderBytes + 4 * colors;
    for (size_t y = 0; y < height; ++y) {
        CopyRow(rows + (height - 1 - y) * stride, width, bitCount,
                frame.pixels.data() + y * width * pixelBytes);
    }
    built->frames.push_back(std::move(frame));
    return true;
}

size_t CountColors(const BuiltAnimation& built, const SourceRecord& source) {
    if (built.gif) return CountColors(*built.gif);
    std::unordered_set<uint32_t> ofPalettes;
    std::optional<ColorSet> ofPixels;  // large, and rarely needed
    const BuiltFrame* last = nullptr;  // all of its pixels count
    for (const BuiltFrame& frame : built.frames) {
        const std::vector<uint8_t>& kept = SourceOf(frame, source).alpha;
        const uint8_t* const alpha = kept.size() == PixelCount(built) ? kept.data() : nullptr;
        const BuiltFrame* const before = std::exchange(last, alpha ? nullptr : &frame);
        if (frame.indexed) {
            NotePaletteColors(frame, before, alpha, static_cast<size_t>(built.width), &ofPalettes);
        } else {
            if (!ofPixels) ofPixels.emplace();
            NotePixelColors(frame, alpha, &*ofPixels);
        }
    }
    if (!ofPixels) return ofPalettes.size();
    for (const uint32_t color : ofPalettes)
        AddColor(&*ofPixels, static_cast<uint8_t>(color), static_cast<uint8_t>(color >> 8),
                 static_cast<uint8_t>(color >> 16));
    return ofPixels->count;
}

std::vector<uint8_t> ShownPicture(const BuiltAnimation& built, size_t number, const SourceRecord& source,
                                  std::vector<uint8_t>* canvas) {
    canvas->resize(4 * PixelCount(built));
    DrawOnto(built.frames[number], canvas);
    std::vector<uint8_t> shown = *canvas;
    TakeAlpha(SourceOf(built.frames[number], source), &shown);
    return shown;
}

Animation PlayBuilt(const BuiltAnimation& built, const SourceRecord& source) {
    Animation animation;
    animation.width = built.width;
    animation.height = built.height;
    animation.loopCount = source.loopCount;
    animation.comment = JoinComments(source.comment, built.comment);
    animation.hasBackground = source.hasBackground;
    animation.background = source.background;
    animation.metadata = source.metadata;
    std::vector<uint8_t> picture(4 * PixelCount(built));
    for (const BuiltFrame& handed : built.frames) {
        const SourceFrame& from = SourceOf(handed, source);
        Frame frame;
        DrawOnto(handed, &picture);
        frame.pixels = picture;
        frame.transparent = TakeAlpha(from, &frame.pixels);
        frame.delay = from.delay;
        frame.milliseconds = from.milliseconds;
        frame.disposal = kDisposalKeep;
        animation.frames.push_back(std::move(frame));
    }
    return animation;
}

bool MakeGifOfSource(const Animation& animation, const SourceRecord& record, const JobRunner& jobs,
                     GifAnimation* gif) {
    BuiltAnimation built;
    built.width = animation.width;
    built.height = animation.height;
    GifAnimation made = StartGif(built, record);
    made.frames.resize(animation.frames.size());
    std::atomic<bool> fits = true;
    RunJobs(jobs, animation.frames.size(), [&](size_t number, size_t) {
        const Frame& from = animation.frames[number];
        GifFrame& frame = made.frames[number];
        frame.delay = from.delay;
        frame.disposal = DisposalOf(record);
        if (fits && !IndexFrame(from.pixels.data(), animation.width, animation.height, &frame)) fits = false;
    });
    if (fits) *gif = std::move(made);
    return fits;
}

GifAnimation MakeGif(BuiltAnimation built, const SourceRecord& source, const JobRunner& jobs) {
    if (built.gif) return std::move(*built.gif);
    const bool indexed = std::all_of(built.frames.begin(), built.frames.end(),
                                     [](const BuiltFrame& frame) { return frame.indexed; });
    if (!indexed) return MakeTrueColorGif(built, source, jobs);

    GifAnimation gif = StartGif(built, source);
    gif.globalPalette = built.palette;
    gif.globalPalette.resize(std::max(built.palette.size(), HighestIndex(built) + 1));
    int spare = -1;
    if (source.transparent && gif.globalPalette.size() < 256) {
        spare = static_cast<int>(gif.globalPalette.size());
        gif.globalPalette.push_back({});
    }
    std::vector<uint8_t> shown(PixelCount(built));
    for (BuiltFrame& handed : built.frames) {
        const SourceFrame& from = SourceOf(handed, source);
        GifFrame frame;
        frame.delay = from.delay;
        if (source.transparent) {
            DrawIndicesOnto(handed, &shown);
            frame.indices = shown;
            frame.disposal = kDisposalBackground;
            MakeSeeThrough(from.alpha, gif.globalPalette, spare, &frame);
        } else {
            frame.indices = std::move(handed.pixels);
            frame.disposal = kDisposalKeep;
            frame.transparentIndex = handed.transparentIndex;
        }
        gif.frames.push_back(std::move(frame));
    }
    return gif;
}

}  // namespace kfx::commands
