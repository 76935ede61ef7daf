// SPDX-License-Identifier: MIT
#include "tests/support/tried.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <mutex>

namespace kfx::test {
namespace {

std::mutex mutex;  // guards the sums
std::map<std::string, size_t> sums;

// The framework owns it and calls it after the last test.
class Sums : public testing::Environment {
public:
    void TearDown() override {
        for (const auto& [what, sum] : sums) {
            std::printf("In all: %zu %s\n", sum, what.c_str());
            std::string key = what;
            std::replace(key.begin(), key.end(), ' ', '_');
            testing::Test::RecordProperty(key, std::to_string(sum));
        }
    }
};
[[maybe_unused]] const testing::Environment* const registered = testing::AddGlobalTestEnvironment(new Sums);

}  // namespace

void AddTried(const std::string& what, size_t count) {
    const std::lock_guard<std::mutex> lock(mutex);
    sums[what] += count;
}

}  // namespace kfx::test
