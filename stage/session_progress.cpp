// SPDX-License-Identifier: MIT
#include "stage/session_progress.h"

#include <mutex>
#include <string>

#include "host/host_records.h"

namespace kfx::stage {

void NoteSessionProgress(Progress* progress, HWND window, const commands::HostSession& session) {
    std::string text;
    {
        const std::lock_guard<std::mutex> lock(session.statusLock);
        text = session.status;
    }
    NoteProgress(progress, window, text, session.progressCurrent, session.progressTotal);
}

bool IsFrameAfterStop(const Progress& progress, uint32_t request) {
    return progress.stop && static_cast<HostRequest>(request) == HostRequest::AddImage;
}

}  // namespace kfx::stage
