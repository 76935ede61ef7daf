// SPDX-License-Identifier: MIT
// The patterns that are kept for builds without MPFR are MPFR's; writes them anew when asked to.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/framework/math/comparison.h"
#include "tests/framework/math/mpfr_values.h"
#include "tests/framework/math/patterns.h"

namespace kfx {
namespace {

const Functions& FunctionsOf(const std::string& name) {
    for (const Functions* functions : {&kExp, &kSin, &kCos, &kPow})
        if (name == functions->name) return *functions;
    return kHypot;
}

TEST(MpfrPatterns, Are_what_the_file_holds) {
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
TEST(MpfrPatterns, DISABLED_WritePatterns) {
    std::FILE* file = std::fopen(kPatternFile, "wb");
    ASSERT_TRUE(file);
    Random random(50);
    const std::vector<double> extreme = ExtremeArguments();
    for (int32_t i = 0; i < 250; ++i) {
        const double angle = AnyAngle(random);
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
