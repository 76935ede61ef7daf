// SPDX-License-Identifier: MIT
#include <algorithm>
#include <memory>
#include <new>

#include <gif_lib.h>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/gif_canvas.h"

namespace kfx {
namespace {

constexpr int kMaxGifSide = 65535;
constexpr int kMaxGifNumber = 65535;  // delays and loop counts are stored in 16 bits
constexpr size_t kMaxBlockSize = 255;

int AppendToVector(GifFileType* gif, const GifByteType* bytes, int length) {
    auto* file = static_cast<std::vector<uint8_t>*>(gif->UserData);
    try {
        file->insert(file->end(), bytes, bytes + length);
    } catch (const std::bad_alloc&) {
        return 0;  // an exception must not pass through the library's C functions
    }
    return length;
}

struct GifCloser {
    void operator()(GifFileType* gif) const { EGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, GifCloser>;

struct ColorMapDeleter {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};
using ColorMap = std::unique_ptr<ColorMapObject, ColorMapDeleter>;

// Stored palettes have a power of two of entries; those that are missing become black. Empty for an empty
// palette.
bool MakeColorMap(const std::vector<RgbColor>& palette, ColorMap* map) {
    if (palette.empty()) return true;
    int count = 2;
    while (count < static_cast<int>(palette.size())) count *= 2;
    map->reset(GifMakeMapObject(count, nullptr));
    if (!*map) return false;
    for (size_t i = 0; i < palette.size(); ++i)
        (*map)->Colors[i] = {palette[i].red, palette[i].green, palette[i].blue};
    return true;
}

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

// The smallest rectangle around all pixels for which `counts` holds; 1 x 1 at the origin when there is none.
template <typename Predicate>
Rectangle BoundsOf(int width, int height, const Predicate& counts) {
    int left = width;
    int right = -1;
    int top = height;
    int bottom = -1;
    size_t pixel = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, ++pixel) {
            if (!counts(pixel)) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = y;
        }
    }
    if (right < 0) return {0, 0, 1, 1};
    return {left, top, right - left + 1, bottom - top + 1};
}

// What has to be stored of a frame: where it changes the canvas, and when the canvas is cleared after it,
// whatever there is to clear.
Rectangle StoredPart(const GifCanvas& before, const GifCanvas& after, int disposal) {
    return BoundsOf(after.width, after.height, [&](size_t pixel) {
        const uint8_t* old = before.pixels.data() + 4 * pixel;
        const uint8_t* now = after.pixels.data() + 4 * pixel;
        return !std::equal(now, now + 4, old) || (disposal == kDisposalBackground && now[3] != 0);
    });
}

bool PutLoopCount(GifFileType* gif, int loopCount) {
    if (loopCount < 0) return true;
    const int count = std::min(loopCount, kMaxGifNumber);
    const GifByteType block[] = {1, static_cast<GifByteType>(count & 255),
                                 static_cast<GifByteType>(count >> 8)};
    return EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE) != GIF_ERROR &&
           EGifPutExtensionBlock(gif, 11, "NETSCAPE2.0") != GIF_ERROR &&
           EGifPutExtensionBlock(gif, sizeof(block), block) != GIF_ERROR &&
           EGifPutExtensionTrailer(gif) != GIF_ERROR;
}

bool PutComment(GifFileType* gif, const std::string& comment) {
    if (comment.empty()) return true;
    if (EGifPutExtensionLeader(gif, COMMENT_EXT_FUNC_CODE) == GIF_ERROR) return false;
    for (size_t at = 0; at < comment.size(); at += kMaxBlockSize) {
        const size_t length = std::min(kMaxBlockSize, comment.size() - at);
        if (EGifPutExtensionBlock(gif, static_cast<int>(length), comment.data() + at) == GIF_ERROR)
            return false;
    }
    return EGifPutExtensionTrailer(gif) != GIF_ERROR;
}

bool PutFrame(GifFileType* gif, const GifFrame& frame, std::vector<RgbColor> palette, bool isLocal,
              const Rectangle& part) {
    GraphicsControlBlock control = {
        frame.disposal, false, std::clamp(frame.delay, 0, kMaxGifNumber),
        frame.transparentIndex >= 0 ? frame.transparentIndex : NO_TRANSPARENT_COLOR};
    GifByteType bytes[4];
    const auto length = EGifGCBToExtension(&control, bytes);
    // A transparent index behind the palette's end gets an entry that is never seen.
    const auto needed = static_cast<size_t>(std::max(frame.transparentIndex + 1, 0));
    if (palette.size() < needed) {
        palette.resize(needed);
        isLocal = true;
    }
    ColorMap map;
    if (isLocal && !MakeColorMap(palette, &map)) return false;
    if (EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(length), bytes) == GIF_ERROR ||
        EGifPutImageDesc(gif, part.left, part.top, part.width, part.height, false, map.get()) == GIF_ERROR)
        return false;
    std::vector<GifPixelType> row(static_cast<size_t>(part.width));
    for (int y = 0; y < part.height; ++y) {
        const auto start =
            frame.indices.begin() + static_cast<ptrdiff_t>(part.top + y) * gif->SWidth + part.left;
        std::copy_n(start, part.width, row.begin());  // the library masks the row it is given in place
        if (EGifPutLine(gif, row.data(), part.width) == GIF_ERROR) return false;
    }
    return true;
}

bool PutFrames(GifFileType* file, const GifAnimation& gif) {
    GifCanvas canvas = MakeGifCanvas(gif.width, gif.height);
    GifCanvas before;
    const std::vector<RgbColor> noPalette;
    for (size_t i = 0; i < gif.frames.size(); ++i) {
        const GifFrame& frame = gif.frames[i];
        const bool isLocal = !frame.palette.empty();
        const std::vector<RgbColor>& palette = isLocal ? frame.palette : gif.globalPalette;
        const FrameColors colors = MakeFrameColors(palette, noPalette, frame.transparentIndex);
        before = canvas;
        for (int y = 0; y < gif.height; ++y) {
            const ptrdiff_t start = static_cast<ptrdiff_t>(y) * gif.width;
            DrawGifRow(&canvas, 0, y, frame.indices.data() + start, gif.width, colors);
        }
        // The first frame stays whole: some viewers take the animation's size from it.
        const Rectangle whole = {0, 0, gif.width, gif.height};
        const Rectangle part = i == 0 ? whole : StoredPart(before, canvas, frame.disposal);
        if (!PutFrame(file, frame, palette, isLocal, part)) return false;
        DisposeGifFrame(&canvas, whole, frame.disposal, &before);
    }
    return true;
}

bool EncodeChecked(const GifAnimation& gif, std::vector<uint8_t>* file) {
    int code = 0;
    GifHandle handle(EGifOpen(file, AppendToVector, &code));
    ColorMap globalMap;
    if (!handle || !MakeColorMap(gif.globalPalette, &globalMap)) return false;
    EGifSetGifVersion(handle.get(), true);
    constexpr int kColorResolution = 8;
    if (EGifPutScreenDesc(handle.get(), gif.width, gif.height, kColorResolution, 0, globalMap.get()) ==
            GIF_ERROR ||
        !PutLoopCount(handle.get(), gif.loopCount) || !PutComment(handle.get(), gif.comment) ||
        !PutFrames(handle.get(), gif))
        return false;
    // Closing writes the trailer and frees the handle, also when it fails.
    return EGifCloseFile(handle.release(), &code) != GIF_ERROR;
}

}  // namespace

bool EncodeGif(const GifAnimation& gif, std::vector<uint8_t>* file, std::string* error) {
    file->clear();
    if (const char* fault = FaultOf(gif)) {
        *error = fault;
        return false;
    }
    try {
        if (EncodeChecked(gif, file)) return true;
    } catch (const std::bad_alloc&) {
    }
    // Everything that can be wrong with the frames was checked before, and memory takes any bytes it has room
    // for.
    *error = "there is not enough memory to write the GIF file";
    file->clear();
    return false;
}

bool WriteGif(const std::string& path, const GifAnimation& gif, std::string* error) {
    const auto encode = [&gif](size_t, std::vector<uint8_t>* file, std::string* clause) {
        return EncodeGif(gif, file, clause);
    };
    return WriteWholeFiles({path}, encode, error);
}

}  // namespace kfx
