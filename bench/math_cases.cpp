// SPDX-License-Identifier: MIT
#include "bench/math_cases.h"

#include <cmath>
#include <iterator>
#include <random>

#include "framework/math/elementary.h"
#include "kernels/math_rows.h"

namespace kfx::bench {
namespace {

constexpr double kExponent = -0.37;
constexpr double kSide = 117;

void Fill(double* x, double low, double high) {
    std::mt19937_64 random(1);
    for (int32_t i = 0; i < kMathArguments; ++i)
        x[i] = low + (high - low) * (static_cast<double>(random() >> 11) * 0x1p-53);
}

void MakeExponents(double* x) { Fill(x, -40, 0); }
void MakeAngles(double* x) { Fill(x, -25, 25); }
void MakeWaves(double* x) { Fill(x, 0, 1500); }
void MakeBases(double* x) { Fill(x, 0, 1); }
void MakeSides(double* x) {
    Fill(x, -2000, 2000);
    for (int32_t i = 0; i < kMathArguments; ++i) x[i] = std::floor(x[i]);
}

template <class Function>
void Each(const double* x, double* values, Function function) {
    for (int32_t i = 0; i < kMathArguments; ++i) values[i] = function(x[i]);
}

using X = const double*;
using Values = double*;
double cosines[kMathArguments];  // the rows' second results

void StdExp(X x, Values v) {
    Each(x, v, [](double a) { return std::exp(a); });
}
void OwnExp(X x, Values v) {
    Each(x, v, [](double a) { return Exp(a); });
}
void RowExp(X x, Values v) { ExpRow(x, kMathArguments, v); }
void StdSin(X x, Values v) {
    Each(x, v, [](double a) { return std::sin(a); });
}
void OwnSin(X x, Values v) {
    Each(x, v, [](double a) { return Sin(a); });
}
void RowSin(X x, Values v) { SinRow(x, kMathArguments, v); }
void StdCos(X x, Values v) {
    Each(x, v, [](double a) { return std::cos(a); });
}
void OwnCos(X x, Values v) {
    Each(x, v, [](double a) { return Cos(a); });
}
void StdSinCos(X x, Values v) {
    StdSin(x, v);
    StdCos(x, cosines);
}
void RowSinCos(X x, Values v) { SinCosRow(x, kMathArguments, v, cosines); }
void StdPow(X x, Values v) {
    Each(x, v, [](double a) { return std::pow(a, kExponent); });
}
void OwnPow(X x, Values v) {
    Each(x, v, [](double a) { return Pow(a, kExponent); });
}
void RowPow(X x, Values v) { PowRow(x, kExponent, kMathArguments, v); }
void StdHypot(X x, Values v) {
    Each(x, v, [](double a) { return std::hypot(a, kSide); });
}
void OwnHypot(X x, Values v) {
    Each(x, v, [](double a) { return Hypot(a, kSide); });
}

constexpr MathCase kCases[] = {
    {"exp/std", true, MakeExponents, StdExp},
    {"exp/own", true, MakeExponents, OwnExp},
    {"exp/plain_row", false, MakeExponents, RowExp},
    {"exp/lanes", true, MakeExponents, RowExp},
    {"sin/std", true, MakeWaves, StdSin},
    {"sin/own", true, MakeWaves, OwnSin},
    {"sin/plain_row", false, MakeWaves, RowSin},
    {"sin/lanes", true, MakeWaves, RowSin},
    {"cos/std", true, MakeAngles, StdCos},
    {"cos/own", true, MakeAngles, OwnCos},
    {"sincos/std", true, MakeAngles, StdSinCos},
    {"sincos/plain_row", false, MakeAngles, RowSinCos},
    {"sincos/lanes", true, MakeAngles, RowSinCos},
    {"pow/std", true, MakeBases, StdPow},
    {"pow/own", true, MakeBases, OwnPow},
    {"pow/plain_row", false, MakeBases, RowPow},
    {"pow/lanes", true, MakeBases, RowPow},
    {"hypot/std", true, MakeSides, StdHypot},
    {"hypot/own", true, MakeSides, OwnHypot},
};

}  // namespace

const MathCase& MathCaseAt(size_t index) { return kCases[index]; }

size_t MathCaseCount() { return std::size(kCases); }

}  // namespace kfx::bench
