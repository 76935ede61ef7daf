// SPDX-License-Identifier: MIT
// Sources and effects for the tests of the build's rules, and how they look at what was handed over.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/effect_operations.h"
#include "tests/builder/build_run.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {

// An animation block with these pictures as its frames.
std::vector<uint8_t> BlockOf(const std::vector<Picture>& pictures, const BlockOptions& options = {});

// A moving bar over a background of few colours, none of them white.
std::vector<Picture> MovingBar(int32_t frames, int32_t width = 48, int32_t height = 32);

// The picture of a frame that was handed over.
Picture ImageOf(const HandedFrame& frame);

// A palette's entry as 0x00BBGGRR.
uint32_t EntryOf(const uint8_t* palette, size_t index);

// Whether the host was told this status.
bool HasStatus(const BuildRun& run, const std::string& text);

// An effect with these two operations and no other.
EffectDescriptor EffectWith(int32_t (*build)(EffectBuildContext*), int32_t (*query)(void*, int32_t));

// The build operation of an effect that changes no frame.
int32_t Decode(EffectBuildContext* context);

}  // namespace kfx::test
