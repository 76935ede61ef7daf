// SPDX-License-Identifier: MIT
#include "commands/fit_choices.h"

#include <gtest/gtest.h>

#include "commands/build_steps.h"
#include "commands/direct_engine.h"
#include "commands/fit_look.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr int kWidth = 36, kHeight = 28;

// Frames of soft colours that move, with a grain that no palette of few colours shows.
Animation ManyColors(size_t frames, bool transparent) {
    Animation animation;
    animation.width = kWidth;
    animation.height = kHeight;
    animation.loopCount = kLoopForever;
    for (size_t i = 0; i < frames; ++i) {
        Frame frame;
        frame.milliseconds = 60;
        frame.delay = 6;
        frame.transparent = transparent;
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const int moved = x + 5 * static_cast<int>(i), grain = (x * 7 + y * 13 + moved * moved) % 23;
                const bool hidden = transparent && x < 10;
                for (const int value : {3 * moved + grain, 5 * y + grain, 2 * (moved + y) + grain})
                    frame.pixels.push_back(hidden ? 0 : static_cast<uint8_t>(value % 256));
                frame.pixels.push_back(hidden ? 0 : 255);
            }
        }
        animation.frames.push_back(std::move(frame));
    }
    return animation;
}

struct Choosing : ::testing::Test {
    FitChoices choices;
    Failure failure;
    std::vector<FitWay> told;

    bool Find(Animation source, const std::string& size, const std::atomic<bool>* stop = nullptr) {
        CommandLine line;
        HostSession session;
        std::string error;
        session.source = &source;
        EXPECT_EQ(
            ParseCommandLine({"apply", "in.gif", "-o", "out.gif", "--max-size", size}, {}, &line, &error),
            ParseOutcome::Run)
            << error;
        return FindFitChoices(
            line, {.engine = kDirectEngine}, {PipelineOptionsOf, ResultOptionsOf, StartOf, stop}, &session,
            [this](FitWay way, const FitSettings&) { told.push_back(way); }, &choices, &failure);
    }

    // Each choice is a file within the size, and is what its row says.
    void ExpectSound(size_t mostBytes, size_t frames) const {
        for (const FitChoice& choice : choices.found) {
            const FitTrial& trial = choice.trial;
            EXPECT_LE(trial.file.size(), mostBytes);
            EXPECT_EQ(trial.file.size(), trial.bytes);
            Animation read;
            std::string error;
            ASSERT_TRUE(ReadAnimationFromMemory(trial.file.data(), trial.file.size(), &read, &error))
                << error;
            EXPECT_EQ(read.width, trial.width);
            EXPECT_FALSE(read.recipe.empty());
            const bool isSmall = choice.way == FitWay::Scale || choice.way == FitWay::ScaleAndLossy;
            EXPECT_EQ(trial.width < kWidth, isSmall);
            EXPECT_EQ(trial.settings.edits.every > 1, choice.way == FitWay::Frames);
            EXPECT_EQ(trial.settings.lossy > 0,
                      choice.way == FitWay::Lossy || choice.way == FitWay::ScaleAndLossy);
            if (choice.way != FitWay::Frames) {
                EXPECT_EQ(read.frames.size(), frames);
            }
        }
    }

    std::vector<FitWay> Ways() const {
        std::vector<FitWay> ways;
        for (const FitChoice& choice : choices.found) ways.push_back(choice.way);
        return ways;
    }
};

TEST_F(Choosing, Four_choices_give_up_four_different_things) {
    ASSERT_TRUE(Find(ManyColors(4, false), "3000")) << failure.error;
    EXPECT_EQ(Ways(), (std::vector<FitWay>{FitWay::Colors, FitWay::Scale, FitWay::Frames, FitWay::Lossy}));
    EXPECT_FALSE(choices.isUnchanged);
    ExpectSound(3000, 4);
}

TEST_F(Choosing, Transparent_frames_stay_transparent) {
    ASSERT_TRUE(Find(ManyColors(2, true), "1300")) << failure.error;
    ASSERT_EQ(choices.found.size(), kMostFitChoices);
    ExpectSound(1300, 2);
    for (const FitChoice& choice : choices.found) {
        Animation read;
        std::string error;
        ASSERT_TRUE(
            ReadAnimationFromMemory(choice.trial.file.data(), choice.trial.file.size(), &read, &error));
        EXPECT_EQ(read.frames[0].pixels[3], 0);
    }
}

TEST_F(Choosing, Of_a_picture_no_frames_are_left_out) {
    ASSERT_TRUE(Find(ManyColors(1, false), "700")) << failure.error;
    EXPECT_EQ(Ways(),
              (std::vector<FitWay>{FitWay::Colors, FitWay::Scale, FitWay::Lossy, FitWay::ScaleAndLossy}));
    ExpectSound(700, 1);
}

TEST_F(Choosing, Frames_that_fit_as_they_are_leave_nothing_to_choose) {
    Animation plain = ManyColors(2, false);
    for (Frame& frame : plain.frames) {
        for (uint8_t& value : frame.pixels) value = static_cast<uint8_t>(value | 0x7F);
    }
    ASSERT_TRUE(Find(std::move(plain), "1M")) << failure.error;
    ASSERT_EQ(choices.found.size(), 1u);
    EXPECT_TRUE(choices.isUnchanged);
    EXPECT_EQ(choices.found[0].trial.look, kExactLook);
}

TEST_F(Choosing, The_smallest_file_is_told_where_nothing_fits) {
    ASSERT_TRUE(Find(ManyColors(4, false), "60")) << failure.error;
    EXPECT_TRUE(choices.found.empty());
    EXPECT_GT(choices.fewestBytes, 60u);
}

TEST_F(Choosing, A_stopped_search_fails_before_its_next_trial) {
    const std::atomic<bool> stop{true};
    EXPECT_FALSE(Find(ManyColors(4, false), "8000", &stop));
    EXPECT_EQ(failure.error, "the search was stopped.");
    EXPECT_TRUE(choices.found.empty());
}

}  // namespace
}  // namespace kfx::commands
