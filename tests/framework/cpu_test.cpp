// SPDX-License-Identifier: MIT
#include "framework/cpu.h"

#include <gtest/gtest.h>

namespace kfx {
namespace {

// Tests of the plain code rely on this.
TEST(Cpu, Vectors_that_are_not_allowed_are_not_used) {
    const bool usual = UseAvx2();
    AllowAvx2(false);
    EXPECT_FALSE(UseAvx2());
    AllowAvx2(true);
    EXPECT_EQ(UseAvx2(), usual);
}

}  // namespace
}  // namespace kfx
