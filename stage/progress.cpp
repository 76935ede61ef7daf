// SPDX-License-Identifier: MIT
#include "stage/progress.h"

#include "stage/stage_messages.h"

namespace kfx::stage {
namespace {

constexpr uint64_t kFirstEstimate = 1000;  // milliseconds

}  // namespace

void Restart(Progress* progress) {
    {
        const std::lock_guard<std::mutex> lock(progress->lock);
        progress->text.clear();
        progress->since = 0;
    }
    progress->done = 0;
    progress->total = 0;
    progress->stop = false;
    progress->announced = false;
}

void NoteProgress(Progress* progress, HWND window, const std::string& text, int done, int total) {
    {
        const std::lock_guard<std::mutex> lock(progress->lock);
        if (!text.empty() && text != progress->text) {
            progress->text = text;
            progress->since = GetTickCount64();
        }
    }
    progress->done = done;
    progress->total = total;
    if (!progress->announced.exchange(true)) PostMessageW(window, kProgressNoted, 0, 0);
}

bool AskToStop(Progress* progress) {
    const std::lock_guard<std::mutex> lock(progress->lock);
    if (progress->total <= 0) return false;
    progress->stop = true;
    return true;
}

void EndBuild(Progress* progress, HWND window) {
    {
        // No later question finds parts of what has ended.
        const std::lock_guard<std::mutex> lock(progress->lock);
        progress->total = 0;
        progress->stop = false;
    }
    NoteProgress(progress, window, " ", 0, 0);
}

ShownProgress LookAtProgress(Progress* progress, uint64_t now) {
    progress->announced = false;
    ShownProgress shown;
    uint64_t since = 0;
    {
        const std::lock_guard<std::mutex> lock(progress->lock);
        shown.text = progress->text;
        since = progress->since;
    }
    shown.done = progress->done;
    shown.total = progress->total;
    shown.timeLeft = TimeLeftText(now - since, shown.done, shown.total);
    return shown;
}

std::string TimeLeftText(uint64_t milliseconds, int done, int total) {
    if (milliseconds < kFirstEstimate || done <= 0 || done >= total) return "";
    const uint64_t left = milliseconds * static_cast<uint64_t>(total - done) / static_cast<uint64_t>(done);
    const uint64_t seconds = (left + 999) / 1000;
    if (seconds < 60) return "about " + std::to_string(seconds) + " s left";
    return "about " + std::to_string((seconds + 59) / 60) + " min left";
}

}  // namespace kfx::stage
