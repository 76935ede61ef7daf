// SPDX-License-Identifier: MIT
// Every effect on the frames of an animation, with each allocation and each lock refused in turn: tables that
// are kept from frame to frame never carry a refusal over to the frames after it.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "effects/effect_table.h"
#include "framework/movable_memory_native.h"
#include "framework/panel.h"
#include "framework/random.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

using Refuse = void (*)(size_t number);

Values BuiltInValues(const Effect& effect) {
    Values values;
    for (size_t i = 0; i < effect.controls.count; ++i)
        values.push_back(ReadControl(effect.controls.rows[i], nullptr));
    return values;
}

bool KeepsTables(const Effect& effect) {
    KernelCache cache;
    const Picture source = RandomPicture(32, 20, 1);
    const Picture result(effect.apply(source.handle, MakeInput(BuiltInValues(effect), 0, &cache)));
    return kfx::KeepsTables(cache);
}

class KernelTables : public testing::Test {
protected:
    KernelTables() {
        HoldClock(12345);  // Water Drops takes its seed from it
        // Four frames of one size, three of another with tables of as many bytes, and the first size again.
        // The second frame of a size fills what the third one finds; the fourth is for two refusals in a row.
        // Pictures as large as these have polynomials.
        const Size sizes[] = {{32, 20}, {32, 20}, {32, 20}, {32, 20}, {20, 32}, {20, 32}, {20, 32}, {32, 20}};
        uint32_t seed = 1;
        for (const Size& size : sizes) frames.push_back(RandomPicture(size.width, size.height, seed++));
    }
    ~KernelTables() override {
        ReleaseClock();
        ResetMemoryCounts();
    }

    // Runs the effect over all frames with one cache and refuses the attempt of that number while frame
    // `refused` is made, and again while the `more` frames after it are. Answers whether there was such an
    // attempt.
    bool RunRefusing(const Effect& effect, const std::vector<Picture>& expected, size_t refused, size_t more,
                     Refuse refuse, size_t number) {
        const Values values = BuiltInValues(effect);
        KernelCache cache;
        bool reached = false;
        for (size_t i = 0; i < frames.size(); ++i) {
            const bool refusing = i >= refused && i <= refused + more;
            if (refusing) refuse(number);
            const Picture actual(effect.apply(frames[i].handle, MakeInput(values, kTestBackground, &cache)));
            if (refusing) {
                const MemoryCounts counts = CountMemory();
                const size_t attempts = refuse == RefuseAllocation ? counts.allocations : counts.locks;
                reached = reached || attempts >= number;
                ResetMemoryCounts();
                continue;
            }
            EXPECT_TRUE(SamePicture(expected[i].handle, actual.handle))
                << effect.name << ", frame " << i << " after "
                << (refuse == RefuseAllocation ? "allocation " : "lock ") << number << " of frame " << refused
                << " and of " << more << " more was refused";
        }
        runs += reached;
        return reached;
    }

    std::vector<Picture> frames;
    size_t runs = 0;
};

TEST_F(KernelTables, Are_kept_by_these_effects) {
    std::set<std::string> names;
    for (size_t row = 0; row < EffectCount(); ++row)
        if (KeepsTables(*EffectAt(row))) names.insert(EffectAt(row)->name);
    EXPECT_EQ(names, (std::set<std::string>{"Explode", "Implode", "Ripple", "Swirl", "Zoom Blur"}));
}

TEST_F(KernelTables, Are_right_in_every_frame_after_a_refusal) {
    for (size_t row = 0; row < EffectCount(); ++row) {
        const Effect& effect = *EffectAt(row);
        std::vector<Picture> expected;
        for (const Picture& frame : frames)
            expected.push_back(Apply(effect, frame.handle, BuiltInValues(effect)));
        const size_t blocks = CountMemory().liveBlocks;
        for (const Refuse refuse : {RefuseAllocation, RefuseLock})
            for (size_t refused = 0; refused < frames.size(); ++refused)
                for (const size_t more : {0, 1})
                    for (size_t number = 1; RunRefusing(effect, expected, refused, more, refuse, number);
                         ++number)
                        ASSERT_LT(number, 200u) << effect.name;
        EXPECT_EQ(CountMemory().liveBlocks, blocks) << effect.name;
        EXPECT_EQ(CountMemory().lockedBlocks, 0u) << effect.name;
    }
    RecordProperty("refusals", static_cast<int>(runs));
    EXPECT_GT(runs, 1000u) << "refusals tried";
}

}  // namespace
}  // namespace kfx::test
