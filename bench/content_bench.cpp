// SPDX-License-Identifier: MIT
// Every effect at its built-in settings and at its greatest on pictures of several contents, as the table of
// docs/performance.md: milliseconds for 640 x 480, and the worst beside the photograph's. A kernel that
// leaves its fast way on some content shows here. The rounds go over the contents in turn, so that a machine
// which slows down for a while slows all of them; times are the least of all rounds.
//
// content_bench [EFFECT...]: only these effects.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_picture.h"
#include "bench/effect_work.h"
#include "framework/memory_guards.h"

namespace kfx::bench {
namespace {

constexpr int32_t kWidth = 640;
constexpr int32_t kHeight = 480;
constexpr int kRounds = 9;

// One run on a first frame. A kernel that gives no picture leaves the source as it is, which is a result,
// too.
double TimeOnce(const Work& work, ImageHandle picture) {
    KernelCache cache;
    KernelInput input = work.input;
    input.cache = &cache;
    using Clock = std::chrono::steady_clock;  // under Wine that of the processor counts in steps of 10 ms
    const auto start = Clock::now();
    const ImageHandle result = work.effect->apply(picture, input);
    const std::chrono::duration<double, std::milli> time = Clock::now() - start;
    FreeMemory(result);
    return time.count();
}

void PrintRow(const Work& work, const std::vector<ImageHandle>& pictures) {
    std::vector<double> least(pictures.size(), 1e9);
    for (int round = 0; round < kRounds; ++round)
        for (size_t i = 0; i < pictures.size(); ++i)
            least[i] = std::min(least[i], TimeOnce(work, pictures[i]));
    std::printf("| %s | %s%s |", work.effect->name, work.greatest ? "greatest: " : "", work.text.c_str());
    for (const double time : least) std::printf(time < 10 ? " %.3f |" : " %.1f |", time);
    std::printf(" %.2f |\n", *std::max_element(least.begin(), least.end()) / least[0]);
    std::fflush(stdout);
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    using namespace kfx::bench;
    const kfx::FreedMemoryKept kept;  // as in a build
    std::vector<kfx::ImageHandle> pictures;
    std::printf("| effect | settings |");
    for (size_t i = 0; i < kContentCount; ++i) {
        pictures.push_back(MakePicture(kContents[i], kWidth, kHeight));
        std::printf(" %s, ms |", kContents[i].name);
    }
    std::printf(" worst / %s |\n| --- | --- |", kContents[0].name);
    for (size_t i = 0; i <= kContentCount; ++i) std::printf(" ---: |");
    std::printf("\n");
    for (const Work& work : ListWork()) {
        const bool wanted = argc == 1 || std::any_of(argv + 1, argv + argc, [&](const char* name) {
                                return std::string(name) == work.effect->name;
                            });
        if (wanted) PrintRow(work, pictures);
    }
    for (const kfx::ImageHandle picture : pictures) kfx::FreeMemory(picture);
    return 0;
}
