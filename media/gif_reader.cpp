// SPDX-License-Identifier: MIT
// GIF files, read record by record: the library's one-call reader allocates what a header asks for before any
// check could be made. Image data are decoded here, in a fifth of the library's time.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include <gif_lib.h>

#include "media/gif_canvas.h"
#include "media/gif_survey.h"
#include "media/lzw_decoder.h"
#include "media/readers.h"
#include "media/recipe_note.h"

namespace kfx {
namespace {

// A file in memory as the library reads it. The data of a cut file seem to end with its last byte: the length
// of the block that is cut is what there is of it, and a terminator follows.
struct MemoryInput {
    const uint8_t* data;
    size_t size;
    size_t position;
    size_t cutBlock;  // as in GifSurvey
};

int ReadFromMemory(GifFileType* gif, GifByteType* target, int length) {
    auto* input = static_cast<MemoryInput*>(gif->UserData);
    const size_t wanted = static_cast<size_t>(std::max(length, 0));
    const size_t start = input->position;
    const size_t count = std::min(wanted, input->size - std::min(input->size, start));
    std::memcpy(target, input->data + start, count);
    input->position += count;
    if (start <= input->cutBlock && input->cutBlock < input->position)
        target[input->cutBlock - start] = static_cast<GifByteType>(input->size - input->cutBlock - 1);
    if (count == wanted || input->position != input->size) return static_cast<int>(count);
    target[count] = 0;
    ++input->position;
    return static_cast<int>(count) + 1;
}

struct GifCloser {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

struct GifReader {
    GifFileType* gif;
    MemoryInput* input;
    const GifSurvey* survey;
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
    animation->width = reader->survey->width;
    animation->height = reader->survey->height;
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

void TakeComment(const std::string& text, Animation* animation) {
    if (IsRecipe(text)) {
        animation->recipe = text;
        return;
    }
    if (!animation->comment.empty()) animation->comment += '\n';
    animation->comment += text;
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
    std::string comment;
    const bool isComment = code == COMMENT_EXT_FUNC_CODE && block;
    for (bool first = true; block; first = false) {
        const size_t length = block[0];
        const char* text = reinterpret_cast<const char*>(block + 1);
        if (code == GRAPHICS_EXT_FUNC_CODE && first) {
            DGifExtensionToGCB(length, block + 1, &reader->control);
        } else if (code == COMMENT_EXT_FUNC_CODE) {
            comment.append(text, length);
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
        // A chain that the end of the file cuts ends there; see MemoryInput.
        block = nullptr;
        static_cast<void>(DGifGetExtensionNext(reader->gif, &block));
    }
    if (isComment) TakeComment(comment, animation);
    if (isXmp) CutXmpEnd(&animation->metadata.xmp);
    return true;
}

// Decodes the image's pixels and draws them into the picture. `end` is where its data end in the file.
// Returns how many there are before the end of the data or before damage.
size_t DrawImage(GifReader* reader, const GifImageHeader& header, size_t end, const FrameColors& colors,
                 uint8_t* picture) {
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
    const Rectangle& place = header.place;
    const auto width = static_cast<size_t>(place.width);
    const size_t bytes = end - header.codes;
    // A small file that says that it has a large image costs no memory.
    const size_t room = std::min(width * static_cast<size_t>(place.height), MostLzwPixels(bytes));
    const auto indices = std::make_unique_for_overwrite<uint8_t[]>(room);
    const size_t count = DecodeLzw(reader->input->data + header.codes, bytes, indices.get(), room);
    size_t drawn = 0;
    for (int pass = 0; pass < passCount; ++pass) {
        for (int y = passes[pass].first; y < place.height && drawn < count; y += passes[pass].step) {
            const size_t columns = std::min(width, count - drawn);
            DrawGifRow(&reader->canvas, picture, place.left, place.top + y, indices.get() + drawn,
                       static_cast<int>(columns), colors);
            drawn += columns;
        }
    }
    return count;
}

enum class ImageResult { Done, Partial, Damaged };

// Draws the image into the picture. Of the first image, the part before damage counts.
ImageResult DecodeImage(GifReader* reader, const GifImageHeader& header, size_t end,
                        const GraphicsControlBlock& control, uint8_t* picture) {
    GifFileType* gif = reader->gif;
    const Rectangle& place = header.place;
    if (place.width == 0 || place.height == 0) return ImageResult::Damaged;
    if (DGifGetImageHeader(gif) == GIF_ERROR) {
        if (gif->Error == D_GIF_ERR_NOT_ENOUGH_MEM) throw std::bad_alloc();
        return ImageResult::Damaged;
    }
    const ColorMapObject* local = gif->Image.ColorMap;
    const std::vector<RgbColor>& globalPalette = reader->animation->globalPalette;
    const std::vector<RgbColor> localPalette = local ? ColorsOf(local) : std::vector<RgbColor>();
    const FrameColors colors =
        MakeFrameColors(local ? localPalette : globalPalette, globalPalette, control.TransparentColor);
    const size_t drawn = DrawImage(reader, header, end, colors, picture);
    if (drawn == static_cast<size_t>(place.width) * static_cast<size_t>(place.height))
        return ImageResult::Done;
    return drawn > 0 && reader->animation->frames.empty() ? ImageResult::Partial : ImageResult::Damaged;
}

ImageResult ReadImage(GifReader* reader) {
    Animation* animation = reader->animation;
    MemoryInput* input = reader->input;
    const GraphicsControlBlock control = reader->control;
    reader->control = kNoControl;
    GifImageHeader header;
    if (!ReadGifImageHeader(input->data, input->size, input->position - 1, &header))
        return ImageResult::Damaged;

    if (animation->frames.empty())
        reader->canvas = MakeGifCanvas(animation->width, animation->height, animation->hasGlobalPalette);
    const bool restored = RestoresCanvas(control.DisposalMode);
    const bool isLast = animation->frames.size() + 1 == reader->survey->images;
    std::vector<int16_t> before;
    if (restored && !isLast) before = SaveGlobalIndices(reader->canvas, header.place);
    Frame frame;
    frame.pixels = CopyGifCanvas(reader->canvas, animation->frames);
    ImageResult result = ImageResult::Done;
    size_t end = 0;
    if (!IsEmptyGifImage(input->data, input->size, header, &end))
        result = DecodeImage(reader, header, end, control, frame.pixels.data());
    input->position = end;
    if (result == ImageResult::Damaged) return result;

    frame.left = header.place.left;
    frame.top = header.place.top;
    frame.partWidth = header.place.width;
    frame.partHeight = header.place.height;
    frame.disposal = control.DisposalMode;
    frame.delay = control.DelayTime;
    FinishGifFrame(reader->canvas, animation->frames, &frame);
    animation->frames.push_back(std::move(frame));
    if (!isLast)
        DisposeGifFrame(&reader->canvas, animation->frames.size() - 1, header.place, control.DisposalMode,
                        before);
    return result;
}

// Reads until the trailer, the end or damage, and sets the warning.
void ReadRecords(GifReader* reader) {
    Animation* animation = reader->animation;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (reader->input->position >= reader->input->size && !reader->survey->cut) return;
        if (DGifGetRecordType(reader->gif, &type) == GIF_ERROR) break;
        if (type == TERMINATE_RECORD_TYPE) return;
        if (type == EXTENSION_RECORD_TYPE) {
            if (!ReadExtension(reader)) break;
            continue;
        }
        const ImageResult result = ReadImage(reader);
        if (result == ImageResult::Partial) {
            animation->warning =
                "the file is damaged or cut inside its first frame; only the part that is there is shown";
            return;
        }
        if (result == ImageResult::Damaged) break;
    }
    animation->warning = DamageWarning(animation->frames.size());
}

}  // namespace

bool ReadGif(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    const GifSurvey survey = SurveyGif(data, size);
    // Refused at once, before frames take memory.
    if (!SpendFrames(budget, static_cast<uint64_t>(survey.width), static_cast<uint64_t>(survey.height),
                     survey.images, error) ||
        !SpendHiddenPixels(budget, survey.excessPixels, error))
        return false;
    MemoryInput input = {.data = data, .size = size, .position = 0, .cutBlock = survey.cutBlock};
    const std::unique_ptr<GifFileType, GifCloser> gif(DGifOpen(&input, ReadFromMemory, nullptr));
    if (!gif) {
        // Before the end of the file, the library can only lack memory; its own code calls a palette without
        // memory damage.
        if (input.position < size) throw std::bad_alloc();
        *error = "the GIF file is damaged at its beginning";
        return false;
    }
    GifReader reader = {.gif = gif.get(),
                        .input = &input,
                        .survey = &survey,
                        .animation = animation,
                        .canvas = {},
                        .control = kNoControl};
    ReadScreen(&reader);
    const bool hasSize = survey.width > 0 && survey.height > 0;
    if (hasSize) {
        animation->frames.reserve(survey.images);
        ReadRecords(&reader);
    }
    if (!animation->frames.empty()) return true;
    *error = animation->warning.empty() ? "the GIF file has no frames"
                                        : "the GIF file is damaged before the end of its first frame";
    return false;
}

}  // namespace kfx
