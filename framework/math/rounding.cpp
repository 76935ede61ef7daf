// SPDX-License-Identifier: MIT
#include "framework/math/rounding.h"

#include "framework/math/double_double.h"

namespace kfx::math {
namespace {

constexpr int32_t kLeastExponent = -1074;  // of a subnormal number's last bit
constexpr int32_t kSignificandBits = 53;

double PowerOfTwo(int32_t n) { return FromBits(static_cast<uint64_t>(n + 1023) << 52); }  // normal numbers

}  // namespace

double Scale(double x, int32_t n) {
    for (; n > 1000; n -= 1000) x *= 0x1p1000;
    for (; n < -1000; n += 1000) x *= 0x1p-1000;
    return x * PowerOfTwo(n);
}

int32_t BitLength(uint64_t number) {
    int32_t length = 0;
    for (int32_t step = 32; step > 0; step /= 2) {
        if (number >> step == 0) continue;
        length += step;
        number >>= step;
    }
    return length + (number != 0);
}

double RoundScaled(uint64_t significand, bool sticky, int32_t exponent) {
    const int32_t length = BitLength(significand);
    int32_t dropped = length - kSignificandBits;
    if (exponent + dropped < kLeastExponent) dropped = kLeastExponent - exponent;
    if (dropped <= 0) return Scale(static_cast<double>(significand), exponent);
    if (dropped > 64 || dropped > length + 1) return 0;
    const uint64_t kept = dropped == 64 ? 0 : significand >> dropped;
    const uint64_t half = uint64_t{1} << (dropped - 1);
    const bool above = (significand & (half - 1)) != 0 || sticky;
    const bool up = (significand & half) != 0 && (above || (kept & 1) != 0);
    return Scale(static_cast<double>(kept + up), exponent + dropped);
}

}  // namespace kfx::math
