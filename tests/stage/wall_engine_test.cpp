// SPDX-License-Identifier: MIT
// An effect on the wall's thumbnails gives what the commands give.
#include "stage/wall_engine.h"

#include <gtest/gtest.h>

#include "commands/direct_engine.h"
#include "commands/stages.h"
#include "tests/stage/wall_test_source.h"
#include "tests/support/held_clock.h"

namespace kfx::stage {
namespace {

using namespace commands;
using test::ExpectSameFrames;
using test::HeldClock;
using test::WallTestSource;

// The same by the direct engine, as a gallery is drawn.
Animation AsInAGallery(const EffectDescription& effect, const EffectSettings& settings, Animation source) {
    Animation sessionSource;
    HostSession session;
    session.source = &sessionSource;
    EngineStart start;
    start.session = &session;
    Failure failure;
    const OpenEngine engine(kDirectEngine, start, &failure);
    Job job;
    EXPECT_TRUE(ResolveEffectJob({effect.name, {}}, engine.engine, engine.opened, &job, &failure));
    for (size_t i = 0; i < job.parameters.size(); ++i)
        job.values.push_back({job.parameters[i], settings.values[i]});
    EXPECT_TRUE(RunStage(engine, &session, job, &source, &failure)) << failure.error;
    return source;
}

// 0: the defaults, 1: the least values, 2: the greatest.
EffectSettings SettingsAt(const std::vector<EffectDescription>& effects, size_t effect, int end) {
    EffectSettings settings = DefaultSettings(effects, effect);
    const std::vector<Parameter>& parameters = effects[effect].parameters;
    for (size_t i = 0; i < parameters.size() && end > 0; ++i)
        settings.values[i] = end == 1 ? parameters[i].minimum : parameters[i].maximum;
    return settings;
}

TEST(WallEngine, Every_effect_gives_what_a_gallery_shows) {
    const HeldClock clock(1700000000);
    const std::vector<EffectDescription> effects = DescribeEffects();
    ASSERT_EQ(effects.size(), 20u);
    for (const bool holes : {false, true}) {
        for (size_t effect = 0; effect < effects.size(); ++effect) {
            for (int end = 0; end < 3; ++end) {
                const EffectSettings settings = SettingsAt(effects, effect, end);
                const Animation source = *WallTestSource(3, 61, 47, holes);
                Animation made = source;
                const std::atomic<bool> stop = false;
                std::atomic<uint64_t> frames = 0;
                Failure failure;
                ASSERT_TRUE(ApplyEffect(effects[effect], settings, stop, &frames, &made, &failure))
                    << failure.error;
                ExpectSameFrames(AsInAGallery(effects[effect], settings, source), made,
                                 effects[effect].name.c_str());
                EXPECT_GE(frames, 3u);
            }
        }
    }
}

TEST(WallEngine, Frames_with_palette_indices_are_taken_by_their_colors) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    Animation source = *WallTestSource(2, 20, 20);
    source.hasGlobalPalette = true;
    source.globalPalette = {{10, 20, 30}, {200, 100, 50}};
    for (Frame& frame : source.frames) {
        frame.indexed = true;
        for (size_t i = 0; i < 400; ++i) {
            const RgbColor color = source.globalPalette[i % 3 == 0];
            frame.indices.push_back(i % 3 == 0);
            frame.pixels[4 * i] = color.red;
            frame.pixels[4 * i + 1] = color.green;
            frame.pixels[4 * i + 2] = color.blue;
        }
    }
    const EffectSettings settings = DefaultSettings(effects, 3);
    Animation made = source;
    const std::atomic<bool> stop = false;
    std::atomic<uint64_t> frames = 0;
    Failure failure;
    ASSERT_TRUE(ApplyEffect(effects[3], settings, stop, &frames, &made, &failure));
    ExpectSameFrames(AsInAGallery(effects[3], settings, source), made, "indexed");
}

TEST(WallEngine, What_is_told_to_stop_makes_no_frame) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        Animation made = *WallTestSource(3, 30, 30, effect % 2 == 0);
        const std::atomic<bool> stop = true;
        std::atomic<uint64_t> frames = 0;
        Failure failure;
        EXPECT_FALSE(
            ApplyEffect(effects[effect], DefaultSettings(effects, effect), stop, &frames, &made, &failure));
        EXPECT_EQ(frames, 0u);
        EXPECT_EQ(failure.error, "");
    }
}

TEST(WallSettings, The_text_names_every_value_as_the_window_shows_it) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    EXPECT_EQ(SettingsText(effects[0], DefaultSettings(effects, 0)), "");
    EXPECT_EQ(SettingsText(effects[1], DefaultSettings(effects, 1)), "Radius 5, Depth 15");
    EXPECT_EQ(SettingsText(effects[17], DefaultSettings(effects, 17)), "Angle 45");
    EffectSettings ripple = DefaultSettings(effects, 15);
    ripple.values[6] = 0;
    const std::string text = SettingsText(effects[15], ripple);
    EXPECT_EQ(text.substr(text.size() - 15), ", Dissipate off");
}

}  // namespace
}  // namespace kfx::stage
