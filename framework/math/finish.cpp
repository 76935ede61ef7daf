// SPDX-License-Identifier: MIT
#include "framework/math/finish.h"

#include "framework/math/rounding.h"

namespace kfx::math {

bool RoundPower(const ScaledPair<double>& power, double relativeError, double* value) {
    const int32_t n = static_cast<int32_t>(power.steps) >> 8;
    const Pair<double>& pair = power.value;
    const double error = pair.high * relativeError;
    if (n > -1022) {
        const Rounded<double> rounded = RoundPair(pair, error);
        *value = Scale(rounded.value, n);
        return rounded.sure;
    }
    // Subnormal results have fewer bits. Adding the value to a number whose last bit has the same weight as
    // theirs rounds it to that many bits.
    if (n > -1024) return false;
    if (n < -1080) {
        *value = 0;
        return true;
    }
    const double large = FromBits(static_cast<uint64_t>(1023 - 1022 - n) << 52);
    const Pair<double> sum = FastTwoSum(large, pair.high);
    // sum.low is up to large * 2^-53. Adding pair.low to it and then the error rounds twice, each time by at
    // most large * 2^-106; next to a large number that is more than the pair's own error.
    const double roundings = large * 0x1p-104;
    const Rounded<double> rounded = RoundPair(Pair<double>{sum.high, sum.low + pair.low}, error + roundings);
    *value = Scale(rounded.value - large, n);
    return rounded.sure;
}

}  // namespace kfx::math
