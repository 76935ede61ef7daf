// SPDX-License-Identifier: MIT
// Every effect at its built-in settings and at its greatest, on two picture sizes: the first frame of a
// build, a later one where the effect keeps tables from frame to frame, and the literal reference beside
// them. Times are of the processor, in three repetitions.
#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "bench/bench_picture.h"
#include "bench/effect_work.h"
#include "tests/reference/reference_table.h"

namespace kfx::bench {
namespace {

struct Load {
    const char* name;
    int32_t width;
    int32_t height;
};
constexpr Load kLoads[] = {
    {.name = "640x480", .width = 640, .height = 480},
    {.name = "1920x1080", .width = 1920, .height = 1080},
};

void CountPixels(benchmark::State& state, const Load& load) {
    state.counters["Mpixel/s"] =
        benchmark::Counter(load.width * load.height * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

// The picture of a load, made once: benchmarks run several times before they count.
ImageHandle PictureOf(const Load& load) {
    static std::map<std::string, ImageHandle> pictures;
    ImageHandle& picture = pictures[load.name];
    if (!picture) picture = MakeBenchPicture(load.width, load.height);
    return picture;
}

// Runs a kernel over and over. With `keepCache` it finds the tables of an earlier frame.
void RunKernel(benchmark::State& state, EffectKernel kernel, KernelInput input, const Load& load,
               bool keepCache) {
    const ImageHandle picture = PictureOf(load);
    KernelCache kept;
    input.cache = &kept;
    if (keepCache) FreeMemory(kernel(picture, input));
    for (auto _ : state) {
        KernelCache fresh;
        if (!keepCache) input.cache = &fresh;
        const ImageHandle result = kernel(picture, input);
        if (!result) state.SkipWithError("the kernel gave no picture");
        FreeMemory(result);
    }
    CountPixels(state, load);
}

// Names are "Emboss/defaults/640x480/first".
std::string NameOf(const Work& work, const Load& load, const char* what) {
    return std::string(work.effect->name) + (work.greatest ? "/greatest/" : "/defaults/") + load.name + "/" +
           what;
}

void Register(const std::vector<Work>& list) {
    for (const Work& work : list) {
        const auto add = [&work](EffectKernel kernel, const Load& load, const char* what, bool keepCache) {
            benchmark::RegisterBenchmark(
                NameOf(work, load, what).c_str(),
                [kernel, input = work.input, load, keepCache](benchmark::State& state) {
                    RunKernel(state, kernel, input, load, keepCache);
                })
                ->Unit(benchmark::kMillisecond)
                ->MinTime(0.05)
                ->Repetitions(3);
        };
        for (const Load& load : kLoads) {
            add(work.effect->apply, load, "first", false);
            if (KeepsTables(work)) add(work.effect->apply, load, "later", true);
        }
        if (const EffectKernel reference = test::ReferenceOf(work.effect->name))
            add(reference, kLoads[0], "reference", false);
    }
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    const std::vector<kfx::bench::Work> list = kfx::bench::ListWork();
    kfx::bench::Register(list);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
