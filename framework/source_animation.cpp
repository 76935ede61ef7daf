// SPDX-License-Identifier: MIT
#include "framework/source_animation.h"

#include <cstring>

#include "framework/panel.h"

namespace kfx {
namespace {

constexpr uint32_t kMidGrey = 0x7F7F7F;

// Copies the pixels only: the padding of a frame's rows holds whatever the host left there, an image's own
// padding stays zero.
void CopyRows(const AnimationFrame& frame, WorkingImage* image) {
    const size_t stride = StrideOf(image);
    const size_t rowPixelBytes =
        (static_cast<size_t>(frame.width) * static_cast<size_t>(frame.bitCount) + 7) / 8;
    for (int32_t r = 0; r < frame.height; ++r)
        std::memcpy(StoredRow(image, r), frame.rows + static_cast<size_t>(r) * stride, rowPixelBytes);
}

// One frame of the block as a new 24-bit image. Null: memory ran out.
ImageHandle DecodeFrame(const AnimationFrame& frame) {
    uint8_t palette[kPaletteBytes] = {};
    if (frame.colorTable) {
        const uint8_t* entry = frame.colorTable;
        for (int i = 0; i < 1 << frame.bitCount; ++i, entry += 4) {
            palette[3 * i] = entry[2];
            palette[3 * i + 1] = entry[1];
            palette[3 * i + 2] = entry[0];
        }
    }
    // CreateDib makes 32 bits of any depth above 24.
    MemoryOwner image(CreateDib(frame.width, frame.height, palette, frame.bitCount));
    {
        const ImageLock lock(image.memory);
        if (!lock) return nullptr;
        CopyRows(frame, lock.image);
    }
    // The common case needs no second copy of the picture.
    return frame.bitCount == 24 ? image.Release() : ConvertTo24Bits(image.memory);
}

}  // namespace

bool IsSoundAnimation(MemoryHandle block) {
    const MemoryLock lock(block);
    return lock && IsAnimation(lock.address, MemorySize(block));
}

SourceState ReadSourceHeader(const MemoryLock& lock, AnimationHeader* header) {
    if (!lock.memory) return SourceState::None;
    // A block has at least one byte: a size of 0 says that it could not be read.
    const size_t size = lock.address ? MemorySize(lock.memory) : 0;
    if (size == 0) return SourceState::Refused;
    return ReadAnimationHeader(lock.address, size, header) ? SourceState::Animation : SourceState::None;
}

ImageHandle FetchFirstFrame(MemoryHandle source) {
    const MemoryLock lock(source);
    AnimationHeader header;
    if (ReadSourceHeader(lock, &header) != SourceState::Animation) return nullptr;
    size_t offset = header.firstBlock;
    AnimationFrame frame;
    if (ReadAnimationFrame(header, &offset, &frame) != FrameStep::Frame) return nullptr;
    return DecodeFrame(frame);
}

DecodeResult DecodeAllFrames(MemoryHandle source, FrameList* list) {
    const MemoryLock lock(source);
    AnimationHeader header;
    const SourceState state = ReadSourceHeader(lock, &header);
    if (state != SourceState::Animation)
        return state == SourceState::None ? DecodeResult::None : DecodeResult::Incomplete;
    size_t offset = header.firstBlock;
    for (uint32_t i = 0; i < header.frameCount; ++i) {
        AnimationFrame frame;
        const FrameStep step = ReadAnimationFrame(header, &offset, &frame);
        if (step == FrameStep::End) return DecodeResult::Whole;
        if (step == FrameStep::Malformed) return i == 0 ? DecodeResult::None : DecodeResult::Incomplete;
        MemoryOwner image(DecodeFrame(frame));
        if (!image.memory) return DecodeResult::Incomplete;
        FrameEntry entry = {};
        entry.image = image.memory;
        entry.transparentIndex = -1;
        entry.field1 = frame.fields[0];
        entry.field2 = frame.fields[1];
        entry.field3 = frame.fields[2];
        entry.field4 = frame.fields[3];
        if (!AppendFrame(list, entry)) return DecodeResult::Incomplete;
        image.Release();
    }
    return DecodeResult::Whole;
}

bool ReadBackgroundColor(MemoryHandle source, uint32_t* color) {
    if (LocalBackgroundChosen(color)) return true;
    *color = kMidGrey;
    const MemoryLock lock(source);
    AnimationHeader header;
    const SourceState state = ReadSourceHeader(lock, &header);
    if (state == SourceState::Animation && header.hasBackground) *color = header.background;
    return state != SourceState::Refused;
}

}  // namespace kfx
