// SPDX-License-Identifier: MIT
// How a frame may come out of an effect that was refused memory, beside transformed or as it came.
#pragma once

#include <string_view>

namespace kfx::test {

// Oil Painting without memory for its counters answers the background colour.
inline bool MayBeAllBackground(std::string_view effect) { return effect == "Oil Painting"; }

}  // namespace kfx::test
