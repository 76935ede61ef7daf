// SPDX-License-Identifier: MIT
// Values over the frames, for each way of writing them.
#include "commands/journey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/direct_engine.h"
#include "effects/effect_table.h"

namespace kfx::commands {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

Parameter Slider(const std::string& name, int minimum, int maximum) {
    Parameter slider;
    slider.name = name;
    slider.minimum = minimum;
    slider.maximum = maximum;
    return slider;
}

Parameter Box() {
    Parameter box;
    box.kind = Parameter::CheckBox;
    box.name = "Invert";
    box.maximum = 1;
    return box;
}

Parameter Sides() {
    Parameter list;
    list.kind = Parameter::List;
    list.name = "Side";
    list.items = {"Left 1", "Left 2", "Right 1"};
    list.maximum = 2;
    return list;
}

const Parameter kAngle = Slider("Angle", -1440, 1440);

Timeline TimesOf(const std::vector<int>& milliseconds) {
    std::vector<Frame> frames(milliseconds.size());
    for (size_t i = 0; i < frames.size(); ++i) frames[i].milliseconds = milliseconds[i];
    return TimelineOf(frames);
}

std::vector<int> Values(const Parameter& parameter, const std::string& text, const Timeline& timeline,
                        const std::string& effect = "Swirl") {
    Journey journey;
    std::string error;
    EXPECT_TRUE(IsJourney(text));
    EXPECT_TRUE(ParseJourney(parameter, effect, text, &journey, &error)) << error;
    return ValuesOver(timeline, parameter, journey);
}

std::vector<int> Values(const Parameter& parameter, const std::string& text, size_t frames,
                        const std::string& effect = "Swirl") {
    return Values(parameter, text, TimesOf(std::vector<int>(frames, 40)), effect);
}

std::string Refused(const Parameter& parameter, const std::string& text,
                    const std::string& effect = "Swirl") {
    Journey journey;
    std::string error;
    EXPECT_TRUE(IsJourney(text)) << text;
    EXPECT_FALSE(ParseJourney(parameter, effect, text, &journey, &error)) << text;
    return error;
}

TEST(Journey, A_range_goes_from_the_first_frame_to_the_last) {
    EXPECT_THAT(Values(kAngle, "0..720", 5), ElementsAre(0, 180, 360, 540, 720));
    EXPECT_THAT(Values(kAngle, "0..720:linear", 3), ElementsAre(0, 360, 720));
    EXPECT_THAT(Values(kAngle, "-90..90", 4), ElementsAre(-90, -30, 30, 90));
    EXPECT_THAT(Values(kAngle, "90..-90", 3), ElementsAre(90, 0, -90));
    EXPECT_THAT(Values(kAngle, "-1440..-1438", 2), ElementsAre(-1440, -1438));
    EXPECT_THAT(Values(kAngle, "+5..10", 2), ElementsAre(5, 10));
    EXPECT_THAT(Values(kAngle, "7..9", 1), ElementsAre(7)) << "one frame has the first value";
    EXPECT_THAT(Values(kAngle, "7..9", TimesOf({})), ElementsAre());
}

TEST(Journey, Values_are_rounded_to_the_nearest_position_with_halves_upwards) {
    EXPECT_THAT(Values(kAngle, "0..5", 11), ElementsAre(0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5));
    EXPECT_THAT(Values(kAngle, "5..0", 11), ElementsAre(5, 5, 4, 4, 3, 3, 2, 2, 1, 1, 0));
    EXPECT_THAT(Values(kAngle, "-3..0", 7), ElementsAre(-3, -2, -2, -1, -1, 0, 0));
    EXPECT_THAT(Values(kAngle, "0..2", 4), ElementsAre(0, 1, 1, 2));
}

TEST(Journey, Time_counts_and_not_the_number_of_the_frame) {
    EXPECT_THAT(Values(kAngle, "0..100", TimesOf({10, 30, 60, 500})), ElementsAre(0, 10, 40, 100));
    EXPECT_THAT(Values(kAngle, "0..100:loop", TimesOf({100, 300, 100, 300})), ElementsAre(0, 25, 100, 75));
    EXPECT_THAT(Values(kAngle, "0..100", TimesOf({0, 0, 0})), ElementsAre(0, 50, 100))
        << "frames without a time";
    Frame hundredths;
    hundredths.delay = 7;
    EXPECT_EQ(TimelineOf({hundredths, hundredths}).end, 140);
}

TEST(Journey, Ease_is_slow_at_both_ends_of_each_way) {
    EXPECT_THAT(Values(kAngle, "0..1000:ease", 5), ElementsAre(0, 156, 500, 844, 1000));
    EXPECT_THAT(Values(kAngle, "1000..0:ease", 5), ElementsAre(1000, 844, 500, 156, 0));
    EXPECT_THAT(Values(kAngle, "0,100,0:EASE", 9), ElementsAre(0, 16, 50, 84, 100, 84, 50, 16, 0));
}

TEST(Journey, A_loop_comes_back_to_the_first_value_after_the_last_frame) {
    EXPECT_THAT(Values(kAngle, "0..720:loop", 8), ElementsAre(0, 180, 360, 540, 720, 540, 360, 180));
    EXPECT_THAT(Values(kAngle, "0..720:ease:loop", 8), ElementsAre(0, 113, 360, 608, 720, 608, 360, 113));
    EXPECT_THAT(Values(kAngle, "0..10:loop", 2), ElementsAre(0, 10));
    EXPECT_THAT(Values(kAngle, "0,30,60:loop", 6), ElementsAre(0, 15, 30, 45, 60, 30));
    EXPECT_THAT(Values(kAngle, "0,30,0:loop", 4), ElementsAre(0, 15, 30, 15)) << "it is back already";
}

TEST(Journey, What_turns_all_the_way_round_goes_on_in_its_direction) {
    const Parameter angle = Slider("Angle", 0, 359);
    EXPECT_THAT(Values(angle, "0..359:loop", 4, "Motion Blur"), ElementsAre(0, 90, 180, 270));
    EXPECT_THAT(Values(angle, "359..0:loop", 4, "Motion Blur"), ElementsAre(359, 269, 179, 89));
    EXPECT_THAT(Values(angle, "0..359:loop", 720, "Motion Blur").back(), 0) << "359.5 is rounded to 360";
    EXPECT_THAT(Values(angle, "0..180:loop", 4, "Motion Blur"), ElementsAre(0, 90, 180, 90)) << "half a turn";
    EXPECT_THAT(Values(angle, "0..359", 2, "Motion Blur"), ElementsAre(0, 359)) << "no loop";
    EXPECT_THAT(Values(kAngle, "0..360:loop", 4), ElementsAre(0, 180, 360, 180)) << "no turn, but a swirl";
    EXPECT_THAT(Values(Slider("Hue", 0, 360), "0..360:loop", 4, "HSB and Channels"),
                ElementsAre(0, 180, 360, 180))
        << "the hue is not wrapped";
}

TEST(Journey, Key_values_are_evenly_spaced_or_have_their_times) {
    const Parameter radius = Slider("Radius", 4, 45);
    EXPECT_THAT(Values(radius, "4,20,8", 5), ElementsAre(4, 12, 20, 14, 8));
    EXPECT_THAT(Values(radius, "4@0,20@50%,8@100%", 5), ElementsAre(4, 12, 20, 14, 8));
    EXPECT_THAT(Values(radius, "4@25%,20@75%", 5), ElementsAre(4, 4, 12, 20, 20)) << "values stay";
    EXPECT_THAT(Values(radius, "4@33.33%,20@66.7%:linear", 4), ElementsAre(4, 4, 20, 20));
    EXPECT_THAT(Values(radius, "4@0%,20@50%:loop", 4), ElementsAre(4, 12, 20, 12));
    EXPECT_THAT(Values(radius, "4@0%,20@50%,4@100%:loop", 4), ElementsAre(4, 12, 20, 12));
    EXPECT_THAT(Values(radius, "4,20,8", TimesOf({10, 10, 80, 1})), ElementsAre(4, 7, 10, 8));
}

TEST(Journey, Check_boxes_and_lists_switch) {
    EXPECT_THAT(Values(Box(), "off,on", 4), ElementsAre(0, 0, 1, 1)) << "an equal share of the time each";
    EXPECT_THAT(Values(Box(), "no,yes,no", TimesOf({10, 10, 20, 20})), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(Values(Box(), "off@0,on@60%", 6), ElementsAre(0, 0, 0, 1, 1, 1));
    EXPECT_THAT(Values(Sides(), "right,Left 2, left 1", 3), ElementsAre(2, 1, 0));
}

TEST(Journey, What_is_no_journey_is_told_apart) {
    for (const char* text : {"5", "-5", "on", "Left 1", "Red - Blue", "1.5", ""})
        EXPECT_FALSE(IsJourney(text)) << text;
}

TEST(Journey, Every_value_must_be_one_of_the_parameter) {
    const std::string takes = "Angle of Swirl takes whole numbers from -1440 to 1440, not \"";
    EXPECT_EQ(Refused(kAngle, "a..b"), takes + "a\".");
    EXPECT_EQ(Refused(kAngle, "0..1441"), takes + "1441\".");
    EXPECT_EQ(Refused(kAngle, "0...5"), takes + ".5\".");
    EXPECT_EQ(Refused(kAngle, "0,-1441,5"), takes + "-1441\".");
    EXPECT_EQ(Refused(kAngle, "0@0,2000@100%"), takes + "2000\".");
    EXPECT_EQ(Refused(kAngle, "0 ..5"), takes + "0 \".");
    EXPECT_EQ(Refused(Box(), "on,maybe"), "Invert of Swirl takes on or off, not \"maybe\".");
    EXPECT_EQ(Refused(Sides(), "Left 1,Left"),
              "Side of Swirl takes Left 1, Left 2 or Right 1, not \"Left\".");
}

TEST(Journey, What_is_written_wrong_is_answered_with_how_to_write_it) {
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"0..", "the last value is missing; write it as -1440..1440"},
        {"..5", "the first value is missing; write it as -1440..1440"},
        {"..", "the first value is missing; write it as -1440..1440"},
        {"1..2..3", "a range has two values; write several with commas, as 1,2,3"},
        {"1..2,3", "a range has two values; write several with commas, as 1,2,3"},
        {"5..5", "all values are the same; write Angle=5"},
        {"5,5,5:ease", "all values are the same; write Angle=5"},
        {"4,,8", "a value is missing; write them as 1,2,3"},
        {"4,", "a value is missing; write them as 1,2,3"},
        {":ease", "a value is missing; write them as 1,2,3"},
        {"@50%", "a value is missing; write them as 1,2,3"},
        {"90:ease", "a parameter that moves needs two values or more, as -1440,1440"},
        {"90@50%", "a parameter that moves needs two values or more, as -1440,1440"},
        {"4@0,20", "give every value one time, as 1@0%,2@30%,3@100%, or none"},
        {"4,20@100%", "give every value one time, as 1@0%,2@30%,3@100%, or none"},
        {"4@0@1,20@5%", "give every value one time, as 1@0%,2@30%,3@100%, or none"},
        {"4@0,20@50", "a time is from 0% to 100%, as in 20@50%, not \"50\""},
        {"4@0,20@101%", "a time is from 0% to 100%, as in 20@50%, not \"101%\""},
        {"4@0,20@-1%", "a time is from 0% to 100%, as in 20@50%, not \"-1%\""},
        {"4@0,20@", "a time is from 0% to 100%, as in 20@50%, not \"\""},
        {"4@0,20@%", "a time is from 0% to 100%, as in 20@50%, not \"%\""},
        {"4@0,20@5.%", "a time is from 0% to 100%, as in 20@50%, not \"5.%\""},
        {"4@0,20@5.123%", "a time is from 0% to 100%, as in 20@50%, not \"5.123%\""},
        {"4@0,20@1.2.3%", "a time is from 0% to 100%, as in 20@50%, not \"1.2.3%\""},
        {"4@50%,20@50%", "each time must be later than the one before it"},
        {"0..5:easy", "behind the values may stand linear, ease or loop, not \"easy\""},
        {"0..5:", "behind the values may stand linear, ease or loop, not \"\""},
        {"4@0,20@100%:loop",
         "no time is left for the way back to 4; give the last value an earlier time, or leave out :loop"},
    };
    for (const auto& [text, clause] : texts)
        EXPECT_EQ(Refused(kAngle, text),
                  std::string("--set Angle=").append(text).append(": ").append(clause) + ".");
    EXPECT_EQ(Refused(Box(), "off..on"),
              "--set Invert=off..on: a range is for sliders; write the values one after another, as off,on.");
    EXPECT_EQ(Refused(Sides(), "left 1..right"),
              "--set Side=left 1..right: a range is for sliders; write the values one after another, as Left "
              "1,Left 2.");
    EXPECT_EQ(Refused(Box(), "off,on:ease"),
              "--set Invert=off,on:ease: this parameter switches from value to value; leave out :ease.");
}

TEST(Journey, A_parameter_for_all_frames_together_stays) {
    Parameter box = Box();
    box.name = "Distributed";
    EXPECT_EQ(Refused(box, "on,off", "Normalize"),
              "--set Distributed=on,off: Normalize measures all frames together; choose on or off.");
}

// What turns is known by name: each name must be one of an effect's sliders, with all of a turn in its range.
TEST(Journey, The_sliders_that_turn_are_those_of_the_effects) {
    std::vector<std::string> effects, turning;
    Failure failure;
    ASSERT_TRUE(kDirectEngine.listEffects(nullptr, &effects, &failure));
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        std::vector<Parameter> parameters;
        ASSERT_TRUE(kDirectEngine.listParameters(nullptr, static_cast<int>(effect), &parameters, &failure));
        for (const Parameter& parameter : parameters) {
            if (parameter.kind != Parameter::Slider) continue;
            const std::string all =
                std::to_string(parameter.minimum) + ".." + std::to_string(parameter.maximum);
            Journey journey;
            std::string error;
            ASSERT_TRUE(ParseJourney(parameter, effects[effect], all + ":loop", &journey, &error)) << error;
            if (journey.period != 0) turning.push_back(effects[effect] + ": " + parameter.name);
        }
    }
    EXPECT_THAT(turning, ElementsAre("Motion Blur: Angle"));
}

// What it gathers is kept once for all frames.
TEST(Journey, No_parameter_of_an_effect_that_gathers_can_move) {
    size_t gathering = 0;
    for (size_t row = 0; row < EffectCount(); ++row) {
        const Effect& effect = *EffectAt(row);
        if (!effect.gathering) continue;
        ++gathering;
        std::vector<Parameter> parameters;
        Failure failure;
        ASSERT_TRUE(kDirectEngine.listParameters(nullptr, static_cast<int>(row), &parameters, &failure));
        for (const Parameter& parameter : parameters) {
            Journey journey;
            std::string error;
            EXPECT_FALSE(ParseJourney(parameter, effect.name, "0..1", &journey, &error)) << parameter.name;
            EXPECT_THAT(error, HasSubstr("measures all frames together"));
        }
    }
    EXPECT_GT(gathering, 0u);
}

}  // namespace
}  // namespace kfx::commands
