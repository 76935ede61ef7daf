// SPDX-License-Identifier: MIT
// Waiting for what comes about by messages.
#pragma once

#include <windows.h>

namespace kfx::test {

// Looks again and again until the condition holds; false when it does not within half a minute.
template <typename Condition>
bool WaitFor(Condition condition) {
    for (int tries = 0; tries < 5000; ++tries) {
        if (condition()) return true;
        Sleep(6);
    }
    return condition();
}

}  // namespace kfx::test
