// SPDX-License-Identifier: MIT
#include "tests/framework/math/comparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "framework/math/elementary.h"
#include "framework/math/phases.h"
#include "tests/framework/math/mpfr_values.h"

namespace kfx {

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

void MakeSubnormalPower(Random& random, int32_t bits, double* x, double* y) {
    *x = random() & 1 ? Between(random, 2, 500) : std::fabs(AnyOfExponents(random, -1000, -1));
    *y = ArgumentOfMiddle(MathFunction::Pow, AnySubnormal(random, bits), *x);
}

}  // namespace kfx
