// SPDX-License-Identifier: MIT
// The constants against MPFR's.
#include "framework/math/tables.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>

namespace kfx {
namespace {

constexpr int32_t kBits = 3000;

struct Tables : ::testing::Test {
    Tables() { mpfr_inits2(kBits, value, part, static_cast<mpfr_ptr>(nullptr)); }
    ~Tables() override { mpfr_clears(value, part, static_cast<mpfr_ptr>(nullptr)); }

    // That the value is the sum of doubles, the last one rounded to nearest.
    void ExpectSum(std::initializer_list<double> parts, const std::string& name) {
        size_t left = parts.size();
        for (const double x : parts) {
            if (--left == 0)
                EXPECT_EQ(mpfr_get_d(value, MPFR_RNDN), x) << name;
            else
                mpfr_sub_d(value, value, x, MPFR_RNDN);
        }
    }

    // Whether a fraction's first words are these.
    void ExpectWords(const uint32_t* words, size_t count) {
        for (size_t k = 0; k < count; ++k) {
            mpfr_mul_2ui(value, value, 32, MPFR_RNDN);
            mpfr_floor(part, value);
            EXPECT_EQ(mpfr_get_ui(part, MPFR_RNDN), words[k]) << k;
            mpfr_sub(value, value, part, MPFR_RNDN);
        }
    }

    mpfr_t value;
    mpfr_t part;
};

// How many bits from its first to its last one a number has.
int32_t SignificantBits(double x) {
    int exponent;
    double fraction = std::fabs(std::frexp(x, &exponent));
    int32_t bits = 0;
    for (; fraction != 0; ++bits) {
        fraction *= 2;
        fraction -= std::floor(fraction);
    }
    return bits;
}

TEST_F(Tables, Parts_of_pi_and_of_the_logarithm_of_two) {
    mpfr_const_log2(value, MPFR_RNDN);
    ExpectSum({math::kLn2[0], math::kLn2[1]}, "ln 2");
    mpfr_const_log2(value, MPFR_RNDN);
    mpfr_div_ui(value, value, 256, MPFR_RNDN);
    ExpectSum({math::kLn2Over256[0], math::kLn2Over256[1], math::kLn2Over256[2]}, "ln 2 / 256");
    mpfr_const_pi(value, MPFR_RNDN);
    mpfr_div_ui(value, value, 512, MPFR_RNDN);
    ExpectSum({math::kPiOver512[0], math::kPiOver512[1], math::kPiOver512[2]}, "pi / 512");
    mpfr_const_pi(value, MPFR_RNDN);
    mpfr_div_ui(value, value, 512, MPFR_RNDN);
    ExpectSum({math::kPiOver512Pair[0], math::kPiOver512Pair[1]}, "pi / 512");
    for (int32_t k = 0; k < 2; ++k) {
        EXPECT_LE(SignificantBits(math::kLn2Over256[k]), 53 - 19);
        EXPECT_LE(SignificantBits(math::kPiOver512[k]), 53 - 23);
    }
}

TEST_F(Tables, Powers_of_two) {
    for (int32_t j = 0; j < 256; ++j) {
        mpfr_set_d(value, j / 256.0, MPFR_RNDN);
        mpfr_exp2(value, value, MPFR_RNDN);
        ExpectSum({math::kPowersOfTwo[2 * j], math::kPowersOfTwo[2 * j + 1]}, std::to_string(j));
    }
}

TEST_F(Tables, Sines) {
    for (uint32_t j = 0; j <= 256; ++j) {
        mpfr_const_pi(value, MPFR_RNDN);
        mpfr_mul_ui(value, value, j, MPFR_RNDN);
        mpfr_div_ui(value, value, 512, MPFR_RNDN);
        mpfr_sin(value, value, MPFR_RNDN);
        ExpectSum({math::kSines[2 * j], math::kSines[2 * j + 1]}, std::to_string(j));
    }
}

TEST_F(Tables, Logarithms) {
    for (int32_t i = 0; i < 512; ++i) {
        const double* entry = math::kLogarithms + 3 * i;
        EXPECT_LE(SignificantBits(entry[0]), 11) << i;
        // Its product with a significand of the interval is next to 1.
        const uint64_t bits = math::kLeastSignificand + (static_cast<uint64_t>(i) << 43);
        const double low = std::ldexp(1 + std::ldexp(static_cast<double>(bits & 0xFFFFFFFFFFFFF), -52),
                                      static_cast<int>(bits >> 52) - 1023);
        EXPECT_LE(std::fabs(low * entry[0] - 1), 0x1p-9) << i;
        EXPECT_LE(std::fabs((low + (low < 1 ? 0x1p-10 : 0x1p-9)) * entry[0] - 1), 0x1p-9) << i;
        mpfr_set_d(value, entry[0], MPFR_RNDN);
        mpfr_log(value, value, MPFR_RNDN);
        mpfr_neg(value, value, MPFR_RNDN);
        ExpectSum({entry[1], entry[2]}, std::to_string(i));
        EXPECT_EQ(std::floor(std::ldexp(entry[1], 42)), std::ldexp(entry[1], 42)) << i;
    }
}

TEST_F(Tables, Wide_constants) {
    mpfr_const_log2(value, MPFR_RNDN);
    ExpectWords(math::kWideLn2, 48);
    mpfr_const_pi(value, MPFR_RNDN);
    mpfr_div_ui(value, value, 4, MPFR_RNDN);
    ExpectWords(math::kWideQuarterPi, 48);
    mpfr_const_pi(value, MPFR_RNDN);
    mpfr_ui_div(value, 2, value, MPFR_RNDN);
    ExpectWords(math::kTwoOverPi, math::kTwoOverPiWords);
}

}  // namespace
}  // namespace kfx
