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
    Slider,  // text: "min,max,default", as it stands in the panel
    CheckBox,
    List,       // text: the items, separated by ";"
    SliderBox,  // a check box bound like a slider: its check state is read, its variable never follows the
                // click
};

struct EffectControl {
    ControlKind kind;
    uint16_t id;
    int32_t* variable;
    const char* text;
};

constexpr size_t kMostControls = 8;  // of one effect

// What a kernel gets beside the picture.
struct KernelInput {
    int32_t values[kMostControls];  // one for each control of the record, in the record's order
    uint32_t background;            // ReadBackgroundColor(), once
    KernelCache* cache;             // tables kept from frame to frame; never null
};

// A new image, or null for "leave the picture as it is". The source is neither changed nor freed.
using EffectKernel = ImageHandle (*)(ImageHandle source, const KernelInput& input);

// A build in two passes over all frames: gather into one 16-byte record, then apply. Only when `wanted` says
// so.
struct GatheringPasses {
    bool (*wanted)(const KernelInput& input);
    void (*gather)(ImageHandle source, uint64_t record[2]);
    ImageHandle (*apply)(ImageHandle source, const uint64_t record[2]);
    void (*release)(uint64_t record[2]);
};

struct EffectRecord {
    const char* name;
    uint16_t panelTemplate;
    const uint32_t* controlIds;  // every control of the panel, zero-terminated
    const EffectControl* controls;
    size_t controlCount;
    EffectKernel kernel;
    const GatheringPasses* gathering;  // null: each frame by itself
};

}  // namespace kfx
