// SPDX-License-Identifier: MIT
#include "tests/builder/build_scene.h"

#include <algorithm>
#include <utility>

#include "framework/source_animation.h"

namespace kfx::test {

std::vector<uint8_t> BlockOf(const std::vector<Picture>& pictures, const BlockOptions& options) {
    std::vector<BlockFrame> frames;
    frames.reserve(pictures.size());
    for (const Picture& picture : pictures) frames.push_back({BytesOf(picture.handle)});
    return MakeAnimationBlock(frames, options);
}

std::vector<Picture> MovingBar(int32_t frames, int32_t width, int32_t height) {
    std::vector<Picture> pictures;
    for (int32_t i = 0; i < frames; ++i) {
        Picture picture = FlatPicture(width, height, Rgb(10, 60, 90));
        const ImageLock lock(picture.handle);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < 6; ++x)
                SetDibPixel(lock.image, (5 * i + x) % width, y, Rgb(200, static_cast<uint32_t>(y), 3));
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

Picture ImageOf(const HandedFrame& frame) {
    const ImageHandle handle = MakeMemory(frame.bitmap);
    return Picture(handle);
}

uint32_t EntryOf(const uint8_t* palette, size_t index) {
    return Rgb(palette[3 * index], palette[3 * index + 1], palette[3 * index + 2]);
}

bool HasStatus(const BuildRun& run, const std::string& text) {
    return std::any_of(run.lines.begin(), run.lines.end(), [&](const std::string& line) {
        return line.find("code=10 ") != std::string::npos &&
               line.find("\"" + text + "\"") != std::string::npos;
    });
}

EffectDescriptor EffectWith(int32_t (*build)(EffectBuildContext*), int32_t (*query)(void*, int32_t)) {
    EffectDescriptor effect = {};
    effect.build = build;
    effect.query = query;
    return effect;
}

int32_t Decode(EffectBuildContext* context) {
    DecodeAllFrames(context->source, context->frames);
    return 1;
}

}  // namespace kfx::test
