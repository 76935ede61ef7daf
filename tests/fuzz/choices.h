// SPDX-License-Identifier: MIT
// What stands before the animation block in the input of a fuzz target: which effect works on it, with which
// settings, for which output, and what goes wrong meanwhile.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "builder/build_driver.h"
#include "effects/effect_table.h"
#include "framework/memory_guards.h"
#include "framework/movable_memory_native.h"
#include "framework/number_text.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "host/animation_block.h"

namespace kfx::test {

struct Choices {
    uint8_t effect;         // row of the table; beyond it: none
    uint8_t output;         // bits of BuildOptions
    uint8_t palette;        // choice
    uint8_t extras;         // kExtra...
    uint8_t mostColors;     // of a computed palette
    uint8_t width, height;  // of the preview
    uint8_t refusedRequest;
    uint8_t refusal;  // RefusalKind
    uint8_t refusedNumber;
    uint8_t dither[2];  // brightness and contrast
    uint8_t background[4];
    uint8_t values[2 * kMostControls];  // of the effect's controls, low byte first
};
static_assert(sizeof(Choices) == 32, "the corpora are made for this size");

constexpr uint8_t kExtraLocalBackground = 1;   // the user's
constexpr uint8_t kExtraEffectBackground = 2;  // the effect has one, as none of the table's has
constexpr uint8_t kExtraComment = 4;
constexpr uint8_t kExtraParts = 8;    // what all frames say is found first, then some frames are built
constexpr uint8_t kExtraPreset = 16;  // the options are changed as the window's third build command does

enum RefusalKind : uint8_t { kNoRefusal, kOneAllocation, kAllocationsFrom, kOneLock, kLocksFrom, kRefusals };

// Half of the values lie in the control's range, the other half anywhere, as a configuration file may have
// it.
inline int32_t SettingFrom(const EffectControl& control, uint16_t value) {
    constexpr int32_t kAnywhere[] = {INT32_MIN, -1, 0, 1, 2, 7, 256, 65536, INT32_MAX};
    if (value & 1) return kAnywhere[(value >> 1) % std::size(kAnywhere)];
    ControlRange range = {0, 9, 0};
    if (control.kind == ControlKind::Slider) ParseControlRange(control.text, &range);
    return range.least + (value >> 1) % (range.most - range.least + 1);
}

inline const Effect* ChooseEffect(const Choices& choices) {
    settings.localBackgroundUse = choices.extras & kExtraLocalBackground;
    std::memcpy(&settings.localBackgroundColor, choices.background, sizeof choices.background);
    HoldClock(1);
    const Effect* effect = EffectAt(choices.effect);
    if (!effect) return nullptr;
    for (size_t i = 0; i < effect->controls.count; ++i) {
        const auto value = static_cast<uint16_t>(choices.values[2 * i] | choices.values[2 * i + 1] << 8);
        *effect->controls.rows[i].variable = SettingFrom(effect->controls.rows[i], value);
    }
    return effect;
}

// Its destructor ends the refusals.
struct ChosenRefusals {
    explicit ChosenRefusals(const Choices& choices) {
        const size_t number = choices.refusedNumber;
        switch (choices.refusal % kRefusals) {
            case kOneAllocation:
                RefuseAllocation(number);
                break;
            case kAllocationsFrom:
                RefuseAllocationsFrom(number);
                break;
            case kOneLock:
                RefuseLock(number);
                break;
            case kLocksFrom:
                RefuseLocksFrom(number);
                break;
            default:
                break;
        }
    }
    ~ChosenRefusals() { ResetMemoryCounts(); }
    ChosenRefusals(const ChosenRefusals&) = delete;
    ChosenRefusals& operator=(const ChosenRefusals&) = delete;
};

// The block of an input, as the host hands it over, or null.
inline MemoryHandle TakeBlock(const uint8_t* data, size_t size) {
    if (size == 0) return nullptr;
    const MemoryHandle source = AllocateMemory(size);
    const MemoryLock lock(source);
    if (!lock.address) std::abort();
    std::memcpy(lock.address, data, size);
    return source;
}

constexpr uint64_t kMostPixels = 4096;

// Whether the frames that can be decoded have so few pixels that every effect is done with them at once: one
// bit a pixel makes large pictures of few bytes.
inline bool IsSmall(const uint8_t* data, size_t size) {
    AnimationHeader header;
    if (!ReadAnimationHeader(data, size, &header)) return true;
    uint64_t pixels = 0;
    size_t offset = header.firstBlock;
    AnimationFrame frame;
    for (uint32_t i = 0; i < header.frameCount && pixels <= kMostPixels; ++i) {
        if (ReadAnimationFrame(header, &offset, &frame) != FrameStep::Frame) break;
        pixels += static_cast<uint64_t>(frame.width) * static_cast<uint64_t>(frame.height);
    }
    return pixels <= kMostPixels;
}

// Takes the choices from the front of an input and leaves the block. False: there are none, or the block's
// pictures are too large to try.
inline bool TakeChoices(const uint8_t** data, size_t* size, Choices* choices) {
    if (*size < sizeof *choices) return false;
    std::memcpy(choices, *data, sizeof *choices);
    *data += sizeof *choices;
    *size -= sizeof *choices;
    return IsSmall(*data, *size);
}

// Ends the program where blocks, locks or the like are left over.
struct NothingLeft {
    NothingLeft() : before(CountMemory()) {}
    ~NothingLeft() {
        const MemoryCounts after = CountMemory();
        if (after.liveBlocks != before.liveBlocks || after.lockedBlocks != 0) std::abort();
        if (after.strayUnlocks != 0 || after.lockedFrees != 0) std::abort();
    }
    NothingLeft(const NothingLeft&) = delete;
    NothingLeft& operator=(const NothingLeft&) = delete;

    const MemoryCounts before;
};

}  // namespace kfx::test
