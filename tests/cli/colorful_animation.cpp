// SPDX-License-Identifier: MIT
#include "tests/cli/colorful_animation.h"

#include <gtest/gtest.h>

#include "media/animation_writer.h"

namespace kfx::test {

void WriteColorful(const std::string& path, int frames, bool transparent) {
    Animation animation;
    animation.width = 64;
    animation.height = 48;
    animation.loopCount = 2;
    animation.comment = "many colours";
    for (int f = 0; f < frames; ++f) {
        Frame frame;
        frame.delay = 5 + f % 3;
        for (int i = 0; i < 64 * 48; ++i) {
            const int x = i % 64, y = i / 64;
            const bool hidden = transparent && (x - 32) * (x - 32) + (y - 24) * (y - 24) > 500;
            frame.pixels.insert(
                frame.pixels.end(),
                {static_cast<uint8_t>(x * 4), static_cast<uint8_t>(y * 5 + 3 * f),
                 static_cast<uint8_t>((x + f) * (y + 2) % 256), static_cast<uint8_t>(hidden ? 0 : 255)});
        }
        frame.transparent = transparent;
        animation.frames.push_back(frame);
    }
    std::string error;
    ASSERT_TRUE(WriteApng(path, animation, &error)) << error;
}

}  // namespace kfx::test
