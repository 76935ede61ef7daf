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
    const uint8_t* data;
    size_t size;
    size_t position;
};

int ReadFromMemory(GifFileType* gif, GifByteType* target, int length) {
    auto* input = static_cast<MemoryInput*>(gif->UserData);
    const size_t count = std::min(static_cast<size_t>(std::max(length, 0)), input->size - input->position);
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

constexpr GraphicsControlBlock kNoControl = {.DisposalMode = DISPOSAL_UNSPECIFIED,
                                             .UserInputFlag = false,
                                             .DelayTime = 0,
                                             .TransparentColor = NO_TRANSPARENT_COLOR};

std::vector<RgbColor> ColorsOf(const ColorMapObject* map) {
    std::vector<RgbColor> colors(static_cast<size_t>(map->ColorCount));
    for (size_t i = 0; i < colors.size(); ++i)
        colors[i] = {map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue};
    return colors;
}

void ReadScreen(GifReader* reader) {
    const GifFileType* gif = reader->gif;
    Animation* animation = reader->animation;
    animation->width = gif->SWidth;
    animation->height = gif->SHeight;
    if (!gif->SColorMap) return;
    animation->globalPalette = ColorsOf(gif->SColorMap);
    animation->hasGlobalPalette = true;
    const auto backgroundIndex = static_cast<size_t>(gif->SBackGroundColor);
    if (backgroundIndex < animation->globalPalette.size()) {
        animation->hasBackground = true;
        animation->background = animation->globalPalette[backgroundIndex];
    }
}

// The text is followed by a 1 and by bytes that descend from 255 to 0; see PutMetadata of the writer. Drops
// the text when they are missing.
void CutXmpEnd(std::vector<uint8_t>* xmp) {
    constexpr size_t kEnd = 257;
    const bool whole = xmp->size() >= kEnd && (*xmp)[xmp->size() - kEnd] == 1 && xmp->back() == 0;
    xmp->erase(whole ? xmp->end() - kEnd : xmp->begin(), xmp->end());
}

// An extension is a chain of blocks, each beginning with its length.
bool ReadExtension(GifReader* reader) {
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(reader->gif, &code, &block) == GIF_ERROR) return false;
    Animation* animation = reader->animation;
    bool isLoopExtension = false;
    bool isXmp = false;
    bool isProfile = false;
    if (code == COMMENT_EXT_FUNC_CODE && block && !animation->comment.empty()) animation->comment += '\n';
    for (bool first = true; block; first = false) {
        const size_t length = block[0];
        const char* text = reinterpret_cast<const char*>(block + 1);
        if (code == GRAPHICS_EXT_FUNC_CODE && first) {
            DGifExtensionToGCB(length, block + 1, &reader->control);
        } else if (code == COMMENT_EXT_FUNC_CODE) {
            animation->comment.append(text, length);
        } else if (code == APPLICATION_EXT_FUNC_CODE && first) {
            isLoopExtension = length == 11 && (std::memcmp(text, "NETSCAPE2.0", length) == 0 ||
                                               std::memcmp(text, "ANIMEXTS1.0", length) == 0);
            isXmp = length == 11 && std::memcmp(text, "XMP DataXMP", length) == 0;
            isProfile = length == 11 && std::memcmp(text, "ICCRGBG1012", length) == 0;
        } else if (isLoopExtension && length >= 3 && block[1] == 1) {
            animation->loopCount = block[2] | block[3] << 8;
        } else if (isXmp) {
            // The text's own bytes stand where the lengths of blocks are expected.
            animation->metadata.xmp.insert(animation->metadata.xmp.end(), block, block + 1 + length);
        } else if (isProfile) {
            animation->metadata.colorProfile.insert(animation->metadata.colorProfile.end(), block + 1,
                                                    block + 1 + length);
        }
        if (DGifGetExtensionNext(reader->gif, &block) == GIF_ERROR) return false;
    }
    if (isXmp) CutXmpEnd(&animation->metadata.xmp);
    return true;
}

// An image without pixels has data, too, which must be skipped.
bool SkipImageData(GifFileType* gif) {
    int codeSize = 0;
    GifByteType* block = nullptr;
    if (DGifGetCode(gif, &codeSize, &block) == GIF_ERROR) return false;
    while (block)
        if (DGifGetCodeNext(gif, &block) == GIF_ERROR) return false;
    return true;
}

bool DrawImage(GifReader* reader, const Rectangle& frame, const FrameColors& colors) {
    if (frame.width == 0 || frame.height == 0) return SkipImageData(reader->gif);
    struct Pass {
        int first;
        int step;
    };
    constexpr Pass kInterlaced[] = {
        {.first = 0, .step = 8}, {.first = 4, .step = 8}, {.first = 2, .step = 4}, {.first = 1, .step = 2}};
    constexpr Pass kSequential[] = {{.first = 0, .step = 1}};
    const bool interlaced = reader->gif->Image.Interlace;
    const Pass* passes = interlaced ? kInterlaced : kSequential;
    const int passCount = interlaced ? 4 : 1;
    std::vector<uint8_t> row(static_cast<size_t>(frame.width));
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
                   [](int16_t index) { return static_cast<uint8_t>(index); });
}

enum class ImageResult { Done, Damaged, Refused };

ImageResult ReadImage(GifReader* reader, std::string* error) {
    GifFileType* gif = reader->gif;
    Animation* animation = reader->animation;
    if (DGifGetImageDesc(gif) == GIF_ERROR) return ImageResult::Damaged;
    const GifImageDesc& image = gif->Image;
    const Rectangle place = {image.Left, image.Top, image.Width, image.Height};
    if (animation->frames.empty()) {
        // For a screen without a size, viewers take the size of the first image.
        if (animation->width == 0) animation->width = place.left + place.width;
        if (animation->height == 0) animation->height = place.top + place.height;
    }
    const auto canvasWidth = static_cast<uint64_t>(animation->width);
    const auto canvasHeight = static_cast<uint64_t>(animation->height);
    const auto imageWidth = static_cast<uint64_t>(place.width);
    const auto imageHeight = static_cast<uint64_t>(place.height);
    if (!SpendPixels(reader->budget, canvasWidth, canvasHeight, error)) return ImageResult::Refused;
    // An image beyond its canvas is cut, but has to be decoded first.
    if (imageWidth * imageHeight > canvasWidth * canvasHeight &&
        !SpendPixels(reader->budget, imageWidth, imageHeight, error))
        return ImageResult::Refused;
    if (animation->width == 0 || animation->height == 0) return ImageResult::Damaged;
    if (!image.ColorMap && !gif->SColorMap) return ImageResult::Damaged;

    if (animation->frames.empty()) reader->canvas = MakeGifCanvas(animation->width, animation->height);
    const GraphicsControlBlock control = reader->control;
    reader->control = kNoControl;
    const std::vector<RgbColor> localPalette =
        image.ColorMap ? ColorsOf(image.ColorMap) : std::vector<RgbColor>();
    const FrameColors colors = MakeFrameColors(image.ColorMap ? localPalette : animation->globalPalette,
                                               animation->globalPalette, control.TransparentColor);
    GifCanvas before;
    if (RestoresCanvas(control.DisposalMode)) before = reader->canvas;
    if (!DrawImage(reader, place, colors)) return ImageResult::Damaged;

    Frame frame;
    frame.left = place.left;
    frame.top = place.top;
    frame.disposal = control.DisposalMode;
    frame.delay = control.DelayTime;
    TakeCanvas(reader->canvas, &frame);
    animation->frames.push_back(std::move(frame));
    DisposeGifFrame(&reader->canvas, place, control.DisposalMode, &before);
    return ImageResult::Done;
}

// True when the file was read up to its trailer; false for damage, or for a refusal with a clause in *error.
bool ReadRecords(GifReader* reader, std::string* error) {
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(reader->gif, &type) == GIF_ERROR) return false;
        if (type == TERMINATE_RECORD_TYPE) return true;
        if (type == EXTENSION_RECORD_TYPE) {
            if (!ReadExtension(reader)) return false;
        } else if (ReadImage(reader, error) != ImageResult::Done) {
            return false;
        }
    }
}

size_t PaletteBytes(uint8_t flags) { return flags & 0x80 ? size_t{6} << (flags & 7) : 0; }

// The images that the file has up to its end or to the first place that is none of its records; nothing is
// decoded.
uint64_t CountImages(const uint8_t* data, size_t size) {
    constexpr size_t kScreenEnd = 13;
    constexpr size_t kDescriptorSize = 10;
    if (size < kScreenEnd) return 0;
    uint64_t count = 0;
    size_t at = kScreenEnd + PaletteBytes(data[10]);
    while (at < size) {
        const bool isImage = data[at] == 0x2C;
        if (isImage && size - at > kDescriptorSize)
            at += kDescriptorSize + PaletteBytes(data[at + kDescriptorSize - 1]) + 1;
        else if (data[at] == 0x21)
            at += 2;
        else
            return count;
        while (at < size && data[at] != 0) at += size_t{1} + data[at];
        if (at >= size) return count;
        ++at;
        count += isImage;
    }
    return count;
}

}  // namespace

bool ReadGif(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    MemoryInput input = {.data = data, .size = size, .position = 0};
    int code = 0;
    const std::unique_ptr<GifFileType, GifCloser> gif(DGifOpen(&input, ReadFromMemory, &code));
    if (!gif) {
        *error = code == D_GIF_ERR_NOT_ENOUGH_MEM ? "there is not enough memory for the picture"
                                                  : "the GIF file is damaged at its beginning";
        return false;
    }
    // Refused at once, before frames take memory. What is wrong with the records is found out later.
    PixelBudget foreseen = *budget;
    if (!SpendFrames(&foreseen, static_cast<uint64_t>(gif->SWidth), static_cast<uint64_t>(gif->SHeight),
                     CountImages(data, size), error))
        return false;
    GifReader reader = {
        .gif = gif.get(), .budget = budget, .animation = animation, .canvas = {}, .control = kNoControl};
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
