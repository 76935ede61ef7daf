// SPDX-License-Identifier: MIT
// Jobs in turn, compared with one build after another.
#include "commands/pipeline.h"

#include <gtest/gtest.h>

#include "commands/direct_engine.h"

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

struct Pipeline : ::testing::Test {
    CommandLine line;

    void SetUp() override {
        line.inputs = {"in.gif"};
        line.trueColor = true;
        line.palette = "custom";
    }

    // What the effects make of the source, as it plays.
    Animation Run(Animation source, const std::vector<EffectChoice>& effects) {
        HostSession session;
        session.source = &source;
        EngineStart start;
        start.session = &session;
        Failure failure;
        line.effects = effects;
        const bool ownPalette = HasOwnPalette(source);
        const OpenEngine engine(kDirectEngine, start, &failure);
        std::vector<Job> jobs;
        EXPECT_TRUE(ResolveJobs(line, ownPalette, kDirectEngine, engine.opened, &jobs, &failure))
            << failure.error;
        EXPECT_TRUE(RunJobs(engine, &session, jobs, &failure)) << failure.error;
        return PlayBuilt(session.built, session.record);
    }
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

TEST_F(Pipeline, An_effect_that_comes_again_starts_from_its_defaults) {
    const Animation source = ColorfulSource();
    ExpectSame(Run(Run(source, {kTurn}), {{"Swirl", {}}}), Run(source, {kTurn, {"Swirl", {}}}));
}

}  // namespace
}  // namespace kfx::commands
