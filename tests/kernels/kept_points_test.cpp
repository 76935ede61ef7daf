// SPDX-License-Identifier: MIT
#include "kernels/kept_points.h"

#include <gtest/gtest.h>

#include <cstring>

#include "framework/cpu.h"
#include "framework/movable_memory_native.h"

namespace kfx::test {
namespace {

constexpr int kKey = 1, kOtherKey = 2;

KeptPoints Keep(KeptTable* table, int32_t width, int32_t height, const int& key = kKey) {
    return KeepPoints(table, &key, sizeof key, width, height);
}

class KeptPointsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!UseAvx2()) GTEST_SKIP() << "without AVX2 nothing is kept";
    }
    KeptTable table;
};

TEST_F(KeptPointsTest, Rows_are_found_as_they_were_filled) {
    const KeptPoints points = Keep(&table, 17, 3);  // two groups of eight a row
    for (int32_t y = 0; y < 3; ++y) {
        const KeptRow row = KeptRowAt(points, y);
        ASSERT_TRUE(row.groups);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(row.groups) % kGroupAlignment, 0u);
        EXPECT_FALSE(IsFilled(row));
        std::memset(row.groups, y + 1, 2 * kGroupBytes);
        if (y != 1) *row.filled = 1;
    }
    const KeptPoints again = Keep(&table, 17, 3);
    for (int32_t y = 0; y < 3; ++y) {
        const KeptRow row = KeptRowAt(again, y);
        EXPECT_EQ(IsFilled(row), y != 1);
        for (size_t i = 0; i < 2 * kGroupBytes; ++i)
            ASSERT_EQ(static_cast<const uint8_t*>(row.groups)[i], y + 1) << y;
    }
}

TEST_F(KeptPointsTest, Another_key_begins_with_rows_that_are_not_filled) {
    *KeptRowAt(Keep(&table, 16, 2), 1).filled = 1;
    EXPECT_TRUE(IsFilled(KeptRowAt(Keep(&table, 16, 2), 1)));
    EXPECT_FALSE(IsFilled(KeptRowAt(Keep(&table, 16, 2, kOtherKey), 1)));
}

TEST_F(KeptPointsTest, Up_to_64_megabytes_are_kept) {
    EXPECT_TRUE(KeptRowAt(Keep(&table, 2048, 4096), 0).groups);
    EXPECT_FALSE(KeptRowAt(Keep(&table, 2048, 4097), 0).groups);
    EXPECT_FALSE(KeptRowAt(Keep(&table, 2056, 4096), 0).groups);
}

TEST_F(KeptPointsTest, Of_rows_shorter_than_a_group_nothing_is_kept) {
    EXPECT_FALSE(KeptRowAt(Keep(&table, 7, 4), 0).groups);
}

TEST_F(KeptPointsTest, Without_memory_nothing_is_kept) {
    RefuseAllocationsFrom(1);
    EXPECT_FALSE(IsFilled(KeptRowAt(Keep(&table, 16, 2), 0)));
    ResetMemoryCounts();
    EXPECT_TRUE(KeptRowAt(Keep(&table, 16, 2), 0).groups);
}

TEST_F(KeptPointsTest, Without_AVX2_nothing_is_kept) {
    AllowAvx2(false);
    EXPECT_FALSE(KeptRowAt(Keep(&table, 16, 2), 0).groups);
    AllowAvx2(true);
}

}  // namespace
}  // namespace kfx::test
