// SPDX-License-Identifier: MIT
// Jobs in turn, compared with one build after another.
#include "commands/pipeline.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "commands/direct_engine.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif

namespace kfx::commands {
namespace {

Animation ColorfulSource() {
    Animation source;
    source.width = 31;
    source.height = 23;
    source.hasGlobalPalette = true;
    source.globalPalette = {{1, 2, 3}, {200, 100, 50}, {20, 200, 60}};
    for (int f = 0; f < 2; ++f) {
        Frame frame;
        frame.delay = 4 + f;
        for (int i = 0; i < 4 * source.width * source.height; ++i)
            frame.pixels.push_back(i % 4 == 3 ? uint8_t{255} : static_cast<uint8_t>(i * i / 97 + 90 * f));
        source.frames.push_back(frame);
    }
    return source;
}

// The same with a soft outline, and hidden pixels in many colours.
Animation SoftSource() {
    Animation source = ColorfulSource();
    for (Frame& frame : source.frames) {
        frame.transparent = true;
        for (size_t i = 0; i < frame.pixels.size(); i += 4) {
            const size_t x = i / 4 % 31;
            frame.pixels[i + 3] = x < 10 ? 0 : x < 14 ? static_cast<uint8_t>(60 * (x - 9)) : uint8_t{255};
            if (x >= 10) std::fill_n(&frame.pixels[i], 3, static_cast<uint8_t>(x % 5 * 40));
        }
    }
    return source;
}

// Counts what the direct engine builds.
int builds;
bool CountBuild(void* opened, const Job& job, bool more, Failure* failure) {
    ++builds;
    return kDirectEngine.build(opened, job, more, failure);
}

struct Pipeline : ::testing::Test {
    CommandLine line;
    PipelineOptions options;
    PipelineNotes notes;

    void SetUp() override {
        line.inputs = {"in.gif"};
        line.trueColor = true;
        line.palette = "custom";
    }

    // What the effects make of the source, as it plays.
    Animation Run(const Animation& given, const std::vector<EffectChoice>& effects) {
        Animation source = given;
        HostSession session;
        session.source = &source;
        EngineStart start;
        start.session = &session;
        Failure failure;
        line.effects = effects;
        const bool ownPalette = HasOwnPalette(source);
        Engine counting = kDirectEngine;
        counting.build = CountBuild;
        builds = 0;
        const OpenEngine engine(counting, start, &failure);
        std::vector<Job> jobs;
        EXPECT_TRUE(ResolveJobs(line, ownPalette, kDirectEngine, engine.opened, &jobs, &failure))
            << failure.error;
        EXPECT_TRUE(RunJobs(engine, &session, jobs, options, &notes, &failure)) << failure.error;
        colors = CountColors(session.built, session.record);
        hiddenColors = CountColors(session.built, {}) - colors;
        return PlayBuilt(session.built, session.record);
    }

    size_t colors = 0;        // that are seen
    size_t hiddenColors = 0;  // that are not, besides
};

void ExpectSame(const Animation& expected, const Animation& actual) {
    ASSERT_EQ(expected.frames.size(), actual.frames.size());
    for (size_t i = 0; i < expected.frames.size(); ++i) {
        EXPECT_TRUE(expected.frames[i].pixels == actual.frames[i].pixels) << "frame " << i;
        EXPECT_EQ(expected.frames[i].delay, actual.frames[i].delay);
    }
}

const EffectChoice kTurn = {"Swirl", {{"Angle", "200"}}};
const EffectChoice kSoften = {"Gaussian Blur", {{"Radius", "20"}}};

TEST_F(Pipeline, A_chain_is_one_build_after_the_other_in_true_colour) {
    const Animation source = ColorfulSource();
    const Animation between = Run(source, {kTurn});
    ExpectSame(Run(between, {kSoften}), Run(source, {kTurn, kSoften}));
}

TEST_F(Pipeline, The_palette_is_that_of_the_last_effect) {
    const Animation source = ColorfulSource();
    Animation between = Run(source, {kTurn});
    line.trueColor = false;
    line.dither = true;
    for (const char* palette : {"custom", "216-color safe", "original"}) {
        between.hasGlobalPalette = true;
        between.globalPalette = source.globalPalette;
        line.palette = palette;
        const Animation chained = Run(source, {kTurn, kSoften});
        ExpectSame(Run(between, {kSoften}), chained);
    }
}

TEST_F(Pipeline, An_opaque_source_is_built_once_as_by_the_engine_itself) {
    line.trueColor = false;
    const Animation result = Run(ColorfulSource(), {kTurn});
    EXPECT_EQ(builds, 1);
    Animation source = ColorfulSource();
    HostSession session;
    session.source = &source;
    EngineStart start;
    start.session = &session;
    Failure failure;
    const OpenEngine engine(kDirectEngine, start, &failure);
    std::vector<Job> jobs;
    ASSERT_TRUE(ResolveJobs(line, true, kDirectEngine, engine.opened, &jobs, &failure));
    ASSERT_TRUE(kDirectEngine.build(engine.opened, jobs[0], false, &failure));
    ExpectSame(PlayBuilt(session.built, session.record), result);
}

// The settings by which a palette is put onto finished frames.
const EffectChoice kNothing = {"HSB and Channels",
                               {{"Enable HSB", "off"}, {"Enable channels", "off"}, {"Invert colors", "off"}}};

TEST_F(Pipeline, There_are_settings_that_change_nothing) {
    Animation source = ColorfulSource();
    ExpectSame(source, Run(source, {kNothing}));
}

TEST_F(Pipeline, Hidden_pixels_take_no_part_in_the_palette) {
    line.trueColor = false;
    const Animation source = SoftSource();
    for (const bool dither : {false, true}) {
        line.dither = dither;
        const Animation result = Run(source, {kNothing});
        EXPECT_EQ(builds, 2);
        EXPECT_EQ(colors, 5u);
        EXPECT_EQ(hiddenColors, 0u);
        for (size_t f = 0; f < 2; ++f) {
            for (size_t i = 0; i < source.frames[f].pixels.size(); ++i) {
                if (source.frames[f].pixels[i | 3] == 0 && i % 4 != 3) continue;
                ASSERT_EQ(result.frames[f].pixels[i], source.frames[f].pixels[i]) << i;
            }
        }
    }
    EXPECT_FALSE(notes.thresholdApplied);
}

TEST_F(Pipeline, Half_transparent_pixels_are_decided_or_mixed_where_the_format_asks_for_it) {
    line.trueColor = false;
    options.halfTransparency = HalfTransparency::Threshold;
    Animation result = Run(SoftSource(), {kNothing});
    EXPECT_TRUE(notes.thresholdApplied);
    const auto pixel = [&](size_t x) { return &result.frames[0].pixels[4 * x]; };
    EXPECT_EQ(pixel(11)[3], 0);
    EXPECT_EQ(pixel(12)[3], 255);
    EXPECT_EQ(pixel(12)[0], 80);

    options.halfTransparency = HalfTransparency::Mix;
    options.matte = {255, 0, 0};
    notes = {};
    result = Run(SoftSource(), {kNothing});
    EXPECT_FALSE(notes.thresholdApplied);
    EXPECT_EQ(pixel(9)[3], 0) << "what is hidden stays so";
    EXPECT_EQ(pixel(11)[3], 255);
    EXPECT_EQ(pixel(11)[0], (40 * 120 + 255 * 135 + 127) / 255);
    EXPECT_EQ(pixel(11)[1], (40 * 120 + 127) / 255);
}

TEST_F(Pipeline, A_chain_carries_alpha_from_effect_to_effect) {
    const Animation source = SoftSource();
    const Animation between = Run(source, {kTurn});
    EXPECT_TRUE(between.frames[0].transparent);
    ExpectSame(Run(between, {kSoften}), Run(source, {kTurn, kSoften}));
}

TEST_F(Pipeline, An_effect_that_comes_again_starts_from_its_defaults) {
    const Animation source = ColorfulSource();
    ExpectSame(Run(Run(source, {kTurn}), {{"Swirl", {}}}), Run(source, {kTurn, {"Swirl", {}}}));
}

#ifndef _WIN32
TEST_F(Pipeline, Each_refused_allocation_fails_or_is_survived_and_loses_nothing) {
    line.trueColor = false;
    line.effects = {kTurn, {"Bump", {}}, {"Water Drops", {}}};
    const size_t blocks = CountMemory().liveBlocks;
    size_t failures = 0;
    for (size_t number = 1;; ++number) {
        Animation source = SoftSource();
        HostSession session;
        session.source = &source;
        EngineStart start;
        start.session = &session;
        Failure failure;
        bool built = false;
        ResetMemoryCounts();
        RefuseAllocation(number);
        {
            const OpenEngine engine(kDirectEngine, start, &failure);
            std::vector<Job> jobs;
            built = engine && ResolveJobs(line, true, kDirectEngine, engine.opened, &jobs, &failure) &&
                    RunJobs(engine, &session, jobs, options, &notes, &failure);
        }
        const bool refused = CountMemory().allocations >= number;
        ResetMemoryCounts();
        ASSERT_EQ(CountMemory().liveBlocks, blocks) << number;
        ASSERT_EQ(built, failure.error.empty()) << number;
        if (!refused) break;
        failures += !built;
    }
    EXPECT_GT(failures, 20u);
}
#endif

}  // namespace
}  // namespace kfx::commands
