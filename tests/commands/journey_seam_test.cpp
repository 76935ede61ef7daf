// SPDX-License-Identifier: MIT
#include "commands/journey_seam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

using ::testing::ElementsAre;

// Grey pictures of these levels.
BuiltAnimation Greys(const std::vector<uint8_t>& levels) {
    BuiltAnimation built;
    built.width = 4;
    built.height = 3;
    for (const uint8_t level : levels) {
        BuiltFrame frame;
        frame.pixels.assign(36, level);
        frame.sourceIndex = built.frames.size();
        built.frames.push_back(frame);
    }
    return built;
}

SourceRecord Looping(size_t frames) {
    SourceRecord source;
    source.loopCount = kLoopForever;
    source.frames.resize(frames);
    return source;
}

bool Leads(const std::vector<uint8_t>& levels) {
    return IsSeamless(MeasureSteps(Greys(levels), Looping(levels.size())));
}

TEST(JourneySeam, The_last_step_is_compared_with_the_largest_of_the_others) {
    EXPECT_TRUE(Leads({0, 40, 80, 40}));
    EXPECT_FALSE(Leads({0, 40, 80, 120}));
    EXPECT_TRUE(Leads({0, 40, 80, 50})) << "a quarter more";
    EXPECT_FALSE(Leads({0, 40, 80, 52}));
    EXPECT_TRUE(Leads({0, 200, 10, 190})) << "the animation jumps anyway";
    EXPECT_TRUE(Leads({7, 7, 7})) << "nothing moves";
    EXPECT_TRUE(Leads({7, 200})) << "there and back";
    EXPECT_TRUE(Leads({7}));
    EXPECT_TRUE(Leads({}));
}

TEST(JourneySeam, What_is_seen_counts_and_not_what_is_stored) {
    // The second frame draws nothing new, the third one only a part; alpha hides what the last one draws.
    BuiltAnimation built = Greys({10, 10, 10});
    for (BuiltFrame& frame : built.frames) {
        frame.indexed = true;
        frame.palette = {{10, 10, 10}, {50, 10, 10}, {99, 99, 99}};
        frame.pixels.assign(12, 0);
    }
    built.frames[1].pixels.assign(12, 2);
    built.frames[1].transparentIndex = 2;
    for (size_t i = 0; i < 6; ++i) built.frames[2].pixels[i] = 1;
    Steps steps = MeasureSteps(built, Looping(3));
    EXPECT_EQ(steps.largest, 20);
    EXPECT_EQ(steps.last, 20);
    SourceRecord source = Looping(3);
    for (SourceFrame& frame : source.frames) frame.alpha.assign(12, 0);
    steps = MeasureSteps(built, source);
    EXPECT_EQ(steps.largest, 0);
    EXPECT_EQ(steps.last, 0);
}

TEST(JourneySeam, Notes_tell_what_jumps_and_what_does_not_repeat) {
    std::vector<std::string> notes;
    SourceRecord source = Looping(3);
    EXPECT_TRUE(CheckSeam(Greys({0, 20, 10}), source, true, &notes));
    EXPECT_THAT(notes, ElementsAre());
    EXPECT_FALSE(CheckSeam(Greys({0, 20, 40}), source, true, &notes));
    EXPECT_THAT(notes,
                ElementsAre("the last frame does not lead into the first: pixels change by 40.0 levels "
                            "there, and by 20.0 at most between other frames"));
    notes.clear();
    source.loopCount = kLoopNone;
    EXPECT_FALSE(CheckSeam(Greys({0, 20, 10}), source, true, &notes));
    EXPECT_THAT(notes, ElementsAre("plays only once; --loop forever repeats it"));
    notes.clear();
    EXPECT_TRUE(CheckSeam(Greys({0, 20, 10}), source, false, &notes)) << "pictures that are shown elsewhere";
    EXPECT_THAT(notes, ElementsAre());
    EXPECT_FALSE(CheckSeam(Greys({0, 20, 60}), source, true, &notes));
    EXPECT_EQ(notes.size(), 2u);
}

}  // namespace
}  // namespace kfx::commands
