// SPDX-License-Identifier: MIT
// Every effect at its built-in settings and at its greatest, on two picture sizes: the first frame of a
// build, a later one where the effect keeps tables from frame to frame, and the literal reference beside
// them. Times are of the processor, the least of three repetitions. --table prints them as the table of
// docs/performance.md.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <utility>
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

bool KeepsTables(const Work& work) {
    const ImageHandle picture = MakeBenchPicture(64, 48);
    KernelCache cache;
    KernelInput input = work.input;
    input.cache = &cache;
    FreeMemory(work.effect->apply(picture, input));
    FreeMemory(picture);
    return cache.address != nullptr;
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

// Keeps the least time of each benchmark's repetitions.
struct TableReporter : benchmark::BenchmarkReporter {
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const std::string name = run.run_name.function_name;
            const double time = run.GetAdjustedCPUTime();
            const auto known = least.find(name);
            if (known == least.end())
                least[name] = time;
            else
                known->second = std::min(known->second, time);
        }
    }

    std::map<std::string, double> least;
};

std::string Milliseconds(const std::map<std::string, double>& times, const std::string& name) {
    const auto time = times.find(name);
    if (time == times.end()) return "–";
    char text[32];
    std::snprintf(text, sizeof text, time->second < 10 ? "%.3f" : "%.1f", time->second);
    return text;
}

std::string MegapixelsPerSecond(const std::map<std::string, double>& times, const std::string& name,
                                const Load& load) {
    const auto time = times.find(name);
    if (time == times.end()) return "–";
    return std::to_string(static_cast<int>(load.width * load.height * 1e-3 / time->second + 0.5));
}

void PrintTable(const std::vector<Work>& list, const std::map<std::string, double>& times) {
    std::printf("| effect | settings |");
    for (const Load& load : kLoads) std::printf(" %s, ms | later frames | Mpixel/s |", load.name);
    std::printf(" reference, ms | × |\n|---|---|---|---|---|---|---|---|---|---|\n");
    for (const Work& work : list) {
        const std::string first = NameOf(work, kLoads[0], "first");
        if (!times.count(first)) continue;
        std::printf("| %s | %s%s |", work.effect->name, work.greatest ? "greatest: " : "", work.text.c_str());
        for (const Load& load : kLoads)
            std::printf(" %s | %s | %s |", Milliseconds(times, NameOf(work, load, "first")).c_str(),
                        Milliseconds(times, NameOf(work, load, "later")).c_str(),
                        MegapixelsPerSecond(times, NameOf(work, load, "first"), load).c_str());
        const std::string reference = NameOf(work, kLoads[0], "reference");
        std::printf(" %s | ", Milliseconds(times, reference).c_str());
        if (times.count(reference))
            std::printf("%.1f |\n", times.at(reference) / times.at(first));
        else
            std::printf("– |\n");
    }
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    using namespace kfx::bench;
    bool table = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--table") != 0) continue;
        table = true;
        std::move(argv + i + 1, argv + argc, argv + i);
        --argc;
    }
    const std::vector<Work> list = ListWork();
    Register(list);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    if (!table) {
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    PrintTable(list, reporter.least);
    return 0;
}
