// SPDX-License-Identifier: MIT
// Writes the sample and the tests' scenes as PNG files, for bench/compare-png-sizes: frames as a plain writer
// makes them ("NAME-plain-000.png", one filter and little compression), the first frame ("NAME.png"), and the
// animation
// ("NAME-animated.png"). Prints the name, then bytes and seconds of processor time of the frame and of the
// animation. With the names of PNG files: millions of pixels a second of reading them, and of reading them
// with lodepng.
#include <lodepng.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/gif_canvas.h"
#include "media/sample_animation.h"
#include "tests/media/gif_scenes.h"

namespace kfx::bench {
namespace {

using Bytes = std::vector<uint8_t>;

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Processor seconds of `work`, the least of some rounds.
template <typename Work>
double LeastSeconds(int rounds, const Work& work) {
    double least = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double start = ProcessorSeconds();
        work();
        least = std::min(least, ProcessorSeconds() - start);
    }
    return least;
}

Animation SampleInColour() {
    Animation animation;
    animation.width = kSampleWidth;
    animation.height = kSampleHeight;
    animation.loopCount = kLoopForever;
    for (int i = 0; i < kSampleFrameCount; ++i) {
        animation.frames.emplace_back();
        animation.frames.back().pixels = DrawSampleFrame(i).pixels;
        animation.frames.back().delay = kSampleDelay;
    }
    return animation;
}

// What the scene's GIF file shows.
bool Shown(const GifAnimation& gif, Animation* animation) {
    Bytes file;
    std::string error;
    return EncodeGif(gif, &file, &error) &&
           ReadAnimationFromMemory(file.data(), file.size(), animation, &error);
}

bool WritePlain(const std::string& path, const Animation& animation, const Frame& frame) {
    unsigned char* file = nullptr;
    size_t size = 0;
    LodePNGState state;
    lodepng_state_init(&state);
    state.encoder.auto_convert = 0;
    state.encoder.filter_strategy = LFS_ZERO;
    const bool success =
        lodepng_encode(&file, &size, frame.pixels.data(), static_cast<unsigned>(animation.width),
                       static_cast<unsigned>(animation.height), &state) == 0;
    lodepng_state_cleanup(&state);
    std::string error;
    const bool written = success && WriteWholeFile(path, Bytes(file, file + size), &error);
    std::free(file);
    return written;
}

bool Measure(const std::string& folder, const std::string& name, const Animation& animation) {
    const std::vector<std::string> plain =
        PngFramePaths(folder + "/" + name + "-plain.png", animation.frames.size());
    for (size_t i = 0; i < plain.size(); ++i)
        if (!WritePlain(plain[i], animation, animation.frames[i])) return false;
    Bytes still;
    Bytes moving;
    std::string error;
    const double stillSeconds = LeastSeconds(3, [&] {
        EncodePng(animation.width, animation.height, animation.frames[0].pixels.data(), &still, &error);
    });
    const double movingSeconds = LeastSeconds(3, [&] { EncodeApng(animation, &moving, &error); });
    if (!WriteWholeFile(folder + "/" + name + ".png", still, &error) ||
        !WriteWholeFile(folder + "/" + name + "-animated.png", moving, &error))
        return false;
    std::printf("%s %zu %.3f %zu %.3f\n", name.c_str(), still.size(), stillSeconds, moving.size(),
                movingSeconds);
    std::fflush(stdout);
    return true;
}

int Write(const std::string& folder, int width, int frames) {
    if (!Measure(folder, "sample", SampleInColour())) return 1;
    for (const test::GifScene& scene : test::kGifScenes) {
        Animation animation;
        if (!Shown(scene.make(width, 3 * width / 4, frames), &animation)) return 1;
        if (!Measure(folder, scene.name, animation)) return 1;
    }
    return 0;
}

int Read(int count, char** paths) {
    constexpr int kRounds = 9;
    for (int i = 0; i < count; ++i) {
        Bytes file;
        std::string error;
        Animation animation;
        if (!ReadWholeFile(paths[i], &file, &error) ||
            !ReadAnimationFromMemory(file.data(), file.size(), &animation, &error))
            return 1;
        // Small pictures several times over: the clock is coarse.
        const double pixels = static_cast<double>(animation.width) * animation.height;
        const int times = std::max(1, static_cast<int>(4e6 / pixels));
        const double seconds = LeastSeconds(kRounds, [&] {
            for (int k = 0; k < times; ++k)
                ReadAnimationFromMemory(file.data(), file.size(), &animation, &error);
        });
        const double other = LeastSeconds(kRounds, [&] {
            for (int k = 0; k < times; ++k) {
                unsigned char* decoded = nullptr;
                unsigned width = 0;
                unsigned height = 0;
                lodepng_decode32(&decoded, &width, &height, file.data(), file.size());
                std::free(decoded);
            }
        });
        const double millions = pixels * times / 1e6;
        std::printf("%s %.0f %.0f\n", paths[i], millions / seconds, millions / other);
    }
    return 0;
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "write") return kfx::bench::Write(argv[2], 320, 24);
    if (argc > 2 && std::string(argv[1]) == "read") return kfx::bench::Read(argc - 2, argv + 2);
    std::fputs("usage: png_sizes write FOLDER, or png_sizes read FILE...\n", stderr);
    return 2;
}
