// SPDX-License-Identifier: MIT
// From the host's block to the preview: frames decoded at each depth, pictures scaled down to a preview area,
// and the plain scaler beside it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "bench/bench_picture.h"
#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "kernels/scaler.h"
#include "tests/reference/scaler_reference.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::bench {
namespace {

// The bytes of a picture of this depth; what its indices mean does not matter to the time that decoding
// takes.
std::vector<uint8_t> MakeBitmap(int32_t width, int32_t height, int32_t bitCount) {
    const test::Picture shaded(MakeBenchPicture(width, height));
    const test::Picture made(CreateDib(width, height, nullptr, bitCount));
    {
        const ImageLock from(shaded.handle), to(made.handle);
        const size_t available = StrideOf(from.image) * static_cast<size_t>(height);
        const size_t wanted = StrideOf(to.image) * static_cast<size_t>(height);
        for (size_t at = 0; at < wanted; at += available)
            std::memcpy(PixelsOf(to.image) + at, PixelsOf(from.image), std::min(available, wanted - at));
    }
    return test::BytesOf(made.handle);
}

// A host's block of equal frames.
MemoryHandle MakeSource(const std::vector<uint8_t>& bitmap, size_t frames) {
    const std::vector<test::BlockFrame> list(frames, test::BlockFrame{bitmap, {}});
    return test::MakeMemory(test::MakeAnimationBlock(list));
}

void DecodeFrames(benchmark::State& state) {
    const auto width = static_cast<int32_t>(state.range(0));
    const auto height = static_cast<int32_t>(state.range(1));
    constexpr size_t kFrames = 8;
    const MemoryOwner source(
        MakeSource(MakeBitmap(width, height, static_cast<int32_t>(state.range(2))), kFrames));
    for (auto _ : state) {
        FrameList frames = {};
        if (DecodeAllFrames(source.memory, &frames) != DecodeResult::Whole)
            state.SkipWithError("not decoded");
        FreeFrames(&frames);
    }
    state.counters["frames"] = benchmark::Counter(
        static_cast<double>(kFrames) * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

template <ImageHandle (*kResample)(ImageHandle, int32_t, int32_t, double)>
void ScaleDown(benchmark::State& state) {
    const auto width = static_cast<int32_t>(state.range(0));
    const auto height = static_cast<int32_t>(state.range(1));
    // As wide as the preview area of the plug-in's window.
    constexpr int32_t kPreviewWidth = 424;
    const MemoryOwner picture(MakeBenchPicture(width, height));
    for (auto _ : state) {
        const MemoryOwner scaled(
            kResample(picture.memory, kPreviewWidth, height * kPreviewWidth / width, 1.0));
        if (!scaled.memory) state.SkipWithError("not scaled");
    }
}

BENCHMARK(DecodeFrames)
    ->ArgNames({"width", "height", "bits"})
    ->ArgsProduct({{640}, {480}, {1, 4, 8, 24, 32}})
    ->ArgsProduct({{1920}, {1080}, {1, 4, 8, 24, 32}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleDown, Resample)
    ->ArgNames({"width", "height"})
    ->Args({640, 480})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleDown, test::ReferenceResample)
    ->ArgNames({"width", "height"})
    ->Args({640, 480})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kfx::bench

BENCHMARK_MAIN();
