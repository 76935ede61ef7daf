// SPDX-License-Identifier: MIT
// The real DLL on threads whose floating-point controls are not the usual ones: results are the same bytes,
// and the host finds its own controls in every request and after the call.
#include <gtest/gtest.h>

#include <iterator>

#include "resources/resource_ids.h"
#include "tests/dll/support/effect_vectors.h"
#include "tests/dll/support/floating_point_controls.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/animation_blocks.h"

namespace kfx::test {
namespace {

// Fewer bits, another way of rounding, exceptions that are raised, small numbers flushed to zero.
constexpr FloatingPointControls kHosts[] = {{0x27F, 0x1900}, {0x7F, 0x5F80}, {0xB7F, 0x9FC0}};
constexpr FloatingPointControls kUsual = {0x37F, 0x1F80};

// In each of a host's rounds every effect has another of its settings.
constexpr size_t kRounds = 2;
const std::string kBackground = "0x7F7F7F";
const std::string kSeed = "1234567890";

using Setting = std::pair<const EffectSetting, Digests>;

// The effect's settings under the one background and clock, counted on from the first again after the last.
const Setting& SettingOf(const std::string& effect, size_t number) {
    std::vector<const Setting*> settings;
    for (const Setting& row : ExpectedDigests().at(effect)) {
        const bool seedFits = row.first.seed == "-" || row.first.seed == kSeed;
        if (row.first.background == kBackground && seedFits) settings.push_back(&row);
    }
    return *settings.at(number % settings.size());
}

// One configuration for all effects: their keys differ.
SessionOptions OptionsForRound(size_t number) {
    EffectSetting all = {"", kBackground, kSeed};
    for (const std::string& effect : EffectNames()) {
        const std::string& keys = SettingOf(effect, number).first.keys;
        if (keys != "-") all.keys += keys + " ";
    }
    return OptionsFor(all);
}

void ExpectControls(const PluginSession& session, const FloatingPointControls& controls) {
    const std::vector<FloatingPointControls> seen = session.ControlsSeen();
    EXPECT_FALSE(seen.empty());
    size_t wrong = 0;
    for (const FloatingPointControls& request : seen) wrong += !(request == controls);
    EXPECT_EQ(wrong, 0u) << "of " << seen.size() << " requests";
}

class FloatingPointHosts : public testing::TestWithParam<size_t> {
protected:
    const FloatingPointControls controls_ = kHosts[GetParam()];
};

TEST_P(FloatingPointHosts, Every_effect_s_frames_are_the_bytes_as_computed) {
    for (size_t round = 0; round < kRounds; ++round) {
        const size_t number = kRounds * GetParam() + round;
        FakeHost host;
        SessionOptions options = OptionsForRound(number);
        options.controls = controls_;
        PluginSession session(host, options);
        for (const char* input : {"photo97x61x3", "patches128x64"}) {
            host.Serve(EffectInput(input));
            session.Click(IDC_SELECT);
            for (const std::string& effect : EffectNames()) {
                SCOPED_TRACE(std::string(input) + ", " + effect);
                const Setting& setting = SettingOf(effect, number);
                ASSERT_NO_FATAL_FAILURE(ChooseEffect(session, effect));
                BuildAndCompare(host, session, setting.second.at(input));
            }
        }
        session.Close();
        ExpectControls(session, controls_);
        EXPECT_EQ(session.ControlsAfter(), controls_);
    }
}

// With a C library of x87 code, 53 bits give these two other results than 64 at a few settings: Motion Blur
// at its own on indexed64x64, for one. All of the table are tried.
TEST(FloatingPointHosts, Effects_that_53_bits_would_change_are_the_same_at_every_setting) {
    for (const char* effect : {"Emboss", "Motion Blur"}) {
        for (const auto& [setting, digests] : ExpectedDigests().at(effect)) {
            FakeHost host;
            SessionOptions options = OptionsFor(setting);
            options.controls = {0x27F, 0x1F80};
            PluginSession session(host, options);
            ASSERT_NO_FATAL_FAILURE(ChooseEffect(session, effect));
            for (const auto& [input, frames] : digests) {
                SCOPED_TRACE(std::string(effect) + ", " + setting.keys + ", " + setting.background + ", " +
                             input);
                host.Serve(EffectInput(input));
                session.Click(IDC_SELECT);
                BuildAndCompare(host, session, frames);
            }
        }
    }
}

// Everything that a build with a computed palette, and the preview beside it, brings about.
struct Outcome {
    std::vector<std::string> transcript;
    std::vector<std::vector<uint8_t>> frames;
    std::vector<COLORREF> preview;
};

Outcome BuildUnder(const FloatingPointControls& controls, const std::string& configuration) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "Truecolour = 0\nAddDescriptiveCommentBlock = 1\n" + configuration;
    options.controls = controls;
    PluginSession session(host, options);
    if (!session.IsChecked(IDC_CUSTOM_PALETTE)) session.Click(IDC_CUSTOM_PALETTE);
    host.Serve(EffectInput("photo97x61x3"));
    session.Click(IDC_SELECT);
    host.ClearTranscript();
    session.Click(IDC_TEST);
    // Smaller than the picture, so that it is scaled.
    Outcome outcome = {host.Transcript(), host.Frames(), session.DrawPreview(70, 41)};
    session.Close();
    ExpectControls(session, controls);
    EXPECT_EQ(session.ControlsAfter(), controls);
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    return outcome;
}

TEST_P(FloatingPointHosts, Builds_and_previews_are_those_of_any_other_host) {
    for (const char* configuration : {"MainEffect = 7\nMainDither = 1\n",
                                      "MainEffect = 8\nStyle014Angle = 200\nStyle014Depth = "
                                      "50\nStyle014Radius = 300\nMainSupercompress = 1\n"}) {
        SCOPED_TRACE(configuration);
        const Outcome expected = BuildUnder(kUsual, configuration);
        const Outcome outcome = BuildUnder(controls_, configuration);
        EXPECT_EQ(expected.frames.size(), 3u);
        EXPECT_EQ(outcome.transcript, expected.transcript);
        EXPECT_TRUE(outcome.frames == expected.frames);
        EXPECT_TRUE(outcome.preview == expected.preview);
    }
}

INSTANTIATE_TEST_SUITE_P(Controls, FloatingPointHosts, testing::Range<size_t>(0, std::size(kHosts)));

TEST(FloatingPointHosts, Being_asked_what_it_is_leaves_the_host_s_controls_alone) {
    const HMODULE library = LoadLibraryA(PluginPath().c_str());
    ASSERT_TRUE(library);
    const auto ask = reinterpret_cast<uint64_t(WINAPI*)(PluginInfo*)>(
        reinterpret_cast<void*>(GetProcAddress(library, "PLUGIN16GetPluginParams")));
    const FloatingPointControls before = ReadControls();
    for (const FloatingPointControls& controls : kHosts) {
        PluginInfo info = {};
        info.size = sizeof info;
        SetControls(controls);
        const uint64_t answer = ask(&info);
        const FloatingPointControls after = ReadControls();
        SetControls(before);
        EXPECT_EQ(answer, 1u);
        EXPECT_EQ(after, controls);
    }
    FreeLibrary(library);
}

}  // namespace
}  // namespace kfx::test
