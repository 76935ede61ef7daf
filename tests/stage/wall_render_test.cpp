// SPDX-License-Identifier: MIT
// Tiles are made in the background, in order, and none is lost.
#include "stage/wall_render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <utility>

#include "stage/wall_engine.h"
#include "stage/wall_source.h"
#include "tests/stage/wall_test_source.h"
#include "tests/support/held_clock.h"
#include "tests/support/wait_for.h"

namespace kfx::stage {
namespace {

using test::ExpectSameFrames;
using test::HeldClock;
using test::WaitFor;
using test::WallTestSource;

constexpr int kSide = 24;
constexpr size_t kSwirl = 17;

// A wall with all effects, and what it told.
struct Wall {
    const HeldClock clock{1700000000};
    const std::vector<EffectDescription> effects = DescribeEffects();
    std::mutex lock;
    std::vector<size_t> told;  // under the lock
    void (*onChange)(Wall* wall, size_t tile) = nullptr;
    WallRender* render = nullptr;

    explicit Wall(int threads, void (*changing)(Wall*, size_t) = nullptr) : onChange(changing) {
        WallSetup setup;
        setup.effects = &effects;
        setup.threads = threads;
        setup.changed = [](void* user, size_t tile) { static_cast<Wall*>(user)->Note(tile); };
        setup.user = this;
        render = OpenWallRender(setup);
    }
    ~Wall() { CloseWallRender(render); }
    Wall(const Wall&) = delete;
    Wall& operator=(const Wall&) = delete;

    void Note(size_t tile) {
        {
            const std::lock_guard<std::mutex> guard(lock);
            told.push_back(tile);
        }
        if (onChange) onChange(this, tile);
    }

    std::vector<size_t> Told() {
        const std::lock_guard<std::mutex> guard(lock);
        return told;
    }

    std::vector<EffectSettings> Defaults() const {
        std::vector<EffectSettings> tiles;
        for (size_t i = 0; i < effects.size(); ++i) tiles.push_back(DefaultSettings(effects, i));
        return tiles;
    }

    bool Show(const std::shared_ptr<const Animation>& source, const std::vector<int>& ranks) {
        return ShowInWall(render, WallSourceOf(source), kSide, kSide, Defaults(), ranks);
    }
    bool Show(const std::shared_ptr<const Animation>& source) {
        return Show(source, TileRanks(effects.size(), 0, 7, SIZE_MAX));
    }

    bool WaitUntilDone() {
        return WaitFor([this] { return ReadWallProgress(render).tilesDone == effects.size(); });
    }

    // Every tile shows the effect on the source, which needs no scaling.
    void ExpectTilesOf(const Animation& source) {
        ASSERT_TRUE(WaitUntilDone());
        for (size_t i = 0; i < effects.size(); ++i) {
            const TileView view = ReadTile(render, i);
            ASSERT_EQ(view.state, TileState::Done) << effects[i].name;
            EXPECT_TRUE(view.pictureSettings == view.settings);
            Animation expected = source;
            const std::atomic<bool> stop = false;
            std::atomic<uint64_t> frames = 0;
            commands::Failure failure;
            ASSERT_TRUE(ApplyEffect(effects[i], view.settings, stop, &frames, &expected, &failure));
            ExpectSameFrames(expected, *view.picture, effects[i].name.c_str());
        }
    }
};

// The tiles that were told of, without the source.
std::vector<size_t> TilesIn(std::vector<size_t> told) {
    std::erase(told, kWallSource);
    return told;
}

TEST(WallRender, Every_tile_shows_its_effect) {
    for (const int threads : {1, 2, 5}) {
        for (const bool holes : {false, true}) {
            Wall wall(threads);
            const auto source = WallTestSource(4, kSide, kSide, holes);
            ASSERT_TRUE(wall.Show(source));
            wall.ExpectTilesOf(*source);
        }
    }
}

TEST(WallRender, The_thumbnails_and_each_tile_are_told_of_once) {
    Wall wall(3);
    ASSERT_TRUE(wall.Show(WallTestSource(3, 60, 40)));
    ASSERT_TRUE(WaitFor([&] { return wall.Told().size() >= wall.effects.size() + 1; }));
    std::vector<size_t> told = wall.Told();
    EXPECT_TRUE(std::find(told.begin(), told.end(), kWallSource) != told.end());
    std::sort(told.begin(), told.end());
    EXPECT_EQ(std::adjacent_find(told.begin(), told.end()), told.end());
    const auto thumbnails = ReadWallSource(wall.render);
    ASSERT_TRUE(thumbnails);
    EXPECT_EQ(thumbnails->width, 24);
    EXPECT_EQ(thumbnails->height, 16);
    EXPECT_EQ(thumbnails->frames.size(), 3u);
}

TEST(WallRender, Tiles_are_made_in_the_order_of_their_ranks) {
    Wall wall(1);
    ASSERT_TRUE(wall.Show(WallTestSource(2, kSide, kSide), TileRanks(20, 4, 6, 11)));
    ASSERT_TRUE(wall.WaitUntilDone());
    ASSERT_TRUE(WaitFor([&] { return wall.Told().size() == 21; }));
    const std::vector<size_t> expected = {11, 4, 5, 6, 3, 7, 2, 8, 1, 9, 0, 10};
    std::vector<size_t> told = TilesIn(wall.Told());
    told.resize(expected.size());
    EXPECT_EQ(told, expected);
}

TEST(WallRender, A_new_order_holds_for_what_has_not_been_begun) {
    Wall wall(1, [](Wall* changed, size_t tile) {
        if (tile == 1) RankTiles(changed->render, TileRanks(20, 18, 19, SIZE_MAX));
    });
    ASSERT_TRUE(wall.Show(WallTestSource(2, kSide, kSide), TileRanks(20, 0, 19, 1)));
    ASSERT_TRUE(WaitFor([&] { return wall.Told().size() == 21; }));
    const std::vector<size_t> told = TilesIn(wall.Told());
    EXPECT_EQ(std::vector<size_t>(told.begin(), told.begin() + 4), (std::vector<size_t>{1, 18, 19, 17}));
    EXPECT_EQ(told.back(), 0u);
}

TEST(WallRender, Ranks_put_the_tile_in_hand_first_and_then_what_is_seen) {
    EXPECT_EQ(TileRanks(6, 2, 3, 5), (std::vector<int>{3, 2, 1, 1, 2, 0}));
    EXPECT_EQ(TileRanks(3, 0, 2, SIZE_MAX), (std::vector<int>{1, 1, 1}));
}

TEST(WallRender, A_changed_tile_is_made_anew_and_keeps_its_old_picture_until_then) {
    Wall wall(2);
    const auto source = WallTestSource(3, kSide, kSide);
    ASSERT_TRUE(wall.Show(source));
    ASSERT_TRUE(wall.WaitUntilDone());
    const TileView before = ReadTile(wall.render, kSwirl);
    EffectSettings settings = before.settings;
    settings.values[0] = -300;
    ChangeTile(wall.render, kSwirl, settings);
    const TileView between = ReadTile(wall.render, kSwirl);
    EXPECT_TRUE(between.picture);
    EXPECT_TRUE(between.settings == settings);
    wall.ExpectTilesOf(*source);
    EXPECT_NE(ReadTile(wall.render, kSwirl).picture, before.picture);
}

TEST(WallRender, The_last_of_many_changes_is_what_a_tile_shows) {
    Wall wall(3);
    const auto source = WallTestSource(3, kSide, kSide);
    ASSERT_TRUE(wall.Show(source));
    for (int angle = -90; angle <= 90; ++angle) {
        EffectSettings settings = DefaultSettings(wall.effects, kSwirl);
        settings.values[0] = angle;
        ChangeTile(wall.render, kSwirl, settings);
    }
    wall.ExpectTilesOf(*source);
    EXPECT_EQ(ReadTile(wall.render, kSwirl).pictureSettings.values[0], 90);
}

// The second animation is shown when so many frames of the first one have been made.
TEST(WallRender, Another_animation_takes_over_at_any_moment) {
    for (uint64_t moment = 0; moment < 60; ++moment) {
        Wall wall(2);
        const auto source = WallTestSource(2, kSide - 4, kSide, moment % 2 == 0);
        ASSERT_TRUE(wall.Show(WallTestSource(3, kSide + 10, kSide)));
        ASSERT_TRUE(WaitFor([&] { return ReadWallProgress(wall.render).framesMade >= moment; }));
        ASSERT_TRUE(wall.Show(source));
        wall.ExpectTilesOf(*source);
    }
}

TEST(WallRender, Closing_ends_at_any_moment) {
    for (uint64_t moment = 0; moment < 60; ++moment) {
        Wall wall(2);
        ASSERT_TRUE(wall.Show(WallTestSource(3, kSide + 10, kSide, moment % 2 == 0)));
        ASSERT_TRUE(WaitFor([&] { return ReadWallProgress(wall.render).framesMade >= moment; }));
    }
}

TEST(WallRender, An_emptied_wall_has_let_the_animation_go) {
    for (uint64_t moment = 0; moment < 60; ++moment) {
        Wall wall(2);
        auto source = WallTestSource(3, kSide + 10, kSide);
        const std::weak_ptr<const Animation> watched = source;
        ASSERT_TRUE(wall.Show(source));
        ASSERT_TRUE(WaitFor([&] { return ReadWallProgress(wall.render).framesMade >= moment; }));
        source.reset();
        EmptyWall(wall.render);
        EXPECT_TRUE(watched.expired());
        EXPECT_EQ(ReadWallProgress(wall.render).tiles, 0u);
        EXPECT_FALSE(ReadWallSource(wall.render));
        EXPECT_EQ(ReadTile(wall.render, 0).state, TileState::Waiting);
    }
}

TEST(WallRender, An_animation_without_frames_makes_nothing) {
    Wall wall(2);
    ASSERT_TRUE(wall.Show(std::make_shared<Animation>()));
    ChangeTile(wall.render, 3, DefaultSettings(wall.effects, 3));
    EXPECT_FALSE(ReadWallSource(wall.render));
    const auto source = WallTestSource(2, kSide, kSide);
    ASSERT_TRUE(wall.Show(source));
    wall.ExpectTilesOf(*source);
}

}  // namespace
}  // namespace kfx::stage
