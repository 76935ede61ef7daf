// SPDX-License-Identifier: MIT
// What every effect does alike, with effects made for the test.
#include "framework/effect_operations.h"

#include <gtest/gtest.h>

#include <utility>

#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

using Progress = std::vector<std::pair<int64_t, int64_t>>;

Progress progress;                // what the host was told
std::vector<int32_t> seenValues;  // the first control's value, at each run of a kernel
std::vector<KernelCache*> seenCaches;

uint64_t TakeRequest(uint64_t, uint32_t request, uint64_t word, uint64_t pointer) {
    if (request == 13) progress.emplace_back(word, pointer);
    return 1;
}

// Answers a picture of another size, so that it cannot be taken for the source.
ImageHandle Shrink(ImageHandle, const KernelInput& input) {
    seenValues.push_back(input.values[0]);
    seenCaches.push_back(input.cache);
    return CreateDib(2, 1, nullptr, 24);
}

ImageHandle AnswerNone(ImageHandle, const KernelInput&) { return nullptr; }

int32_t sliderVariable = 70;
constexpr auto kSlider = MakeControls({Slider(100, &sliderVariable, "4,45,5", "Depth:")});

Effect MakeEffect(EffectKernel kernel) {
    return {.name = "Test", .panel = 7400, .controls = kSlider, .apply = kernel};
}

class EffectOperations : public testing::Test {
protected:
    void SetUp() override {
        progress.clear();
        seenValues.clear();
        seenCaches.clear();
        host.callback = TakeRequest;
    }
    void TearDown() override {
        FreeFrames(&frames);
        FreeMemory(source);
    }

    void HoldBlock(const std::vector<uint8_t>& block) {
        context.source = run.source = source = MakeMemory(block);
    }

    void HoldSource(size_t frameCount) {
        const std::vector<BlockFrame> made(frameCount, BlockFrame{BytesOf(picture.handle), {}});
        HoldBlock(MakeAnimationBlock(made));
    }

    // A copy: the packed member may stand at any address.
    int32_t Count() const { return frames.count; }

    int32_t Width(int32_t index) {
        FrameEntry entry = {};
        EXPECT_TRUE(GetFrame(frames, index, &entry));
        const ImageLock lock(entry.image);
        return lock.image ? lock.image->width : 0;
    }

    const Picture picture = RandomPicture(5, 3, 1);
    MemoryHandle source = nullptr;
    HostContext host = {};
    FrameList frames = {};
    EffectBuildContext context = {nullptr, &frames, nullptr, &host};
    EffectRunContext run = {};
};

TEST_F(EffectOperations, A_preview_is_the_kernels_picture_of_the_first_frame) {
    HoldSource(2);
    EXPECT_EQ(PreviewEffect(MakeEffect(Shrink), &run), 1);
    const Picture rendered(run.image);
    const ImageLock lock(rendered.handle);
    ASSERT_TRUE(lock.image);
    EXPECT_EQ(lock.image->width, 2);
    EXPECT_EQ(run.flags, 2u);
    EXPECT_EQ(seenValues, std::vector<int32_t>{45}) << "the slider's value, kept to its range";
}

TEST_F(EffectOperations, A_preview_keeps_the_frame_when_the_kernel_has_no_picture) {
    HoldSource(1);
    EXPECT_EQ(PreviewEffect(MakeEffect(AnswerNone), &run), 1);
    const Picture rendered(run.image);
    EXPECT_TRUE(SamePicture(picture.handle, rendered.handle));
}

TEST_F(EffectOperations, A_preview_without_a_source_succeeds_with_no_picture) {
    EXPECT_EQ(PreviewEffect(MakeEffect(Shrink), &run), 1);
    EXPECT_EQ(run.image, nullptr);
    EXPECT_TRUE(seenValues.empty());
}

TEST_F(EffectOperations, A_build_replaces_every_frame_and_reports_each_with_the_total) {
    HoldSource(3);
    EXPECT_EQ(BuildEffect(MakeEffect(Shrink), &context), 1);
    ASSERT_EQ(Count(), 3);
    for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(Width(i), 2) << i;
    EXPECT_EQ(progress, (Progress{{0, 3}, {1, 3}, {2, 3}}));
    EXPECT_EQ(seenCaches[2], seenCaches[0]) << "tables are kept from frame to frame";
}

TEST_F(EffectOperations, A_build_keeps_the_frames_for_which_the_kernel_has_no_picture) {
    HoldSource(2);
    EXPECT_EQ(BuildEffect(MakeEffect(AnswerNone), &context), 1);
    ASSERT_EQ(Count(), 2);
    EXPECT_EQ(Width(0), 5);
    EXPECT_EQ(Width(1), 5);
    EXPECT_EQ(progress.size(), 2u);
}

TEST_F(EffectOperations, A_build_without_a_source_succeeds_with_no_frames) {
    EXPECT_EQ(BuildEffect(MakeEffect(Shrink), &context), 1);
    EXPECT_EQ(Count(), 0);
    EXPECT_TRUE(progress.empty());
}

TEST_F(EffectOperations, A_build_of_a_malformed_source_succeeds_with_no_frames) {
    std::vector<uint8_t> block = MakeAnimationBlock({{BytesOf(picture.handle), {}}});
    block[0] = '?';
    HoldBlock(block);
    EXPECT_EQ(BuildEffect(MakeEffect(Shrink), &context), 1);
    EXPECT_EQ(Count(), 0);
    EXPECT_TRUE(progress.empty());
}

TEST_F(EffectOperations, A_build_of_some_of_the_sources_frames_fails) {
    std::vector<uint8_t> block =
        MakeAnimationBlock({{BytesOf(picture.handle), {}}, {BytesOf(picture.handle), {}}});
    block[808 + 40 + BytesOf(picture.handle).size()] = '?';  // the second frame's tag
    HoldBlock(block);
    EXPECT_EQ(BuildEffect(MakeEffect(Shrink), &context), 0);
    EXPECT_TRUE(seenValues.empty());
}

// Two passes: all frames are looked at before the first is changed.

int gathered, appliedAfter, released;

constexpr GatheringPasses kPasses = {
    [](const KernelInput& input) { return input.values[0] == 45; },
    [](ImageHandle, uint64_t record[2]) { record[0] = static_cast<uint64_t>(++gathered); },
    [](ImageHandle, const uint64_t record[2]) {
        appliedAfter = static_cast<int>(record[0]);
        return CreateDib(2, 1, nullptr, 24);
    },
    [](uint64_t[2]) { ++released; }};

TEST_F(EffectOperations, A_gathering_build_sees_all_frames_first_and_counts_both_passes) {
    HoldSource(3);
    gathered = appliedAfter = released = 0;
    Effect effect = MakeEffect(AnswerNone);
    effect.gathering = &kPasses;
    EXPECT_EQ(BuildEffect(effect, &context), 1);
    EXPECT_EQ(appliedAfter, 3);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(Width(2), 2);
    EXPECT_EQ(progress, (Progress{{0, 6}, {1, 6}, {2, 6}, {3, 6}, {4, 6}, {5, 6}}));
}

TEST_F(EffectOperations, A_build_gathers_only_when_the_settings_ask_for_it) {
    HoldSource(2);
    gathered = 0;
    sliderVariable = 10;
    Effect effect = MakeEffect(Shrink);
    effect.gathering = &kPasses;
    BuildEffect(effect, &context);
    sliderVariable = 70;
    EXPECT_EQ(gathered, 0);
    EXPECT_EQ(seenValues, (std::vector<int32_t>{10, 10}));
}

}  // namespace
}  // namespace kfx::test
