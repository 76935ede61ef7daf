// SPDX-License-Identifier: MIT
#include "bench/bench_animation.h"

#include <algorithm>
#include <random>

#include "bench/bench_picture.h"

namespace kfx::bench {
namespace {

// A patch of the picture turned upside down and inverted, a step further in each frame.
void WalkPatch(const WorkingImage* scene, WorkingImage* frame, int32_t step, int32_t steps) {
    const int32_t width = scene->width / 5;
    const int32_t height = scene->height / 5;
    const int32_t left = (scene->width - width) * step / steps;
    const int32_t top = scene->height / 3 + step % 3 * scene->height / 30;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            SetDibPixel(frame, left + x, top + y,
                        ~GetDibPixel(scene, scene->width - 1 - x, scene->height - 1 - y) & 0xFFFFFF);
}

// One pixel in two hundred changes its green a little.
void Flicker(WorkingImage* frame, uint32_t seed) {
    std::mt19937 random(seed);
    for (int32_t i = 0; i < frame->width * frame->height / 200; ++i) {
        const auto x = static_cast<int32_t>(random() % static_cast<uint32_t>(frame->width));
        const auto y = static_cast<int32_t>(random() % static_cast<uint32_t>(frame->height));
        SetDibPixel(frame, x, y, GetDibPixel(frame, x, y) ^ 0x000300);
    }
}

}  // namespace

FrameList MakeBenchAnimation(int32_t width, int32_t height, int32_t frames) {
    FrameList list = {};
    const MemoryOwner scene(MakeBenchPicture(width, height));
    const ImageLock from(scene.memory);
    for (int32_t i = 0; from.image && i < frames; ++i) {
        FrameEntry entry = {};
        entry.transparentIndex = -1;
        entry.image = DuplicateImage(from.image);
        {
            const ImageLock to(entry.image);
            WalkPatch(from.image, to.image, i, std::max(frames, 1));
            Flicker(to.image, static_cast<uint32_t>(i));
        }
        AppendFrame(&list, entry);
    }
    return list;
}

}  // namespace kfx::bench
