// SPDX-License-Identifier: MIT
// Each effect follows transparency by the rule of the table: all are run on a source with soft edges.
#include "commands/alpha_ways.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "commands/alpha_pixels.h"
#include "commands/direct_engine.h"
#include "commands/stages.h"
#include "effects/effect_table.h"
#include "tests/support/held_clock.h"

namespace kfx::commands {
namespace {

using test::HeldClock;

constexpr int kWidth = 67;
constexpr int kHeight = 53;

// A disc with a soft edge and many colours, and a second one that moves; nothing round them.
Animation SoftSource(int frames) {
    Animation source;
    source.width = kWidth;
    source.height = kHeight;
    for (int f = 0; f < frames; ++f) {
        Frame frame;
        frame.transparent = true;
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const int one = (x - 33) * (x - 33) + (y - 26) * (y - 26);
                const int other = (x - 8 - 9 * f) * (x - 8 - 9 * f) + (y - 8) * (y - 8);
                const int alpha = std::clamp(std::max((400 - one) * 3, (50 - other) * 9), 0, 255);
                frame.pixels.push_back(static_cast<uint8_t>(x * 3));
                frame.pixels.push_back(static_cast<uint8_t>(y * 4));
                frame.pixels.push_back(static_cast<uint8_t>((x * y + 40 * f) % 256));
                frame.pixels.push_back(static_cast<uint8_t>(alpha));
            }
        }
        source.frames.push_back(frame);
    }
    return source;
}

// The parameters as the panel has them (end < 0), or all at an end.
Job JobFor(const OpenEngine& engine, int effect, int end) {
    Job job;
    Failure failure;
    EXPECT_TRUE(ResolveEffectJob({EffectAt(static_cast<size_t>(effect))->name, {}}, engine.engine,
                                 engine.opened, &job, &failure));
    for (const Parameter& parameter : job.parameters) {
        if (end >= 0) job.values.push_back({parameter, end == 0 ? parameter.minimum : parameter.maximum});
    }
    return job;
}

struct Stage {
    Animation source;
    HostSession session;
    Failure failure;
    EngineStart start;

    Animation Run(Animation animation, int effect, int end, int ground = -1) {
        session.source = &source;
        start.session = &session;
        const OpenEngine engine(kDirectEngine, start, &failure);
        Job job = JobFor(engine, effect, end);
        if (ground >= 0) {
            job.background = Background::Color;
            job.backgroundColor = static_cast<uint32_t>(ground) * 0x010101u;
        }
        EXPECT_TRUE(RunStage(engine, &session, job, &animation, &failure)) << failure.error;
        return animation;
    }
};

void PutAllOver(uint8_t level, Animation* animation) {
    for (Frame& frame : animation->frames) {
        PutOver(level, &frame.pixels);
        frame.transparent = false;
    }
}

uint8_t AlphaAt(const Frame& frame, size_t pixel) { return frame.pixels[4 * pixel + 3]; }

TEST(AlphaWays, Each_effect_has_a_row_in_the_order_of_the_list) {
    size_t count = 0;
    const AlphaRule* const rules = AlphaRules(&count);
    ASSERT_EQ(count, EffectCount());
    for (size_t i = 0; i < count; ++i) {
        EXPECT_STREQ(rules[i].effect, EffectAt(i)->name);
        EXPECT_EQ(&AlphaRuleOf(EffectAt(i)->name), &rules[i]);
    }
    EXPECT_EQ(AlphaRuleOf("Another plug-in's").way, AlphaWay::Keep);
}

// The panel's own values and both ends of every parameter.
struct EachEffect : ::testing::TestWithParam<int> {
    const AlphaRule& rule = AlphaRuleOf(EffectAt(static_cast<size_t>(GetParam()))->name);
};

// What is seen of a result on any ground is what the effect makes of the source on that ground.
TEST_P(EachEffect, A_solved_alpha_is_right_on_every_ground) {
    if (rule.way != AlphaWay::Solve) return;
    // The colours of a flare are not equally strong in all channels, which one alpha cannot say; over black
    // it is right.
    const bool colored = std::string(rule.effect) == "Lens Flare";
    for (int end = -1; end < 2; ++end) {
        const Animation result = Stage().Run(SoftSource(1), GetParam(), end);
        for (const int ground : colored ? std::vector<int>{0} : std::vector<int>{0, 90, 255}) {
            Animation expected = SoftSource(1), seen = result;
            PutAllOver(static_cast<uint8_t>(ground), &expected);
            PutAllOver(static_cast<uint8_t>(ground), &seen);
            expected = Stage().Run(expected, GetParam(), end, ground);
            int worst = 0;
            for (size_t i = 0; i < seen.frames[0].pixels.size(); ++i)
                worst = std::max(worst, std::abs(seen.frames[0].pixels[i] - expected.frames[0].pixels[i]));
            EXPECT_LE(worst, 2) << rule.effect << " at " << end << " over " << ground;
        }
    }
}

TEST_P(EachEffect, Nothing_stays_nothing_and_opaque_stays_opaque) {
    Animation nothing = SoftSource(1), opaque = SoftSource(2);
    for (size_t i = 3; i < nothing.frames[0].pixels.size(); i += 4) {
        nothing.frames[0].pixels[i] = 0;
        opaque.frames[0].pixels[i] = 255;
    }
    nothing = Stage().Run(nothing, GetParam(), -1);
    opaque.frames[0].transparent = false;
    opaque = Stage().Run(opaque, GetParam(), -1);
    EXPECT_FALSE(opaque.frames[0].transparent) << "beside a transparent frame";
    EXPECT_TRUE(opaque.frames[1].transparent);
    if (std::string(rule.effect) == "Lens Flare") return;    // draws its light everywhere
    const bool seam = std::string(rule.effect) == "Ripple";  // its last column and row blend with black
    for (int y = 0; y < kHeight - seam; ++y) {
        for (int x = 0; x < kWidth - seam; ++x)
            ASSERT_EQ(AlphaAt(nothing.frames[0], static_cast<size_t>(y * kWidth + x)), 0) << x << ", " << y;
    }
}

TEST_P(EachEffect, What_is_not_solved_keeps_its_outline_or_moves_whole_pixels) {
    if (rule.way == AlphaWay::Solve) return;
    const Animation source = SoftSource(2);
    const Animation result = Stage().Run(source, GetParam(), -1);
    ASSERT_EQ(result.frames.size(), 2u);
    for (size_t f = 0; f < 2; ++f) {
        size_t moved = 0;
        for (size_t i = 0; i < size_t{kWidth} * kHeight; ++i) {
            const uint8_t before = AlphaAt(source.frames[f], i), after = AlphaAt(result.frames[f], i);
            moved += before != after;
            if (rule.way == AlphaWay::Light) {
                ASSERT_GE(after, before) << i;
            }
        }
        const bool stays = rule.way == AlphaWay::Keep || rule.way == AlphaWay::Edges;
        EXPECT_EQ(moved == 0, stays) << rule.effect << ", frame " << f << ": " << moved;
    }
}

INSTANTIATE_TEST_SUITE_P(AlphaWays, EachEffect, ::testing::Range(0, static_cast<int>(EffectCount())));

TEST(AlphaWays, Whole_pixels_move_with_their_alpha) {
    const Animation source = SoftSource(1);
    Animation colors = source, alphas = source;
    for (size_t i = 0; i < source.frames[0].pixels.size(); i += 4) {
        uint8_t* const grey = &alphas.frames[0].pixels[i];
        std::fill_n(grey, 3, grey[3]);
        colors.frames[0].pixels[i + 3] = grey[3] = 255;
    }
    colors.frames[0].transparent = alphas.frames[0].transparent = false;
    for (const char* effect : {"Glass Block", "Water Drops"}) {
        int row = 0;
        while (std::string(EffectAt(static_cast<size_t>(row))->name) != effect) ++row;
        const HeldClock clock(1234);  // the same scatter each time
        const Pixels moved = Stage().Run(source, row, -1).frames[0].pixels;
        const Pixels color = Stage().Run(colors, row, -1).frames[0].pixels;
        const Pixels alpha = Stage().Run(alphas, row, -1).frames[0].pixels;
        for (size_t i = 0; i < moved.size(); ++i)
            ASSERT_EQ(moved[i], i % 4 == 3 ? alpha[i - 3] : color[i]) << effect << " " << i;
    }
}

}  // namespace
}  // namespace kfx::commands
