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
    {.name = "exp/std", .lanes = true, .make = MakeExponents, .run = StdExp},
    {.name = "exp/own", .lanes = true, .make = MakeExponents, .run = OwnExp},
    {.name = "exp/plain_row", .lanes = false, .make = MakeExponents, .run = RowExp},
    {.name = "exp/lanes", .lanes = true, .make = MakeExponents, .run = RowExp},
    {.name = "sin/std", .lanes = true, .make = MakeWaves, .run = StdSin},
    {.name = "sin/own", .lanes = true, .make = MakeWaves, .run = OwnSin},
    {.name = "sin/plain_row", .lanes = false, .make = MakeWaves, .run = RowSin},
    {.name = "sin/lanes", .lanes = true, .make = MakeWaves, .run = RowSin},
    {.name = "cos/std", .lanes = true, .make = MakeAngles, .run = StdCos},
    {.name = "cos/own", .lanes = true, .make = MakeAngles, .run = OwnCos},
    {.name = "sincos/std", .lanes = true, .make = MakeAngles, .run = StdSinCos},
    {.name = "sincos/plain_row", .lanes = false, .make = MakeAngles, .run = RowSinCos},
    {.name = "sincos/lanes", .lanes = true, .make = MakeAngles, .run = RowSinCos},
    {.name = "pow/std", .lanes = true, .make = MakeBases, .run = StdPow},
    {.name = "pow/own", .lanes = true, .make = MakeBases, .run = OwnPow},
    {.name = "pow/plain_row", .lanes = false, .make = MakeBases, .run = RowPow},
    {.name = "pow/lanes", .lanes = true, .make = MakeBases, .run = RowPow},
    {.name = "hypot/std", .lanes = true, .make = MakeSides, .run = StdHypot},
    {.name = "hypot/own", .lanes = true, .make = MakeSides, .run = OwnHypot},
};

}  // namespace

const MathCase& MathCaseAt(size_t index) { return kCases[index]; }

size_t MathCaseCount() { return std::size(kCases); }

}  // namespace kfx::bench
