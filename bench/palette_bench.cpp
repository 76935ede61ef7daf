// SPDX-License-Identifier: MIT
// Palette work on an animation of 640 x 480: the stages of a build one by one, beside their literal
// references, and whole builds. Times are of the processor and, where a counter says so, of one frame.
// --frames FILE writes the frames as raw red-green-blue bytes, for other tools to work on.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "bench/bench_animation.h"
#include "bench/whole_build.h"
#include "builder/quantizer.h"
#include "builder/remap.h"
#include "builder/supercompression.h"
#include "framework/memory_guards.h"
#include "tests/reference/quantizer_reference.h"
#include "tests/reference/remap_reference.h"

namespace kfx::bench {
namespace {

constexpr int32_t kWidth = 640;
constexpr int32_t kHeight = 480;
constexpr int32_t kFrames = 60;

const FrameList& Animation() {
    static const FrameList animation = MakeBenchAnimation(kWidth, kHeight, kFrames);
    return animation;
}

ImageHandle FrameAt(int32_t index) {
    FrameEntry entry = {};
    GetFrame(Animation(), index, &entry);
    return entry.image;
}

std::vector<ImageHandle> FirstFrames(int32_t count) {
    std::vector<ImageHandle> frames(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) frames[static_cast<size_t>(i)] = FrameAt(i);
    return frames;
}

// The palette that the animation's own build would use.
struct AnimationPalette {
    AnimationPalette() { Quantize(&colors, bytes, Animation()); }

    uint32_t colors = 256;
    uint8_t bytes[kPaletteBytes] = {};
};

void SetTarget(RemapTarget* target, bool fast) {
    static const AnimationPalette palette;
    std::memcpy(target->palette, palette.bytes, kPaletteBytes);
    target->colorCount = static_cast<int32_t>(palette.colors);
    target->fastRemap = fast;
}

size_t CountColors() {
    std::set<uint32_t> colors;
    for (int32_t i = 0; i < kFrames; i += 6) {
        const ImageLock lock(FrameAt(i));
        for (int32_t y = 0; y < kHeight; ++y)
            for (int32_t x = 0; x < kWidth; ++x) colors.insert(GetDibPixel(lock.image, x, y));
    }
    return colors.size();
}

void PerFrame(benchmark::State& state, int32_t frames) {
    state.counters["s/frame"] = benchmark::Counter(static_cast<double>(state.iterations()) * frames,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void QuantizeAnimation(benchmark::State& state) {
    for (auto _ : state) {
        uint8_t palette[kPaletteBytes];
        uint32_t colors = static_cast<uint32_t>(state.range(0));
        benchmark::DoNotOptimize(Quantize(&colors, palette, Animation()));
    }
    PerFrame(state, kFrames);
    static const size_t colors = CountColors();
    state.counters["colours"] = static_cast<double>(colors);
}

// Frames whose 250 colours are all kept. `range(0)` is what one differs from the next by: some steps make
// hash tables slow.
void QuantizeFewColors(benchmark::State& state) {
    const auto step = static_cast<uint32_t>(state.range(0));
    FrameList frames = {};
    const ImageHandle picture = CreateDib(kWidth, kHeight, nullptr, 24);
    {
        const ImageLock lock(picture);
        for (int32_t y = 0; y < kHeight; ++y)
            for (int32_t x = 0; x < kWidth; ++x)
                SetDibPixel(lock.image, x, y,
                            static_cast<uint32_t>((x * 7 + y * 13) % 250) * step & 0xFFFFFF);
    }
    FrameEntry entry = {};
    entry.image = picture;
    if (!AppendFrame(&frames, entry)) state.SkipWithError("no memory");
    for (auto _ : state) {
        uint8_t palette[kPaletteBytes];
        uint32_t colors = 256;
        benchmark::DoNotOptimize(Quantize(&colors, palette, frames));
    }
    FreeFrames(&frames);
}

void QuantizeReference(benchmark::State& state) {
    const std::vector<ImageHandle> frames = FirstFrames(8);
    for (auto _ : state) benchmark::DoNotOptimize(test::ReferenceQuantize(256, frames));
    PerFrame(state, 8);
}

// Eight frames with an empty index: what a build pays on average at its beginning.
template <ImageHandle (*kRemap)(ImageHandle, RemapTarget*)>
void Remap(benchmark::State& state) {
    for (auto _ : state) {
        RemapTarget target;
        SetTarget(&target, state.range(0) != 0);
        for (int32_t i = 0; i < 8; ++i) FreeMemory(kRemap(FrameAt(i), &target));
    }
    PerFrame(state, 8);
}

template <ImageHandle (*kRemap)(ImageHandle, const test::ReferenceTarget&)>
void RemapReference(benchmark::State& state) {
    RemapTarget target;
    SetTarget(&target, state.range(0) != 0);
    const test::ReferenceTarget reference = {target.palette, 8, target.colorCount, target.fastRemap, 20, 20};
    for (auto _ : state) FreeMemory(kRemap(FrameAt(0), reference));
    PerFrame(state, 1);
}

template <ImageHandle (*kUpdate)(ImageHandle, ImageHandle)>
void Supercompress(benchmark::State& state) {
    for (auto _ : state) {
        const ImageLock first(FrameAt(0));
        const MemoryOwner composite(DuplicateImage(first.image));
        for (int32_t i = 1; i < 9; ++i) FreeMemory(kUpdate(composite.memory, FrameAt(i)));
    }
    PerFrame(state, 8);
}

void WholeBuild(benchmark::State& state, bool dither, bool supercompress, bool fast) {
    BuildOptions options = ComputedPaletteOptions();
    options.dither = dither;
    options.supercompress = supercompress;
    options.fastRemap = fast;
    const FrameList& frames = Animation();
    for (auto _ : state)
        if (!BuildFrames(frames, options)) state.SkipWithError("the build failed");
    PerFrame(state, kFrames);
}

BENCHMARK(QuantizeAnimation)->ArgName("colors")->Arg(256)->Arg(255)->Unit(benchmark::kMillisecond);
BENCHMARK(QuantizeFewColors)->ArgName("step")->Arg(0x10107)->Arg(46368)->Unit(benchmark::kMillisecond);
BENCHMARK(QuantizeReference)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Remap, PlainRemap)->ArgName("fast")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(RemapReference, test::ReferencePlainRemap)
    ->ArgName("fast")
    ->Arg(0)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Remap, DitherRemap)->ArgName("fast")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(RemapReference, test::ReferenceDitherRemap)
    ->ArgName("fast")
    ->Arg(0)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Supercompress, UpdateComposite)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Supercompress, test::ReferenceUpdateComposite)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WholeBuild, plain, false, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WholeBuild, dither, true, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WholeBuild, dither_fast, true, false, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WholeBuild, supercompressed, false, true, false)->Unit(benchmark::kMillisecond);

bool WriteFrames(const char* path) {
    std::FILE* file = std::fopen(path, "wb");
    if (!file) return false;
    bool written = true;
    std::vector<uint8_t> row(3 * kWidth);
    for (int32_t i = 0; i < kFrames; ++i) {
        const ImageLock lock(FrameAt(i));
        for (int32_t y = 0; y < kHeight; ++y) {
            const uint8_t* from = PictureRow(lock.image, y);
            for (size_t x = 0; x < row.size(); x += 3) {
                row[x] = from[x + 2];
                row[x + 1] = from[x + 1];
                row[x + 2] = from[x];
            }
            written &= std::fwrite(row.data(), 1, row.size(), file) == row.size();
        }
    }
    return std::fclose(file) == 0 && written;
}

}  // namespace
}  // namespace kfx::bench

int main(int count, char** arguments) {
    if (count == 3 && std::strcmp(arguments[1], "--frames") == 0)
        return kfx::bench::WriteFrames(arguments[2]) ? 0 : 1;
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
