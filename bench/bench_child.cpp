// SPDX-License-Identifier: MIT
// The project's side of a timing harness: runs jobs that it is asked for line by line (bench/child.h), also
// under Wine.
//
//     bench_child                 the product's effects and build steps
//     bench_child --reference     the literal ones that define their results
//     bench_child --frames FOLDER [WIDTH HEIGHT]   writes what ./run bench works on, and ends
//
// The frames are W1.bgr, one of 640 x 480 or the given size, W2.bgr, one of 1920 x 1080 or twice as wide and
// high as the given size, the animations A1.bgr, eight frames as large as the first, and A2.bgr, two as large
// as the second; and as GIF files A1.gif, the same as A1.bgr, and A60.gif, sixty frames of that size.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "bench/bench_animation.h"
#include "bench/child.h"
#include "framework/memory_guards.h"
#include "media/file_io.h"

namespace kfx::bench {
namespace {

struct FrameSize {
    int32_t width;
    int32_t height;
};

bool MakeShot(FrameSize size, int32_t frames, Shot* shot) {
    shot->width = size.width;
    shot->height = size.height;
    shot->frames = MakeBenchAnimation(size.width, size.height, frames);
    return shot->frames.count == frames;
}

bool WriteFrames(const std::string& path, FrameSize size, int32_t frames) {
    Shot shot;
    return MakeShot(size, frames, &shot) && WriteShot(path, shot);
}

bool WriteGifFile(const std::string& path, FrameSize size, int32_t frames) {
    Shot shot;
    std::string error;
    return MakeShot(size, frames, &shot) && WriteWholeFile(path, GifOf(shot), &error);
}

int WriteAllFrames(const std::string& folder, FrameSize small, FrameSize large) {
    if (WriteFrames(folder + "/W1.bgr", small, 1) && WriteFrames(folder + "/W2.bgr", large, 1) &&
        WriteFrames(folder + "/A1.bgr", small, 8) && WriteFrames(folder + "/A2.bgr", large, 2) &&
        WriteGifFile(folder + "/A1.gif", small, 8) && WriteGifFile(folder + "/A60.gif", small, 60))
        return 0;
    std::fprintf(stderr, "bench_child: the frames could not be written to %s.\n", folder.c_str());
    return 1;
}

int Answer(bool reference) {
    // A build keeps freed memory for the next frame as well.
    const FreedMemoryKept kept;
    std::ios::sync_with_stdio(false);
    AnswerQuestions(ListJobs(reference), std::cin, std::cout);
    return 0;
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    using namespace kfx::bench;
    const std::string option = argc > 1 ? argv[1] : "";
    if (option.empty()) return Answer(false);
    if (option == "--reference" && argc == 2) return Answer(true);
    if (option == "--frames" && argc == 3) return WriteAllFrames(argv[2], {640, 480}, {1920, 1080});
    if (option == "--frames" && argc == 5) {
        const FrameSize size = {std::atoi(argv[3]), std::atoi(argv[4])};
        return WriteAllFrames(argv[2], size, {2 * size.width, 2 * size.height});
    }
    std::fputs("usage: bench_child [--reference | --frames FOLDER [WIDTH HEIGHT]]\n", stderr);
    return 2;
}
