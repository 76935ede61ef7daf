// SPDX-License-Identifier: MIT
#include "stage/release_later.h"

#include <new>

#include <windows.h>

namespace kfx::stage {

using Share = std::shared_ptr<const void>;

void ReleaseShareLater(Share share) {
    if (!share) return;
    auto* kept = new (std::nothrow) Share(std::move(share));
    if (!kept) return;
    const auto release = [](PTP_CALLBACK_INSTANCE, void* pointer) { delete static_cast<Share*>(pointer); };
    if (!TrySubmitThreadpoolCallback(release, kept, nullptr)) delete kept;
}

}  // namespace kfx::stage
