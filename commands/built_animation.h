// SPDX-License-Identifier: MIT
// What a build hands over: the task's record, its frames and its comment, copied out of the plug-in's memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "commands/source_block.h"
#include "host/host_records.h"
#include "media/animation.h"
#include "media/animation_writer.h"

namespace kfx::commands {

struct BuiltFrame {
    // Rows top first, without padding: one palette index a pixel, or red, green, blue.
    std::vector<uint8_t> pixels;
    bool indexed = false;
    std::vector<RgbColor> palette;  // when indexed; as many entries as the depth has values
    int transparentIndex = -1;      // pixels that leave the picture as it is; -1: none
    size_t sourceIndex = 0;
};

struct BuiltAnimation {
    bool open = false;
    bool complete = false;  // closed with success
    int width = 0;
    int height = 0;
    std::vector<RgbColor> palette;  // 2 to 256 entries
    std::vector<BuiltFrame> frames;
    std::string comment;
    // A GIF that was made of the source without an engine; there are no frames then.
    std::optional<GifAnimation> gif;
};

// Starts a new animation from a task's record. False: its size is not one of a picture.
bool BeginTask(const FileObjectRecord& task, BuiltAnimation* built);

// Copies a packed device-independent bitmap of `bytes` bytes at `bitmap` as the next frame. False: the bitmap
// is damaged, or not as large as the animation.
bool AddBuiltFrame(const AddImageRecord& record, const uint8_t* bitmap, size_t bytes, BuiltAnimation* built);

// How many different colours the frames draw, before a lossy format changes any. What the source's alpha
// hides does not count.
size_t CountColors(const BuiltAnimation& built, const SourceRecord& source);

// What a viewer shows while frame `number` is there, RGBA. Frames are asked for in their order: `canvas`
// holds what the frames before have drawn; it is empty at first.
std::vector<uint8_t> ShownPicture(const BuiltAnimation& built, size_t number, const SourceRecord& source,
                                  std::vector<uint8_t>* canvas);

// The animation as a viewer plays it, in true colour: transparent pixels show the frames before, and the
// source's times, loop count, background, metadata and alpha are back. The source's comment stands before the
// plug-in's.
Animation PlayBuilt(const BuiltAnimation& built, const SourceRecord& source);

// The animation as a GIF. Frames stand as they were handed over unless the source is transparent; then whole
// pictures are stored, so that what was see-through in the source stays so. True colour frames get palettes
// of their own; `jobs` may give threads for finding these. Comments and the rest as above.
// An animation that is a GIF already stays as it is.
GifAnimation MakeGif(BuiltAnimation built, const SourceRecord& source, const JobRunner& jobs = JobRunner());

// The GIF of a source that no effect changes, as MakeGif would make it of the frames in true colour. Returns
// false when a frame has more colours than a palette. `jobs` may give threads.
bool MakeGifOfSource(const Animation& animation, const SourceRecord& record, const JobRunner& jobs,
                     GifAnimation* gif);

}  // namespace kfx::commands
