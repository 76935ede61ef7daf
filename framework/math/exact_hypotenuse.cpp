// SPDX-License-Identifier: MIT
// The hypotenuse in whole numbers: the sum of the squares has fewer than 300 bits, and its root is found bit
// by bit.
#include "framework/math/double_double.h"
#include "framework/math/phases.h"
#include "framework/math/wide_number.h"

namespace kfx::math {
namespace {

// Wide numbers are whole numbers here, counted in their units.
constexpr int32_t kSize = 10;
constexpr int32_t kPlaces = 32 * (kSize - kWholeWords);

// The root is computed to this many bits below the last bit of the smaller side. Then even a root of
// subnormal numbers has more bits than a double.
constexpr int32_t kMoreBits = 56;

// No root has a higher bit: it is less than twice the larger side, which has 53 bits and stands at most
// kSideRatioBits above the other.
constexpr int32_t kHighestBit = 53 + kSideRatioBits + kMoreBits;

WideNumber WholeNumber(uint64_t number, int32_t shift) {
    WideNumber result = WideZero(kSize);
    result.words[0] = static_cast<uint32_t>(number);
    result.words[1] = static_cast<uint32_t>(number >> 32);
    return ShiftLeft(result, shift);
}

// Multiply() drops as many low bits of a product as there are places behind the point. So each factor is
// first shifted left by half that number.
WideNumber SquareOf(const WideNumber& a) {
    const WideNumber moved = ShiftLeft(a, kPlaces / 2);
    return Multiply(moved, moved);
}

struct Significand {
    uint64_t bits;
    int32_t exponent;
};

Significand Split(double x) {
    const uint64_t bits = BitsOf(x);
    const auto field = static_cast<int32_t>(bits >> 52);
    const uint64_t fraction = bits & ~(~uint64_t{0} << 52);
    if (field == 0) return {fraction, -1074};
    return {fraction | uint64_t{1} << 52, field - 1075};
}

}  // namespace

double ExactHypot(double larger, double smaller) {
    const Significand a = Split(larger);
    const Significand b = Split(smaller);
    const WideNumber sum = Add(SquareOf(WholeNumber(a.bits, a.exponent - b.exponent + kMoreBits)),
                               SquareOf(WholeNumber(b.bits, kMoreBits)));
    // With one more bit in the root, its square grows by twice the root times the bit, and by the bit's
    // square.
    WideNumber root = WideZero(kSize);
    WideNumber square = root;
    for (int32_t k = kHighestBit; k >= 0; --k) {
        const WideNumber bit = WholeNumber(1, k);
        const WideNumber grown = Add(square, ShiftLeft(Add(ShiftLeft(root, 1), bit), k));
        if (IsNegative(Subtract(sum, grown))) continue;
        square = grown;
        root = Add(root, bit);
    }
    uint32_t rest = 0;
    for (int32_t k = 0; k < kSize; ++k) rest |= square.words[k] ^ sum.words[k];
    // One more bit stands for the whole remainder.
    root = ShiftLeft(root, 1);
    if (rest != 0) root.words[0] |= 1;
    return RoundExactly(root, kPlaces + b.exponent - kMoreBits - 1);
}

}  // namespace kfx::math
