// SPDX-License-Identifier: MIT
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench/job.h"
#include "bench/whole_build.h"
#include "builder/quantizer.h"
#include "builder/remap.h"
#include "builder/supercompression.h"
#include "kernels/scaler.h"
#include "media/animation_writer.h"
#include "tests/reference/quantizer_reference.h"
#include "tests/reference/remap_reference.h"
#include "tests/reference/scaler_reference.h"

namespace kfx::bench {
namespace {

// As wide as the preview area of the plug-in's window.
constexpr int32_t kPreviewWidth = 424;

struct FoundPalette {
    uint32_t colors = 256;
    uint8_t bytes[kPaletteBytes] = {};
};

bool FindPalette(const Shot& shot, FoundPalette* palette) {
    palette->colors = 256;
    return Quantize(&palette->colors, palette->bytes, shot.frames);
}

Run PrepareQuantize(const Shot& shot) {
    return [&shot] {
        FoundPalette palette;
        return FindPalette(shot, &palette);
    };
}

Run PrepareReferenceQuantize(const Shot& shot) {
    std::vector<ImageHandle> frames;
    frames.reserve(static_cast<size_t>(shot.frames.count));
    for (int32_t i = 0; i < shot.frames.count; ++i) frames.push_back(FrameAt(shot, i));
    return [frames] { return test::ReferenceQuantize(256, frames).colors > 0; };
}

// All frames with an empty index at first, as in a build.
template <ImageHandle (*kRemap)(ImageHandle, RemapTarget*), bool kFast>
Run PrepareRemap(const Shot& shot) {
    FoundPalette palette;
    if (!FindPalette(shot, &palette)) return nullptr;
    return [&shot, palette] {
        RemapTarget target;
        std::memcpy(target.palette, palette.bytes, kPaletteBytes);
        target.colorCount = static_cast<int32_t>(palette.colors);
        target.fastRemap = kFast;
        for (int32_t i = 0; i < shot.frames.count; ++i) {
            const MemoryOwner result(kRemap(FrameAt(shot, i), &target));
            if (!result.memory) return false;
        }
        return true;
    };
}

template <ImageHandle (*kRemap)(ImageHandle, const test::ReferenceTarget&), bool kFast>
Run PrepareReferenceRemap(const Shot& shot) {
    FoundPalette palette;
    if (!FindPalette(shot, &palette)) return nullptr;
    return [&shot, palette] {
        const test::ReferenceTarget target = {.palette = palette.bytes,
                                              .bitsPerPixel = 8,
                                              .colorCount = static_cast<int32_t>(palette.colors),
                                              .fastRemap = kFast,
                                              .brightness = 0,
                                              .contrast = 0};
        for (int32_t i = 0; i < shot.frames.count; ++i) FreeMemory(kRemap(FrameAt(shot, i), target));
        return true;
    };
}

// Timed with one copy of the first frame, which a build makes as well.
template <ImageHandle (*kUpdate)(ImageHandle, ImageHandle)>
Run PrepareSupercompression(const Shot& shot) {
    if (shot.frames.count < 2) return nullptr;
    return [&shot] {
        const ImageLock first(FrameAt(shot, 0));
        const MemoryOwner composite(DuplicateImage(first.image));
        for (int32_t i = 1; i < shot.frames.count; ++i) {
            const MemoryOwner mask(kUpdate(composite.memory, FrameAt(shot, i)));
            if (!mask.memory) return false;
        }
        return true;
    };
}

template <ImageHandle (*kResample)(ImageHandle, int32_t, int32_t, double)>
Run PrepareScaler(const Shot& shot) {
    const int32_t height = shot.height * kPreviewWidth / shot.width;
    return [height, picture = FrameAt(shot, 0)] {
        const MemoryOwner scaled(kResample(picture, kPreviewWidth, height, 1.0));
        return scaled.memory != nullptr;
    };
}

std::vector<uint8_t> IndicesOf(ImageHandle image) {
    const ImageLock lock(image);
    std::vector<uint8_t> indices;
    for (int32_t y = 0; lock.image && y < lock.image->height; ++y) {
        const uint8_t* row = PictureRow(lock.image, y);
        indices.insert(indices.end(), row, row + lock.image->width);
    }
    return indices;
}

// The frames in 256 colours, as a build hands them over. Null: they could not be converted.
std::shared_ptr<GifAnimation> MakeGif(const Shot& shot) {
    FoundPalette palette;
    if (!FindPalette(shot, &palette)) return nullptr;
    RemapTarget target;
    std::memcpy(target.palette, palette.bytes, kPaletteBytes);
    target.colorCount = static_cast<int32_t>(palette.colors);
    auto gif = std::make_shared<GifAnimation>();
    gif->width = shot.width;
    gif->height = shot.height;
    for (uint32_t i = 0; i < palette.colors; ++i)
        gif->globalPalette.push_back(
            {palette.bytes[3 * i], palette.bytes[3 * i + 1], palette.bytes[3 * i + 2]});
    for (int32_t i = 0; i < shot.frames.count; ++i) {
        const MemoryOwner remapped(PlainRemap(FrameAt(shot, i), &target));
        GifFrame frame;
        frame.delay = 4;
        frame.indices = IndicesOf(remapped.memory);
        if (frame.indices.size() != PixelsOfFrame(shot)) return nullptr;
        gif->frames.push_back(std::move(frame));
    }
    return gif;
}

Run PrepareGifWrite(const Shot& shot) {
    const auto gif = MakeGif(shot);
    if (!gif) return nullptr;
    return [gif] {
        std::vector<uint8_t> file;
        std::string error;
        return EncodeGif(*gif, &file, &error);
    };
}

Run PrepareGifRead(const Shot& shot) {
    const auto file = std::make_shared<std::vector<uint8_t>>(GifOf(shot));
    if (file->empty()) return nullptr;
    return [file] {
        Animation animation;
        std::string error;
        return ReadAnimationFromMemory(file->data(), file->size(), &animation, &error);
    };
}

// What is read, as it is to be written: whole frames of the common palette.
bool MakeGifOf(Animation* animation, GifAnimation* gif) {
    gif->width = animation->width;
    gif->height = animation->height;
    gif->globalPalette = animation->globalPalette;
    for (Frame& read : animation->frames) {
        if (!read.indexed) return false;
        GifFrame frame;
        frame.delay = read.delay;
        frame.indices = std::move(read.indices);
        gif->frames.push_back(std::move(frame));
    }
    return true;
}

Run PrepareGifRewrite(const Shot& shot) {
    const auto file = std::make_shared<std::vector<uint8_t>>(GifOf(shot));
    if (file->empty()) return nullptr;
    return [file] {
        Animation animation;
        GifAnimation gif;
        std::vector<uint8_t> written;
        std::string error;
        return ReadAnimationFromMemory(file->data(), file->size(), &animation, &error) &&
               MakeGifOf(&animation, &gif) && EncodeGif(gif, &written, &error);
    };
}

template <bool kDither>
Run PrepareBuild(const Shot& shot) {
    return [&shot] {
        BuildOptions options = ComputedPaletteOptions();
        options.dither = kDither;
        return BuildFrames(shot.frames, options);
    };
}

struct BuildStep {
    const char* name;
    const char* operation;
    Run (*product)(const Shot&);
    Run (*reference)(const Shot&);  // null: there is none
    bool allFrames = true;
};

constexpr BuildStep kSteps[] = {
    {.name = "quantize",
     .operation = "one palette of 256 colours for all frames",
     .product = PrepareQuantize,
     .reference = PrepareReferenceQuantize},
    {.name = "remap",
     .operation = "nearest colours",
     .product = PrepareRemap<PlainRemap, false>,
     .reference = PrepareReferenceRemap<test::ReferencePlainRemap, false>},
    {.name = "remap-fast",
     .operation = "nearest colours of rounded ones",
     .product = PrepareRemap<PlainRemap, true>,
     .reference = PrepareReferenceRemap<test::ReferencePlainRemap, true>},
    {.name = "dither",
     .operation = "error diffusion, nearest colours",
     .product = PrepareRemap<DitherRemap, false>,
     .reference = PrepareReferenceRemap<test::ReferenceDitherRemap, false>},
    {.name = "dither-fast",
     .operation = "error diffusion, nearest colours of rounded ones",
     .product = PrepareRemap<DitherRemap, true>,
     .reference = PrepareReferenceRemap<test::ReferenceDitherRemap, true>},
    {.name = "diff",
     .operation = "supercompression",
     .product = PrepareSupercompression<UpdateComposite>,
     .reference = PrepareSupercompression<test::ReferenceUpdateComposite>},
    {.name = "diff-file",
     .operation = "a GIF read, what changes found, and written, in memory",
     .product = PrepareGifRewrite,
     .reference = nullptr},
    {.name = "scaler",
     .operation = "to the width of the preview",
     .product = PrepareScaler<Resample>,
     .reference = PrepareScaler<test::ReferenceResample>,
     .allFrames = false},
    {.name = "gif-read", .operation = "from memory", .product = PrepareGifRead, .reference = nullptr},
    {.name = "gif-write", .operation = "into memory", .product = PrepareGifWrite, .reference = nullptr},
    {.name = "build", .operation = "without dithering", .product = PrepareBuild<false>, .reference = nullptr},
    {.name = "build-dither",
     .operation = "with dithering",
     .product = PrepareBuild<true>,
     .reference = nullptr},
};

}  // namespace

std::vector<Job> ListBuildJobs(bool reference) {
    std::vector<Job> jobs;
    for (const BuildStep& step : kSteps) {
        const auto prepare = reference ? step.reference : step.product;
        if (prepare)
            jobs.push_back({.name = step.name,
                            .variant = "default",
                            .operation = step.operation,
                            .allFrames = step.allFrames,
                            .prepare = prepare});
    }
    return jobs;
}

std::vector<uint8_t> GifOf(const Shot& shot) {
    const auto gif = MakeGif(shot);
    std::vector<uint8_t> file;
    std::string error;
    if (!gif || !EncodeGif(*gif, &file, &error)) return {};
    return file;
}

std::vector<Job> ListJobs(bool reference) {
    std::vector<Job> jobs = ListEffectJobs(reference);
    for (Job& job : ListBuildJobs(reference)) jobs.push_back(std::move(job));
    return jobs;
}

}  // namespace kfx::bench
