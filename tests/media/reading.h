// SPDX-License-Identifier: MIT
// Reading animation files from memory, for tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "media/animation.h"
#include "tests/media/gif_builder.h"

namespace kfx::test {

// Reads a file; fails the test when that is not possible.
inline Animation ReadOrFail(const Bytes& file) {
    Animation animation;
    std::string error;
    EXPECT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error)) << error;
    return animation;
}

// The same for a file without damage.
inline Animation ReadWhole(const Bytes& file) {
    Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.warning, "");
    return animation;
}

// The clause of a file that must be refused.
inline std::string ErrorOf(const Bytes& file, const ReadLimits& limits = ReadLimits()) {
    Animation animation;
    std::string error;
    EXPECT_FALSE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error, limits));
    EXPECT_TRUE(animation.frames.empty());
    EXPECT_EQ(animation.width, 0);
    return error;
}

}  // namespace kfx::test
