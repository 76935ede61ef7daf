// SPDX-License-Identifier: MIT
#include "commands/frame_edits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "kernels/scaler.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif

namespace kfx::commands {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

size_t At(const Animation& animation, int x, int y) {
    return static_cast<size_t>(y) * static_cast<size_t>(animation.width) + static_cast<size_t>(x);
}

// Every pixel says its frame, column and row; the frames stand on a palette and have places of their own.
Animation NumberedFrames(int width, int height, int count) {
    Animation animation;
    animation.width = width;
    animation.height = height;
    animation.loopCount = 7;
    animation.hasGlobalPalette = true;
    animation.globalPalette.resize(256);
    animation.comment = "of the source";
    animation.metadata.xmp = {'<', '>'};
    for (int f = 0; f < count; ++f) {
        Frame frame;
        frame.indexed = true;
        frame.left = 3;
        frame.delay = 4 + f;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                frame.indices.push_back(static_cast<uint8_t>(y * width + x));
                frame.pixels.insert(frame.pixels.end(), {static_cast<uint8_t>(f + 1), static_cast<uint8_t>(x),
                                                         static_cast<uint8_t>(y), 255});
            }
        }
        animation.frames.push_back(frame);
    }
    return animation;
}

void Edit(const FrameEdits& edits, Animation* animation) {
    Failure failure;
    EXPECT_TRUE(EditFrames(edits, {}, animation, &failure)) << failure.error;
}

std::string ErrorOf(const FrameEdits& edits, Animation animation) {
    const size_t frames = animation.frames.size();
    Failure failure;
    EXPECT_FALSE(EditFrames(edits, {}, &animation, &failure));
    EXPECT_EQ(failure.exitCode, kExitBadCommand);
    EXPECT_EQ(animation.frames.size(), frames) << "nothing has been done";
    return failure.error;
}

std::vector<int> NumbersOf(const Animation& animation) {
    std::vector<int> numbers;
    for (const Frame& frame : animation.frames) numbers.push_back(frame.pixels[0]);
    return numbers;
}

std::vector<int> MillisecondsIn(const Animation& animation) {
    std::vector<int> times;
    for (const Frame& frame : animation.frames) times.push_back(frame.milliseconds);
    return times;
}

std::vector<int> DelaysIn(const Animation& animation) {
    std::vector<int> delays;
    for (const Frame& frame : animation.frames) delays.push_back(frame.delay);
    return delays;
}

TEST(FrameEdits, Without_edits_nothing_changes) {
    Animation animation = NumberedFrames(6, 5, 3);
    const Animation before = animation;
    EXPECT_FALSE(HasEdits({}));
    Edit({}, &animation);
    EXPECT_EQ(NumbersOf(animation), NumbersOf(before));
    EXPECT_EQ(animation.frames[1].pixels, before.frames[1].pixels);
    EXPECT_EQ(animation.frames[1].indices, before.frames[1].indices);
    EXPECT_EQ(animation.frames[1].left, 3);
    EXPECT_EQ(MillisecondsIn(animation), std::vector<int>(3, kNoMilliseconds));
    EXPECT_EQ(animation.loopCount, 7);
}

TEST(FrameEdits, Frames_are_counted_from_zero_and_keep_their_times) {
    Animation animation = NumberedFrames(6, 5, 8);
    Edit({.firstFrame = 2, .lastFrame = 4}, &animation);
    EXPECT_THAT(NumbersOf(animation), ElementsAre(3, 4, 5));
    EXPECT_THAT(DelaysIn(animation), ElementsAre(6, 7, 8));
    Edit({.firstFrame = 1}, &animation);
    EXPECT_THAT(NumbersOf(animation), ElementsAre(4, 5));
    EXPECT_EQ(animation.comment, "of the source");
    EXPECT_EQ(animation.metadata.xmp.size(), 2u);
    EXPECT_EQ(animation.loopCount, 7);
}

TEST(FrameEdits, Frames_that_are_not_there_are_refused) {
    const Animation animation = NumberedFrames(6, 5, 8);
    EXPECT_EQ(ErrorOf({.firstFrame = 3, .lastFrame = 8}, animation),
              "--frames: there is no frame 8; the animation has frames 0 to 7.");
    EXPECT_EQ(ErrorOf({.firstFrame = 8}, animation),
              "--frames: there is no frame 8; the animation has frames 0 to 7.");
    EXPECT_EQ(ErrorOf({.firstFrame = 8, .lastFrame = 8, .singleNumber = true}, animation),
              "--frames: there is no frame 8; the animation has frames 0 to 7.");
    EXPECT_EQ(ErrorOf({.firstFrame = 1}, NumberedFrames(6, 5, 1)),
              "--frames: there is no frame 1; the animation has only frame 0.");
}

TEST(FrameEdits, A_still_picture_becomes_an_animation_of_so_many_frames) {
    Animation animation = NumberedFrames(6, 5, 1);
    animation.loopCount = kLoopNone;
    Edit({.firstFrame = 4, .lastFrame = 4, .singleNumber = true}, &animation);
    EXPECT_THAT(NumbersOf(animation), ElementsAre(1, 1, 1, 1));
    EXPECT_THAT(MillisecondsIn(animation), ElementsAre(100, 100, 100, 100));
    EXPECT_THAT(DelaysIn(animation), ElementsAre(10, 10, 10, 10));
    EXPECT_EQ(animation.frames[3].indices, animation.frames[0].indices);
    EXPECT_TRUE(animation.frames[3].indexed);
    EXPECT_EQ(animation.loopCount, kLoopForever);
    EXPECT_EQ(animation.comment, "of the source");

    animation = NumberedFrames(6, 5, 1);
    Edit({.firstFrame = 3,
          .lastFrame = 3,
          .singleNumber = true,
          .stillDelay = 33,
          .crop = {.width = 2, .height = 2},
          .speed = 0.5,
          .setsLoop = true,
          .loopCount = 4},
         &animation);
    EXPECT_EQ(animation.width, 2);
    EXPECT_THAT(MillisecondsIn(animation), ElementsAre(66, 66, 66));
    EXPECT_EQ(animation.loopCount, 4);

    animation = NumberedFrames(6, 5, 1);
    Edit({.firstFrame = 3, .lastFrame = 3, .singleNumber = true, .stillDelay = 33}, &animation);
    EXPECT_THAT(DelaysIn(animation), ElementsAre(3, 4, 3)) << "a file of hundredths keeps the pace";
    animation = NumberedFrames(6, 5, 1);
    Edit({.lastFrame = 0, .singleNumber = true}, &animation);
    EXPECT_EQ(animation.frames.size(), 1u) << "its frame 0 is the picture itself";
    EXPECT_EQ(ErrorOf({.firstFrame = 1, .lastFrame = 1, .singleNumber = true}, animation),
              "--frames: a still picture becomes an animation of 2 frames or more, not 1.");
    EXPECT_EQ(ErrorOf({.firstFrame = 3, .lastFrame = 3}, animation),
              "--frames: there is no frame 3; the animation has only frame 0.");
}

TEST(FrameEdits, A_still_picture_is_repeated_within_the_limit) {
    Animation animation = NumberedFrames(10, 10, 1);
    Failure failure;
    ReadLimits limits;
    limits.maxPixels = 1000;
    EXPECT_FALSE(
        EditFrames({.firstFrame = 11, .lastFrame = 11, .singleNumber = true}, limits, &animation, &failure));
    EXPECT_EQ(failure.exitCode, kExitBadCommand);
    EXPECT_THAT(failure.error, HasSubstr("--frames: "));
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_TRUE(
        EditFrames({.firstFrame = 10, .lastFrame = 10, .singleNumber = true}, limits, &animation, &failure));
    EXPECT_EQ(animation.frames.size(), 10u);
}

TEST(FrameEdits, Reverse_turns_the_frames_that_are_kept_and_their_times) {
    Animation animation = NumberedFrames(6, 5, 5);
    Edit({.firstFrame = 1, .reverse = true}, &animation);
    EXPECT_THAT(NumbersOf(animation), ElementsAre(5, 4, 3, 2));
    EXPECT_THAT(DelaysIn(animation), ElementsAre(8, 7, 6, 5));
}

TEST(FrameEdits, A_crop_keeps_pixels_and_indices) {
    Animation animation = NumberedFrames(6, 5, 2);
    Edit({.crop = {.width = 3, .height = 2, .centered = false, .left = 2, .top = 3}}, &animation);
    ASSERT_EQ(animation.width, 3);
    ASSERT_EQ(animation.height, 2);
    for (const Frame& frame : animation.frames) {
        ASSERT_EQ(frame.pixels.size(), 24u);
        ASSERT_TRUE(frame.indexed);
        ASSERT_EQ(frame.indices.size(), 6u);
        EXPECT_EQ(frame.left, 0);
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < 3; ++x) {
                EXPECT_EQ(frame.pixels[4 * At(animation, x, y) + 1], x + 2);
                EXPECT_EQ(frame.pixels[4 * At(animation, x, y) + 2], y + 3);
                EXPECT_EQ(frame.indices[At(animation, x, y)], (y + 3) * 6 + x + 2);
            }
        }
    }
}

TEST(FrameEdits, A_crop_without_a_place_takes_the_middle) {
    Animation animation = NumberedFrames(7, 6, 1);
    Edit({.crop = {.width = 3, .height = 2}}, &animation);
    EXPECT_EQ(animation.frames[0].pixels[1], 2);
    EXPECT_EQ(animation.frames[0].pixels[2], 2);
}

TEST(FrameEdits, A_crop_that_leaves_only_opaque_pixels_leaves_an_opaque_frame) {
    Animation animation = NumberedFrames(6, 5, 1);
    animation.frames[0].pixels[3] = 0;
    animation.frames[0].transparent = true;
    animation.frames[0].indexed = false;
    animation.frames[0].indices.clear();
    Edit({.crop = {.width = 5, .height = 5, .centered = false, .left = 1}}, &animation);
    EXPECT_FALSE(animation.frames[0].transparent);
}

TEST(FrameEdits, A_crop_beyond_the_picture_is_refused) {
    const Animation animation = NumberedFrames(6, 5, 1);
    EXPECT_EQ(ErrorOf({.crop = {.width = 3, .height = 2, .centered = false, .left = 4, .top = 3}}, animation),
              "--crop: 3 x 2 pixels from column 4 and row 3 are not inside the picture of 6 x 5.");
    EXPECT_THAT(ErrorOf({.crop = {.width = 7, .height = 2}}, animation), HasSubstr("not inside the picture"));
    EXPECT_THAT(ErrorOf({.crop = {.width = 1000000, .height = 1000000, .centered = false, .left = 1000000}},
                        animation),
                HasSubstr("not inside the picture"));
}

TEST(FrameEdits, Sizes_follow_from_a_side_or_a_percentage) {
    const auto sidesAfter = [](const NewSize& resize) {
        Animation animation = NumberedFrames(12, 9, 1);
        Edit({.resize = resize}, &animation);
        EXPECT_EQ(animation.frames[0].pixels.size(),
                  4 * static_cast<size_t>(animation.width) * static_cast<size_t>(animation.height));
        EXPECT_FALSE(animation.frames[0].indexed);
        EXPECT_TRUE(animation.frames[0].indices.empty());
        return std::vector<int>{animation.width, animation.height};
    };
    EXPECT_THAT(sidesAfter({.width = 5, .height = 8}), ElementsAre(5, 8));
    EXPECT_THAT(sidesAfter({.width = 8}), ElementsAre(8, 6));
    EXPECT_THAT(sidesAfter({.height = 3}), ElementsAre(4, 3));
    EXPECT_THAT(sidesAfter({.percent = 50}), ElementsAre(6, 5));
    EXPECT_THAT(sidesAfter({.percent = 1}), ElementsAre(1, 1));
    EXPECT_THAT(sidesAfter({.width = 1}), ElementsAre(1, 1));
}

TEST(FrameEdits, A_resize_to_the_same_size_keeps_the_indices) {
    Animation animation = NumberedFrames(12, 9, 1);
    Edit({.resize = {.percent = 100}}, &animation);
    EXPECT_TRUE(animation.frames[0].indexed);
    EXPECT_EQ(animation.frames[0].indices.size(), 108u);
}

TEST(FrameEdits, Opaque_frames_get_what_the_scaler_makes) {
    Animation animation = NumberedFrames(23, 17, 1);
    for (size_t i = 0; i < animation.frames[0].pixels.size(); ++i)
        if (i % 4 != 3) animation.frames[0].pixels[i] = static_cast<uint8_t>(i * i * 7);
    const ImageHandle source = CreateDib(23, 17, nullptr, 24);
    {
        const ImageLock lock(source);
        for (int y = 0; y < 17; ++y) {
            for (int x = 0; x < 23; ++x) {
                const uint8_t* pixel = animation.frames[0].pixels.data() + 4 * At(animation, x, y);
                SetDibPixel(lock.image, x, y, Rgb(pixel[0], pixel[1], pixel[2]));
            }
        }
    }
    const ImageHandle expected = Resample(source, 40, 9, 1.0);
    Edit({.resize = {.width = 40, .height = 9}}, &animation);
    {
        const ImageLock lock(expected);
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 40; ++x) {
                const uint8_t* pixel = animation.frames[0].pixels.data() + 4 * At(animation, x, y);
                ASSERT_EQ(Rgb(pixel[0], pixel[1], pixel[2]), GetDibPixel(lock.image, x, y)) << x << ", " << y;
                ASSERT_EQ(pixel[3], 255);
            }
        }
    }
    FreeMemory(source);
    FreeMemory(expected);
}

// A disc of one colour; `hidden` stands under the transparent pixels.
Animation Disc(RgbColor color, RgbColor hidden) {
    Animation animation;
    animation.width = 40;
    animation.height = 40;
    animation.frames.resize(1);
    Frame& frame = animation.frames[0];
    frame.transparent = true;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            const bool inside = (2 * x - 39) * (2 * x - 39) + (2 * y - 39) * (2 * y - 39) < 900;
            const RgbColor shown = inside ? color : hidden;
            frame.pixels.insert(frame.pixels.end(),
                                {shown.red, shown.green, shown.blue, static_cast<uint8_t>(inside ? 255 : 0)});
        }
    }
    return animation;
}

TEST(FrameEdits, The_edge_of_a_transparent_picture_keeps_its_colour) {
    const RgbColor color = {220, 120, 40};
    for (const RgbColor hidden : {RgbColor{0, 0, 0}, RgbColor{255, 255, 255}, RgbColor{0, 255, 0}}) {
        for (const double percent : {35.0, 60.0, 250.0}) {
            Animation animation = Disc(color, hidden);
            Edit({.resize = {.percent = percent}}, &animation);
            size_t soft = 0;
            for (size_t i = 0; i < animation.frames[0].pixels.size(); i += 4) {
                const uint8_t* pixel = animation.frames[0].pixels.data() + i;
                soft += pixel[3] > 0 && pixel[3] < 255;
                if (pixel[3] < 32) continue;  // so few values that colours are coarse
                // Each of two passes rounds to a whole number, of two thirds of the alpha.
                const int bound = 1 + 2 * 255 / pixel[3];
                EXPECT_LE(std::abs(pixel[0] - color.red), bound) << percent << " alpha " << int{pixel[3]};
                EXPECT_LE(std::abs(pixel[1] - color.green), bound) << percent << " alpha " << int{pixel[3]};
                EXPECT_LE(std::abs(pixel[2] - color.blue), bound) << percent << " alpha " << int{pixel[3]};
            }
            EXPECT_GT(soft, 0u);
            EXPECT_TRUE(animation.frames[0].transparent);
        }
    }
}

TEST(FrameEdits, A_size_beyond_the_limits_is_refused_before_any_work) {
    EXPECT_EQ(ErrorOf({.resize = {.width = 65536, .height = 10}}, NumberedFrames(6, 5, 1)),
              "--resize: the picture of 65536 x 10 pixels is too large: a side may have 65535.");
    EXPECT_THAT(ErrorOf({.resize = {.width = 16384, .height = 16384}}, NumberedFrames(6, 5, 3)),
                HasSubstr("--resize: the 3 frames of 16384 x 16384 together have 805306368 pixels; "));
    EXPECT_THAT(ErrorOf({.resize = {.percent = 1e12}}, NumberedFrames(6, 5, 3)), HasSubstr("too large"));
}

TEST(FrameEdits, Speed_keeps_the_total_time_to_the_millisecond) {
    Animation animation = NumberedFrames(2, 2, 6);
    for (Frame& frame : animation.frames) frame.milliseconds = 35;
    Edit({.speed = 2}, &animation);
    EXPECT_THAT(MillisecondsIn(animation), ElementsAre(18, 17, 18, 17, 18, 17));
    for (Frame& frame : animation.frames) frame.milliseconds = kNoMilliseconds;
    for (Frame& frame : animation.frames) frame.delay = 5;
    Edit({.speed = 2}, &animation);
    EXPECT_THAT(MillisecondsIn(animation), ElementsAre(25, 25, 25, 25, 25, 25));
    EXPECT_THAT(DelaysIn(animation), ElementsAre(3, 2, 3, 2, 3, 2));
    Edit({.speed = 0.5}, &animation);
    EXPECT_THAT(DelaysIn(animation), ElementsAre(5, 5, 5, 5, 5, 5));
}

TEST(FrameEdits, Frames_per_second_give_each_frame_the_same_time) {
    Animation animation = NumberedFrames(2, 2, 6);
    Edit({.framesPerSecond = 12}, &animation);
    EXPECT_EQ(animation.frames.size(), 6u);
    EXPECT_THAT(MillisecondsIn(animation), ElementsAre(83, 84, 83, 83, 84, 83));
    EXPECT_THAT(DelaysIn(animation), ElementsAre(8, 9, 8, 8, 9, 8));
}

TEST(FrameEdits, A_time_that_no_file_holds_is_refused) {
    Animation animation = NumberedFrames(2, 2, 3);
    animation.frames[1].delay = 65535;
    EXPECT_EQ(ErrorOf({.speed = 0.5}, animation),
              "--speed: frame 1 would be shown for more than 655 seconds, which files cannot hold.");
    Edit({.lastFrame = 0, .speed = 0.5}, &animation);
    EXPECT_EQ(animation.frames.size(), 1u) << "a frame that goes is none to complain about";
}

TEST(FrameEdits, The_loop_count_is_set) {
    Animation animation = NumberedFrames(2, 2, 3);
    Edit({.setsLoop = true, .loopCount = kLoopForever}, &animation);
    EXPECT_EQ(animation.loopCount, kLoopForever);
}

TEST(FrameEdits, The_crop_comes_before_the_resize) {
    Animation animation = NumberedFrames(12, 9, 1);
    Edit({.crop = {.width = 4, .height = 4}, .resize = {.percent = 200}}, &animation);
    EXPECT_EQ(animation.width, 8);
    EXPECT_EQ(animation.height, 8);
}

#ifndef _WIN32
TEST(FrameEdits, Refused_memory_is_said_and_nothing_is_lost_by_it) {
    const Animation disc = Disc({220, 120, 40}, {});
    for (size_t refused = 1; refused < 100; ++refused) {
        Animation animation = disc;
        Failure failure;
        ResetMemoryCounts();
        RefuseAllocation(refused);
        const size_t before = CountMemory().liveBlocks;
        const bool done = EditFrames({.resize = {.percent = 60}}, {}, &animation, &failure);
        RefuseAllocation(0);
        EXPECT_EQ(CountMemory().liveBlocks, before);
        if (done) {
            EXPECT_GT(refused, 5u);
            return;
        }
        EXPECT_EQ(failure.exitCode, kExitEngine);
        EXPECT_EQ(failure.error, "there is not enough memory to resize the frames.");
    }
    ADD_FAILURE() << "it never succeeds";
}
#endif

}  // namespace
}  // namespace kfx::commands
