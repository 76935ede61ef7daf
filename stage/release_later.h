// SPDX-License-Identifier: MIT
// Giving memory back on another thread: freeing a large animation takes longer than a window may wait.
#pragma once

#include <memory>
#include <new>
#include <utility>

namespace kfx::stage {

// Lets a share go on another thread, or at once where the system has none for it.
void ReleaseShareLater(std::shared_ptr<const void> share);

// The same with a value that is given away. It goes at once where there is no memory for its share.
template <typename Value>
void ReleaseLater(Value value) {
    // An empty value has no memory to give back.
    if constexpr (requires { value.empty(); }) {
        if (value.empty()) return;
    } else if constexpr (requires { !value; }) {
        if (!value) return;
    }
    try {
        ReleaseShareLater(std::make_shared<const Value>(std::move(value)));
    } catch (const std::bad_alloc&) {
        // The value has not been moved: it ends with this call.
    }
}

}  // namespace kfx::stage
