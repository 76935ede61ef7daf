// SPDX-License-Identifier: MIT
// Every compiler's code gives the bits that MPFR computed.
#include "tests/framework/math/patterns.h"

#include <gtest/gtest.h>

#include <limits>

#include "framework/math/elementary.h"
#include "kernels/math_rows.h"
#include "tests/framework/math/arguments.h"

namespace kfx {
namespace {

double Compute(const Pattern& pattern) {
    if (pattern.function == "Exp") return Exp(pattern.x);
    if (pattern.function == "Sin") return Sin(pattern.x);
    if (pattern.function == "Cos") return Cos(pattern.x);
    if (pattern.function == "Pow") return Pow(pattern.x, pattern.y);
    return Hypot(pattern.x, pattern.y);
}

// A row of four such arguments, of which the last is taken.
double ComputeInRow(const Pattern& pattern) {
    const double x[4] = {pattern.x, pattern.x, pattern.x, pattern.x};
    double values[4], others[4];
    if (pattern.function == "Exp") ExpRow(x, 4, values);
    if (pattern.function == "Sin") SinRow(x, 4, values);
    if (pattern.function == "Cos") SinCosRow(x, 4, others, values);
    if (pattern.function == "Pow") PowRow(x, pattern.y, 4, values);
    if (pattern.function == "Hypot") return Hypot(pattern.y, pattern.x);
    return values[3];
}

TEST(ElementaryPatterns, Are_what_MPFR_computed) {
    const std::vector<Pattern> patterns = ReadPatterns();
    ASSERT_GT(patterns.size(), 3000u);
    for (const Pattern& pattern : patterns) {
        EXPECT_TRUE(SameNumber(Compute(pattern), pattern.value))
            << pattern.function << "(" << pattern.x << ", " << pattern.y << ")";
        EXPECT_TRUE(SameNumber(ComputeInRow(pattern), pattern.value))
            << "row of " << pattern.function << "(" << pattern.x << ", " << pattern.y << ")";
    }
}

// As annex F of the C standard has it.
TEST(ElementaryPatterns, Infinite_powers_depend_on_the_side_of_one) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double sign : {1.0, -1.0}) {
        EXPECT_EQ(Pow(sign, kInfinity), 1);
        EXPECT_EQ(Pow(sign, -kInfinity), 1);
        EXPECT_EQ(Pow(sign * 2, kInfinity), kInfinity);
        EXPECT_EQ(Pow(sign * 2, -kInfinity), 0);
        EXPECT_EQ(Pow(sign * 0.5, kInfinity), 0);
        EXPECT_EQ(Pow(sign * 0.5, -kInfinity), kInfinity);
    }
}

}  // namespace
}  // namespace kfx
