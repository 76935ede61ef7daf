// SPDX-License-Identifier: MIT
#include "framework/math/wide_number.h"

#include "framework/math/double_double.h"
#include "framework/math/rounding.h"

namespace kfx::math {
namespace {

constexpr int32_t kWordBits = 32;

// A whole number of up to 64 bits, shifted left or right by so many bits from unit to unit.
void PlaceBits(uint64_t bits, int32_t shift, WideNumber* to) {
    for (int32_t k = 0; k < to->size; ++k) {
        const int32_t away = kWordBits * k - shift;  // the word's lowest bit as one of `bits`
        if (away <= -kWordBits || away >= 64) continue;
        to->words[k] = static_cast<uint32_t>(away < 0 ? bits << -away : bits >> away);
    }
}

// The highest 64 bits from the highest set one down; `sticky` whether others are set below. The units in the
// last of them are 2^*exponent.
uint64_t LeadingBits(const WideNumber& a, bool* sticky, int32_t* exponent) {
    int32_t top = a.size - 1;
    while (top > 2 && a.words[top] == 0) --top;
    const int32_t length = BitLength(a.words[top]);
    uint64_t bits = uint64_t{a.words[top]} << kWordBits | a.words[top - 1];
    const int32_t up = kWordBits - length;
    if (up > 0 && up < kWordBits) bits = bits << up | a.words[top - 2] >> length;
    if (up == kWordBits) bits = bits << kWordBits | a.words[top - 2];
    uint32_t below = up < kWordBits ? a.words[top - 2] << up : 0;
    for (int32_t k = 0; k < top - 2; ++k) below |= a.words[k];
    *sticky = below != 0;
    *exponent = kWordBits * (top - 1 - (a.size - kWholeWords)) - up;
    return bits;
}

}  // namespace

WideNumber WideZero(int32_t size) {
    WideNumber result;
    result.size = size;
    for (int32_t k = 0; k < size; ++k) result.words[k] = 0;
    return result;
}

WideNumber WideInteger(int32_t size, uint32_t number) {
    WideNumber result = WideZero(size);
    result.words[size - kWholeWords] = number;
    return result;
}

WideNumber WideFromDouble(int32_t size, double x) {
    WideNumber result = WideZero(size);
    const uint64_t bits = BitsOf(Magnitude(x));
    if (bits >> 52 == 0) return result;  // zero; a subnormal number is below 1 unit
    const uint64_t significand = (bits & ~(~uint64_t{0} << 52)) | uint64_t{1} << 52;
    PlaceBits(significand, static_cast<int32_t>(bits >> 52) - 1075 + kWordBits * (size - kWholeWords),
              &result);
    return x < 0 ? Negate(result) : result;
}

WideNumber WideFromTable(int32_t size, const uint32_t* words) {
    WideNumber result = WideZero(size);
    for (int32_t k = 0; k < size - kWholeWords; ++k) result.words[size - kWholeWords - 1 - k] = words[k];
    return result;
}

bool IsNegative(const WideNumber& a) { return a.words[a.size - 1] >> (kWordBits - 1) != 0; }

WideNumber Add(const WideNumber& a, const WideNumber& b) {
    WideNumber result;
    result.size = a.size;
    uint64_t carry = 0;
    for (int32_t k = 0; k < a.size; ++k) {
        carry += uint64_t{a.words[k]} + b.words[k];
        result.words[k] = static_cast<uint32_t>(carry);
        carry >>= kWordBits;
    }
    return result;
}

WideNumber Subtract(const WideNumber& a, const WideNumber& b) {
    WideNumber result;
    result.size = a.size;
    uint64_t carry = 1;
    for (int32_t k = 0; k < a.size; ++k) {
        carry += uint64_t{a.words[k]} + ~b.words[k];
        result.words[k] = static_cast<uint32_t>(carry);
        carry >>= kWordBits;
    }
    return result;
}

WideNumber Negate(const WideNumber& a) { return Subtract(WideZero(a.size), a); }

WideNumber Multiply(const WideNumber& a, const WideNumber& b) {
    const int32_t size = a.size;
    uint32_t product[2 * kMostWideSize] = {};
    for (int32_t i = 0; i < size; ++i) {
        if (a.words[i] == 0) continue;
        uint64_t carry = 0;
        for (int32_t k = 0; k < size; ++k) {
            carry += uint64_t{a.words[i]} * b.words[k] + product[i + k];
            product[i + k] = static_cast<uint32_t>(carry);
            carry >>= kWordBits;
        }
        product[i + size] = static_cast<uint32_t>(carry);
    }
    WideNumber result;
    result.size = size;
    for (int32_t k = 0; k < size; ++k) result.words[k] = product[k + size - kWholeWords];
    return result;
}

WideNumber MultiplyWord(const WideNumber& a, uint32_t b) {
    WideNumber result;
    result.size = a.size;
    uint64_t carry = 0;
    for (int32_t k = 0; k < a.size; ++k) {
        carry += uint64_t{a.words[k]} * b;
        result.words[k] = static_cast<uint32_t>(carry);
        carry >>= kWordBits;
    }
    return result;
}

WideNumber DivideWord(const WideNumber& a, uint32_t b) {
    WideNumber result;
    result.size = a.size;
    uint64_t rest = 0;
    for (int32_t k = a.size - 1; k >= 0; --k) {
        rest = rest << kWordBits | a.words[k];
        result.words[k] = static_cast<uint32_t>(rest / b);
        rest %= b;
    }
    return result;
}

WideNumber ShiftLeft(const WideNumber& a, int32_t bits) {
    WideNumber result = WideZero(a.size);
    const int32_t whole = bits / kWordBits;
    const int32_t part = bits % kWordBits;
    for (int32_t k = whole; k < a.size; ++k) {
        const uint64_t upper = a.words[k - whole];
        const uint64_t lower = k > whole ? a.words[k - whole - 1] : 0;
        result.words[k] = static_cast<uint32_t>((upper << kWordBits | lower) >> (kWordBits - part));
    }
    return result;
}

WideNumber ShiftRight(const WideNumber& a, int32_t bits) {
    WideNumber result = WideZero(a.size);
    const int32_t whole = bits / kWordBits;
    const int32_t part = bits % kWordBits;
    for (int32_t k = 0; k + whole < a.size; ++k) {
        const uint64_t lower = a.words[k + whole];
        const uint64_t upper = k + whole + 1 < a.size ? a.words[k + whole + 1] : 0;
        result.words[k] = static_cast<uint32_t>((upper << kWordBits | lower) >> part);
    }
    return result;
}

double RoundExactly(const WideNumber& a, int32_t exponent) {
    bool sticky;
    int32_t scale;
    const uint64_t bits = LeadingBits(a, &sticky, &scale);
    return RoundScaled(bits, sticky, scale + exponent);
}

bool RoundWide(const WideNumber& a, int32_t errorBits, int32_t exponent, double* value) {
    if (errorBits >= kWordBits * a.size - 2) return false;
    WideNumber error = WideZero(a.size);
    PlaceBits(1, errorBits, &error);
    const WideNumber lower = Subtract(a, error);
    if (IsNegative(lower)) return false;
    *value = RoundExactly(lower, exponent);
    return RoundExactly(Add(a, error), exponent) == *value;
}

}  // namespace kfx::math
