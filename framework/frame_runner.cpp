// SPDX-License-Identifier: MIT
#include "framework/frame_runner.h"

namespace kfx {

bool RunFrames(const FrameRunner* runner, int32_t count, const FrameWork& work) {
    if (runner) return runner->run(runner->threads, count, work);
    for (int32_t i = 0; i < count; ++i) {
        if (work.before && !work.before(work.user, i)) return false;
        if (!work.transform(work.user, i, 0)) return false;
        if (work.after && !work.after(work.user, i)) return false;
    }
    return true;
}

}  // namespace kfx
