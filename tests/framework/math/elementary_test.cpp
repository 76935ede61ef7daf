// SPDX-License-Identifier: MIT
// Every function against MPFR, bit for bit. KFX_MATH_ARGUMENTS changes how many random arguments each kind
// that effects use gets; the other kinds get a part of that.
#include "framework/math/elementary.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "framework/math/phases.h"
#include "tests/framework/math/arguments.h"
#include "tests/framework/math/comparison.h"
#include "tests/framework/math/mpfr_values.h"

namespace kfx {
namespace {

#ifndef KFX_DEFAULT_ARGUMENTS
#define KFX_DEFAULT_ARGUMENTS 50000
#endif

// Which part of KFX_MATH_ARGUMENTS a kind gets, as a divisor.
constexpr int64_t kUsedByEffects = 1;
constexpr int64_t kSubnormalPowers = 10;
constexpr int64_t kAnyNumbers = 25;
constexpr int64_t kLeftToFixedPoint = 250;  // nearly all of these take the slow way

int64_t ArgumentsOf(int64_t part) {
    const char* text = std::getenv("KFX_MATH_ARGUMENTS");
    return (text ? std::atoll(text) : KFX_DEFAULT_ARGUMENTS) / part;
}

// Of all kinds so far, and of those that effects use.
Count allKinds, kindsOfEffects;

void AddTo(Count* sum, const Count& count) {
    sum->arguments += count.arguments;
    sum->doubts += count.doubts;
    sum->wrong += count.wrong;
}

void Report(const std::string& name, const std::string& label, const Count& count) {
    std::printf("%s: %" PRId64 " arguments, %" PRId64 " left to fixed point\n", name.c_str(), count.arguments,
                count.doubts);
    ::testing::Test::RecordProperty(label + "_arguments", std::to_string(count.arguments));
    ::testing::Test::RecordProperty(label + "_left_to_fixed_point", std::to_string(count.doubts));
}

struct Totals : ::testing::Environment {
    void TearDown() override {
        Report("All kinds", "all", allKinds);
        Report("Kinds that effects use", "effects", kindsOfEffects);
        // What elementary.h says of how often fixed point is needed; few arguments tell nothing.
        if (kindsOfEffects.arguments >= 100000) {
            EXPECT_LT(kindsOfEffects.doubts * 5000, kindsOfEffects.arguments);
        }
    }
};
const ::testing::Environment* const kTotals = ::testing::AddGlobalTestEnvironment(new Totals);

// Checks a kind's part of random arguments; `make` writes one pair.
template <class Make>
void CheckKind(const Functions& functions, const char* kind, uint64_t seed, int64_t part, Make make) {
    Random random(seed);
    Count count;
    for (int64_t i = ArgumentsOf(part); i > 0; --i) {
        double x, y = 0;
        make(random, &x, &y);
        Check(functions, x, y, &count);
    }
    EXPECT_EQ(count.wrong, 0);
    AddTo(&allKinds, count);
    if (part == kUsedByEffects) AddTo(&kindsOfEffects, count);
    Report(std::string(functions.name) + " of " + kind,
           std::string(functions.name) + "_" + std::to_string(seed), count);
}

TEST(Elementary, Exponentials_of_bells) {
    CheckKind(kExp, "-n / s^2", 1, kUsedByEffects, [](Random& random, double* x, double*) {
        const double sigma = static_cast<double>(4 + random() % 500) / 10;
        *x = -static_cast<double>(random() % 2501) / (sigma * sigma);
    });
    CheckKind(kExp, "-j^2 / 18 s^2", 2, kUsedByEffects, [](Random& random, double* x, double*) {
        const auto j = static_cast<double>(random() % 1803);
        const auto sigma = static_cast<double>(5 + random() % 46);
        *x = -(j * j) / (18.0 * (sigma * sigma));
    });
}

TEST(Elementary, Exponentials_of_any_number) {
    CheckKind(kExp, "its range", 3, kAnyNumbers,
              [](Random& random, double* x, double*) { *x = Between(random, -746, 710); });
    CheckKind(kExp, "any exponent", 4, kAnyNumbers,
              [](Random& random, double* x, double*) { *x = AnyOfExponents(random, -60, 10); });
    CheckKind(kExp, "any bits", 5, kAnyNumbers,
              [](Random& random, double* x, double*) { *x = AnyBits(random); });
}

void MakeWave(Random& random, double* x, double*) {
    const double distance = std::sqrt(static_cast<double>(random() % 10000000) * 0.25);
    *x = distance / (static_cast<double>(400 + random() % 4601) / 100) * 6.283185307179586 +
         static_cast<double>(random() % 361) / 100;
}

void MakePull(Random& random, double* x, double*) { *x = Between(random, 0, 1.5707963267948966); }

TEST(Elementary, Sines_of_turns_and_waves) {
    CheckKind(kSin, "turns", 6, kUsedByEffects,
              [](Random& random, double* x, double*) { *x = AnyAngle(random); });
    CheckKind(kSin, "waves", 7, kUsedByEffects, MakeWave);
    CheckKind(kSin, "a quarter turn", 8, kUsedByEffects, MakePull);
}

TEST(Elementary, Cosines_of_turns_and_waves) {
    CheckKind(kCos, "turns", 9, kUsedByEffects,
              [](Random& random, double* x, double*) { *x = AnyAngle(random); });
    CheckKind(kCos, "waves", 10, kUsedByEffects, MakeWave);
    CheckKind(kCos, "a quarter turn", 11, kUsedByEffects, MakePull);
}

TEST(Elementary, Sines_and_cosines_of_any_number) {
    const auto any = [](Random& random, double* x, double*) { *x = AnyOfExponents(random, -40, 20); };
    const auto large = [](Random& random, double* x, double*) { *x = AnyOfExponents(random, 14, 1023); };
    const auto bits = [](Random& random, double* x, double*) { *x = AnyBits(random); };
    // As near to a multiple of a quarter turn as a double can be.
    const auto quarters = [](Random& random, double* x, double*) {
        *x = static_cast<double>(random() >> (12 + random() % 52)) * 1.5707963267948966;
    };
    CheckKind(kSin, "any exponent", 12, kAnyNumbers, any);
    CheckKind(kCos, "any exponent", 13, kAnyNumbers, any);
    CheckKind(kSin, "large numbers", 14, kAnyNumbers, large);
    CheckKind(kCos, "large numbers", 15, kAnyNumbers, large);
    CheckKind(kSin, "any bits", 16, kAnyNumbers, bits);
    CheckKind(kCos, "any bits", 17, kAnyNumbers, bits);
    CheckKind(kSin, "multiples of a quarter turn", 18, kAnyNumbers, quarters);
    CheckKind(kCos, "multiples of a quarter turn", 19, kAnyNumbers, quarters);
}

TEST(Elementary, Fixed_point_is_rarely_needed) {
    // Fixed point takes some hundred times as long: one call in five thousand makes the mean a few per cent
    // longer.
    Random random(40);
    int32_t doubts = 0;
    constexpr int32_t kCalls = 200000;
    for (int32_t i = 0; i < kCalls; ++i) {
        const double x = Between(random, 0, 1);
        double value;
        doubts += !math::TryExp(-20 * x, &value);
        doubts += !math::TrySin(25 * x, &value);
        doubts += !math::TryCos(25 * x, &value);
        doubts += !math::TryPow(x, -0.37, &value);
        doubts += !math::TryHypot(1000 * x, 700, &value);
    }
    EXPECT_LT(doubts, 5 * kCalls / 5000);
    RecordProperty("left_to_fixed_point", doubts);
}

TEST(Elementary, Powers_of_sines) {
    CheckKind(kPow, "sines to hundredths", 20, kUsedByEffects, [](Random& random, double* x, double* y) {
        *x = std::sin(Between(random, 0, 1.5707963267948966));
        *y = static_cast<double>(1 + random() % 100) / 100 * (random() & 1 ? 1 : -1);
    });
}

TEST(Elementary, Powers_of_any_numbers) {
    CheckKind(kPow, "any bits", 21, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = AnyBits(random);
        *y = AnyBits(random);
    });
    // Exponents that keep results in range, at its ends, too.
    CheckKind(kPow, "any base", 22, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = std::fabs(AnyOfExponents(random, -1074, 1023));
        *y = Between(random, -750, 715) / std::log(*x);
    });
    CheckKind(kPow, "bases beside 1", 23, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = 1 + AnyOfExponents(random, -52, -1);
        *y = Between(random, -700, 700) / std::log(*x);
    });
}

TEST(Elementary, Powers_that_are_doubles_or_lie_between_two) {
    CheckKind(kPow, "few bits", 24, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = FewBits(random, static_cast<int32_t>(1 + random() % 27), -40, 20);
        if (random() & 1) *x = -*x;
        *y = static_cast<double>(random() % 36) * (random() % 8 ? 1 : -1);
    });
    CheckKind(kPow, "roots of squares", 25, kAnyNumbers, [](Random& random, double* x, double* y) {
        const double root = FewBits(random, static_cast<int32_t>(1 + random() % 13), -12, 12);
        *x = root * root * root * root;
        *y = static_cast<double>(random() % 40) / (random() & 1 ? 4 : 2);
    });
    CheckKind(kPow, "powers of two", 26, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = std::ldexp(1.0, static_cast<int32_t>(random() % 2098) - 1074);
        *y = static_cast<double>(static_cast<int64_t>(random() % 4400) - 2200) / (random() & 1 ? 1 : 16);
    });
    // Short products whose last bits fall out of the subnormal range.
    CheckKind(kPow, "subnormal squares", 27, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = FewBits(random, static_cast<int32_t>(2 + random() % 26), -545, -530);
        *y = 2;
    });
}

TEST(Elementary, Hypotenuses) {
    CheckKind(kHypot, "whole numbers", 28, kUsedByEffects, [](Random& random, double* x, double* y) {
        *x = static_cast<double>(static_cast<int64_t>(random() % 40000) - 20000);
        *y = static_cast<double>(static_cast<int64_t>(random() % 40000) - 20000);
    });
    CheckKind(kHypot, "any bits", 29, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = AnyBits(random);
        *y = AnyBits(random);
    });
    CheckKind(kHypot, "sides alike", 30, kAnyNumbers, [](Random& random, double* x, double* y) {
        const auto exponent = static_cast<int32_t>(random() % 2090) - 1070;
        *x = AnyOfExponents(random, exponent, exponent);
        *y = AnyOfExponents(random, exponent > -1040 ? exponent - 32 : -1074, exponent);
    });
    CheckKind(kHypot, "subnormal numbers", 31, kAnyNumbers, [](Random& random, double* x, double* y) {
        *x = static_cast<double>(random() >> (12 + random() % 52)) * 0x1p-1074;
        *y = static_cast<double>(random() >> (12 + random() % 52)) * 0x1p-1074;
    });
}

TEST(Elementary, Hypotenuses_right_between_two_doubles) {
    // For a^2 = (c - b)(c + b) = 2 m^2 * 2 n^2 the hypotenuse is m^2 + n^2, odd with 54 bits for such m and
    // n.
    CheckKind(kHypot, "ties", 32, kAnyNumbers, [](Random& random, double* x, double* y) {
        const uint64_t m = (uint64_t{1} << 26) + random() % (uint64_t{1} << 26);
        const uint64_t n = (m + 1) - 2 * (random() % (uint64_t{1} << 16));
        *x = static_cast<double>(m > n ? m * m - n * n : n * n - m * m);
        *y = static_cast<double>(2 * m * n);
    });
}

TEST(Elementary, Arguments_whose_values_lie_next_to_the_middle_of_two_doubles) {
    // Where a function is flat its arguments hit a middle by far more bits than a double has.
    CheckKind(kExp, "next to middles", 34, kLeftToFixedPoint, [](Random& random, double* x, double*) {
        *x = ArgumentOfMiddle(MathFunction::Exp, NearOne(random), 0);
    });
    CheckKind(kSin, "next to middles", 35, kLeftToFixedPoint, [](Random& random, double* x, double*) {
        *x = ArgumentOfMiddle(MathFunction::Sin, std::nextafter(std::fmin(1, NearOne(random)), 0), 0);
    });
    CheckKind(kCos, "next to middles", 36, kLeftToFixedPoint, [](Random& random, double* x, double*) {
        *x = ArgumentOfMiddle(MathFunction::Cos, std::nextafter(std::fmin(1, NearOne(random)), 0), 0);
    });
    CheckKind(kPow, "next to middles", 37, kLeftToFixedPoint, [](Random& random, double* x, double* y) {
        *x = random() & 1 ? Between(random, 0.01, 4) : NearOne(random);
        *y = *x == 1 ? 1 : ArgumentOfMiddle(MathFunction::Pow, NearOne(random), *x);
    });
}

TEST(Elementary, Arguments_whose_values_lie_next_to_the_middle_of_two_subnormal_numbers) {
    CheckKind(kExp, "next to middles of a few last places", 41, kAnyNumbers,
              [](Random& random, double* x, double*) {
                  *x = ArgumentOfMiddle(MathFunction::Exp, AnySubnormal(random, 6), 0);
              });
    CheckKind(kExp, "next to middles of subnormal numbers", 42, kAnyNumbers,
              [](Random& random, double* x, double*) {
                  *x = ArgumentOfMiddle(MathFunction::Exp, AnySubnormal(random, 16), 0);
              });
    // The fewer bits the power has, the more bits of the computed pair its rounding leaves out.
    CheckKind(kPow, "next to middles of a few last places", 43, kSubnormalPowers,
              [](Random& random, double* x, double* y) { MakeSubnormalPower(random, 6, x, y); });
    CheckKind(kPow, "next to middles of subnormal numbers", 44, kAnyNumbers,
              [](Random& random, double* x, double* y) { MakeSubnormalPower(random, 16, x, y); });
}

TEST(Elementary, Hard_arguments) {
    // Places between the last one and where the value leaves the middle of two doubles. Those of Lefevre and
    // Muller, "Worst cases for correct rounding of the elementary functions in double precision", ARITH 2001,
    // and others found by random search.
    struct Hard {
        const Functions* functions;
        MathFunction function;
        double x;
        double y;
        int32_t places;
    };
    const Hard list[] = {
        {&kExp, MathFunction::Exp, 0x1.9e9cbbfd6080bp-31, 0, 58},
        {&kExp, MathFunction::Exp, 0x1.273c188aa7b14p+2, 0, 54},
        {&kSin, MathFunction::Sin, 0x1.598bae9e632f6p-7, 0, 60},
        {&kCos, MathFunction::Cos, 0x1.34ec2f9fc9cp+1, 0, 59},
        {&kExp, MathFunction::Exp, 0x1.fbfffffffffc1p-47, 0, 55},
        {&kExp, MathFunction::Exp, -0x1.c7ed73bf82a2p-1, 0, 27},
        {&kExp, MathFunction::Exp, -0x1.13c7dacf4771dp+3, 0, 27},
        {&kSin, MathFunction::Sin, 0x1.921f8fb276d4p+0, 0, 34},
        {&kSin, MathFunction::Sin, 0x1.75fa21cb38d8p+2, 0, 25},
        {&kCos, MathFunction::Cos, 0x1.37b1311fb4936p-22, 0, 54},
        {&kCos, MathFunction::Cos, 0x1.64bd21d31ceeep+4, 0, 27},
        {&kPow, MathFunction::Pow, 0x1.48b9c6af0b9bap+1, 0x1.9720a6e21bcacp-52, 68},
        {&kPow, MathFunction::Pow, 0x1.4acd8d2565d6ap-2, 0x1.999999999999ap-5, 26},
        {&kPow, MathFunction::Pow, 0x1.3c7a133efe8e5p-1, 0x1.b851eb851eb85p-1, 26},
        // Powers that are subnormal numbers.
        {&kPow, MathFunction::Pow, 0x1.c350a71798fap+8, -0x1.e7a3b09f9b4e5p+6, 50},
        {&kPow, MathFunction::Pow, 0x1.11fbdefd011b4p+2, -0x1.fee50ac8f7839p+8, 50},
        {&kPow, MathFunction::Pow, 0x1.8bf7c1d2c146dp-331, 0x1.9efcf0e4dc1b8p+1, 50},
    };
    Count count;
    for (const Hard& hard : list) {
        EXPECT_GE(HardnessOf(hard.function, hard.x, hard.y), hard.places) << hard.x << ", " << hard.y;
        Check(*hard.functions, hard.x, hard.y, &count);
    }
    EXPECT_EQ(count.wrong, 0);
    EXPECT_EQ(count.doubts, count.arguments);
}

TEST(Elementary, Extreme_arguments_and_their_pairs) {
    const std::vector<double> list = ExtremeArguments();
    Count count;
    for (size_t i = 0; i < list.size(); ++i) {
        for (const Functions* functions : {&kExp, &kSin, &kCos}) Check(*functions, list[i], 0, &count);
        // All pairs would take long: all those of the first thirty, zeros, infinities and the like, and every
        // fifth of the others.
        for (size_t k = i < 30 ? 0 : i % 5; k < list.size(); k += i < 30 ? 1 : 5) {
            Check(kPow, list[i], list[k], &count);
            Check(kPow, list[k], list[i], &count);
            Check(kHypot, list[i], list[k], &count);
        }
    }
    EXPECT_EQ(count.wrong, 0);
    AddTo(&allKinds, count);
    Report("Extreme arguments", "extreme", count);
}

TEST(Elementary, Fixed_point_alone_is_right_too) {
    Random random(33);
    const int64_t wanted = ArgumentsOf(kLeftToFixedPoint);
    for (int64_t i = 0; i < wanted; ++i) {
        const double x = AnyOfExponents(random, -20, 9);
        const double angle = AnyOfExponents(random, -20, 1000);
        const double base = std::fabs(AnyOfExponents(random, -1074, 1000));
        const double power = Between(random, -740, 700) / std::log(base);
        const double side = std::fabs(AnyOfExponents(random, -1074, 1000));
        const double other = side * Between(random, 1e-8, 1);
        ASSERT_TRUE(SameNumber(math::ExactExp(x), MpfrExp(x))) << x;
        ASSERT_TRUE(SameNumber(math::ExactSin(angle), MpfrSin(angle))) << angle;
        ASSERT_TRUE(SameNumber(math::ExactCos(angle), MpfrCos(angle))) << angle;
        ASSERT_TRUE(SameNumber(math::ExactPow(base, power), MpfrPow(base, power))) << base << ", " << power;
        if (other == 0) continue;
        ASSERT_TRUE(SameNumber(math::ExactHypot(side, other), MpfrHypot(side, other)))
            << side << ", " << other;
    }
}

}  // namespace
}  // namespace kfx
