// SPDX-License-Identifier: MIT
#include "tests/bench/shot_files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "bench/bench_animation.h"

namespace kfx::test {
namespace {

std::string NewPath() {
    std::random_device random;
    return testing::TempDir() + "kfx bench " + std::to_string(random()) + "-" + std::to_string(random());
}

}  // namespace

ShotFile::ShotFile(int32_t width, int32_t height, int32_t frames)
    : path(NewPath()),
      numbers(std::to_string(width) + " " + std::to_string(height) + " " + std::to_string(frames)) {
    bench::Shot shot;
    shot.width = width;
    shot.height = height;
    shot.frames = bench::MakeBenchAnimation(width, height, frames);
    EXPECT_TRUE(bench::WriteShot(path, shot)) << path;
}

ShotFile::~ShotFile() { std::remove(path.c_str()); }

std::string ShotFile::Question(const std::string& name) const {
    return "frame " + name + " " + numbers + " " + path;
}

}  // namespace kfx::test
