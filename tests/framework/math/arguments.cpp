// SPDX-License-Identifier: MIT
#include "tests/framework/math/arguments.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace kfx {

double Between(Random& random, double low, double high) {
    return low + (high - low) * (static_cast<double>(random() >> 11) * 0x1p-53);
}

double AnyBits(Random& random) {
    const uint64_t bits = random();
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

double AnyOfExponents(Random& random, int32_t low, int32_t high) {
    const auto exponent =
        static_cast<int32_t>(low + static_cast<int64_t>(random() % uint64_t(high - low + 1)));
    const double x = std::ldexp(static_cast<double>(random() >> 11 | uint64_t{1} << 52), exponent - 52);
    return random() & 1 ? x : -x;
}

double FewBits(Random& random, int32_t bits, int32_t low, int32_t high) {
    const auto exponent =
        static_cast<int32_t>(low + static_cast<int64_t>(random() % uint64_t(high - low + 1)));
    return std::ldexp(static_cast<double>(random() >> (64 - bits)), exponent);
}

double AnyAngle(Random& random) {
    const auto degrees = static_cast<double>(static_cast<int64_t>(random() % 2881) - 1440);
    const double inward = Between(random, 0, 1);
    return random() % 8 ? inward * (degrees * 3.141592653589793 / 180) * inward
                        : degrees * 3.141592653589793 / 180;
}

double NearOne(Random& random) {
    const auto places = static_cast<double>(random() >> (30 + random() % 34));
    return random() & 1 ? 1 + places * 0x1p-52 : 1 - places * 0x1p-53;
}

double AnySubnormal(Random& random, int32_t bits) {
    const auto length = static_cast<int32_t>(random() % static_cast<uint64_t>(bits)) + 1;
    return static_cast<double>(random() >> (64 - length)) * 0x1p-1074;
}

std::vector<double> ExtremeArguments() {
    using Limits = std::numeric_limits<double>;
    std::vector<double> list = {0,
                                Limits::infinity(),
                                Limits::quiet_NaN(),
                                Limits::denorm_min(),
                                2 * Limits::denorm_min(),
                                3 * Limits::denorm_min(),
                                Limits::min() / 2,
                                std::nextafter(Limits::min(), 0),
                                Limits::min(),
                                Limits::max(),
                                std::nextafter(Limits::max(), 0),
                                Limits::max() / 2,
                                std::nextafter(1.0, 0.0),
                                std::nextafter(1.0, 2.0)};
    for (int32_t k = -1074; k<1024; k += k> - 56 && k < 56 ? 3 : 37) {
        const double power = std::ldexp(1.0, k);
        list.insert(list.end(), {power, std::nextafter(power, 0.0), std::nextafter(power, Limits::max())});
    }
    for (const double x : {0.5, 1.5, 2.5, 3.0, 5.0, 7.0, 10.0, 33.0, 34.0, 35.0, 1023.0, 1074.0, 1075.0})
        list.insert(list.end(), {x, 1 / x});
    // Where e^x ceases to overflow, to be normal, to be anything but 0.
    for (const double x : {709.782712893384, -708.3964185322641, -745.1332191019411, -744.4400719213812})
        list.insert(list.end(), {x, std::nextafter(x, 0.0), std::nextafter(x, 10 * x)});
    const size_t count = list.size();
    for (size_t i = 0; i < count; ++i) list.push_back(-list[i]);
    return list;
}

bool SameNumber(double a, double b) {
    uint64_t bits[2];
    std::memcpy(&bits[0], &a, sizeof a);
    std::memcpy(&bits[1], &b, sizeof b);
    return std::isnan(a) ? std::isnan(b) : bits[0] == bits[1];
}

}  // namespace kfx
