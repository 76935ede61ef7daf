// SPDX-License-Identifier: MIT
// Waiting for what happens by messages, on other threads or in other processes.
#pragma once

#include <chrono>
#include <thread>

namespace kfx::test {

// Far longer than anything takes, even on a loaded machine: only what never happens takes as long.
constexpr std::chrono::seconds kLongestWait{120};

// Looks until the condition holds. False: it did not within kLongestWait.
template <typename Condition>
bool WaitFor(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace kfx::test
