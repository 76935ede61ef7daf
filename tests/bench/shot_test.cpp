// SPDX-License-Identifier: MIT
#include "bench/shot.h"

#include <gtest/gtest.h>

#include "bench/bench_animation.h"
#include "tests/bench/shot_files.h"
#include "tests/support/pictures.h"

namespace kfx::bench {
namespace {

TEST(BenchShot, Frames_come_back_from_a_raw_file_as_they_were) {
    const test::ShotFile file(13, 7, 3);
    Shot shot;
    ASSERT_TRUE(ReadShot(file.path, 13, 7, 3, &shot));
    FrameList written = MakeBenchAnimation(13, 7, 3);
    for (int32_t i = 0; i < 3; ++i) {
        FrameEntry entry = {};
        ASSERT_TRUE(GetFrame(written, i, &entry));
        EXPECT_EQ(test::BytesOf(FrameAt(shot, i)), test::BytesOf(entry.image)) << "frame " << i;
    }
    FreeFrames(&written);
    EXPECT_EQ(FrameAt(shot, 3), nullptr);
    EXPECT_EQ(PixelsOfFrame(shot), 91u);
}

}  // namespace
}  // namespace kfx::bench
