// SPDX-License-Identifier: MIT
// What an effect is: one constant record. All that effects do alike (panel, preview, build) is made from it
// by the framework; an effect's own file holds its kernel, its controls and this record.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/kernel_cache.h"
#include "framework/working_image.h"

namespace kfx {

enum class ControlKind {
    Slider,
    CheckBox,
    List,
    SliderBox,  // a check box bound like a slider: its check state is read, its variable never follows the
                // click
};

struct EffectControl {
    ControlKind kind;
    uint16_t id;
    int32_t* variable;
    const char* text;  // a slider's range as "min,max,default", a box's caption, a list's items, split by ";"
    const char* caption;  // of a slider or list, as it stands in the panel, such as "Angle:"; null for a box
};

// The rows of an effect's list of controls.
constexpr EffectControl Slider(uint16_t id, int32_t* variable, const char* range, const char* caption) {
    return {ControlKind::Slider, id, variable, range, caption};
}
constexpr EffectControl List(uint16_t id, int32_t* variable, const char* items, const char* caption) {
    return {ControlKind::List, id, variable, items, caption};
}
constexpr EffectControl CheckBox(uint16_t id, int32_t* variable, const char* caption) {
    return {ControlKind::CheckBox, id, variable, caption, nullptr};
}
constexpr EffectControl SliderBox(uint16_t id, int32_t* variable, const char* caption) {
    return {ControlKind::SliderBox, id, variable, caption, nullptr};
}

constexpr size_t kMostControls = 8;                    // of one effect
constexpr size_t kMostControlIds = 3 * kMostControls;  // a slider has three

// The controls of an effect's panel, and the ids of everything in the panel that belongs to them.
struct EffectControls {
    size_t count = 0;
    EffectControl rows[kMostControls] = {};  // in the order in which they are read
    uint32_t ids[kMostControlIds + 1] = {};  // in the panel's order, zero-terminated
};

// Lists the controls of an effect. Beside each control stand the ids that follow from its kind: a slider's
// value label and caption are the next two, a list's caption is the next one.
template <size_t kCount>
constexpr EffectControls MakeControls(const EffectControl (&rows)[kCount]) {
    static_assert(kCount <= kMostControls, "raise kMostControls");
    EffectControls controls;
    size_t idCount = 0;
    for (const EffectControl& row : rows) {
        controls.rows[controls.count++] = row;
        const uint32_t own = row.kind == ControlKind::Slider ? 3 : row.kind == ControlKind::List ? 2 : 1;
        for (uint32_t i = 0; i < own; ++i) controls.ids[idCount++] = row.id + i;
    }
    return controls;
}

// What a kernel gets beside the picture.
struct KernelInput {
    int32_t values[kMostControls];  // one for each control of the effect, in the effect's order
    uint32_t background;            // 0x00BBGGRR: what lies outside the picture
    KernelCache* cache;             // tables kept from frame to frame; never null
};

// A new image, or null for "leave the picture as it is". The source is neither changed nor freed. Several
// threads may run kernels at the same time, also on the same source, each with a cache of its own.
using EffectKernel = ImageHandle (*)(ImageHandle source, const KernelInput& input);

// A build in two passes over all frames: gather into one 16-byte record, then apply. Only when `wanted` says
// so.
struct GatheringPasses {
    bool (*wanted)(const KernelInput& input);
    void (*gather)(ImageHandle source, uint64_t record[2]);
    ImageHandle (*apply)(ImageHandle source, const uint64_t record[2]);
    void (*release)(uint64_t record[2]);
    // What `apply` needs of a record, as a number for builds of some of the frames. False: memory was refused
    // while it was gathered. Null: the frames cannot be built in parts.
    bool (*summarize)(const uint64_t record[2], uint64_t* summary) = nullptr;
    // A record of zeros becomes one with which `apply` does the same as with the one that was summarized.
    void (*restore)(uint64_t summary, uint64_t record[2]) = nullptr;
};

struct Effect {
    const char* name = nullptr;  // as the effect list shows it
    uint16_t panel = 0;          // dialog template
    EffectControls controls = {};
    EffectKernel apply = nullptr;
    const GatheringPasses* gathering = nullptr;  // null: each frame by itself
    // A frame's result depends on when it is made: frames are transformed one after another, in their order.
    bool framesInOrder = false;
};

}  // namespace kfx
