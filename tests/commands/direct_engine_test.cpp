// SPDX-License-Identifier: MIT
// The direct engine as a whole is compared with the plug-in in tests/driven/engines_test.cpp.
#include "commands/direct_engine.h"

#include <gtest/gtest.h>

#include "effects/effect_table.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif

namespace kfx::commands {
namespace {

Animation SmallSource() {
    Animation source;
    source.width = 5;
    source.height = 4;
    for (int f = 0; f < 2; ++f) {
        Frame frame;
        for (int i = 0; i < 4 * source.width * source.height; ++i)
            frame.pixels.push_back(i % 4 == 3 ? uint8_t{255} : static_cast<uint8_t>(37 * i + 90 * f));
        source.frames.push_back(frame);
    }
    return source;
}

struct DirectEngine : ::testing::Test {
    Animation source = SmallSource();
    HostSession session;
    Failure failure;
    EngineStart start;

    void SetUp() override {
        session.source = &source;
        session.keepSource = true;
        start.session = &session;
    }

    bool Build(const Job& job) {
        const OpenEngine engine(kDirectEngine, start, &failure);
        return engine && kDirectEngine.build(engine.opened, job, false, &failure);
    }
};

int RowOf(const std::string& name) {
    for (size_t i = 0; i < EffectCount(); ++i) {
        if (EffectAt(i)->name == name) return static_cast<int>(i);
    }
    return -1;
}

TEST_F(DirectEngine, One_build_leaves_nothing_to_the_next) {
    Job plain;
    plain.effect = RowOf("Swirl");
    ASSERT_TRUE(Build(plain)) << failure.error;
    const auto before = session.built.frames[0].pixels;

    Job turned = plain;
    {
        const OpenEngine engine(kDirectEngine, start, &failure);
        std::vector<Parameter> parameters;
        ASSERT_TRUE(kDirectEngine.listParameters(engine.opened, plain.effect, &parameters, &failure));
        turned.values = {{parameters[0], 900}};
    }
    turned.background = Background::Color;
    turned.backgroundColor = 0x0000FF;
    ASSERT_TRUE(Build(turned));
    EXPECT_NE(session.built.frames[0].pixels, before);
    ASSERT_TRUE(Build(plain));
    EXPECT_EQ(session.built.frames[0].pixels, before);
}

TEST_F(DirectEngine, Progress_reaches_whoever_asked_for_it) {
    static int calls;
    calls = 0;
    start.onProgress = [](const HostSession&) { ++calls; };
    ASSERT_TRUE(Build(Job()));
    EXPECT_GT(calls, 0);
    EXPECT_EQ(session.actions.showProgress, nullptr) << "the session may be used for another engine";
}

TEST_F(DirectEngine, Any_number_of_threads_builds_the_same_frames) {
    const std::vector<Frame> both = source.frames;
    for (int i = 0; i < 3; ++i) source.frames.push_back(both[static_cast<size_t>(i % 2)]);
    Job job;
    job.effect = RowOf("Swirl");
    job.paletteUse = PaletteUse::Computed;
    job.dither = true;
    std::vector<std::vector<uint8_t>> expected;
    for (const int threads : {1, 2, 8, 0}) {
        start.threads = threads;
        ASSERT_TRUE(Build(job)) << failure.error;
        std::vector<std::vector<uint8_t>> frames;
        for (const BuiltFrame& frame : session.built.frames) frames.push_back(frame.pixels);
        ASSERT_EQ(frames.size(), 5u);
        if (threads == 1) expected = frames;
        EXPECT_EQ(frames, expected) << threads;
    }
}

#ifndef _WIN32
TEST_F(DirectEngine, Each_refused_allocation_is_a_failure_that_loses_nothing) {
    Job job;
    job.effect = RowOf("Emboss");
    job.paletteUse = PaletteUse::Computed;
    job.supercompress = true;
    const size_t blocks = CountMemory().liveBlocks;
    size_t failures = 0;
    for (size_t number = 1;; ++number) {
        ResetMemoryCounts();
        RefuseAllocation(number);
        failure = {};
        const bool built = Build(job);
        const bool refused = CountMemory().allocations >= number;
        ResetMemoryCounts();
        EXPECT_EQ(CountMemory().liveBlocks, blocks) << number;
        EXPECT_EQ(built, failure.error.empty()) << number;
        if (!refused) break;
        failures += !built;
    }
    EXPECT_GT(failures, 5u);
    EXPECT_TRUE(Build(job)) << failure.error;
}
#endif

}  // namespace
}  // namespace kfx::commands
