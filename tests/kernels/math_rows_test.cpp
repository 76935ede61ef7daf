// SPDX-License-Identifier: MIT
// The rows in lanes against the plain ones, which go number by number through the tested functions.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "framework/cpu.h"
#include "framework/math/elementary.h"
#include "kernels/math_rows.h"
#include "tests/framework/math/arguments.h"

namespace kfx {
namespace {

using Numbers = std::vector<double>;

Numbers MakeNumbers(size_t count, uint64_t seed, const std::function<double(Random&)>& make) {
    Random random(seed);
    Numbers numbers(count);
    for (double& x : numbers) x = make(random);
    return numbers;
}

// Arguments of every kind, in an order that puts odd ones between common ones.
Numbers MixedNumbers(double low, double high) {
    Numbers list = MakeNumbers(40000, 1, [&](Random& random) { return Between(random, low, high); });
    const Numbers bits = MakeNumbers(5000, 2, AnyBits);
    const Numbers exponents =
        MakeNumbers(5000, 3, [](Random& random) { return AnyOfExponents(random, -40, 18); });
    list.insert(list.end(), bits.begin(), bits.end());
    list.insert(list.end(), exponents.begin(), exponents.end());
    const Numbers extreme = ExtremeArguments();
    for (size_t i = 0; i < extreme.size(); ++i)
        list.insert(list.begin() + static_cast<ptrdiff_t>(7 * i), extreme[i]);
    return list;
}

using Row = std::function<void(const double* x, int32_t count, double* values)>;
using Function = std::function<double(double x)>;

void ExpectRow(const char* name, const Numbers& x, const Row& row, const Function& function) {
    Numbers expected(x.size());
    for (size_t i = 0; i < x.size(); ++i) expected[i] = function(x[i]);
    for (const bool avx2 : {true, false}) {
        AllowAvx2(avx2);
        Numbers values(x.size());
        row(x.data(), static_cast<int32_t>(x.size()), values.data());
        for (size_t i = 0; i < x.size(); ++i)
            ASSERT_TRUE(SameNumber(values[i], expected[i]))
                << name << ", " << x[i] << ": " << values[i] << " instead of " << expected[i];
        // Over the arguments; every length, nothing behind the end.
        for (size_t count = 0; count < 14; ++count) {
            Numbers same(x.begin(), x.begin() + 14);
            row(same.data(), static_cast<int32_t>(count), same.data());
            for (size_t i = 0; i < same.size(); ++i)
                ASSERT_TRUE(SameNumber(same[i], i < count ? expected[i] : x[i])) << name << ", " << count;
        }
    }
    AllowAvx2(true);
}

TEST(ElementaryRows, Exponentials) { ExpectRow("ExpRow", MixedNumbers(-60, 1), ExpRow, Exp); }

TEST(ElementaryRows, Exponentials_at_the_ends_of_their_range) {
    ExpectRow("ExpRow", MixedNumbers(-750, -690), ExpRow, Exp);
    ExpectRow("ExpRow", MixedNumbers(690, 715), ExpRow, Exp);
}

TEST(ElementaryRows, Sines) {
    ExpectRow("SinRow", MixedNumbers(-26, 26), SinRow, Sin);
    ExpectRow("SinRow", MixedNumbers(-40000, 40000), SinRow, Sin);
}

TEST(ElementaryRows, Sines_and_cosines) {
    const auto sines = [](const double* x, int32_t count, double* values) {
        Numbers others(static_cast<size_t>(count));
        SinCosRow(x, count, values, others.data());
    };
    const auto cosines = [](const double* x, int32_t count, double* values) {
        Numbers others(static_cast<size_t>(count));
        SinCosRow(x, count, others.data(), values);
    };
    for (const double end : {26.0, 40000.0}) {
        ExpectRow("SinCosRow", MixedNumbers(-end, end), sines, Sin);
        ExpectRow("SinCosRow", MixedNumbers(-end, end), cosines, Cos);
    }
}

TEST(ElementaryRows, Powers) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double y : {1.0, -1.0, 0.5, -0.37, 0.01, 2.0, 33.0, 400.0, -0x1p70, 0x1p-70, 0.0, kInfinity,
                           std::numeric_limits<double>::quiet_NaN(), -21474836.48}) {
        const auto row = [y](const double* x, int32_t count, double* values) { PowRow(x, y, count, values); };
        ExpectRow("PowRow", MixedNumbers(0, 1), row, [y](double x) { return Pow(x, y); });
    }
}

}  // namespace
}  // namespace kfx
