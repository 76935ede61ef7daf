// SPDX-License-Identifier: MIT
// Builds with every effect, at two settings, to every kind of output: whoever goes through the frames, and in
// whatever order, the host is asked the same and gets the same frames.
#include <gtest/gtest.h>

#include <cstring>

#include "commands/frame_threads.h"
#include "effects/effect_table.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "tests/builder/build_run.h"
#include "tests/builder/refusal_inputs.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr uint32_t kFrames = 5;

// All frames are transformed, the last one first, before the host is asked anything.
bool RunBackwards(int32_t threads, int32_t count, const FrameWork& work) {
    for (int32_t i = count - 1; i >= 0; --i)
        if (!work.transform(work.user, i, i % threads)) return false;
    for (int32_t i = 0; i < count; ++i) {
        if (work.before && !work.before(work.user, i)) return false;
        if (work.after && !work.after(work.user, i)) return false;
    }
    return true;
}

// Time passes with every request: frames that are made in another order see other times.
uint32_t seconds = 0;
void LetTimePass() { HoldClock(++seconds); }

struct ThreadedBuilds : testing::TestWithParam<Output> {
    // Frames of several sizes, with colours in common.
    ThreadedBuilds() {
        std::vector<BlockFrame> frames;
        for (uint32_t i = 0; i < kFrames; ++i)
            frames.push_back(
                {BytesOf(ShadedPicture(kSide + static_cast<int32_t>(i % 3), kSide, i % 4).handle),
                 {i, 0, 5, 0}});
        block = MakeAnimationBlock(frames);
    }
    ~ThreadedBuilds() override {
        settings = Settings();
        ReleaseClock();
    }

    BuildRun Build(size_t row, const FrameRunner* runner) {
        HoldClock(seconds = 1000);
        BuildRun run;
        run.runner = runner;
        run.onRequest = LetTimePass;
        EffectDescriptor effect = *DescriptorAt(row);
        if (GetParam().effectHasBackground) effect.query = [](void*, int32_t) { return 0x20A020; };
        EXPECT_EQ(BuildWith(&run, block, GetParam().options, &effect), 1);
        return run;
    }

    void ExpectSame(const BuildRun& expected, const BuildRun& found, const std::string& name) {
        EXPECT_TRUE(expected.lines == found.lines) << name << ": other requests";
        EXPECT_FALSE(found.askedElsewhere) << name;
        ASSERT_EQ(expected.frames.size(), found.frames.size()) << name;
        for (size_t i = 0; i < expected.frames.size(); ++i)
            EXPECT_TRUE(expected.frames[i].bitmap == found.frames[i].bitmap) << name << ", frame " << i;
    }

    void ExpectSameWith(const std::vector<FrameRunner>& runners) {
        for (size_t row = 0; row < EffectCount(); ++row) {
            const std::string name = EffectAt(row)->name;
            const BuildRun expected = Build(row, nullptr);
            ASSERT_EQ(expected.frames.size(), size_t{kFrames}) << name;
            for (const FrameRunner& runner : runners)
                ExpectSame(expected, Build(row, &runner), name + " on " + std::to_string(runner.threads));
        }
    }

    std::vector<uint8_t> block;
};

TEST_P(ThreadedBuilds, Give_the_frames_and_requests_of_one_thread) {
    BuiltInSettings();
    ExpectSameWith({{.threads = 3, .run = RunBackwards}, commands::FramesOnThreads(2)});
    OtherSettings();
    ExpectSameWith(
        {commands::FramesOnThreads(1), commands::FramesOnThreads(3), commands::FramesOnThreads(8)});
}

INSTANTIATE_TEST_SUITE_P(Outputs, ThreadedBuilds, testing::ValuesIn(Outputs()),
                         [](const auto& output) { return std::string(output.param.name); });

}  // namespace
}  // namespace kfx::test
