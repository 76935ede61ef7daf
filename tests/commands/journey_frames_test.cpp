// SPDX-License-Identifier: MIT
// Frames in runs of equal values, and journeys compared with builds of one frame at a time.
#include "commands/journey_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "commands/direct_engine.h"
#include "commands/pipeline.h"
#include "commands/plain_build.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif

namespace kfx::commands {
namespace {

using ::testing::ElementsAre;

// Frames of noise that drifts; with `soft`, every second one has a soft outline.
Animation DriftingSource(size_t frames, bool soft = false) {
    Animation source;
    source.width = 29;
    source.height = 21;
    source.comment = "of the source";
    source.metadata.xmp = {'<', '>'};
    for (size_t f = 0; f < frames; ++f) {
        Frame frame;
        frame.delay = static_cast<int>(4 + f);
        for (size_t i = 0; i < 4u * 29 * 21; ++i) {
            const size_t x = i / 4 % 29;
            const bool seeThrough = soft && f % 2 && x < 12;
            frame.pixels.push_back(i % 4 < 3    ? static_cast<uint8_t>(i * i / 97 + 31 * f)
                                   : seeThrough ? static_cast<uint8_t>(20 * x)
                                                : uint8_t{255});
        }
        frame.transparent = soft && f % 2;
        source.frames.push_back(frame);
    }
    return source;
}

struct JourneyFrames : ::testing::Test {
    CommandLine line;
    PipelineOptions options;
    Failure failure;
    HostSession session;

    void SetUp() override {
        line.inputs = {"in.gif"};
        line.trueColor = true;
        line.palette = "custom";
    }

    Job Resolve(const EffectChoice& effect) {
        Job job;
        EXPECT_TRUE(ResolveEffectJob(effect, kDirectEngine, nullptr, &job, &failure)) << failure.error;
        return job;
    }

    bool Build(Animation* source, const std::vector<EffectChoice>& effects) {
        PipelineNotes notes;
        session.source = source;
        EngineStart start;
        start.session = &session;
        line.effects = effects;
        const OpenEngine engine(kDirectEngine, start, &failure);
        std::vector<Job> jobs;
        return engine &&
               ResolveJobs(line, HasOwnPalette(*source), kDirectEngine, engine.opened, &jobs, &failure) &&
               RunJobs(engine, &session, jobs, options, &notes, &failure);
    }

    Animation Run(Animation source, const std::vector<EffectChoice>& effects) {
        EXPECT_TRUE(Build(&source, effects)) << failure.error;
        return PlayBuilt(session.built, session.record);
    }
};

void ExpectSameFrame(const Frame& expected, const Frame& actual, size_t number) {
    EXPECT_TRUE(expected.pixels == actual.pixels) << "frame " << number;
    EXPECT_EQ(expected.transparent, actual.transparent) << "frame " << number;
    EXPECT_EQ(expected.delay, actual.delay) << "frame " << number;
}

TEST_F(JourneyFrames, Frames_with_equal_values_are_built_together) {
    const Job job = Resolve({"Emboss", {{"Radius", "4,6"}, {"Depth", "20"}}});
    Animation source = DriftingSource(5);
    for (Frame& frame : source.frames) frame.delay = 10;
    std::vector<size_t> sizes, before;
    std::vector<int> radii, depths;
    const auto build = [&](const Job& still, Animation* part) {
        EXPECT_TRUE(still.moving.empty());
        EXPECT_EQ(part->width, 29);
        EXPECT_EQ(part->metadata.xmp.size(), 0u) << "nothing is copied for each part";
        sizes.push_back(part->frames.size());
        before.push_back(static_cast<size_t>(session.progressBefore));
        EXPECT_EQ(session.progressWhole, 5);
        radii.push_back(ValueOf(still, "Radius", 0));
        depths.push_back(ValueOf(still, "Depth", 0));
        for (Frame& frame : part->frames) frame.left = static_cast<int>(sizes.size());
        return true;
    };
    ASSERT_TRUE(BuildMovingFrames(job, build, &session, &source));
    EXPECT_THAT(sizes, ElementsAre(1, 2, 2));
    EXPECT_THAT(before, ElementsAre(0, 1, 3));
    EXPECT_THAT(radii, ElementsAre(4, 5, 6));
    EXPECT_THAT(depths, ElementsAre(20, 20, 20));
    ASSERT_EQ(source.frames.size(), 5u);
    EXPECT_EQ(source.frames[0].left, 1);
    EXPECT_EQ(source.frames[2].left, 2);
    EXPECT_EQ(source.frames[4].left, 3);
    EXPECT_EQ(source.comment, "of the source");
    EXPECT_EQ(source.metadata.xmp.size(), 2u);
    EXPECT_EQ(session.progressWhole, 0);
    EXPECT_FALSE(BuildMovingFrames(
        job, [](const Job&, Animation*) { return false; }, &session, &source));
}

TEST_F(JourneyFrames, Each_frame_is_that_of_a_build_with_its_value) {
    struct Case {
        const char* effect;
        const char* parameter;
        std::vector<const char*> values;
        bool soft;
    };
    for (const Case& each :
         {Case{"Swirl", "Angle", {"-90", "0", "90", "180"}, false},
          Case{"Swirl", "Angle", {"-90", "0", "90", "180"}, true},
          Case{"HSB and Channels", "Channels", {"Left 1", "Right 1", "Left 2", "Right 2"}, true},
          Case{"Glass Block", "Block size", {"10", "20", "30", "40"}, true},
          Case{"Motion Blur", "Radius", {"5", "10", "15", "20"}, false},
          Case{"Motion Blur", "Radius", {"5", "10", "15", "20"}, true}}) {
        options.extendEdges = std::string(each.effect) == "Motion Blur";
        Animation source = DriftingSource(4, each.soft);
        for (Frame& frame : source.frames) frame.delay = 10;
        std::string list;
        for (const char* value : each.values) list += (list.empty() ? "" : ",") + std::string(value);
        EffectChoice effect = {each.effect, {{each.parameter, list}}};
        if (effect.name == "HSB and Channels") effect.settings.push_back({"Enable channels", "on"});
        const Animation moved = Run(source, {effect});
        ASSERT_EQ(moved.frames.size(), 4u);
        EXPECT_EQ(moved.comment, "of the source");
        for (size_t f = 0; f < 4; ++f) {
            effect.settings[0].value = each.values[f];
            ExpectSameFrame(Run(source, {effect}).frames[f], moved.frames[f], f);
        }
    }
}

TEST_F(JourneyFrames, A_chain_has_a_journey_for_each_effect) {
    const Animation source = DriftingSource(3);
    const EffectChoice turn = {"Swirl", {{"Angle", "0..90"}}},
                       soften = {"Gaussian Blur", {{"Radius", "30..4"}}};
    const Animation chained = Run(source, {turn, soften});
    const Animation stepwise = Run(Run(source, {turn}), {soften});
    for (size_t f = 0; f < 3; ++f) ExpectSameFrame(stepwise.frames[f], chained.frames[f], f);
    EXPECT_FALSE(chained.frames[0].pixels == Run(source, {turn}).frames[0].pixels);
}

TEST_F(JourneyFrames, The_palette_is_put_onto_finished_frames) {
    const Animation source = DriftingSource(3);
    const EffectChoice turn = {"Swirl", {{"Angle", "0..90"}}};
    const Animation between = Run(source, {turn});
    line.trueColor = false;
    line.dither = true;
    for (const bool supercompress : {false, true}) {
        line.supercompress = supercompress;
        const Animation moved = Run(source, {turn});
        const Animation expected = Run(between, {UnchangingEffect()});
        for (size_t f = 0; f < 3; ++f) ExpectSameFrame(expected.frames[f], moved.frames[f], f);
        EXPECT_TRUE(std::all_of(session.built.frames.begin(), session.built.frames.end(),
                                [](const BuiltFrame& frame) { return frame.indexed; }));
    }
}

TEST_F(JourneyFrames, One_frame_is_refused) {
    Animation source = DriftingSource(1);
    EXPECT_FALSE(Build(&source, {{"Bump", {}}, {"Swirl", {{"Angle", "0..90"}}}}));
    EXPECT_EQ(failure.exitCode, kExitBadCommand);
    EXPECT_EQ(
        failure.error,
        "Angle cannot move within one frame; --frames N makes a still picture an animation of N frames.");
}

#ifndef _WIN32
TEST_F(JourneyFrames, Each_refused_allocation_fails_or_is_survived_and_loses_nothing) {
    line.trueColor = false;
    const size_t blocks = CountMemory().liveBlocks;
    size_t failures = 0;
    for (size_t number = 1;; ++number) {
        Animation source = DriftingSource(3, true);
        failure = {};
        ResetMemoryCounts();
        RefuseAllocation(number);
        const bool built =
            Build(&source, {{"Swirl", {{"Angle", "0..90"}}}, {"Emboss", {{"Depth", "15,20"}}}});
        const bool refused = CountMemory().allocations >= number;
        ResetMemoryCounts();
        ASSERT_EQ(CountMemory().liveBlocks, blocks) << number;
        ASSERT_EQ(built, failure.error.empty()) << number;
        ASSERT_EQ(session.progressWhole, 0) << number;
        if (!refused) break;
        failures += !built;
    }
    EXPECT_GT(failures, 20u);
}
#endif

}  // namespace
}  // namespace kfx::commands
