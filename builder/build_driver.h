// SPDX-License-Identifier: MIT
// The build: source frames through the effect, onto a palette and into a new animation of the host.
#pragma once

#include <cstdint>

#include "framework/effect_operations.h"
#include "host/host_records.h"

namespace kfx {

// What the user has chosen when the build starts.
struct BuildOptions {
    bool trueColor;
    bool customPalette;
    bool dither;
    bool supercompress;     // ignored with true colour and for a single frame
    bool localBackground;   // ignored with supercompression and for an effect without a background colour
    int32_t paletteChoice;  // a fixed palette (see fixed_palettes.h), or kSourcePalette
    bool addComment;
    bool fastRemap;
    int32_t ditherBrightness;
    int32_t ditherContrast;
    bool test;  // into a test task of the host
    // The most entries of a computed palette, the reserved one among them: 3 to 255, or 2 where none is
    // reserved. 0: 256.
    int32_t mostColors;
};

// What the settings say; what only controls say is off.
BuildOptions OptionsFromSettings();

// The palette choice that stands for the source animation's own global palette.
constexpr int32_t kSourcePalette = 9;

// A palette that has been computed, and what belongs to it.
struct ComputedPalette {
    bool isKnown = false;
    uint8_t colors[kPaletteBytes] = {};  // red, green, blue
    int32_t bitsPerPixel = 8;
    int32_t colorCount = 0;
    int32_t reservedIndex = -1;
};

// What a build has to do with other builds of frames of the same animation.
enum class WholeUse {
    Note,  // the source has all frames: what they say together is noted, and the build goes on as usual
    Find,  // the same, but the build ends when it is known; the host is told nothing but progress
    Hold,  // the source has some frames: what all of them say is known already, and holds for these
};

// What all frames of an animation say together.
struct WholeAnimation {
    WholeUse use = WholeUse::Note;
    GatheredSummary gathered;  // by the effect
    ComputedPalette palette;   // stays unknown where none is computed
    // With Hold: whether the animation has more frames than one, and how many frames of the source come
    // before those that are wanted. They are not handed over: supercompression compares with the last one.
    bool hasSeveralFrames = false;
    int32_t framesBefore = 0;
};

// How a build is started.
enum class BuildMode {
    Build,
    Test,   // into a test task
    Plain,  // dither, true colour and supercompression off, whatever the window says
};

// The options as set in the window, changed to what `mode` makes of them.
BuildOptions OptionsForMode(BuildOptions asSet, BuildMode mode);

// What the user may be told; the texts are the window's.
enum class BuildMessage {
    MemoryError,     // the effect failed, no frames, no memory
    NewTaskRefused,  // the host opens no task
    ImageRefused,    // the host refuses a frame
};

struct BuildEnvironment {
    void* window;
    const HostContext* host;
    MemoryHandle source;             // the source animation's block, or null; the caller's
    const EffectDescriptor* effect;  // null, or without a build operation: frames stay unchanged
    void (*showMessage)(void* window, BuildMessage message);  // called at most once
    // Null: frame after frame on the calling thread. The host is asked in the same way with every runner, on
    // the calling thread.
    const FrameRunner* runner = nullptr;
    // Null: the source has all frames of the animation, and no other build needs to know what they say.
    WholeAnimation* whole = nullptr;
};

// Builds environment.source. The caller shows the wait cursor. 1: every frame was added and the task closed,
// or what was to be found is known.
// 0: the build failed, and a message has been shown unless the window has closed. Every image that it made is
// freed in both cases.
int32_t RunBuild(const BuildEnvironment& environment, const BuildOptions& options);

}  // namespace kfx
