// SPDX-License-Identifier: MIT
#include "tests/support/effect_checks.h"

#include <algorithm>
#include <climits>

#include "framework/cpu.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif
#include "tests/reference/reference_table.h"

namespace kfx::test {
namespace {

// Switches AVX2 off for a scope.
struct Avx2Scope {
    explicit Avx2Scope(bool allowed) { AllowAvx2(allowed); }
    ~Avx2Scope() { AllowAvx2(true); }
    Avx2Scope(const Avx2Scope&) = delete;
    Avx2Scope& operator=(const Avx2Scope&) = delete;
};

std::string Describe(const Effect& effect, ImageHandle source, const Values& values) {
    std::string text = effect.name;
    for (const int32_t value : values) text += " " + std::to_string(value);
    const ImageLock lock(source);
    return text + " on " + std::to_string(lock.image->width) + "x" + std::to_string(lock.image->height) +
           "x" + std::to_string(lock.image->bitCount);
}

}  // namespace

KernelInput MakeInput(const Values& values, uint32_t background, KernelCache* cache) {
    KernelInput input = {};
    std::copy_n(values.begin(), std::min(values.size(), kMostControls), input.values);
    input.background = background;
    input.cache = cache;
    return input;
}

Picture Apply(const Effect& effect, ImageHandle source, const Values& values, uint32_t background) {
    KernelCache cache;
    return Picture(effect.apply(source, MakeInput(values, background, &cache)));
}

::testing::AssertionResult SameAsReference(const Effect& effect, ImageHandle source, const Values& values,
                                           uint32_t background) {
    const EffectKernel reference = ReferenceOf(effect.name);
    if (!reference) return ::testing::AssertionFailure() << effect.name << " has no reference";
    KernelCache unused;
    const Picture expected(reference(source, MakeInput(values, background, &unused)));
    const std::vector<uint8_t> before = BytesOf(source);
    for (const bool avx2 : {true, false}) {
        const Avx2Scope scope(avx2);
        KernelCache cache;
        for (int frame = 0; frame < 3; ++frame) {
            const Picture actual(effect.apply(source, MakeInput(values, background, &cache)));
            const ::testing::AssertionResult same = SamePicture(expected.handle, actual.handle);
            if (!same)
                return ::testing::AssertionFailure()
                       << Describe(effect, source, values) << (avx2 ? ", AVX2" : ", plain") << ", frame "
                       << frame << ": " << same.message();
        }
    }
    if (BytesOf(source) != before)
        return ::testing::AssertionFailure()
               << Describe(effect, source, values) << ": the source was changed";
    return ::testing::AssertionSuccess();
}

void ExpectReferenceOnTrickyPictures(const Effect& effect, const Values& values) {
    uint32_t seed = 1;
    for (const Size& size : TrickySizes()) {
        EXPECT_TRUE(SameAsReference(effect, RandomPicture(size.width, size.height, seed++).handle, values));
        EXPECT_TRUE(SameAsReference(effect, ShadedPicture(size.width, size.height, seed++).handle, values));
    }
}

void ExpectOneCacheServesAllFrames(const Effect& effect, const Values& values, const Values& others) {
    struct Frame {
        Size size;
        const Values* values;
    };
    // Also sides exchanged: tables of as many bytes with another meaning.
    const Frame frames[] = {{{30, 20}, &values}, {{20, 30}, &values}, {{30, 20}, &values},
                            {{30, 21}, &values}, {{31, 21}, &values}, {{31, 21}, &others},
                            {{31, 21}, &values}, {{1, 1}, &values}};
    KernelCache cache;
    uint32_t seed = 1;
    for (const Frame& frame : frames) {
        // The second time fills what the third one finds.
        for (int time = 0; time < 3; ++time) {
            const Picture source = RandomPicture(frame.size.width, frame.size.height, seed++);
            const Picture actual(
                effect.apply(source.handle, MakeInput(*frame.values, kTestBackground, &cache)));
            EXPECT_TRUE(SamePicture(Apply(effect, source.handle, *frame.values).handle, actual.handle))
                << Describe(effect, source.handle, *frame.values) << ", time " << time;
        }
    }
}

#ifdef _WIN32
void ExpectRefusedMemoryIsSurvived(const Effect&, ImageHandle, const Values&, ImageHandle) {}
#else
void ExpectRefusedMemoryIsSurvived(const Effect& effect, ImageHandle source, const Values& values,
                                   ImageHandle fallback) {
    const Picture expected = Apply(effect, source, values);
    const size_t blocks = CountMemory().liveBlocks;
    for (size_t number = 1;; ++number) {
        RefuseAllocation(number);
        Picture result = Apply(effect, source, values);
        const bool refused = CountMemory().allocations >= number;
        ResetMemoryCounts();
        EXPECT_TRUE(!result.handle || SamePicture(expected.handle, result.handle) ||
                    SamePicture(fallback, result.handle))
            << Describe(effect, source, values) << ", allocation " << number << " refused";
        FreeMemory(result.handle);
        result.handle = nullptr;
        EXPECT_EQ(CountMemory().liveBlocks, blocks) << effect.name << ", allocation " << number << " refused";
        EXPECT_EQ(CountMemory().lockedBlocks, 0u) << effect.name << ", allocation " << number << " refused";
        if (!refused) break;
    }
}
#endif

void ExpectAnyValueIsSurvived(const Effect& effect, const Values& values) {
    const int32_t kOdd[] = {0,    1,      2,       -1,          -2,      -15,        -1000,
                            1000, 100000, INT_MAX, INT_MAX - 1, INT_MIN, INT_MIN + 1};
    const Picture sources[] = {RandomPicture(9, 7, 1), RandomPicture(1, 1, 2), RandomPicture(40, 21, 3)};
    for (const Picture& source : sources) {
        for (size_t i = 0; i < values.size(); ++i) {
            for (const int32_t odd : kOdd) {
                Values changed = values;
                changed[i] = odd;
                const Picture result = Apply(effect, source.handle, changed);
                if (!result.handle) continue;
                const ImageLock from(source.handle);
                const ImageLock to(result.handle);
                EXPECT_EQ(from.image->width, to.image->width) << Describe(effect, source.handle, changed);
                EXPECT_EQ(from.image->height, to.image->height) << Describe(effect, source.handle, changed);
            }
        }
    }
}

}  // namespace kfx::test
