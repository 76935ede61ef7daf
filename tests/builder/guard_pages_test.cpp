// SPDX-License-Identifier: MIT
// Every effect, the scaler, the decoder and every way through the builder on pictures of all small sizes and
// of some odd large ones, with each block of memory first ending and then beginning at a page that must not
// be touched. Code for this processor's vectors and plain code both run.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "builder/build_driver.h"
#include "effects/effect_table.h"
#include "framework/cpu.h"
#include "framework/number_text.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "kernels/scaler.h"
#include "tests/builder/refusal_inputs.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/held_clock.h"
#include "tests/support/pictures.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using Values = std::vector<int32_t>;

// The settings at which an effect reaches farthest or computes most, where not all its controls stand at
// their ends for that.
struct Heaviest {
    const char* effect;
    Values values;
};
const Heaviest kHeaviest[] = {
    {"Glass Block", {64}},
    {"HSB and Channels", {200, 140, 120, 1, 3, 1, 1}},
    {"Lens Flare", {25, 30, 300}},
    {"Motion Blur", {50, 300, 45}},
    {"Ripple", {100, 100, 8000, 400, 180, 15, 0}},
    {"Swirl", {0}},
    {"Zoom Blur", {240, 40}},
    {"Implode", {100, 0, 100}},
    {"Explode", {100, 0, 100}},
};

enum class Setting { Default, Least, Most, Heaviest };
constexpr Setting kSettings[] = {Setting::Default, Setting::Least, Setting::Most, Setting::Heaviest};
constexpr const char* kSettingNames[] = {"default", "least", "most", "heaviest"};

int32_t CountItems(const char* items) {
    int32_t count = 1;
    for (; *items; ++items) count += *items == ';';
    return count;
}

int32_t ValueOf(const EffectControl& control, Setting setting) {
    ControlRange range = {0, 1, *control.variable};
    if (control.kind == ControlKind::Slider) {
        ParseControlRange(control.text, &range);
        range.standard = *control.variable;
    }
    if (control.kind == ControlKind::List) range.most = CountItems(control.text) - 1;
    return setting == Setting::Default ? range.standard
           : setting == Setting::Least ? range.least
                                       : range.most;
}

Values ValuesOf(const Effect& effect, Setting setting) {
    if (setting == Setting::Heaviest)
        for (const Heaviest& row : kHeaviest)
            if (std::strcmp(row.effect, effect.name) == 0) return row.values;
    Values values;
    for (size_t i = 0; i < effect.controls.count; ++i)
        values.push_back(ValueOf(effect.controls.rows[i], setting));
    return values;
}

constexpr uint32_t kOutside = 0x20C0FF;  // the colour beyond a picture's edges
size_t runs = 0;

// The effect on the picture, three times with one cache: later frames find tables in it.
void RunEffect(const Effect& effect, ImageHandle source, Setting setting, const std::string& where) {
    SayWhatRuns(std::string(effect.name) + " at " + kSettingNames[static_cast<int>(setting)] + where);
    const Values values = ValuesOf(effect, setting);
    KernelCache cache;
    KernelInput input = {};
    std::copy(values.begin(), values.end(), input.values);
    input.background = kOutside;
    input.cache = &cache;
    for (int frame = 0; frame < 3; ++frame) {
        const Picture result(effect.apply(source, input));
        ++runs;
        if (!KeepsTables(cache)) break;
    }
    if (!effect.gathering) return;
    uint64_t record[2] = {};
    effect.gathering->gather(source, record);
    const Picture result(effect.gathering->apply(source, record));
    effect.gathering->release(record);
    ++runs;
}

std::string Where(const Size& size, GuardSide side, bool avx2) {
    return " on " + std::to_string(size.width) + "x" + std::to_string(size.height) + ", pages " +
           NameOf(side) + (avx2 ? ", vectors" : ", plain");
}

std::vector<Size> SizesTo33() {
    std::vector<Size> sizes;
    for (int32_t height = 1; height <= 33; ++height)
        for (int32_t width = 1; width <= 33; ++width) sizes.push_back({width, height});
    return sizes;
}

constexpr Size kLargeSizes[] = {{1023, 769}, {32767, 1}, {1, 32767}, {4097, 3}, {5, 4099}, {255, 257}};

class GuardPages : public testing::TestWithParam<GuardSide> {
protected:
    GuardPages() : clock(12345) {  // Water Drops takes its seed from it
        runs = 0;
        BuiltInSettings();
    }
    ~GuardPages() override {
        AllowAvx2(true);
        EXPECT_EQ(CountSpoiledBytes(), spoiledBefore) << "bytes beside blocks were written";
        EXPECT_GE(CountGuardedBlocks() - blocksBefore, runs) << "each run has blocks of its own";
        AddTried("runs", runs);
        AddTried("blocks between guard pages", CountGuardedBlocks() - blocksBefore);
        settings = Settings();
    }

    const HeldClock clock;
    size_t spoiledBefore = CountSpoiledBytes();
    const size_t blocksBefore = CountGuardedBlocks();
    const GuardedMemory guarded{GetParam()};
};

// Allocates and frees a block. Answers how many bytes beside it were found written, after one was where the
// page is longer than the block.
size_t SpoilBeside(size_t size, GuardSide side) {
    const size_t before = CountSpoiledBytes();
    const MemoryHandle memory = AllocateMemory(size);
    auto* const first = static_cast<uint8_t*>(LockMemory(memory));
    EXPECT_EQ(MemorySize(memory), size);
    EXPECT_TRUE(std::all_of(first, first + size, [](uint8_t byte) { return byte == 0; }));
    EXPECT_TRUE(IsReadable(first) && IsReadable(first + size - 1));
    uint8_t* const guarded = side == GuardSide::Behind ? first + size : first - 1;
    uint8_t* const beside = side == GuardSide::Behind ? first - 1 : first + size;
    EXPECT_FALSE(IsReadable(guarded)) << size;
    if (IsReadable(beside)) *beside ^= 1;
    UnlockMemory(memory);
    FreeMemory(memory);
    return CountSpoiledBytes() - before;
}

TEST_P(GuardPages, Are_there_and_what_is_written_beside_a_block_is_found) {
    for (const size_t size : {size_t{1}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{70000}})
        EXPECT_EQ(SpoilBeside(size, GetParam()), size == 4096 ? 0u : 1u) << size;
    spoiledBefore = CountSpoiledBytes();
}

// KFX_GUARD_PAGES=all: every picture on both paths, and every build at every size.
bool Thorough() {
    static const char* const wish = std::getenv("KFX_GUARD_PAGES");
    return wish && std::strcmp(wish, "all") == 0;
}

// Which settings a picture of that number is transformed at: all under Windows. Under the sanitizers, which
// watch these bytes in every other test as well and take ten times as long, one at each size.
std::vector<Setting> SettingsFor(int32_t number) {
#ifdef _WIN32
    (void)number;
    return {std::begin(kSettings), std::end(kSettings)};
#else
    if (Thorough()) return {std::begin(kSettings), std::end(kSettings)};
    return {kSettings[static_cast<size_t>(number) % std::size(kSettings)]};
#endif
}

// Vector code and plain code both run on every picture: one with the pages behind, the other one with the
// pages before.
std::vector<bool> PathsFor(GuardSide side, int32_t number) {
    if (Thorough()) return {true, false};
    return {number % 2 == (side == GuardSide::Behind)};
}

// One of so many builds runs at each size, at the next size the next one.
size_t BuildStep() { return Thorough() ? 1 : 7; }

TEST_P(GuardPages, No_effect_touches_a_byte_outside_at_any_size_to_33) {
    for (const Size& size : SizesTo33()) {
        const auto number = size.width + 34 * size.height;
        const Picture source = RandomPicture(size.width, size.height, static_cast<uint32_t>(number));
        for (const Setting setting : SettingsFor(number))
            for (const bool avx2 : PathsFor(GetParam(), number + static_cast<int>(setting))) {
                AllowAvx2(avx2);
                const std::string where = Where(size, GetParam(), avx2);
                for (size_t row = 0; row < EffectCount(); ++row)
                    RunEffect(*EffectAt(row), source.handle, setting, where);
            }
    }
}

TEST_P(GuardPages, No_effect_touches_a_byte_outside_at_odd_large_sizes) {
    for (const Size& size : kLargeSizes) {
        const Picture source = ShadedPicture(size.width, size.height, 1);
        for (const Setting setting : {Setting::Default, Setting::Heaviest})
            for (const bool avx2 : PathsFor(GetParam(), size.width + static_cast<int>(setting))) {
                AllowAvx2(avx2);
                const std::string where = Where(size, GetParam(), avx2);
                for (size_t row = 0; row < EffectCount(); ++row)
                    RunEffect(*EffectAt(row), source.handle, setting, where);
            }
    }
}

TEST_P(GuardPages, The_scaler_touches_no_byte_outside_at_any_size_to_33) {
    for (const Size& size : SizesTo33()) {
        const auto number = size.width + 34 * size.height;
        for (const int32_t bitCount : {1, 4, 8, 24, 32}) {
            const Picture source =
                RandomPicture(size.width, size.height, static_cast<uint32_t>(number), bitCount);
            for (const bool avx2 : PathsFor(GetParam(), number + bitCount / 8)) {
                AllowAvx2(avx2);
                SayWhatRuns("the scaler, " + std::to_string(bitCount) + " bits" +
                            Where(size, GetParam(), avx2));
                for (const auto& [across, down] : {Size{7, 7}, {50, 50}, {99, 34}, {100, 100}, {150, 120}}) {
                    const Picture result(ScaleByPercentage(source.handle, across, down));
                    ASSERT_TRUE(result.handle);
                    ++runs;
                }
            }
        }
    }
}

TEST_P(GuardPages, The_scaler_touches_no_byte_outside_at_odd_large_sizes) {
    for (const Size& size : kLargeSizes)
        for (const int32_t bitCount : {1, 8, 24, 32}) {
            const Picture source = RandomPicture(size.width, size.height, 1, bitCount);
            SayWhatRuns("the scaler, " + std::to_string(bitCount) + " bits" + Where(size, GetParam(), true));
            for (const int32_t percentage : {0, 1, 33}) {
                const Picture result(ScaleByPercentage(source.handle, percentage, percentage));
                ASSERT_TRUE(result.handle);
                ++runs;
            }
        }
}

uint64_t TakeAnything(uint64_t, uint32_t request, uint64_t, uint64_t pointer) {
    if (static_cast<HostRequest>(request) != HostRequest::AddImage) return 1;
    // A host reads the whole picture.
    const auto& frame = *reinterpret_cast<const AddImageRecord*>(pointer);
    const std::vector<uint8_t> bytes = BytesOf(reinterpret_cast<ImageHandle>(frame.image));
    return !bytes.empty();
}

void NoMessage(void*, BuildMessage) { ADD_FAILURE() << "a build failed"; }

int32_t NoBackground(void*, int32_t) { return -1; }
int32_t Background(void*, int32_t) { return kBackground; }

// Builds frames of this size, a part of it and more than it, in several depths, some of them alike.
void Build(const Size& size, const Output& output, size_t row) {
    const auto seed = static_cast<uint32_t>(size.width * 34 + size.height);
    const std::vector<uint8_t> first = BytesOf(RandomPicture(size.width, size.height, seed, 8).handle);
    BlockOptions block;
    block.hasBackground = true;
    block.background = kBackground;
    block.globalPalette = {1, 2, 3, 200, 100, 50, 0, 255, 0};
    const int32_t half = (size.width + 1) / 2;
    const MemoryOwner source(MakeMemory(
        MakeAnimationBlock({{first},
                            {first},
                            {BytesOf(ShadedPicture(size.width, size.height, seed).handle)},
                            {BytesOf(RandomPicture(half, size.height, seed, 1).handle)},
                            {BytesOf(RandomPicture(size.width + 1, size.height + 2, seed, 4).handle)},
                            {BytesOf(RandomPicture(size.width, size.height, seed, 32).handle)}},
                           block)));
    HostContext host = {};
    host.callback = TakeAnything;
    EffectDescriptor effect = *DescriptorAt(row);
    effect.query = output.effectHasBackground ? Background : NoBackground;
    const BuildEnvironment environment = {.window = nullptr,
                                          .host = &host,
                                          .source = source.memory,
                                          .effect = &effect,
                                          .showMessage = NoMessage};
    EXPECT_EQ(RunBuild(environment, output.options), 1);
    ++runs;
}

TEST_P(GuardPages, No_build_touches_a_byte_outside_at_any_size_to_33) {
    const std::vector<Output> outputs = Outputs();
    const size_t step = BuildStep();
    size_t start = GetParam() == GuardSide::Behind ? 0 : 3;
    for (const Size& size : SizesTo33())
        for (size_t i = start++ % step; i < outputs.size(); i += step) {
            const auto number = size.width + 34 * size.height + static_cast<int>(i);
            const bool avx2 = number % 2 == (GetParam() == GuardSide::Behind);
            AllowAvx2(avx2);
            SayWhatRuns(std::string("a build, ") + outputs[i].name + Where(size, GetParam(), avx2));
            Build(size, outputs[i], static_cast<size_t>(number) % EffectCount());
        }
}

TEST_P(GuardPages, No_build_touches_a_byte_outside_at_odd_large_sizes) {
    const std::vector<Output> outputs = Outputs();
    const size_t step = BuildStep();
    size_t start = GetParam() == GuardSide::Behind ? 0 : 3;
    size_t row = 0;
    for (const Size& size : kLargeSizes)
        for (size_t i = start++ % step; i < outputs.size(); i += step) {
            SayWhatRuns(std::string("a build, ") + outputs[i].name + Where(size, GetParam(), true));
            Build(size, outputs[i], row++ % EffectCount());
        }
}

INSTANTIATE_TEST_SUITE_P(Sides, GuardPages, testing::Values(GuardSide::Behind, GuardSide::Before),
                         [](const auto& side) { return std::string("Pages_") + NameOf(side.param); });

}  // namespace
}  // namespace kfx::test
