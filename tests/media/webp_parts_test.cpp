// SPDX-License-Identifier: MIT
// WebP animations without loss, beside the library's own encoder of animations, which takes one frame after
// another.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

#include <webp/encode.h>
#include <webp/mux.h>

#include "media/animation_writer.h"
#include "media/webp_parts.h"
#include "media/webp_picture.h"
#include "tests/media/gif_builder.h"
#include "tests/media/gif_scenes.h"
#include "tests/media/job_threads.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;

constexpr int32_t kThreads[] = {1, 2, 3, 8};
constexpr int kLongestTime = (1 << 24) - 1;  // of a frame in the file, in milliseconds

struct EncoderDeleter {
    void operator()(WebPAnimEncoder* encoder) const { WebPAnimEncoderDelete(encoder); }
};

// Empty when the encoder refuses the animation.
Bytes EncodedInTurn(const Animation& animation, const WebpOptions& options) {
    WebPConfig config;
    WebPAnimEncoderOptions encoderOptions;
    EXPECT_TRUE(WebPConfigInit(&config) && WebPConfigLosslessPreset(&config, options.effort) &&
                WebPAnimEncoderOptionsInit(&encoderOptions));
    if (options.kind == WebpKind::NearLossless) config.near_lossless = options.quality;
    encoderOptions.anim_params.loop_count = animation.loopCount + 1;
    const RgbColor back = animation.background;
    if (animation.hasBackground)
        encoderOptions.anim_params.bgcolor =
            0xFF000000u | static_cast<uint32_t>(back.red << 16 | back.green << 8 | back.blue);
    const std::unique_ptr<WebPAnimEncoder, EncoderDeleter> encoder(
        WebPAnimEncoderNew(animation.width, animation.height, &encoderOptions));
    int time = 0;
    for (const Frame& frame : animation.frames) {
        WebpPicture holder;
        holder.picture.use_argb = 1;
        holder.picture.width = animation.width;
        holder.picture.height = animation.height;
        EXPECT_TRUE(WebPPictureImportRGBA(&holder.picture, frame.pixels.data(), 4 * animation.width));
        if (!WebPAnimEncoderAdd(encoder.get(), &holder.picture, time, &config)) return {};
        time += MillisecondsOf(frame);
    }
    WebPData data;
    WebPDataInit(&data);
    Bytes file;
    if (WebPAnimEncoderAdd(encoder.get(), nullptr, time, nullptr) &&
        WebPAnimEncoderAssemble(encoder.get(), &data))
        file.assign(data.bytes, data.bytes + data.size);
    WebPDataClear(&data);
    return file;
}

// The file on several numbers of threads; empty when it is refused.
Bytes EncodedOnThreads(const Animation& animation, WebpOptions options) {
    Bytes first;
    for (const int32_t threads : kThreads) {
        options.jobs = test::JobThreads(threads);
        Bytes file;
        std::string error;
        EncodeWebp(animation, &file, &error, options);
        if (threads == kThreads[0]) first = file;
        EXPECT_TRUE(file == first) << threads;
    }
    return first;
}

Animation Blank(int width, int height, size_t frames) {
    Animation animation;
    animation.width = width;
    animation.height = height;
    animation.loopCount = 2;
    animation.frames.resize(frames);
    for (Frame& frame : animation.frames) {
        frame.pixels.resize(4 * static_cast<size_t>(width) * static_cast<size_t>(height));
        frame.milliseconds = 40;
    }
    return animation;
}

// Parts of frames change, become transparent, half transparent or opaque; some frames change nothing.
Animation ChangingPatches(uint32_t seed) {
    std::mt19937 random(seed);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<uint32_t>(limit));
    };
    Animation animation = Blank(1 + below(20), 1 + below(16), static_cast<size_t>(2 + below(6)));
    Bytes canvas = animation.frames[0].pixels;
    const int levels = 1 + below(3);
    for (Frame& frame : animation.frames) {
        if (below(4) == 0) std::fill(canvas.begin(), canvas.end(), uint8_t{0});
        for (int patches = below(3); patches > 0; --patches) {
            const int left = below(animation.width), top = below(animation.height);
            const int right = left + 1 + below(animation.width - left);
            const int bottom = top + 1 + below(animation.height - top);
            const uint8_t alphas[] = {255, 255, 0, 128};
            const uint8_t alpha = alphas[below(4)];
            for (int y = top; y < bottom; ++y)
                for (int x = left; x < right; ++x) {
                    uint8_t* pixel = canvas.data() + 4 * (y * animation.width + x);
                    for (int i = 0; i < 3; ++i) pixel[i] = static_cast<uint8_t>(100 * below(levels));
                    pixel[3] = alpha;
                }
        }
        frame.pixels = canvas;
        frame.milliseconds = below(200);
    }
    return animation;
}

TEST(WebpParts, Changing_patches_give_the_bytes_of_frames_in_turn) {
    int cleared = 0, blended = 0, replaced = 0, merged = 0;
    for (uint32_t seed = 0; seed < 200; ++seed) {
        const Animation animation = ChangingPatches(seed);
        const WebpOptions options = {.effort = static_cast<int>(seed % 3)};
        const Bytes expected = EncodedInTurn(animation, options);
        ASSERT_FALSE(expected.empty());
        ASSERT_TRUE(EncodedOnThreads(animation, options) == expected) << seed;
        std::vector<WebpPart> parts;
        ASSERT_TRUE(PlanWebpParts(animation, &parts));
        WebPConfig config;
        ASSERT_TRUE(WebPConfigInit(&config) && WebPConfigLosslessPreset(&config, 0));
        EncodeWebpParts(animation, config, {}, &parts);
        merged += parts.size() < animation.frames.size();
        for (size_t i = 1; i < parts.size(); ++i) {
            cleared += parts[i].cleared.width > 0;
            (parts[i].blends ? blended : replaced) += 1;
        }
    }
    // Each way to store a frame was among them.
    EXPECT_GT(cleared, 20);
    EXPECT_GT(blended, 100);
    EXPECT_GT(replaced, 100);
    EXPECT_GT(merged, 20);
}

TEST(WebpParts, Scenes_give_the_bytes_of_frames_in_turn_with_every_option) {
    for (const test::GifScene& scene : test::kGifScenes) {
        Bytes gif;
        std::string error;
        ASSERT_TRUE(EncodeGif(scene.make(41, 33, 5), &gif, &error)) << error;
        Animation animation = test::ReadOrFail(gif);
        animation.loopCount = 2;
        for (const WebpOptions& options : {WebpOptions{}, WebpOptions{.effort = 9},
                                           WebpOptions{.kind = WebpKind::NearLossless, .quality = 40}}) {
            const Bytes expected = EncodedInTurn(animation, options);
            ASSERT_FALSE(expected.empty());
            EXPECT_TRUE(EncodedOnThreads(animation, options) == expected) << scene.name << options.effort;
        }
    }
}

// A file holds times up to kLongestTime. A picture that stays longer gets a frame that changes nothing.
TEST(WebpParts, Long_times_give_the_bytes_of_frames_in_turn) {
    for (const int longTime : {kLongestTime / 2, kLongestTime / 2 + 1, kLongestTime - 1, kLongestTime}) {
        for (size_t equal = 1; equal <= 5; ++equal) {
            Animation animation = Blank(6, 5, equal + 2);
            for (size_t i = 0; i < animation.frames.size(); ++i) {
                Frame& frame = animation.frames[i];
                frame.milliseconds = longTime;
                // The last frame clears what the others have, or a part of it.
                const size_t painted = i < equal ? 30 : i == equal ? 1 : 7;
                for (size_t pixel = 0; pixel < painted; ++pixel) frame.pixels[4 * pixel + 3] = 255;
            }
            const Bytes expected = EncodedInTurn(animation, {});
            ASSERT_FALSE(expected.empty());
            EXPECT_TRUE(EncodedOnThreads(animation, {}) == expected) << longTime << ", " << equal;
        }
    }
}

TEST(WebpParts, A_time_that_no_file_holds_is_refused) {
    for (const size_t frame : {size_t{0}, size_t{1}, size_t{2}}) {
        Animation animation = Blank(6, 5, 3);
        for (size_t i = 0; i < 3; ++i) animation.frames[i].pixels[3] = static_cast<uint8_t>(100 * i);
        animation.frames[frame].milliseconds = kLongestTime + 1;
        EXPECT_TRUE(EncodedInTurn(animation, {}).empty());
        EXPECT_TRUE(EncodedOnThreads(animation, {}).empty());
    }
}

// Times are added up in 31 bits; what begins later has no time.
TEST(WebpParts, Times_beyond_the_clock_are_cut) {
    constexpr size_t kFrames = 131;  // 128 of them take 31 bits
    Animation animation = Blank(2, 2, kFrames);
    for (size_t i = 0; i < kFrames; ++i) {
        animation.frames[i].pixels[3] = i % 2 ? 255 : 0;
        animation.frames[i].milliseconds = kLongestTime;
    }
    const Bytes file = EncodedOnThreads(animation, {.effort = 0});
    ASSERT_FALSE(file.empty());
    const Animation read = test::ReadOrFail(file);
    ASSERT_EQ(read.frames.size(), kFrames);
    EXPECT_EQ(MillisecondsOf(read.frames[127]), kLongestTime);
    EXPECT_EQ(MillisecondsOf(read.frames[128]), 127);
    EXPECT_EQ(MillisecondsOf(read.frames[129]), 0);
}

}  // namespace
}  // namespace kfx
