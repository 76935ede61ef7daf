// SPDX-License-Identifier: MIT
#include "tests/support/golden_builds.h"

#include <sstream>

#include "tests/support/animation_blocks.h"

namespace kfx::test {

std::string GoldenPath(const std::string& name) { return "tests/data/builder/" + name; }

std::vector<std::string> ReadGoldenLines(const std::string& name) {
    const std::vector<uint8_t> bytes = ReadTestFile(GoldenPath(name).c_str());
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> ReadGoldenBuild(const std::string& input, const std::string& options) {
    std::vector<std::string> lines;
    bool wanted = false;
    for (const std::string& line : ReadGoldenLines("expected/" + input + ".log")) {
        if (line.rfind("BUILD ", 0) == 0)
            wanted = line == "BUILD " + options;
        else if (wanted)
            lines.push_back(line);
    }
    return lines;
}

}  // namespace kfx::test
