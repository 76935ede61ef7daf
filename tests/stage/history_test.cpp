// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "stage/history.h"
#include "tests/stage/small_films.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr uint64_t kMuch = uint64_t{1} << 30;

struct Steps : ::testing::Test {
    FramePool pool;
    History history;

    Step MakeStep(const std::string& name, uint8_t value) {
        Step step;
        step.name = name;
        step.film = SmallFilm({100}, {value}, &pool);
        return step;
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const Step& step : history.steps) names.push_back(step.name);
        return names;
    }

    void SetUp() override { StartHistory(&history, MakeStep("Opened", 0)); }
};

TEST_F(Steps, The_opened_animation_is_no_result) {
    EXPECT_EQ(ShownStep(history), nullptr);
    EXPECT_EQ(ShownFilm(history), SourceFilm(history));
    EXPECT_FALSE(CanUndo(history));
    EXPECT_FALSE(HasUnsavedStep(history));
}

TEST_F(Steps, A_build_after_undoing_takes_the_place_of_what_was_undone) {
    AddStep(&history, MakeStep("A", 1), kMuch);
    AddStep(&history, MakeStep("B", 2), kMuch);
    history.current = 1;
    EXPECT_TRUE(CanRedo(history));
    EXPECT_EQ(AddStep(&history, MakeStep("C", 3), kMuch).size(), 1u);
    EXPECT_EQ(Names(), (std::vector<std::string>{"Opened", "A", "C"}));
    EXPECT_FALSE(CanRedo(history));
    EXPECT_TRUE(HasUnsavedStep(history));
}

TEST_F(Steps, The_oldest_builds_go_when_memory_is_short_but_never_source_and_newest) {
    AddStep(&history, MakeStep("A", 1), kMuch);
    AddStep(&history, MakeStep("B", 2), kMuch);
    // Room for three different frames of eight bytes.
    AddStep(&history, MakeStep("C", 3), 3 * 8);
    EXPECT_EQ(Names(), (std::vector<std::string>{"Opened", "B", "C"}));
    AddStep(&history, MakeStep("D", 4), 1);
    EXPECT_EQ(Names(), (std::vector<std::string>{"Opened", "D"}));
    EXPECT_EQ(history.current, 1u);
}

TEST_F(Steps, Equal_builds_take_memory_once) {
    AddStep(&history, MakeStep("A", 1), 2 * 8);
    AddStep(&history, MakeStep("B", 1), 2 * 8);
    EXPECT_EQ(Names(), (std::vector<std::string>{"Opened", "A", "B"}));
    EXPECT_EQ(BytesOf(history), 2 * 8u);
}

TEST_F(Steps, A_test_is_shown_in_place_of_the_current_step_and_is_no_unsaved_work) {
    history.test = MakeStep("T", 5);
    EXPECT_EQ(ShownStep(history)->name, "T");
    EXPECT_FALSE(HasUnsavedStep(history));
}

TEST_F(Steps, A_test_counts_and_makes_room_for_itself) {
    AddStep(&history, MakeStep("A", 1), kMuch);
    AddStep(&history, MakeStep("B", 2), kMuch);
    history.test = MakeStep("T", 5);
    EXPECT_EQ(BytesOf(history), 4 * 8u);
    EXPECT_EQ(DropOldest(&history, 3 * 8).size(), 1u);
    EXPECT_EQ(Names(), (std::vector<std::string>{"Opened", "B"}));
    EXPECT_EQ(history.current, 1u);
    EXPECT_EQ(DropOldest(&history, 1).size(), 0u);
}

TEST_F(Steps, Another_animation_starts_anew) {
    AddStep(&history, MakeStep("A", 1), kMuch);
    history.test = MakeStep("T", 5);
    EXPECT_EQ(StartHistory(&history, MakeStep("Opened", 9)).size(), 3u);
    EXPECT_EQ(Names(), std::vector<std::string>{"Opened"});
    EXPECT_FALSE(history.test.has_value());
}

}  // namespace
}  // namespace kfx::test
