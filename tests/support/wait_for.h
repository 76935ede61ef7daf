// SPDX-License-Identifier: MIT
// Waiting for what comes about by messages, on other threads or in other processes.
#pragma once

#include <chrono>
#include <thread>

namespace kfx::test {

// Far longer than anything takes, on a loaded machine too: only what never comes about lasts as long.
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
