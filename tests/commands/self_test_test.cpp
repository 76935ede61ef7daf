// SPDX-License-Identifier: MIT
// The fingerprints that are built into the program are those of the reference kernels.
#include "commands/self_test.h"

#include <gtest/gtest.h>

#include <set>

#include "commands/direct_engine.h"
#include "commands/fingerprint.h"
#include "effects/effect_table.h"
#include "framework/cpu.h"
#include "framework/settings.h"
#include "tests/reference/reference_table.h"
#include "tests/support/effect_checks.h"
#include "tests/support/held_clock.h"

namespace kfx::commands {
namespace {

using test::Picture;
using test::Values;

bool IsEffectRow(const SelfTestRow& row) { return !row.palette; }

// The values of an effect's controls under a row's settings, in the order of the effect's record.
Values ValuesOf(const SelfTestRow& row, const Effect& effect) {
    Animation none;
    HostSession session;
    session.source = &none;
    EngineStart start;
    start.session = &session;
    Failure failure;
    Job job;
    const OpenEngine engine(kDirectEngine, start, &failure);
    EXPECT_TRUE(ResolveEffectJob(ChoiceOf(row), kDirectEngine, engine.opened, &job, &failure))
        << failure.error;
    CompleteValues(&job);
    Values values;
    for (size_t i = 0; i < effect.controls.count; ++i) {
        for (const ChosenValue& chosen : job.values) {
            if (chosen.parameter.control == effect.controls.rows[i].id)
                values.push_back(chosen.value - chosen.parameter.shownOffset);
        }
    }
    EXPECT_EQ(values.size(), effect.controls.count) << effect.name;
    return values;
}

Picture PictureOf(const Frame& frame, int width, int height) {
    Picture picture(CreateDib(width, height, nullptr, 24));
    const ImageLock lock(picture.handle);
    const uint8_t* pixel = frame.pixels.data();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, pixel += 4)
            SetDibPixel(lock.image, x, y, Rgb(pixel[0], pixel[1], pixel[2]));
    }
    return picture;
}

void TakePixels(const Picture& picture, int width, int height, Frame* frame) {
    uint8_t* pixel = frame->pixels.data();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, pixel += 4) {
            const uint32_t color = test::PixelOf(picture.handle, x, y);
            pixel[0] = static_cast<uint8_t>(RedOf(color));
            pixel[1] = static_cast<uint8_t>(GreenOf(color));
            pixel[2] = static_cast<uint8_t>(BlueOf(color));
        }
    }
}

// What the effect's reference kernel makes of each frame.
Animation ReferenceResult(const SelfTestRow& row, const Effect& effect) {
    const test::HeldClock clock(kSelfTestSecond);
    const Values values = ValuesOf(row, effect);
    Animation animation = DrawSelfTestSource();
    const uint32_t background = settings.localBackgroundColor;
    for (Frame& frame : animation.frames) {
        KernelCache cache;
        const Picture source = PictureOf(frame, animation.width, animation.height);
        const Picture result(
            test::ReferenceOf(effect.name)(source.handle, test::MakeInput(values, background, &cache)));
        if (result.handle) TakePixels(result, animation.width, animation.height, &frame);
    }
    return animation;
}

const Effect* EffectNamed(const std::string& name) {
    for (size_t i = 0; i < EffectCount(); ++i) {
        if (EffectAt(i)->name == name) return EffectAt(i);
    }
    return nullptr;
}

TEST(SelfTest, Every_effect_has_a_row_with_the_fingerprint_of_its_reference_kernel) {
    std::set<std::string> names;
    for (const SelfTestRow& row : kSelfTestRows) {
        if (!IsEffectRow(row)) continue;
        names.insert(row.effect);
        const Effect* const effect = EffectNamed(row.effect);
        ASSERT_NE(effect, nullptr) << row.effect;
        EXPECT_EQ(FingerprintOf(ReferenceResult(row, *effect)), row.fingerprint) << row.effect;
    }
    EXPECT_EQ(names.size(), EffectCount());
}

TEST(SelfTest, Every_row_changes_the_picture_in_its_own_way) {
    std::set<std::string> fingerprints = {FingerprintOf(DrawSelfTestSource())};
    for (const SelfTestRow& row : kSelfTestRows) {
        EXPECT_TRUE(fingerprints.insert(row.fingerprint).second) << NameOf(row);
    }
}

TEST(SelfTest, All_rows_are_right_on_both_paths_and_the_kernels_stay_as_they_were) {
    const bool usesAvx2 = UseAvx2();
    std::vector<SelfTestResult> results;
    Failure failure;
    ASSERT_TRUE(RunSelfTest(kSelfTestRows, &results, &failure)) << failure.error;
    EXPECT_EQ(results.size(), kSelfTestRows.size() * (usesAvx2 ? 2 : 1));
    for (const SelfTestResult& result : results)
        EXPECT_EQ(result.fingerprint, result.row->fingerprint) << NameOf(*result.row);
    EXPECT_EQ(UseAvx2(), usesAvx2);
}

TEST(SelfTest, A_result_that_is_another_is_found) {
    SelfTestRow wrong = kSelfTestRows.front();
    wrong.settings = kSelfTestRows[1].settings;
    wrong.effect = kSelfTestRows[1].effect;
    std::vector<SelfTestResult> results;
    Failure failure;
    const std::vector<SelfTestRow> rows = {wrong, kSelfTestRows[1]};
    ASSERT_TRUE(RunSelfTest(rows, &results, &failure)) << failure.error;
    EXPECT_NE(results[0].fingerprint, results[0].row->fingerprint);
    EXPECT_EQ(results[1].fingerprint, results[1].row->fingerprint);
}

}  // namespace
}  // namespace kfx::commands
