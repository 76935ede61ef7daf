// SPDX-License-Identifier: MIT
#include "tests/cli/program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kfx::test {

nlohmann::json RunKestrelForJson(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    const ProgramResult result = RunKestrel(arguments);
    EXPECT_EQ(result.err, "");
    auto object = nlohmann::json::parse(result.out, nullptr, false);
    EXPECT_TRUE(object.is_object()) << result.out;
    if (!object.is_object()) return nlohmann::json::object();
    EXPECT_EQ(object["exitCode"], result.exitCode);
    EXPECT_EQ(object["ok"], result.exitCode == 0);
    return object;
}

}  // namespace kfx::test
