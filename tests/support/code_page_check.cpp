// SPDX-License-Identifier: MIT
// Fails a program that is to run with another code page of Windows than the one that it found.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>

namespace kfx::test {
namespace {

// Without KFX_CODE_PAGE any will do.
struct ExpectedCodePage : testing::Environment {
    void SetUp() override {
        const char* expected = std::getenv("KFX_CODE_PAGE");
        if (!expected) return;
        ASSERT_EQ(std::to_string(GetACP()), expected);
    }
};

// The framework owns it.
[[maybe_unused]] testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new ExpectedCodePage);

}  // namespace
}  // namespace kfx::test
