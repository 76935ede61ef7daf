// SPDX-License-Identifier: MIT
// The independently computed builds in tests/data/builder/ (see tests/data/README.md), for whoever
// reproduces them.
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

// The transcript of the build of an input with these options; empty when there is none.
std::vector<std::string> ReadGoldenBuild(const std::string& input, const std::string& options);

}  // namespace kfx::test
