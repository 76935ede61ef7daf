// SPDX-License-Identifier: MIT
// Giving memory back on another thread: freeing a large animation takes longer than a window may wait.
#pragma once

#include <memory>
#include <utility>

namespace kfx::stage {

// Lets a share go on another thread, or at once where the system has none for it.
void ReleaseShareLater(std::shared_ptr<const void> share);

// The same with a value that is given away.
template <typename Value>
void ReleaseLater(Value value) {
    ReleaseShareLater(std::make_shared<const Value>(std::move(value)));
}

}  // namespace kfx::stage
