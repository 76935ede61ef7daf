// SPDX-License-Identifier: MIT
// Names become rows, against whatever the engine lists.
#include "commands/job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/engine.h"

namespace kfx::commands {
namespace {

using ::testing::HasSubstr;

// An engine that lists two effects and two palettes and can be told to fail.
struct ListingEngine {
    std::string failing;  // the list that fails
};

bool FailsAt(void* opened, const char* list, Failure* failure) {
    const bool fails = static_cast<ListingEngine*>(opened)->failing == list;
    if (fails) *failure = {kExitTimeout, std::string("no ") + list + "."};
    return fails;
}

bool ListEffects(void* opened, std::vector<std::string>* names, Failure* failure) {
    *names = {"Blur", "Swirl"};
    return !FailsAt(opened, "effects", failure);
}

bool ListParameters(void* opened, int effect, std::vector<Parameter>* parameters, Failure* failure) {
    if (effect == 1) {
        Parameter angle;
        angle.name = "Angle";
        angle.control = 7;
        angle.minimum = -1440;
        angle.maximum = 1440;
        angle.shownOffset = -1440;
        Parameter side;
        side.kind = Parameter::List;
        side.name = "Side";
        side.control = 8;
        side.items = {"Left 1", "Right 1"};
        side.maximum = 1;
        *parameters = {angle, side};
    }
    return !FailsAt(opened, "parameters", failure);
}

bool ListPalettes(void* opened, std::vector<std::string>* names, Failure* failure) {
    *names = {"Black and white", "216-color safe"};
    return !FailsAt(opened, "palettes", failure);
}

const Engine kListing = {.options = nullptr,
                         .takesSeed = false,
                         .limitsColors = true,
                         .open = nullptr,
                         .close = nullptr,
                         .name = nullptr,
                         .listEffects = ListEffects,
                         .listParameters = ListParameters,
                         .listPalettes = ListPalettes,
                         .dropSource = nullptr,
                         .build = nullptr};

struct JobTest : ::testing::Test {
    ListingEngine engine;
    CommandLine line;
    bool ownPalette = true;
    std::vector<Job> jobs;
    Job job;  // the last of them
    Failure failure;

    void SetUp() override {
        line.inputs = {"in.gif"};
        line.effects = {{"swirl", {}}};
        line.palette = "custom";
    }

    bool Resolve() {
        const bool isResolved = ResolveJobs(line, ownPalette, kListing, &engine, &jobs, &failure);
        if (isResolved) job = jobs.back();
        return isResolved;
    }

    std::string Refused() {
        EXPECT_FALSE(Resolve());
        EXPECT_EQ(failure.exitCode, kExitBadCommand);
        return failure.error;
    }
};

TEST_F(JobTest, Names_become_rows_and_values) {
    line.effects[0].settings = {{"angle", "-90"}, {"Side", "right"}};
    line.dither = true;
    line.comment = true;
    ASSERT_TRUE(Resolve()) << failure.error;
    EXPECT_EQ(job.effect, 1);
    ASSERT_EQ(job.values.size(), 2u);
    EXPECT_EQ(job.values[0].parameter.control, 7);
    EXPECT_EQ(job.values[0].value, -90);
    EXPECT_EQ(job.values[1].value, 1);
    EXPECT_EQ(job.paletteUse, PaletteUse::Computed);
    EXPECT_TRUE(job.dither);
    EXPECT_FALSE(job.supercompress);
    EXPECT_TRUE(job.comment);
}

TEST_F(JobTest, Unknown_names_are_answered_with_what_is_near) {
    line.effects[0].name = "Swrl";
    EXPECT_THAT(Refused(), HasSubstr("unknown effect \"Swrl\"; did you mean Swirl?"));
    line.effects[0].name = "Swirl";
    line.effects[0].settings = {{"Angel", "1"}};
    EXPECT_THAT(Refused(), HasSubstr("unknown parameter \"Angel\"; did you mean Angle?"));
    line.effects[0].settings = {{"Angle", "1441"}};
    EXPECT_EQ(Refused(), "Angle of Swirl takes whole numbers from -1440 to 1440, not \"1441\".");
    line.effects[0].settings = {{"Side", "up"}};
    EXPECT_EQ(Refused(), "Side of Swirl takes Left 1 or Right 1, not \"up\".");
    line.effects[0].name = "Blur";
    EXPECT_EQ(Refused(), "Blur has no parameters.");
}

TEST_F(JobTest, A_parameter_is_set_once_by_whatever_part_of_its_name) {
    line.effects[0].settings = {{"Angle", "1"}, {"ang", "2"}};
    EXPECT_EQ(Refused(), "--set gives Angle twice.");
}

TEST_F(JobTest, A_parameter_moves_or_has_one_value) {
    line.effects[0].settings = {{"angle", "-90..90:loop"}, {"Side", "right"}};
    EXPECT_TRUE(HasJourney(line.effects[0]));
    ASSERT_TRUE(Resolve()) << failure.error;
    ASSERT_EQ(job.moving.size(), 1u);
    EXPECT_EQ(job.moving[0].parameter.name, "Angle");
    EXPECT_EQ(job.moving[0].journey.keys.size(), 3u);
    ASSERT_EQ(job.values.size(), 1u);
    EXPECT_EQ(job.values[0].value, 1);
    line.effects[0].settings = {{"Side", "right,left"}};
    ASSERT_TRUE(Resolve()) << failure.error;
    EXPECT_EQ(job.moving[0].parameter.name, "Side");
    line.effects[0].settings = {{"Side", "right"}};
    EXPECT_FALSE(HasJourney(line.effects[0]));
    line.effects[0].settings = {{"Angle", "1"}, {"ang", "2..3"}};
    EXPECT_EQ(Refused(), "--set gives Angle twice.");
    line.effects[0].settings = {{"ang", "2..3"}, {"angle", "1,2"}};
    EXPECT_EQ(Refused(), "--set gives Angle twice.");
    line.effects[0].settings = {{"angle", "0..1441"}};
    EXPECT_EQ(Refused(), "Angle of Swirl takes whole numbers from -1440 to 1440, not \"1441\".");
}

TEST_F(JobTest, Each_effect_is_a_job_and_the_last_one_has_the_palette) {
    line.effects = {{"Swirl", {{"Angle", "3"}}}, {"Blur", {}}, {"Swirl", {}}};
    line.palette = "216 color";
    line.dither = line.supercompress = line.comment = true;
    line.localBackground = "102030";
    ASSERT_TRUE(Resolve()) << failure.error;
    ASSERT_EQ(jobs.size(), 3u);
    for (const Job* early : {&jobs[0], &jobs[1]}) {
        EXPECT_EQ(early->paletteUse, PaletteUse::TrueColor);
        EXPECT_FALSE(early->dither || early->supercompress || early->comment);
    }
    for (const Job& each : jobs) EXPECT_EQ(each.background, Background::Color);
    EXPECT_TRUE(job.dither && job.supercompress && job.comment);
    EXPECT_EQ(job.paletteUse, PaletteUse::Listed);
    EXPECT_EQ(ValueOf(jobs[0], "Angle", 99), 3);
    EXPECT_EQ(ValueOf(jobs[2], "Angle", 99), 0) << "the default";
    EXPECT_EQ(ValueOf(jobs[1], "Angle", 99), 99) << "no such parameter";
}

TEST_F(JobTest, Completed_values_keep_what_was_chosen) {
    line.effects[0].settings = {{"Side", "right"}};
    ASSERT_TRUE(Resolve());
    CompleteValues(&job);
    ASSERT_EQ(job.values.size(), 2u);
    EXPECT_EQ(job.values[0].parameter.name, "Angle");
    EXPECT_EQ(job.values[0].value, 0);
    EXPECT_EQ(job.values[1].value, 1);
}

TEST_F(JobTest, A_palette_is_a_row_of_the_list_or_a_word) {
    line.palette = "216 color";
    ASSERT_TRUE(Resolve());
    EXPECT_EQ(job.paletteUse, PaletteUse::Listed);
    EXPECT_EQ(job.palette, 1);
    line.palette = "original";
    ASSERT_TRUE(Resolve());
    EXPECT_EQ(job.palette, 2) << "behind the last";
    line.palette = "nonsense";
    EXPECT_THAT(Refused(), HasSubstr("Black and white, 216-color safe, Match original, custom and original"));
    line.trueColor = true;
    ASSERT_TRUE(Resolve()) << "no palette is looked up";
    EXPECT_EQ(job.paletteUse, PaletteUse::TrueColor);
}

TEST_F(JobTest, A_source_without_a_palette_cannot_keep_it) {
    ownPalette = false;
    line.palette = "original";
    EXPECT_EQ(Refused(), "in.gif: has no palette of its own; choose another --palette.");
    for (const char* name : {"Match original", "match"}) {
        line.palette = name;
        EXPECT_EQ(Refused(), "in.gif: has no palette of its own; choose another --palette.");
    }
    line.palette = "nonsense";
    EXPECT_THAT(Refused(), ::testing::Not(HasSubstr("Match original")));
}

TEST_F(JobTest, The_background_is_a_colour_the_sources_or_the_standard) {
    ASSERT_TRUE(Resolve());
    EXPECT_EQ(job.background, Background::Standard);
    line.localBackground = "none";
    ASSERT_TRUE(Resolve());
    EXPECT_EQ(job.background, Background::Source);
    line.localBackground = "102030";
    ASSERT_TRUE(Resolve());
    EXPECT_EQ(job.background, Background::Color);
    EXPECT_EQ(job.backgroundColor, 0x302010u);
}

TEST_F(JobTest, An_engine_that_fails_says_why) {
    line.palette = "216-color safe";
    for (const char* list : {"effects", "parameters", "palettes"}) {
        engine.failing = list;
        EXPECT_FALSE(Resolve());
        EXPECT_EQ(failure.exitCode, kExitTimeout);
        EXPECT_EQ(failure.error, std::string("no ") + list + ".");
    }
}

}  // namespace
}  // namespace kfx::commands
