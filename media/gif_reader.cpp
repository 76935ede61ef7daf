// SPDX-License-Identifier: MIT
// GIF files, read record by record: the library's one-call reader allocates what a header asks for before any
// check could be made.
#include <algorithm>
#include <cstring>
#include <memory>

#include <gif_lib.h>

#include "media/gif_canvas.h"
#include "media/readers.h"

namespace kfx {
namespace {

struct MemoryInput {
    const std::uint8_t* data;
    std::size_t size;
    std::size_t position;
};

int ReadFromMemory(GifFileType* gif, GifByteType* target, int length) {
    auto* input = static_cast<MemoryInput*>(gif->UserData);
    const std::size_t count =
        std::min(static_cast<std::size_t>(std::max(length, 0)), input->size - input->position);
    std::memcpy(target, input->data + input->position, count);
    input->position += count;
    return static_cast<int>(count);
}

struct GifCloser {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

struct GifReader {
    GifFileType* gif;
    PixelBudget* budget;
    Animation* animation;
    GifCanvas canvas;
    GraphicsControlBlock control;  // for the next image only
};

constexpr GraphicsControlBlock kNoControl = {DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};

std::vector<RgbColor> ColorsOf(const ColorMapObject* map) {
    std::vector<RgbColor> colors(static_cast<std::size_t>(map->ColorCount));
    for (std::size_t i = 0; i < colors.size(); ++i) {
        colors[i] = {map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue};
    }
    return colors;
}

void ReadScreen(GifReader* reader) {
    const GifFileType* gif = reader->gif;
    Animation* animation = reader->animation;
    animation->width = gif->SWidth;
    animation->height = gif->SHeight;
    if (gif->SColorMap == nullptr) return;
    animation->globalPalette = ColorsOf(gif->SColorMap);
    animation->hasGlobalPalette = true;
    const auto backgroundIndex = static_cast<std::size_t>(gif->SBackGroundColor);
    if (backgroundIndex < animation->globalPalette.size()) {
        animation->hasBackground = true;
        animation->background = animation->globalPalette[backgroundIndex];
    }
}

// An extension is a chain of blocks, each beginning with its length.
bool ReadExtension(GifReader* reader) {
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(reader->gif, &code, &block) == GIF_ERROR) return false;
    Animation* animation = reader->animation;
    bool isLoopExtension = false;
    if (code == COMMENT_EXT_FUNC_CODE && block != nullptr && !animation->comment.empty()) {
        animation->comment += '\n';
    }
    for (bool first = true; block != nullptr; first = false) {
        const std::size_t length = block[0];
        const char* text = reinterpret_cast<const char*>(block + 1);
        if (code == GRAPHICS_EXT_FUNC_CODE && first) {
            DGifExtensionToGCB(length, block + 1, &reader->control);
        } else if (code == COMMENT_EXT_FUNC_CODE) {
            animation->comment.append(text, length);
        } else if (code == APPLICATION_EXT_FUNC_CODE && first) {
            isLoopExtension = length == 11 && (std::memcmp(text, "NETSCAPE2.0", length) == 0 ||
                                               std::memcmp(text, "ANIMEXTS1.0", length) == 0);
        } else if (isLoopExtension && length >= 3 && block[1] == 1) {
            animation->loopCount = block[2] | block[3] << 8;
        }
        if (DGifGetExtensionNext(reader->gif, &block) == GIF_ERROR) return false;
    }
    return true;
}

// The data of an image without pixels still has to be passed over.
bool SkipImageData(GifFileType* gif) {
    int codeSize = 0;
    GifByteType* block = nullptr;
    if (DGifGetCode(gif, &codeSize, &block) == GIF_ERROR) return false;
    while (block != nullptr) {
        if (DGifGetCodeNext(gif, &block) == GIF_ERROR) return false;
    }
    return true;
}

bool DrawImage(GifReader* reader, const Rectangle& frame, const FrameColors& colors) {
    if (frame.width == 0 || frame.height == 0) return SkipImageData(reader->gif);
    struct Pass {
        int first;
        int step;
    };
    constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    constexpr Pass kSequential[] = {{0, 1}};
    const bool interlaced = reader->gif->Image.Interlace;
    const Pass* passes = interlaced ? kInterlaced : kSequential;
    const int passCount = interlaced ? 4 : 1;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(frame.width));
    for (int pass = 0; pass < passCount; ++pass) {
        for (int y = passes[pass].first; y < frame.height; y += passes[pass].step) {
            if (DGifGetLine(reader->gif, row.data(), frame.width) == GIF_ERROR) return false;
            DrawGifRow(&reader->canvas, frame.left, frame.top + y, row.data(), frame.width, colors);
        }
    }
    return true;
}

// Copies the canvas into the frame; its indices are kept when every pixel is on the global palette.
void TakeCanvas(const GifCanvas& canvas, Frame* frame) {
    frame->pixels = canvas.pixels;
    NoteTransparency(frame);
    const auto& indices = canvas.globalIndices;
    frame->indexed = std::find(indices.begin(), indices.end(), kOffPalette) == indices.end();
    if (!frame->indexed) return;
    frame->indices.resize(indices.size());
    std::transform(indices.begin(), indices.end(), frame->indices.begin(),
                   [](std::int16_t index) { return static_cast<std::uint8_t>(index); });
}

enum class ImageResult { kDone, kDamaged, kRefused };

ImageResult ReadImage(GifReader* reader, std::string* error) {
    GifFileType* gif = reader->gif;
    Animation* animation = reader->animation;
    if (DGifGetImageDesc(gif) == GIF_ERROR) return ImageResult::kDamaged;
    const GifImageDesc& image = gif->Image;
    const Rectangle place = {image.Left, image.Top, image.Width, image.Height};
    if (animation->frames.empty()) {
        // A screen without size: viewers take the first image's.
        if (animation->width == 0) animation->width = place.left + place.width;
        if (animation->height == 0) animation->height = place.top + place.height;
    }
    const auto canvasWidth = static_cast<std::uint64_t>(animation->width);
    const auto canvasHeight = static_cast<std::uint64_t>(animation->height);
    const auto imageWidth = static_cast<std::uint64_t>(place.width);
    const auto imageHeight = static_cast<std::uint64_t>(place.height);
    if (!SpendPixels(reader->budget, canvasWidth, canvasHeight, error)) return ImageResult::kRefused;
    // An image beyond its canvas is cut, but has to be decoded first.
    if (imageWidth * imageHeight > canvasWidth * canvasHeight &&
        !SpendPixels(reader->budget, imageWidth, imageHeight, error)) {
        return ImageResult::kRefused;
    }
    if (animation->width == 0 || animation->height == 0) return ImageResult::kDamaged;
    if (image.ColorMap == nullptr && gif->SColorMap == nullptr) return ImageResult::kDamaged;

    if (animation->frames.empty()) reader->canvas = MakeGifCanvas(animation->width, animation->height);
    const GraphicsControlBlock control = reader->control;
    reader->control = kNoControl;
    const std::vector<RgbColor> localPalette =
        image.ColorMap != nullptr ? ColorsOf(image.ColorMap) : std::vector<RgbColor>();
    const FrameColors colors =
        MakeFrameColors(image.ColorMap != nullptr ? localPalette : animation->globalPalette,
                        animation->globalPalette, control.TransparentColor);
    GifCanvas before;
    if (RestoresCanvas(control.DisposalMode)) before = reader->canvas;
    if (!DrawImage(reader, place, colors)) return ImageResult::kDamaged;

    Frame frame;
    frame.left = place.left;
    frame.top = place.top;
    frame.disposal = control.DisposalMode;
    frame.delay = control.DelayTime;
    TakeCanvas(reader->canvas, &frame);
    animation->frames.push_back(std::move(frame));
    DisposeGifFrame(&reader->canvas, place, control.DisposalMode, &before);
    return ImageResult::kDone;
}

// True when the file was read up to its trailer; false for damage, or for a refusal with a clause in *error.
bool ReadRecords(GifReader* reader, std::string* error) {
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(reader->gif, &type) == GIF_ERROR) return false;
        if (type == TERMINATE_RECORD_TYPE) return true;
        if (type == EXTENSION_RECORD_TYPE) {
            if (!ReadExtension(reader)) return false;
        } else if (ReadImage(reader, error) != ImageResult::kDone) {
            return false;
        }
    }
}

}  // namespace

bool ReadGif(const std::uint8_t* data, std::size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    MemoryInput input = {data, size, 0};
    int code = 0;
    const std::unique_ptr<GifFileType, GifCloser> gif(DGifOpen(&input, ReadFromMemory, &code));
    if (gif == nullptr) {
        *error = code == D_GIF_ERR_NOT_ENOUGH_MEM ? "there is not enough memory for the picture"
                                                  : "the GIF file is damaged at its beginning";
        return false;
    }
    GifReader reader = {gif.get(), budget, animation, GifCanvas(), kNoControl};
    ReadScreen(&reader);
    error->clear();
    const bool whole = ReadRecords(&reader, error);
    if (!error->empty()) return false;
    if (animation->frames.empty()) {
        *error = whole ? "the GIF file has no frames"
                       : "the GIF file is damaged before the end of its first frame";
        return false;
    }
    if (!whole) animation->warning = DamageWarning(animation->frames.size());
    return true;
}

}  // namespace kfx
