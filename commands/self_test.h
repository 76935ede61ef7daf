// SPDX-License-Identifier: MIT
// Results that every build of this version gives on every processor, to be compared with what it gives here.
#pragma once

#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/exit_codes.h"
#include "media/animation.h"

namespace kfx::commands {

struct SelfTestRow {
    const char* effect;
    const char* settings;  // "Radius=18, Depth=30"; empty: the defaults
    const char* palette;   // as --palette takes it; null: true colour
    bool dither;
    bool supercompress;
    const char* fingerprint;  // of the result; see fingerprint.h
};

// An effect each, then the palettes. tests/commands/self_test_test.cpp holds the effects' rows to the
// reference kernels.
extern const std::vector<SelfTestRow> kSelfTestRows;

// How a row is named to the user: "Swirl", "216-color safe, dithered".
std::string NameOf(const SelfTestRow& row);

// The effect of a row, with its parameters.
EffectChoice ChoiceOf(const SelfTestRow& row);

// What the rows are applied to: three opaque frames, made by whole numbers alone.
Animation DrawSelfTestSource();

// The second since 1970 at which Water Drops finds the clock.
constexpr uint32_t kSelfTestSecond = 1000000000;

// Builds a row by the direct engine while the clock stands, and plays the result. False: `*failure` says why.
bool BuildSelfTest(const SelfTestRow& row, Animation* result, Failure* failure);

// The two ways in which the effects compute.
enum class ComputePath { Plain, Avx2 };

// Whether the processor and the build have AVX2.
bool HasAvx2();

struct SelfTestResult {
    const SelfTestRow* row;
    ComputePath path;
    std::string fingerprint;
};

// Builds every row on every path that there is. Afterwards the kernels compute as before.
bool RunSelfTest(const std::vector<SelfTestRow>& rows, std::vector<SelfTestResult>* results,
                 Failure* failure);

}  // namespace kfx::commands
