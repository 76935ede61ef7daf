// SPDX-License-Identifier: MIT
// Every function against MPFR, bit for bit. KFX_MATH_ARGUMENTS changes how many random arguments each kind
// gets.
#include "framework/math/elementary.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "framework/math/phases.h"
#include "tests/framework/math/arguments.h"
#include "tests/framework/math/mpfr_values.h"
#include "tests/framework/math/patterns.h"

namespace kfx {
namespace {

int64_t ArgumentsPerKind() {
    const char* text = std::getenv("KFX_MATH_ARGUMENTS");
    return text ? std::atoll(text) : 30000;
}

// What the arguments of one case came to.
struct Count {
    int64_t arguments = 0;
    int64_t doubts = 0;
    int64_t wrong = 0;
};

using Function = double (*)(double x, double y);
using FirstPhase = bool (*)(double x, double y, double* value);

struct Functions {
    const char* name;
    Function ours;
    FirstPhase first;
    Function exact;
};

const Functions kExp = {"Exp", [](double x, double) { return Exp(x); },
                        [](double x, double, double* value) { return math::TryExp(x, value); },
                        [](double x, double) { return MpfrExp(x); }};
const Functions kSin = {"Sin", [](double x, double) { return Sin(x); },
                        [](double x, double, double* value) { return math::TrySin(x, value); },
                        [](double x, double) { return MpfrSin(x); }};
const Functions kCos = {"Cos", [](double x, double) { return Cos(x); },
                        [](double x, double, double* value) { return math::TryCos(x, value); },
                        [](double x, double) { return MpfrCos(x); }};
const Functions kPow = {"Pow", Pow, math::TryPow, MpfrPow};
const Functions kHypot = {"Hypot", Hypot, math::TryHypot, MpfrHypot};

void Check(const Functions& functions, double x, double y, Count* count) {
    const double ours = functions.ours(x, y);
    const double exact = functions.exact(x, y);
    double value;
    ++count->arguments;
    count->doubts += !functions.first(x, y, &value);
    if (SameNumber(ours, exact)) return;
    if (++count->wrong > 5) return;
    char text[200];
    std::snprintf(text, sizeof text, "%s(%a, %a): %a instead of %a", functions.name, x, y, ours, exact);
    ADD_FAILURE() << text;
}

// Checks as many random arguments as each kind gets; `make` writes one pair.
template <class Make>
void CheckKind(const Functions& functions, const char* kind, uint64_t seed, Make make,
               int64_t wanted = ArgumentsPerKind()) {
    Random random(seed);
    Count count;
    for (int64_t i = 0; i < wanted; ++i) {
        double x, y = 0;
        make(random, &x, &y);
        Check(functions, x, y, &count);
    }
    EXPECT_EQ(count.wrong, 0);
    std::printf("%s of %s: %" PRId64 " arguments, %" PRId64 " left to fixed point\n", functions.name, kind,
                count.arguments, count.doubts);
    const std::string label = std::string(functions.name) + "_" + std::to_string(seed);
    ::testing::Test::RecordProperty(label + "_arguments", std::to_string(count.arguments));
    ::testing::Test::RecordProperty(label + "_left_to_fixed_point", std::to_string(count.doubts));
}

TEST(Elementary, ExponentialsOfBells) {
    CheckKind(kExp, "-n / s^2", 1, [](Random& random, double* x, double*) {
        const double sigma = static_cast<double>(4 + random() % 500) / 10;
        *x = -static_cast<double>(random() % 2501) / (sigma * sigma);
    });
    CheckKind(kExp, "-j^2 / 18 s^2", 2, [](Random& random, double* x, double*) {
        const auto j = static_cast<double>(random() % 1803);
        const auto sigma = static_cast<double>(5 + random() % 46);
        *x = -(j * j) / (18.0 * (sigma * sigma));
    });
}

TEST(Elementary, ExponentialsOfAnyNumber) {
    CheckKind(kExp, "its range", 3,
              [](Random& random, double* x, double*) { *x = Between(random, -746, 710); });
    CheckKind(kExp, "any exponent", 4,
              [](Random& random, double* x, double*) { *x = AnyOfExponents(random, -60, 10); });
    CheckKind(kExp, "any bits", 5, [](Random& random, double* x, double*) { *x = AnyBits(random); });
}

void MakeAngle(Random& random, double* x, double*) {
    const auto degrees = static_cast<double>(static_cast<int64_t>(random() % 2881) - 1440);
    const double inward = Between(random, 0, 1);
    *x = random() % 8 ? inward * (degrees * 3.141592653589793 / 180) * inward
                      : degrees * 3.141592653589793 / 180;
}

void MakeWave(Random& random, double* x, double*) {
    const double distance = std::sqrt(static_cast<double>(random() % 10000000) * 0.25);
    *x = distance / (static_cast<double>(400 + random() % 4601) / 100) * 6.283185307179586 +
         static_cast<double>(random() % 361) / 100;
}

void MakePull(Random& random, double* x, double*) { *x = Between(random, 0, 1.5707963267948966); }

TEST(Elementary, SinesOfTurnsAndWaves) {
    CheckKind(kSin, "turns", 6, MakeAngle);
    CheckKind(kSin, "waves", 7, MakeWave);
    CheckKind(kSin, "a quarter turn", 8, MakePull);
}

TEST(Elementary, CosinesOfTurnsAndWaves) {
    CheckKind(kCos, "turns", 9, MakeAngle);
    CheckKind(kCos, "waves", 10, MakeWave);
    CheckKind(kCos, "a quarter turn", 11, MakePull);
}

TEST(Elementary, SinesAndCosinesOfAnyNumber) {
    const auto any = [](Random& random, double* x, double*) { *x = AnyOfExponents(random, -40, 20); };
    const auto large = [](Random& random, double* x, double*) { *x = AnyOfExponents(random, 14, 1023); };
    const auto bits = [](Random& random, double* x, double*) { *x = AnyBits(random); };
    // As near to a multiple of a quarter turn as a double can be.
    const auto quarters = [](Random& random, double* x, double*) {
        *x = static_cast<double>(random() >> (12 + random() % 52)) * 1.5707963267948966;
    };
    CheckKind(kSin, "any exponent", 12, any);
    CheckKind(kCos, "any exponent", 13, any);
    CheckKind(kSin, "large numbers", 14, large);
    CheckKind(kCos, "large numbers", 15, large);
    CheckKind(kSin, "any bits", 16, bits);
    CheckKind(kCos, "any bits", 17, bits);
    CheckKind(kSin, "multiples of a quarter turn", 18, quarters);
    CheckKind(kCos, "multiples of a quarter turn", 19, quarters);
}

TEST(Elementary, FixedPointIsRarelyNeeded) {
    // Once in some thousand calls it would already be felt.
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

TEST(Elementary, PowersOfSines) {
    CheckKind(kPow, "sines to hundredths", 20, [](Random& random, double* x, double* y) {
        *x = std::sin(Between(random, 0, 1.5707963267948966));
        *y = static_cast<double>(1 + random() % 100) / 100 * (random() & 1 ? 1 : -1);
    });
}

TEST(Elementary, PowersOfAnyNumbers) {
    CheckKind(kPow, "any bits", 21, [](Random& random, double* x, double* y) {
        *x = AnyBits(random);
        *y = AnyBits(random);
    });
    // Exponents that keep results in range, at its ends, too.
    CheckKind(kPow, "any base", 22, [](Random& random, double* x, double* y) {
        *x = std::fabs(AnyOfExponents(random, -1074, 1023));
        *y = Between(random, -750, 715) / std::log(*x);
    });
    CheckKind(kPow, "bases beside 1", 23, [](Random& random, double* x, double* y) {
        *x = 1 + AnyOfExponents(random, -52, -1);
        *y = Between(random, -700, 700) / std::log(*x);
    });
}

TEST(Elementary, PowersThatAreDoublesOrLieBetweenTwo) {
    CheckKind(kPow, "few bits", 24, [](Random& random, double* x, double* y) {
        *x = FewBits(random, static_cast<int32_t>(1 + random() % 27), -40, 20);
        if (random() & 1) *x = -*x;
        *y = static_cast<double>(random() % 36) * (random() % 8 ? 1 : -1);
    });
    CheckKind(kPow, "roots of squares", 25, [](Random& random, double* x, double* y) {
        const double root = FewBits(random, static_cast<int32_t>(1 + random() % 13), -12, 12);
        *x = root * root * root * root;
        *y = static_cast<double>(random() % 40) / (random() & 1 ? 4 : 2);
    });
    CheckKind(kPow, "powers of two", 26, [](Random& random, double* x, double* y) {
        *x = std::ldexp(1.0, static_cast<int32_t>(random() % 2098) - 1074);
        *y = static_cast<double>(static_cast<int64_t>(random() % 4400) - 2200) / (random() & 1 ? 1 : 16);
    });
    // Short products whose last bits fall out of the subnormal range.
    CheckKind(kPow, "subnormal squares", 27, [](Random& random, double* x, double* y) {
        *x = FewBits(random, static_cast<int32_t>(2 + random() % 26), -545, -530);
        *y = 2;
    });
}

TEST(Elementary, Hypotenuses) {
    CheckKind(kHypot, "whole numbers", 28, [](Random& random, double* x, double* y) {
        *x = static_cast<double>(static_cast<int64_t>(random() % 40000) - 20000);
        *y = static_cast<double>(static_cast<int64_t>(random() % 40000) - 20000);
    });
    CheckKind(kHypot, "any bits", 29, [](Random& random, double* x, double* y) {
        *x = AnyBits(random);
        *y = AnyBits(random);
    });
    CheckKind(kHypot, "sides alike", 30, [](Random& random, double* x, double* y) {
        const auto exponent = static_cast<int32_t>(random() % 2090) - 1070;
        *x = AnyOfExponents(random, exponent, exponent);
        *y = AnyOfExponents(random, exponent > -1040 ? exponent - 32 : -1074, exponent);
    });
    CheckKind(kHypot, "subnormal numbers", 31, [](Random& random, double* x, double* y) {
        *x = static_cast<double>(random() >> (12 + random() % 52)) * 0x1p-1074;
        *y = static_cast<double>(random() >> (12 + random() % 52)) * 0x1p-1074;
    });
}

TEST(Elementary, HypotenusesRightBetweenTwoDoubles) {
    // For a^2 = (c - b)(c + b) = 2 m^2 * 2 n^2 the hypotenuse is m^2 + n^2, odd with 54 bits for such m and
    // n.
    CheckKind(kHypot, "ties", 32, [](Random& random, double* x, double* y) {
        const uint64_t m = (uint64_t{1} << 26) + random() % (uint64_t{1} << 26);
        const uint64_t n = (m + 1) - 2 * (random() % (uint64_t{1} << 16));
        *x = static_cast<double>(m > n ? m * m - n * n : n * n - m * m);
        *y = static_cast<double>(2 * m * n);
    });
}

// A double below 1 by 2^-53 times an odd number of few bits, or above it: where results next to 1 are
// rounded.
double NearOne(Random& random) {
    const auto places = static_cast<double>(random() >> (30 + random() % 34));
    return random() & 1 ? 1 + places * 0x1p-52 : 1 - places * 0x1p-53;
}

TEST(Elementary, ArgumentsWhoseValuesLieNextToTheMiddleOfTwoDoubles) {
    // Where a function is flat its arguments hit a middle by far more bits than a double has. Nearly all of
    // these go through fixed point, which takes its time.
    const int64_t wanted = ArgumentsPerKind() / 10;
    CheckKind(
        kExp, "next to middles", 34,
        [](Random& random, double* x, double*) {
            *x = ArgumentOfMiddle(MathFunction::Exp, NearOne(random), 0);
        },
        wanted);
    CheckKind(
        kSin, "next to middles", 35,
        [](Random& random, double* x, double*) {
            *x = ArgumentOfMiddle(MathFunction::Sin, std::nextafter(std::fmin(1, NearOne(random)), 0), 0);
        },
        wanted);
    CheckKind(
        kCos, "next to middles", 36,
        [](Random& random, double* x, double*) {
            *x = ArgumentOfMiddle(MathFunction::Cos, std::nextafter(std::fmin(1, NearOne(random)), 0), 0);
        },
        wanted);
    CheckKind(
        kPow, "next to middles", 37,
        [](Random& random, double* x, double* y) {
            *x = random() & 1 ? Between(random, 0.01, 4) : NearOne(random);
            *y = *x == 1 ? 1 : ArgumentOfMiddle(MathFunction::Pow, NearOne(random), *x);
        },
        wanted);
}

// A subnormal number of at most so many bits, zero included; small ones are as likely as large ones.
double AnySubnormal(Random& random, int32_t bits) {
    const auto length = static_cast<int32_t>(random() % static_cast<uint64_t>(bits)) + 1;
    return static_cast<double>(random() >> (64 - length)) * 0x1p-1074;
}

// A base and the exponent at which its power is next to the middle of two subnormal numbers.
void MakeSubnormalPower(Random& random, int32_t bits, double* x, double* y) {
    *x = random() & 1 ? Between(random, 2, 500) : std::fabs(AnyOfExponents(random, -1000, -1));
    *y = ArgumentOfMiddle(MathFunction::Pow, AnySubnormal(random, bits), *x);
}

TEST(Elementary, ArgumentsWhoseValuesLieNextToTheMiddleOfTwoSubnormalNumbers) {
    CheckKind(kExp, "next to middles of a few last places", 41, [](Random& random, double* x, double*) {
        *x = ArgumentOfMiddle(MathFunction::Exp, AnySubnormal(random, 6), 0);
    });
    CheckKind(kExp, "next to middles of subnormal numbers", 42, [](Random& random, double* x, double*) {
        *x = ArgumentOfMiddle(MathFunction::Exp, AnySubnormal(random, 16), 0);
    });
    // The fewer bits the power has, the more bits of the computed pair its rounding leaves out.
    CheckKind(
        kPow, "next to middles of a few last places", 43,
        [](Random& random, double* x, double* y) { MakeSubnormalPower(random, 6, x, y); },
        ArgumentsPerKind() * 10 / 3);
    CheckKind(kPow, "next to middles of subnormal numbers", 44,
              [](Random& random, double* x, double* y) { MakeSubnormalPower(random, 16, x, y); });
}

TEST(Elementary, HardArguments) {
    // Places between the last one and where the value leaves the middle of two doubles. Those of Lefevre and
    // Muller, "Worst cases for correct rounding of the elementary functions in double precision", ARITH 2001,
    // and some of our own search.
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

TEST(Elementary, ExtremeArgumentsAndTheirPairs) {
    const std::vector<double> list = ExtremeArguments();
    Count count;
    for (size_t i = 0; i < list.size(); ++i) {
        for (const Functions* functions : {&kExp, &kSin, &kCos}) Check(*functions, list[i], 0, &count);
        // All pairs would take long: every fifth, but those of the first, which are odd ones out.
        for (size_t k = i < 30 ? 0 : i % 5; k < list.size(); k += i < 30 ? 1 : 5) {
            Check(kPow, list[i], list[k], &count);
            Check(kPow, list[k], list[i], &count);
            Check(kHypot, list[i], list[k], &count);
        }
    }
    EXPECT_EQ(count.wrong, 0);
    std::printf("extreme arguments: %" PRId64 "\n", count.arguments);
}

TEST(Elementary, FixedPointAloneIsRightToo) {
    Random random(33);
    const int64_t wanted = ArgumentsPerKind() / 20;
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

const Functions& FunctionsOf(const std::string& name) {
    for (const Functions* functions : {&kExp, &kSin, &kCos, &kPow})
        if (name == functions->name) return *functions;
    return kHypot;
}

TEST(Elementary, ThePatternsKeptForOtherBuildsAreThose) {
    Count count;
    for (const Pattern& pattern : ReadPatterns()) {
        EXPECT_TRUE(SameNumber(FunctionsOf(pattern.function).exact(pattern.x, pattern.y), pattern.value));
        Check(FunctionsOf(pattern.function), pattern.x, pattern.y, &count);
    }
    EXPECT_GT(count.arguments, 3000);
    EXPECT_EQ(count.wrong, 0);
}

void WritePattern(std::FILE* file, const Functions& functions, double x, double y) {
    const double numbers[] = {x, y, functions.exact(x, y)};
    uint64_t bits[3];
    std::memcpy(bits, numbers, sizeof bits);
    std::fprintf(file, "%s %016" PRIx64 " %016" PRIx64 " %016" PRIx64 "\n", functions.name, bits[0], bits[1],
                 bits[2]);
}

// Writes the file of patterns: run it by name after a change of what it should hold.
TEST(Elementary, DISABLED_WritePatterns) {
    std::FILE* file = std::fopen(kPatternFile, "wb");
    ASSERT_TRUE(file);
    Random random(50);
    const std::vector<double> extreme = ExtremeArguments();
    for (int32_t i = 0; i < 250; ++i) {
        double angle;
        MakeAngle(random, &angle, nullptr);
        const double inner = Between(random, 0, 1.5707963267948966);
        const double base = std::fabs(AnyOfExponents(random, -1074, 1023));
        WritePattern(file, kExp, Between(random, -50, 0), 0);
        WritePattern(file, kExp, Between(random, -746, 710), 0);
        WritePattern(file, kExp, ArgumentOfMiddle(MathFunction::Exp, NearOne(random), 0), 0);
        WritePattern(file, kSin, angle, 0);
        WritePattern(file, kCos, angle, 0);
        WritePattern(file, kSin, AnyOfExponents(random, -30, 1023), 0);
        WritePattern(file, kCos, AnyOfExponents(random, -30, 1023), 0);
        WritePattern(file, kPow, std::sin(inner), static_cast<double>(1 + random() % 100) / 100);
        WritePattern(file, kPow, std::sin(inner), -static_cast<double>(1 + random() % 100) / 100);
        WritePattern(file, kPow, base, Between(random, -750, 715) / std::log(base));
        WritePattern(file, kPow, FewBits(random, 20, -30, 10), static_cast<double>(random() % 6) / 2);
        WritePattern(file, kHypot, FewBits(random, 14, 0, 0), FewBits(random, 14, 0, 0));
        WritePattern(file, kHypot, AnyOfExponents(random, -20, 0), AnyOfExponents(random, -20, 0));
        const double x = extreme[random() % extreme.size()];
        const double y = extreme[random() % extreme.size()];
        for (const Functions* functions : {&kExp, &kSin, &kCos}) WritePattern(file, *functions, x, 0);
        for (const Functions* functions : {&kPow, &kHypot}) WritePattern(file, *functions, x, y);
    }
    WritePattern(file, kPow, 0x1.c350a71798fap+8, -0x1.e7a3b09f9b4e5p+6);
    WritePattern(file, kPow, 0x1.11fbdefd011b4p+2, -0x1.fee50ac8f7839p+8);
    WritePattern(file, kPow, 0x1.8bf7c1d2c146dp-331, 0x1.9efcf0e4dc1b8p+1);
    for (int32_t i = 0; i < 100; ++i) {
        double x, y;
        MakeSubnormalPower(random, 16, &x, &y);
        WritePattern(file, kPow, x, y);
        WritePattern(file, kExp, ArgumentOfMiddle(MathFunction::Exp, AnySubnormal(random, 16), 0), 0);
    }
    EXPECT_EQ(std::fclose(file), 0);
}

}  // namespace
}  // namespace kfx
