// SPDX-License-Identifier: MIT
#include "commands/progress.h"

#include <cmath>

#include "commands/host_session.h"

namespace kfx::commands {
namespace {

// Earlier, one slow start would make a wild guess.
constexpr double kLeastSeconds = 3;

bool BeginsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

// Where the character with this number begins.
size_t PlaceOf(const std::string& text, size_t number) {
    size_t at = 0;
    for (; at < text.size(); ++at) {
        if (BeginsCharacter(text[at]) && number-- == 0) break;
    }
    return at;
}

}  // namespace

StageProgress ProgressOf(const HostSession& session) {
    const std::lock_guard<std::mutex> lock(session.statusLock);
    return {.stage = session.status, .current = session.progressCurrent, .total = session.progressTotal};
}

std::string TextOf(const StageProgress& progress) {
    if (progress.total <= 0) return progress.stage;
    return progress.stage + "  " + std::to_string(progress.current + 1) + " of " +
           std::to_string(progress.total);
}

// Coarse steps, so that the text stands still for a while.
std::string TimeLeftText(double seconds, uint64_t done, uint64_t total) {
    constexpr double kStep = 5, kMinute = 60, kHour = 3600;
    if (seconds < kLeastSeconds || done == 0 || done >= total) return "";
    const double left = seconds * static_cast<double>(total - done) / static_cast<double>(done);
    if (left < kMinute - kStep) {
        const auto steps = static_cast<int>(std::ceil(left / kStep));
        return "about " + std::to_string(static_cast<int>(kStep) * steps) + " s left";
    }
    if (left < kHour) return "about " + std::to_string(std::lround(left / kMinute)) + " min left";
    // A pace of centuries comes of a clock that was set.
    const double hours = std::min(left / kHour, 1e6);
    return "about " + std::to_string(std::lround(hours)) + " h left";
}

std::string FitColumns(const std::string& text, size_t columns) {
    constexpr size_t kDots = 3;
    size_t count = 0;
    for (const char c : text) count += BeginsCharacter(c) ? 1 : 0;
    if (count <= columns) return text;
    if (columns <= kDots) return text.substr(0, PlaceOf(text, columns));
    const size_t kept = columns - kDots, front = kept / 2;
    return text.substr(0, PlaceOf(text, front)) + "..." + text.substr(PlaceOf(text, count - (kept - front)));
}

}  // namespace kfx::commands
