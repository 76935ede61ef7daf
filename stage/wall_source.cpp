// SPDX-License-Identifier: MIT
#include "stage/wall_source.h"

#include <algorithm>

#include "commands/resize_frame.h"
#include "media/contact_sheet.h"

namespace kfx::stage {
namespace {

constexpr int kShortestTime = 20;  // milliseconds
constexpr uint32_t kUsualTime = 100;

}  // namespace

std::shared_ptr<const WallSource> WallSourceOf(const std::shared_ptr<const Animation>& animation) {
    auto source = std::make_shared<WallSource>();
    source->width = animation->width;
    source->height = animation->height;
    for (const Frame& frame : animation->frames)
        source->frames.push_back({{animation, &frame.pixels}, frame.transparent, MillisecondsOf(frame)});
    return source;
}

ThumbnailPlan PlanThumbnails(const WallSource& source, int mostWidth, int mostHeight, size_t copies,
                             uint64_t mostBytes) {
    ThumbnailPlan plan;
    if (source.frames.empty()) return plan;
    const PictureSize size = FitPicture(source.width, source.height, mostWidth, mostHeight);
    plan.width = size.width;
    plan.height = size.height;
    const uint64_t frameBytes = 4 * static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height) *
                                std::max<uint64_t>(copies, 1);
    const uint64_t most = std::max<uint64_t>(mostBytes / frameBytes, 1);
    plan.step = static_cast<size_t>((source.frames.size() + most - 1) / most);
    plan.count = (source.frames.size() + plan.step - 1) / plan.step;
    return plan;
}

bool MakeThumbnail(const WallSource& source, const ThumbnailPlan& plan, size_t number, Frame* thumbnail) {
    const size_t first = number * plan.step;
    const size_t end = std::min(first + plan.step, source.frames.size());
    const WallFrame& from = source.frames[first];
    thumbnail->pixels = *from.pixels;
    thumbnail->transparent = from.transparent;
    if ((source.width != plan.width || source.height != plan.height) &&
        !commands::ResizeFrame(source.width, source.height, plan.width, plan.height, thumbnail))
        return false;
    uint64_t milliseconds = 0;
    for (size_t i = first; i < end; ++i) milliseconds += ShownMilliseconds(source.frames[i].milliseconds);
    thumbnail->milliseconds = static_cast<int>(std::min<uint64_t>(milliseconds, INT32_MAX));
    thumbnail->delay = thumbnail->milliseconds / 10;
    return true;
}

uint32_t ShownMilliseconds(int milliseconds) {
    return milliseconds < kShortestTime ? kUsualTime : static_cast<uint32_t>(milliseconds);
}

uint64_t PlayingTime(const Animation& animation) {
    uint64_t total = 0;
    for (const Frame& frame : animation.frames) total += ShownMilliseconds(MillisecondsOf(frame));
    return total;
}

size_t FrameAtTime(const Animation& animation, uint64_t milliseconds) {
    const uint64_t total = PlayingTime(animation);
    if (total == 0) return 0;
    uint64_t rest = milliseconds % total;
    for (size_t frame = 0;; ++frame) {
        const uint64_t time = ShownMilliseconds(MillisecondsOf(animation.frames[frame]));
        if (rest < time) return frame;
        rest -= time;
    }
}

}  // namespace kfx::stage
