// SPDX-License-Identifier: MIT
// GIF files: the smallest ones that show the given frames. The records of the file are written here; a
// library would decide on the compressed pixels itself.
#include <algorithm>
#include <mutex>
#include <new>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/gif_palette.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kMaxGifSide = 65535;
constexpr int kMaxGifNumber = 65535;  // delays and loop counts are stored in 16 bits
constexpr size_t kMaxBlockSize = 255;

// One clause on what is wrong with the animation, or null.
const char* FaultOf(const GifAnimation& gif) {
    if (gif.width < 1 || gif.height < 1 || gif.width > kMaxGifSide || gif.height > kMaxGifSide)
        return "a GIF animation may have 1 to 65535 pixels a side";
    if (gif.frames.empty()) return "a GIF animation needs at least one frame";
    if (gif.globalPalette.size() > 256) return "a GIF palette may have 256 colours at most";
    const size_t area = static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height);
    for (const GifFrame& frame : gif.frames) {
        const std::vector<RgbColor>& palette = frame.palette.empty() ? gif.globalPalette : frame.palette;
        if (palette.size() > 256) return "a GIF palette may have 256 colours at most";
        if (palette.empty()) return "a GIF frame needs a palette";
        if (frame.indices.size() != area) return "a GIF frame must cover the whole animation";
        const uint8_t highest = *std::max_element(frame.indices.begin(), frame.indices.end());
        // The transparent index needs no colour of its own, but a place in the stored palette.
        if (highest >= palette.size() && highest != frame.transparentIndex)
            return "a GIF frame has pixels beyond its palette";
    }
    return nullptr;
}

void PutU16(Bytes* file, int value) {
    file->push_back(static_cast<uint8_t>(value));
    file->push_back(static_cast<uint8_t>(value >> 8));
}

void PutText(Bytes* file, const char* text) {
    for (; *text; ++text) file->push_back(static_cast<uint8_t>(*text));
}

// The three bits of a palette's size in the file: n stands for 2 << n entries.
int PaletteSizeBits(size_t entries) {
    int bits = 0;
    while (size_t{2} << bits < entries) ++bits;
    return bits;
}

// Entries without a colour, and those up to the next power of two, are black.
void PutPalette(Bytes* file, const ColorNumbers& numbers, const std::vector<ColorNumber>& colors,
                size_t entries) {
    for (size_t i = 0; i < size_t{2} << PaletteSizeBits(entries); ++i) {
        const bool known = i < colors.size() && colors[i] != kUnused;
        const RgbColor color = known ? numbers.colors[colors[i]] : RgbColor();
        file->insert(file->end(), {color.red, color.green, color.blue});
    }
}

void PutLoopCount(Bytes* file, int loopCount) {
    if (loopCount < 0) return;
    file->insert(file->end(), {0x21, 0xFF, 11});
    PutText(file, "NETSCAPE2.0");
    file->insert(file->end(), {3, 1});
    PutU16(file, std::min(loopCount, kMaxGifNumber));
    file->push_back(0);
}

void PutBlocks(Bytes* file, const uint8_t* data, size_t size) {
    for (size_t at = 0; at < size; at += kMaxBlockSize) {
        const size_t length = std::min(kMaxBlockSize, size - at);
        file->push_back(static_cast<uint8_t>(length));
        file->insert(file->end(), data + at, data + at + length);
    }
    file->push_back(0);
}

void PutComment(Bytes* file, const std::string& comment) {
    if (comment.empty()) return;
    file->insert(file->end(), {0x21, 0xFE});
    PutBlocks(file, reinterpret_cast<const uint8_t*>(comment.data()), comment.size());
}

// Color profiles stand in blocks. XMP stands there as text, whose bytes readers that do not know it take for
// the lengths of blocks: the descending bytes at the end lead them all to one place.
void PutMetadata(Bytes* file, const Metadata& metadata) {
    if (!metadata.colorProfile.empty()) {
        file->insert(file->end(), {0x21, 0xFF, 11});
        PutText(file, "ICCRGBG1012");
        PutBlocks(file, metadata.colorProfile.data(), metadata.colorProfile.size());
    }
    // A zero would end the text; XMP in UTF-8 has none.
    const std::vector<uint8_t>& xmp = metadata.xmp;
    if (!xmp.empty() && std::find(xmp.begin(), xmp.end(), 0) == xmp.end()) {
        file->insert(file->end(), {0x21, 0xFF, 11});
        PutText(file, "XMP DataXMP");
        file->insert(file->end(), xmp.begin(), xmp.end());
        file->push_back(1);
        for (int value = 255; value >= 0; --value) file->push_back(static_cast<uint8_t>(value));
        file->push_back(0);
    }
}

void PutFrame(Bytes* file, const GifParts& parts, const CompressedFrame& frame, int delay,
              const PaletteOrder& global) {
    PaletteOrder own;
    if (frame.isLocal) {
        std::vector<ColorNumber> colors;
        for (const ColorNumber number : frame.colors)
            if (number != kUnused && number != kClear) colors.push_back(number);
        own = OrderOf(colors, parts.numbers.colors.size());
    }
    const FrameIndices indices = IndicesOf(frame, frame.isLocal ? own.indices : global.indices);
    const bool hasTransparent = indices.transparentIndex >= 0;
    file->insert(file->end(),
                 {0x21, 0xF9, 4, static_cast<uint8_t>(frame.disposal << 2 | (hasTransparent ? 1 : 0))});
    PutU16(file, std::clamp(delay, 0, kMaxGifNumber));
    file->insert(file->end(), {static_cast<uint8_t>(std::max(indices.transparentIndex, 0)), 0, 0x2C});
    PutU16(file, frame.part.left);
    PutU16(file, frame.part.top);
    PutU16(file, frame.part.width);
    PutU16(file, frame.part.height);
    const auto entries = static_cast<size_t>(indices.highest) + 1;
    file->push_back(static_cast<uint8_t>(frame.isLocal ? 0x80 | PaletteSizeBits(entries) : 0));
    if (frame.isLocal) PutPalette(file, parts.numbers, own.colors, entries);
    WriteLzw(frame.codes, LzwCodeSize(indices.highest + 1), indices.indexOfSymbol, file);
}

// The index of the background colour in the palette of so many entries, which gets it where an entry is free;
// 0 when it has no room.
uint8_t PlaceBackground(const GifAnimation& gif, ColorNumbers* numbers, size_t entries,
                        std::vector<ColorNumber>* colors) {
    if (!gif.hasBackground || entries == 0) return 0;
    const ColorNumber number = NumberOf(numbers, gif.background);
    const size_t room = size_t{2} << PaletteSizeBits(entries);
    for (size_t i = 0; i < colors->size(); ++i)
        if ((*colors)[i] == number) return static_cast<uint8_t>(i);
    for (size_t i = 0; i < room; ++i) {
        if (i == colors->size()) colors->push_back(kUnused);
        if ((*colors)[i] != kUnused) continue;
        (*colors)[i] = number;
        return static_cast<uint8_t>(i);
    }
    return 0;
}

void PutFile(GifParts* work, Bytes* file) {
    const GifParts& parts = *work;
    const GifAnimation& gif = *parts.gif;
    PaletteOrder order = ChooseOrder(parts);
    size_t entries = order.colors.size();
    for (const CompressedFrame& frame : parts.frames)
        if (!frame.isLocal)
            entries = std::max(entries, static_cast<size_t>(IndicesOf(frame, order.indices).highest) + 1);
    const uint8_t background = PlaceBackground(gif, &work->numbers, entries, &order.colors);
    PutText(file, "GIF89a");
    PutU16(file, gif.width);
    PutU16(file, gif.height);
    const int sizeBits = entries > 0 ? 0x80 | PaletteSizeBits(entries) : 0;
    file->insert(file->end(), {static_cast<uint8_t>(0x70 | sizeBits), background, 0});
    if (entries > 0) PutPalette(file, parts.numbers, order.colors, entries);
    PutLoopCount(file, gif.loopCount);
    PutComment(file, gif.comment);
    PutComment(file, gif.recipe);
    PutMetadata(file, gif.metadata);
    for (size_t i = 0; i < parts.frames.size(); ++i)
        PutFrame(file, parts, parts.frames[i], gif.frames[i].delay, order);
    file->push_back(0x3B);
}

void CompressInOrder(const GifAnimation& gif, int lossy, const GlobalColors& global, GifPlan* plan,
                     std::vector<CompressedFrame>* frames) {
    GifPlayer player = MakeGifPlayer(gif, &plan->numbers);
    NumberedCanvas canvas = MakeNumberedCanvas(gif.width);
    NumberedPicture shown;
    GifFrameMemory memory;
    for (const FramePlan& frame : plan->frames) {
        const NumberedPicture& picture = ShowNextFrame(&player);
        frames->push_back(
            CompressFrame(frame, plan->numbers, global, canvas, picture, lossy, &shown, &memory));
        if (&frame != &plan->frames.back()) DisposePicture(frame, lossy > 0 ? shown : picture, &canvas);
    }
}

// What a thread compresses: copies of the frame's part, where the canvas and the picture have it.
struct TakenFrame {
    NumberedCanvas canvas;
    NumberedPicture picture;
    GifFrameMemory memory = {};
};

void CopyRows(const FramePlan& frame, size_t width, const NumberedPicture& from, NumberedPicture* to) {
    const auto first = from.begin() + static_cast<ptrdiff_t>(static_cast<size_t>(frame.part.top) * width);
    const auto count = static_cast<ptrdiff_t>(static_cast<size_t>(frame.part.height) * width);
    to->resize(from.size());
    std::copy(first, first + count, to->begin() + (first - from.begin()));
}

// The frames are shown in their order, by whichever thread is free, and compressed at the same time.
void CompressAtOnce(const GifAnimation& gif, const GlobalColors& global, const JobRunner& jobs, GifPlan* plan,
                    std::vector<CompressedFrame>* frames) {
    const size_t count = plan->frames.size();
    std::mutex lock;  // of the next four
    size_t next = 0;
    bool failed = false;  // a frame was not shown to its end; those after it build on it
    // All colours have their numbers from the planning, so that showing a frame adds none.
    GifPlayer player = MakeGifPlayer(gif, &plan->numbers);
    NumberedCanvas canvas = MakeNumberedCanvas(gif.width);
    std::vector<TakenFrame> taken(static_cast<size_t>(WorkersFor(jobs, count)));
    for (TakenFrame& memory : taken) memory.canvas = MakeNumberedCanvas(gif.width);
    frames->resize(count);
    const auto takeNext = [&](TakenFrame* own) {
        const std::scoped_lock held(lock);
        if (failed) throw std::bad_alloc();
        failed = true;
        const size_t number = next++;
        const FramePlan& frame = plan->frames[number];
        const NumberedPicture& picture = ShowNextFrame(&player);
        CopyRows(frame, canvas.width, picture, &own->picture);
        if (canvas.pixels.empty())
            own->canvas.pixels.clear();
        else
            CopyRows(frame, canvas.width, canvas.pixels, &own->canvas.pixels);
        if (next < count) DisposePicture(frame, picture, &canvas);
        failed = false;
        return number;
    };
    RunJobs(jobs, count, [&](size_t, size_t worker) {
        TakenFrame* const own = &taken[worker];
        const size_t number = takeNext(own);
        (*frames)[number] = CompressFrame(plan->frames[number], plan->numbers, global, own->canvas,
                                          own->picture, 0, nullptr, &own->memory);
    });
}

void EncodeChecked(const GifAnimation& gif, const GifOptions& options, Bytes* file) {
    const int lossy = std::clamp(options.lossy, 0, kMaxLossy);
    GifPlan plan = PlanGif(gif);
    const GlobalColors global = ChooseGlobalColors(gif, plan);
    GifParts parts = {.gif = &gif, .numbers = {}, .frames = {}};
    if (lossy == 0 && WorkersFor(options.jobs, plan.frames.size()) > 1)
        CompressAtOnce(gif, global, options.jobs, &plan, &parts.frames);
    else
        CompressInOrder(gif, lossy, global, &plan, &parts.frames);
    parts.numbers = std::move(plan.numbers);
    PutFile(&parts, file);
}

}  // namespace

bool EncodeGif(const GifAnimation& gif, std::vector<uint8_t>* file, std::string* error,
               const GifOptions& options) {
    file->clear();
    if (const char* fault = FaultOf(gif)) {
        *error = fault;
        return false;
    }
    try {
        EncodeChecked(gif, options, file);
        return true;
    } catch (const std::bad_alloc&) {
    }
    // Everything that can be wrong with the frames was checked before, and memory takes any bytes it has room
    // for.
    *error = "there is not enough memory to write the GIF file";
    file->clear();
    return false;
}

bool WriteGif(const std::string& path, const GifAnimation& gif, std::string* error,
              const GifOptions& options) {
    const auto encode = [&](size_t, std::vector<uint8_t>* file, std::string* clause) {
        return EncodeGif(gif, file, clause, options);
    };
    return WriteWholeFiles({path}, encode, error);
}

}  // namespace kfx
