// SPDX-License-Identifier: MIT
#include "commands/fingerprint.h"

#include <functional>

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

// Three different pictures of 40 x 30 pixels, more than one part of what is hashed at a time.
Animation ThreePictures() {
    Animation animation;
    animation.width = 40;
    animation.height = 30;
    animation.loopCount = kLoopForever;
    for (int i = 0; i < 3; ++i) {
        Frame frame;
        for (int p = 0; p < 40 * 30 * 4; ++p)
            frame.pixels.push_back(p % 4 == 3 ? 255 : static_cast<uint8_t>(p + 7 * i));
        frame.delay = 4;
        animation.frames.push_back(frame);
    }
    return animation;
}

std::string After(const std::function<void(Animation*)>& change) {
    Animation animation = ThreePictures();
    change(&animation);
    return FingerprintOf(animation);
}

TEST(Fingerprint, Is_the_same_on_every_system) {  // Computed with another program, of the same numbers.
    EXPECT_EQ(FingerprintOf(ThreePictures()), "645d959d65b82a1c7c1a1d09e5e102a6");
}

TEST(Fingerprint, Whatever_a_viewer_sees_changes_it) {
    const std::string whole = FingerprintOf(ThreePictures());
    EXPECT_NE(whole, After([](Animation* a) { a->frames[1].pixels[4] ^= 1; }));
    EXPECT_NE(whole, After([](Animation* a) { a->frames[2].pixels.back() = 254; }));
    EXPECT_NE(whole, After([](Animation* a) { std::swap(a->width, a->height); }));
    EXPECT_NE(whole, After([](Animation* a) { a->loopCount = 2; }));
    EXPECT_NE(whole, After([](Animation* a) { a->frames[0].milliseconds = 41; }));
    EXPECT_NE(whole, After([](Animation* a) { a->frames.pop_back(); }));
    EXPECT_NE(whole, After([](Animation* a) { std::swap(a->frames[0], a->frames[1]); }));
}

TEST(Fingerprint, What_no_viewer_sees_does_not_change_it) {
    const std::string whole = FingerprintOf(ThreePictures());
    EXPECT_EQ(whole, After([](Animation* a) { a->frames[0].milliseconds = 40; }));
    EXPECT_EQ(whole, After([](Animation* a) { a->comment = "x"; }));
    const auto hide = [](Animation* a, uint8_t color) {
        a->frames[1].transparent = true;
        a->frames[1].pixels[4000] = color;
        a->frames[1].pixels[4003] = 0;
    };
    EXPECT_EQ(After([&](Animation* a) { hide(a, 1); }), After([&](Animation* a) { hide(a, 200); }));
    EXPECT_NE(whole, After([&](Animation* a) { hide(a, 1); }));
}

TEST(Fingerprint, One_picture_may_stand_as_several_frames) {
    const auto split = [](Animation* a) {
        a->frames.insert(a->frames.begin() + 1, a->frames[1]);
        a->frames[1].delay = 1;
        a->frames[2].delay = 3;
    };
    EXPECT_EQ(FingerprintOf(ThreePictures()), After(split));
}

TEST(Fingerprint, A_still_has_neither_time_nor_repeats) {
    const std::string still = After([](Animation* a) { a->frames.resize(1); });
    EXPECT_EQ(still, After([](Animation* a) {
                  a->frames.resize(1);
                  a->frames[0].delay = 100;
                  a->loopCount = kLoopNone;
              }));
}

TEST(Fingerprint, An_animation_without_frames_has_one) { EXPECT_EQ(FingerprintOf({}).size(), 32u); }

}  // namespace
}  // namespace kfx::commands
