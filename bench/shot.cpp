// SPDX-License-Identifier: MIT
#include "bench/shot.h"

#include <cstdio>

namespace kfx::bench {
namespace {

// Reads one frame into a new image; null when the file ends before it.
ImageHandle ReadFrame(std::FILE* file, int32_t width, int32_t height) {
    MemoryOwner picture(CreateDib(width, height, nullptr, 24));
    const ImageLock lock(picture.memory);
    if (!lock) return nullptr;
    const size_t bytes = 3 * static_cast<size_t>(width);
    for (int32_t y = 0; y < height; ++y)
        if (std::fread(PictureRow(lock.image, y), 1, bytes, file) != bytes) return nullptr;
    return picture.Release();
}

bool ReadFrames(std::FILE* file, int32_t count, Shot* shot) {
    for (int32_t i = 0; i < count; ++i) {
        FrameEntry entry = {};
        entry.transparentIndex = -1;
        entry.image = ReadFrame(file, shot->width, shot->height);
        if (!entry.image) return false;
        if (!AppendFrame(&shot->frames, entry)) {
            FreeMemory(entry.image);
            return false;
        }
    }
    return true;
}

bool WriteFrames(std::FILE* file, const Shot& shot) {
    const size_t bytes = 3 * static_cast<size_t>(shot.width);
    for (int32_t i = 0; i < shot.frames.count; ++i) {
        const ImageLock lock(FrameAt(shot, i));
        if (!lock) return false;
        for (int32_t y = 0; y < shot.height; ++y)
            if (std::fwrite(PictureRow(lock.image, y), 1, bytes, file) != bytes) return false;
    }
    return true;
}

}  // namespace

ImageHandle FrameAt(const Shot& shot, int32_t index) {
    FrameEntry entry = {};
    return GetFrame(shot.frames, index, &entry) ? entry.image : nullptr;
}

size_t PixelsOfFrame(const Shot& shot) {
    return static_cast<size_t>(shot.width) * static_cast<size_t>(shot.height);
}

bool ReadShot(const std::string& path, int32_t width, int32_t height, int32_t frames, Shot* shot) {
    if (width < 1 || height < 1 || frames < 1) return false;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return false;
    shot->width = width;
    shot->height = height;
    const bool read = ReadFrames(file, frames, shot);
    std::fclose(file);
    return read;
}

bool WriteShot(const std::string& path, const Shot& shot) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    const bool written = WriteFrames(file, shot);
    return std::fclose(file) == 0 && written;
}

}  // namespace kfx::bench
