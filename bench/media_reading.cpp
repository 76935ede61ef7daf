// SPDX-License-Identifier: MIT
// How fast animation files are read, in processor time, and in how much memory: media_reading FILE... prints
// a line for each. The peak is that of the whole process, so give one file to measure it.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "media/animation.h"

namespace {

// Of the processor, so that other programs do not count.
double Seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double PeakMebibytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kRuns = 3;
    for (int i = 1; i < argc; ++i) {
        kfx::Animation animation;
        std::string error;
        double best = 0;
        for (int run = 0; run < kRuns; ++run) {
            animation = {};  // a second one beside it would count in the peak
            const double start = Seconds();
            const bool read = kfx::ReadAnimation(argv[i], &animation, &error);
            const double seconds = Seconds() - start;
            best = run == 0 ? seconds : std::min(best, seconds);
            if (!read) break;
        }
        const double pixels = static_cast<double>(animation.width) * animation.height *
                              static_cast<double>(animation.frames.size());
        constexpr double kMillion = 1e6;
        if (animation.frames.empty()) std::printf("%s\n", error.c_str());
        std::printf(
            "%s: %zu frames of %d x %d, %.1f ms, %.0f million pixels/s, frames %.1f MiB, peak %.1f MiB\n",
            argv[i], animation.frames.size(), animation.width, animation.height, 1000 * best,
            pixels / kMillion / best, 4 * pixels / (1 << 20), PeakMebibytes());
    }
    return 0;
}
