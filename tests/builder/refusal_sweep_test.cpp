// SPDX-License-Identifier: MIT
// Builds with every effect, at two settings, to every kind of output, with each allocation, each lock and
// each question for a block's size refused: once, and from then on. A build either fails with the message and
// hands nothing over (or closes its task as failed), or it succeeds with the frames of an undisturbed build,
// in which a frame may be unchanged where its kernel was refused memory.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "builder/build_driver.h"
#include "commands/frame_threads.h"
#include "effects/effect_table.h"
#include "framework/memory_guards.h"
#include "framework/movable_memory_native.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "tests/builder/refusal_inputs.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/refused_effects.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

constexpr size_t kFrames = 2;

struct Handed {
    AddImageRecord record;  // without the handle
    std::vector<uint8_t> bitmap;
};

// What the host and the user have seen of a build.
struct Outcome {
    int32_t result = 0;
    std::vector<BuildMessage> messages;
    std::vector<FileObjectRecord> tasks;
    std::vector<Handed> frames;
    std::vector<uint64_t> closes;  // the words of the closing requests
};

const FrameRunner* runner = nullptr;  // of the next builds

Outcome* current = nullptr;  // set during a build: the callbacks have no place for a pointer of ours

uint64_t TakeRequest(uint64_t, uint32_t request, uint64_t word, uint64_t pointer) {
    const UncountedMemory aside;
    switch (static_cast<HostRequest>(request)) {
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            current->tasks.push_back(*reinterpret_cast<const FileObjectRecord*>(pointer));
            break;
        case HostRequest::AddImage: {
            Handed handed = {*reinterpret_cast<const AddImageRecord*>(pointer), {}};
            handed.bitmap = BytesOf(reinterpret_cast<ImageHandle>(handed.record.image));
            handed.record.image = 0;
            current->frames.push_back(handed);
            break;
        }
        case HostRequest::CloseTask:
            current->closes.push_back(word);
            break;
        default:
            break;
    }
    return 1;
}

void NoteMessage(void*, BuildMessage message) { current->messages.push_back(message); }

Outcome Build(MemoryHandle source, const EffectDescriptor& effect, const BuildOptions& options) {
    HostContext host = {};
    host.callback = TakeRequest;
    const BuildEnvironment environment = {.window = nullptr,
                                          .host = &host,
                                          .source = source,
                                          .effect = &effect,
                                          .showMessage = NoteMessage,
                                          .runner = runner};
    Outcome outcome;
    current = &outcome;
    outcome.result = RunBuild(environment, options);
    current = nullptr;
    return outcome;
}

template <typename T>
bool SameBytes(const std::vector<T>& left, const std::vector<T>& right) {
    return left.size() == right.size() &&
           (left.empty() || std::memcmp(left.data(), right.data(), left.size() * sizeof(T)) == 0);
}

bool SameOutcome(const Outcome& left, const Outcome& right) {
    if (left.result != right.result || left.messages != right.messages || left.closes != right.closes ||
        !SameBytes(left.tasks, right.tasks) || left.frames.size() != right.frames.size())
        return false;
    for (size_t i = 0; i < left.frames.size(); ++i)
        if (left.frames[i].bitmap != right.frames[i].bitmap ||
            std::memcmp(&left.frames[i].record, &right.frames[i].record, sizeof(AddImageRecord)) != 0)
            return false;
    return true;
}

// A frame as an effect leaves it in the list.
struct MadeFrame {
    FrameEntry entry;
    std::vector<uint8_t> bitmap;
};

std::vector<MadeFrame> TakeFrames(FrameList* list) {
    std::vector<MadeFrame> made;
    for (int32_t i = 0; i < list->count; ++i) {
        MadeFrame frame = {};
        EXPECT_TRUE(GetFrame(*list, i, &frame.entry));
        frame.bitmap = BytesOf(frame.entry.image);
        made.push_back(frame);
    }
    FreeFrames(list);
    return made;
}

std::vector<MadeFrame> givenFrames;  // what GiveFrames answers

int32_t GiveFrames(EffectBuildContext* context) {
    for (const MadeFrame& frame : givenFrames) {
        FrameEntry entry = frame.entry;
        entry.image = MakeMemory(frame.bitmap);
        EXPECT_TRUE(AppendFrame(context->frames, entry));
    }
    return 1;
}

int32_t NoBackground(void*, int32_t) { return -1; }
int32_t GreenBackground(void*, int32_t) { return 0x20A020; }

// Frames that no effect touches.
EffectDescriptor NoEffect() {
    EffectDescriptor none = {};
    none.name = "No effect";
    return none;
}

// A way to refuse, and which count tells whether it came to that.
struct Refusal {
    const char* name;
    void (*refuse)(size_t number);
    size_t MemoryCounts::*attempts;
};

constexpr Refusal kRefusals[] = {
    {.name = "allocation", .refuse = RefuseAllocation, .attempts = &MemoryCounts::allocations},
    {.name = "allocations from", .refuse = RefuseAllocationsFrom, .attempts = &MemoryCounts::allocations},
    {.name = "lock", .refuse = RefuseLock, .attempts = &MemoryCounts::locks},
    {.name = "locks from", .refuse = RefuseLocksFrom, .attempts = &MemoryCounts::locks},
    {.name = "size", .refuse = RefuseSize, .attempts = &MemoryCounts::sizes},
    {.name = "sizes from", .refuse = RefuseSizesFrom, .attempts = &MemoryCounts::sizes},
};

class Refusals : public testing::Test {
protected:
    Refusals() {
        HoldClock(12345);  // Water Drops takes its seed from it
        BuiltInSettings();
        source = MakeMemory(SmallAnimation());
    }
    ~Refusals() override {
        ResetMemoryCounts();
        FreeMemory(source);
        runner = nullptr;
        settings = Settings();
        ReleaseClock();
        AddTried("refused allocations", refused[0] + refused[1]);
        AddTried("refused locks", refused[2] + refused[3]);
        AddTried("refused sizes", refused[4] + refused[5]);
    }

    // How each frame may come out of the effect: transformed; as it came; and, of Oil Painting, all
    // background.
    void NoteVariants(const EffectDescriptor& effect) {
        FrameList list = {};
        DecodeAllFrames(source, &list);
        const std::vector<MadeFrame> untransformed = TakeFrames(&list);
        HostContext host = {};
        EffectBuildContext context = {nullptr, &list, source, &host};
        if (effect.build)
            ASSERT_EQ(effect.build(&context), 1);
        else
            DecodeAllFrames(source, &list);
        const std::vector<MadeFrame> transformed = TakeFrames(&list);
        ASSERT_EQ(untransformed.size(), kFrames);
        ASSERT_EQ(transformed.size(), kFrames);
        variants.assign(kFrames, {});
        for (size_t i = 0; i < kFrames; ++i) {
            variants[i] = {transformed[i], untransformed[i]};
            if (!MayBeAllBackground(effect.name)) continue;
            MadeFrame background = untransformed[i];
            background.bitmap = BytesOf(FlatPicture(kSide, kSide, kBackground).handle);
            variants[i].push_back(background);
        }
    }

    // Whether the outcome is that of an undisturbed build of some choice among the frames' variants.
    bool IsOfSomeVariant(const Outcome& outcome) {
        for (size_t first = 0; first < variants[0].size(); ++first)
            for (size_t second = 0; second < variants[1].size(); ++second) {
                const auto choice = std::make_pair(first, second);
                if (expected.find(choice) == expected.end()) {
                    const UncountedMemory aside;
                    EffectDescriptor giving = {};
                    giving.build = GiveFrames;
                    giving.query = output.effectHasBackground ? GreenBackground : NoBackground;
                    givenFrames = {variants[0][first], variants[1][second]};
                    expected[choice] = Build(source, giving, output.options);
                }
                if (SameOutcome(outcome, expected[choice])) return true;
            }
        return false;
    }

    void ExpectSound(const Outcome& outcome, const std::string& name) {
        if (outcome.result) {
            EXPECT_TRUE(IsOfSomeVariant(outcome)) << name << ": other frames than a build can give";
            return;
        }
        EXPECT_EQ(outcome.messages, std::vector<BuildMessage>{BuildMessage::MemoryError}) << name;
        if (outcome.tasks.empty()) {
            EXPECT_TRUE(outcome.frames.empty() && outcome.closes.empty()) << name;
        } else {
            EXPECT_LT(outcome.frames.size(), kFrames) << name;
            EXPECT_EQ(outcome.closes, std::vector<uint64_t>{0}) << name << ": the task is discarded";
        }
    }

    // Refuses in that way, from the first attempt to the last.
    void Sweep(const EffectDescriptor& effect, const Refusal& refusal, size_t* refusedCount) {
        for (size_t number = 1;; ++number) {
            const std::string name =
                std::string(effect.name) + ", " + refusal.name + " " + std::to_string(number) + " refused";
            const MemoryCounts before = CountMemory();
            refusal.refuse(number);
            const Outcome outcome = Build(source, effect, output.options);
            const MemoryCounts after = CountMemory();
            ResetMemoryCounts();
            ASSERT_EQ(after.liveBlocks, before.liveBlocks) << name;
            ASSERT_EQ(after.liveBytes, before.liveBytes) << name;
            ASSERT_EQ(after.lockedBlocks, before.lockedBlocks) << name;
            ASSERT_EQ(after.strayUnlocks, before.strayUnlocks) << name;
            ASSERT_EQ(after.lockedFrees, before.lockedFrees) << name;
            ExpectSound(outcome, name);
            if (HasFailure()) return;  // one is enough to look at
            if (after.*refusal.attempts < number) {
                EXPECT_EQ(outcome.result, 1) << name;
                EXPECT_TRUE(SameOutcome(outcome, (expected[{0, 0}]))) << name;
                return;
            }
            ++*refusedCount;
        }
    }

    void SweepBuilds(EffectDescriptor effect) {
        effect.query = output.effectHasBackground ? GreenBackground : NoBackground;
        NoteVariants(effect);
        expected.clear();
        for (size_t i = 0; i < std::size(kRefusals); ++i) Sweep(effect, kRefusals[i], &refused[i]);
    }

    MemoryHandle source = nullptr;
    Output output = {};
    std::vector<std::vector<MadeFrame>> variants;           // of each frame
    std::map<std::pair<size_t, size_t>, Outcome> expected;  // by the variants chosen
    size_t refused[std::size(kRefusals)] = {};
};

class RefusalsByOutput : public Refusals, public testing::WithParamInterface<Output> {};

TEST_P(RefusalsByOutput, A_build_fails_with_a_message_or_gives_whole_frames) {
    output = GetParam();
    for (void (*const change)() : {BuiltInSettings, OtherSettings}) {
        change();
        for (size_t row = 0; row < EffectCount(); ++row) SweepBuilds(*DescriptorAt(row));
    }
    SweepBuilds(NoEffect());
}

INSTANTIATE_TEST_SUITE_P(Outputs, RefusalsByOutput, testing::ValuesIn(Outputs()),
                         [](const auto& output) { return output.param.name; });

TEST_P(RefusalsByOutput, A_build_on_two_threads_fails_with_a_message_or_gives_whole_frames) {
    const FrameRunner threads = commands::FramesOnThreads(2);
    runner = &threads;
    output = GetParam();
    for (const char* name : {"Bump", "Swirl", "Oil Painting", "Normalize", "Water Drops"})
        for (size_t row = 0; row < EffectCount(); ++row)
            if (std::strcmp(EffectAt(row)->name, name) == 0) SweepBuilds(*DescriptorAt(row));
}

// More colours than a palette holds: the quantizer builds its tree.
TEST_F(Refusals, A_quantized_build_fails_with_a_message_or_gives_whole_frames) {
    FreeMemory(source);
    source = MakeMemory(MakeAnimationBlock(
        {{BytesOf(RandomPicture(17, 17, 1).handle), {}}, {BytesOf(RandomPicture(17, 17, 2).handle), {}}}));
    output.options.customPalette = true;
    SweepBuilds(NoEffect());
}

TEST_F(Refusals, A_preview_shows_the_picture_the_frame_or_nothing) {
    for (size_t row = 0; row < EffectCount(); ++row) {
        const Effect& effect = *EffectAt(row);
        const Picture frame(FetchFirstFrame(source));
        EffectRunContext whole = {};
        whole.source = source;
        PreviewEffect(effect, &whole);
        const Picture rendered(whole.image);
        for (size_t i = 0; i < std::size(kRefusals); ++i) {
            const Refusal& refusal = kRefusals[i];
            for (size_t number = 1;; ++number) {
                const MemoryCounts before = CountMemory();
                EffectRunContext context = {};
                context.source = source;
                refusal.refuse(number);
                EXPECT_EQ(PreviewEffect(effect, &context), 1);
                const bool reached = CountMemory().*refusal.attempts >= number;
                ResetMemoryCounts();
                const bool known =
                    !context.image || SamePicture(rendered.handle, context.image) ||
                    SamePicture(frame.handle, context.image) ||
                    (MayBeAllBackground(effect.name) &&
                     SamePicture(FlatPicture(kSide, kSide, kBackground).handle, context.image));
                EXPECT_TRUE(known) << effect.name << ", " << refusal.name << " " << number;
                FreeMemory(context.image);
                ASSERT_EQ(CountMemory().liveBlocks, before.liveBlocks) << effect.name << number;
                ASSERT_EQ(CountMemory().lockedBlocks, 0u) << effect.name << number;
                if (!reached) break;
                ++refused[i];
            }
        }
    }
}

}  // namespace
}  // namespace kfx::test
