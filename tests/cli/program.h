// SPDX-License-Identifier: MIT
// Runs kestrel as a user does: as a program, on files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace kfx::test {

struct ProgramResult {
    int exitCode = -1;
    std::string out;
    std::string err;
    uint64_t peakBytes = 0;  // of memory in use by the process that does the work; Windows only
};

// Runs the kestrel that stands beside this test, with the arguments (UTF-8), and waits for its end. It reads
// the file at `inputPath`; empty: what the test itself would read.
ProgramResult RunKestrel(const std::vector<std::string>& arguments, const std::string& inputPath = "");

// The same with --json; fails the test when the output is not one JSON object.
nlohmann::json RunKestrelForJson(std::vector<std::string> arguments);

}  // namespace kfx::test
