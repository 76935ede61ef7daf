// SPDX-License-Identifier: MIT
// The independently computed builds in tests/data/builder/, for whoever reproduces them.
#pragma once

#include <string>
#include <vector>

namespace kfx::test {

constexpr const char* kGoldenInputs[] = {"colours200", "colours254", "colours256", "empty",
                                         "global16",   "global200",  "gray37",     "photo-odd",
                                         "single",     "sizes",      "sprite",     "two-colours"};

// Path of a file of that folder, from the root of the sources.
std::string GoldenPath(const std::string& name);

// The lines of a file of that folder; fails the test when it is missing.
std::vector<std::string> ReadGoldenLines(const std::string& name);

}  // namespace kfx::test
