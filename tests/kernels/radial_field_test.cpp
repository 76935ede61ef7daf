// SPDX-License-Identifier: MIT
#include "kernels/radial_field.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "framework/movable_memory_native.h"

namespace kfx::test {
namespace {

void AddSquares(const void*, const double* columnSquares, int32_t count, double rowSquare, double* values,
                size_t) {
    for (int32_t i = 0; i < count; ++i) values[i] = columnSquares[i] + rowSquare;
}

constexpr int kKey = 1;

// From a centre a quarter pixel before the picture's corner all distances differ.
constexpr double kCorner = -0.25;

// The square of the distance of each pixel, by a field with or without a table.
struct SquaresField {
    SquaresField(int32_t width, int32_t height, double centerX, double centerY)
        : columns(width, centerX, 1.0), rows(height, centerY, 1.0), row(static_cast<size_t>(width)) {
        field = {.columns = &columns,
                 .rows = &rows,
                 .compute = AddSquares,
                 .settings = nullptr,
                 .radius = std::numeric_limits<double>::infinity(),
                 .valuesPerPixel = 1,
                 .table = nullptr,
                 .row = row.data(),
                 .found = false};
    }
    bool Keep(KeptTable* cache) {
        KeepRadialField(&field, cache, &kKey, sizeof kKey);
        return field.table != nullptr;
    }

    const RadialAxis columns;
    const RadialAxis rows;
    std::vector<double> row;
    RadialField field;
};

TEST(RadialField, Gives_the_same_with_and_without_a_table) {
    for (const double center : {kCorner, 0.0, 2.0, 2.5, 3.7, 9.0, -4.0, 40.0}) {
        KeptTable cache;
        SquaresField kept(7, 5, center, 1.5), computed(7, 5, center, 1.5);
        ASSERT_TRUE(kept.Keep(&cache));
        for (int32_t y = 0; y < 5; ++y) {
            for (int32_t x = 0; x < 7; ++x) {
                const double away = x - center, below = y - 1.5;
                const int32_t number = kept.columns.distance[static_cast<size_t>(x)];
                EXPECT_EQ(RadialRowAt(kept.field, y)[number], away * away + below * below) << x << ", " << y;
                EXPECT_EQ(RadialRowAt(computed.field, y)[number], away * away + below * below)
                    << x << ", " << y;
            }
        }
    }
}

TEST(RadialField, Distances_of_a_mirrored_centre_are_computed_once) {
    EXPECT_EQ(RadialAxis(7, 3.0, 1.0).distinct, 4);
    EXPECT_EQ(RadialAxis(8, 3.5, 1.0).distinct, 4);
    EXPECT_EQ(RadialAxis(7, 3.25, 1.0).distinct, 7);
    EXPECT_EQ(RadialAxis(7, -2.0, 1.0).distinct, 7);
    EXPECT_EQ(RadialAxis(7, 20.0, 1.0).distinct, 7);
}

TEST(RadialField, A_table_of_64_megabytes_is_kept_and_a_larger_one_is_not) {
    KeptTable cache;
    EXPECT_TRUE(SquaresField(2048, 4096, kCorner, kCorner).Keep(&cache));
    EXPECT_FALSE(SquaresField(2048, 4097, kCorner, kCorner).Keep(&cache));
    EXPECT_FALSE(SquaresField(2049, 4096, kCorner, kCorner).Keep(&cache));
}

TEST(RadialField, Without_memory_rows_are_computed) {
    KeptTable cache;
    SquaresField squares(4, 4, 1.0, 1.0);
    RefuseAllocationsFrom(1);
    EXPECT_FALSE(squares.Keep(&cache));
    ResetMemoryCounts();
    EXPECT_EQ(RadialRowAt(squares.field, 3)[squares.columns.distance[3]], 8.0);
}

}  // namespace
}  // namespace kfx::test
