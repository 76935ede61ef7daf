// SPDX-License-Identifier: MIT
// The square root of a sum of squares: a hardware square root, corrected by the difference between the sum
// and the root's square (Borges, "An improved algorithm for hypot(a, b)", 2019). Where that does not decide
// the rounding, for example when the root lies exactly between two doubles, the root is computed in whole
// numbers.
#include <cmath>

#include "framework/math/double_double.h"
#include "framework/math/elementary.h"
#include "framework/math/finish.h"
#include "framework/math/phases.h"
#include "framework/math/rounding.h"

namespace kfx {
namespace math {
namespace {

constexpr double kRootError = 0x1p-96;

// For sides whose squares and their remainders are normal numbers.
Rounded<double> RootOfSquares(double larger, double smaller) {
    const Pair<double> first = TwoProduct(larger, larger);
    const Pair<double> second = TwoProduct(smaller, smaller);
    const Pair<double> sum = FastTwoSum(first.high, second.high);
    const double root = std::sqrt(sum.high);
    // Sides of at most 26 bits, such as whole numbers, have exact squares; of an exact sum the root rounded
    // once is the result. That a product's low part is 0 does not prove it exact: the part is rounded, too.
    const bool exactSquares = LeadingHalf(larger) == larger && LeadingHalf(smaller) == smaller;
    if (exactSquares && sum.low == 0) return {root, true};
    const Pair<double> square = TwoProduct(root, root);
    const double rest = ((sum.high - square.high) - square.low) + (sum.low + (first.low + second.low));
    return RoundPair(FastTwoSum(root, rest / (root + root)), root * kRootError);
}

struct Sides {
    double larger;
    double smaller;
};

Sides Order(double x, double y) {
    const Sides sides = {Magnitude(x), Magnitude(y)};
    return sides.larger < sides.smaller ? Sides{sides.smaller, sides.larger} : sides;
}

}  // namespace

bool TryHypot(double x, double y, double* value) {
    const Sides sides = Order(x, y);
    if (!(sides.larger < kInfinity && sides.smaller < kInfinity)) {
        *value = Magnitude(x) == kInfinity || Magnitude(y) == kInfinity ? kInfinity : x + y;
        return true;
    }
    if (sides.smaller <= sides.larger * kLeastSideRatio) {
        *value = sides.larger;
        return true;
    }
    if (sides.larger < 0x1p-400) {
        if (sides.larger < 0x1p-1000) return false;  // the result may be a subnormal number
        const Rounded<double> root = RootOfSquares(sides.larger * 0x1p600, sides.smaller * 0x1p600);
        *value = root.value * 0x1p-600;
        return root.sure;
    }
    if (sides.larger > 0x1p500) {
        const Rounded<double> root = RootOfSquares(sides.larger * 0x1p-600, sides.smaller * 0x1p-600);
        *value = root.value * 0x1p600;
        return root.sure;
    }
    const Rounded<double> root = RootOfSquares(sides.larger, sides.smaller);
    *value = root.value;
    return root.sure;
}

}  // namespace math

double Hypot(double x, double y) {
    double value;
    if (math::TryHypot(x, y, &value)) return value;
    const math::Sides sides = math::Order(x, y);
    return math::ExactHypot(sides.larger, sides.smaller);
}

}  // namespace kfx
