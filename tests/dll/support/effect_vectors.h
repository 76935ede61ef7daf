// SPDX-License-Identifier: MIT
// The effects' results as computed independently: tests/data/effects/expected.tsv.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "tests/dll/support/plugin_session.h"

namespace kfx::test {

// What one window is opened with; its inputs are built one after another.
struct EffectSetting {
    std::string keys;        // "Key=value Key=value", or "-"
    std::string background;  // 0xBBGGRR
    std::string seed;        // of the clock, or "-"
    bool operator<(const EffectSetting& other) const {
        return std::tie(keys, background, seed) < std::tie(other.keys, other.background, other.seed);
    }
};

using Digests = std::map<std::string, std::vector<std::string>>;  // input: a digest for each frame
using EffectVectorTable = std::map<std::string, std::map<EffectSetting, Digests>>;

const EffectVectorTable& ExpectedDigests();

// The effects' names in the order of the effect list.
std::vector<std::string> EffectNames();

SessionOptions OptionsFor(const EffectSetting& setting);

// The input's animation block.
std::vector<uint8_t> EffectInput(const std::string& input);

// Selects the effect in the window's list.
void ChooseEffect(PluginSession& session, const std::string& name);

// Builds the source that the window holds and compares every frame.
void BuildAndCompare(FakeHost& host, PluginSession& session, const std::vector<std::string>& digests);

}  // namespace kfx::test
