// SPDX-License-Identifier: MIT
// How the first phases of the exponential function and of powers end.
#pragma once

#include <limits>

#include "framework/math/exponential_phase.h"

namespace kfx::math {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Rounds a pair that is known to a relative error. False: the error is too large to tell how it rounds.
bool RoundPower(const ScaledPair<double>& power, double relativeError, double* value);

}  // namespace kfx::math
