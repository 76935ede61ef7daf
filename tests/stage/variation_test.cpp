// SPDX-License-Identifier: MIT
#include "stage/variation.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "stage/wall_engine.h"
#include "stage/wall_source.h"
#include "tests/stage/wall_test_source.h"
#include "tests/support/held_clock.h"

namespace kfx::stage {
namespace {

using commands::Parameter;

constexpr uint64_t kSeeds[] = {0, 1, 2, 77, 1700000000, UINT64_MAX};

// Effects whose parameters give nothing to walk through.
bool StandsStill(const EffectDescription& effect) { return effect.name == "Bump" || effect.name == "Neon"; }

const Parameter* FindParameter(const EffectDescription& effect, const char* name) {
    for (const Parameter& parameter : effect.parameters)
        if (parameter.name == name) return &parameter;
    return nullptr;
}

TEST(Variation, Every_curated_range_lies_within_the_range_of_its_parameter) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    size_t count = 0;
    const CuratedLook* const looks = CuratedLooks(&count);
    std::set<std::string> found;
    for (size_t i = 0; i < count; ++i) {
        const EffectDescription* effect = nullptr;
        for (const EffectDescription& one : effects)
            if (one.name == looks[i].effect) effect = &one;
        ASSERT_TRUE(effect) << looks[i].effect;
        // The looks of an effect stand together.
        EXPECT_TRUE(found.insert(effect->name).second || effect->name == looks[i - 1].effect);
        for (const CuratedRange& range : looks[i].ranges) {
            if (!range.parameter) break;
            const Parameter* const parameter = FindParameter(*effect, range.parameter);
            ASSERT_TRUE(parameter) << effect->name << ": " << range.parameter;
            EXPECT_GE(range.least, parameter->minimum) << effect->name << ": " << range.parameter;
            EXPECT_LE(range.most, parameter->maximum) << effect->name << ": " << range.parameter;
            EXPECT_LE(range.least, range.most) << effect->name << ": " << range.parameter;
        }
    }
    for (const EffectDescription& effect : effects) {
        EXPECT_EQ(found.count(effect.name) == 0, StandsStill(effect)) << effect.name;
        EXPECT_EQ(HasVariations(effect), !StandsStill(effect)) << effect.name;
    }
}

TEST(Variation, A_thousand_steps_are_valid_settings) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        for (const uint64_t seed : kSeeds) {
            for (uint64_t number = 0; number <= 1000; ++number) {
                const EffectSettings settings = VariationAt(effects, effect, seed, number);
                ASSERT_EQ(settings.effect, effect);
                for (size_t i = 0; i < kMostControls; ++i) {
                    if (i >= effects[effect].parameters.size()) {
                        ASSERT_EQ(settings.values[i], 0);
                        continue;
                    }
                    const Parameter& parameter = effects[effect].parameters[i];
                    ASSERT_GE(settings.values[i], parameter.minimum) << effects[effect].name;
                    ASSERT_LE(settings.values[i], parameter.maximum) << effects[effect].name;
                }
            }
        }
    }
}

// Going back shows what was there: the walk is a function of the number.
TEST(Variation, The_walk_begins_with_the_defaults_and_can_be_gone_back) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        std::vector<EffectSettings> forth;
        for (uint64_t number = 0; number <= 100; ++number)
            forth.push_back(VariationAt(effects, effect, 5, number));
        EXPECT_TRUE(forth[0] == DefaultSettings(effects, effect));
        for (uint64_t number = 101; number-- > 0;)
            EXPECT_TRUE(VariationAt(effects, effect, 5, number) == forth[number]) << effects[effect].name;
    }
}

TEST(Variation, Another_seed_is_another_walk) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        if (StandsStill(effects[effect]) || effects[effect].name == "Normalize") continue;
        size_t different = 0;
        for (uint64_t number = 1; number <= 50; ++number)
            different += VariationAt(effects, effect, 5, number) != VariationAt(effects, effect, 6, number);
        EXPECT_GT(different, 5u) << effects[effect].name;
    }
}

// In some parameter, by an eighth of what the looks of the effect use of it, or a switch or choice.
bool AreClearlyDifferent(const EffectDescription& effect, const EffectSettings& a, const EffectSettings& b) {
    size_t count = 0;
    const CuratedLook* const looks = CuratedLooks(&count);
    for (size_t i = 0; i < effect.parameters.size(); ++i) {
        const int difference = std::abs(a.values[i] - b.values[i]);
        if (effect.parameters[i].kind != Parameter::Slider && difference != 0) return true;
        for (size_t k = 0; k < count; ++k) {
            if (effect.name != looks[k].effect) continue;
            for (const CuratedRange& range : looks[k].ranges) {
                if (range.parameter && effect.parameters[i].name == range.parameter && difference > 0 &&
                    8 * difference >= range.most - range.least)
                    return true;
            }
        }
    }
    return false;
}

TEST(Variation, Each_step_differs_clearly_from_the_one_before) {
    const std::vector<EffectDescription> effects = DescribeEffects();
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        if (StandsStill(effects[effect])) continue;
        for (const uint64_t seed : kSeeds) {
            for (uint64_t number = 1; number <= 1000; ++number) {
                const EffectSettings before = VariationAt(effects, effect, seed, number - 1);
                const EffectSettings settings = VariationAt(effects, effect, seed, number);
                ASSERT_TRUE(AreClearlyDifferent(effects[effect], before, settings))
                    << effects[effect].name << ", seed " << seed << ", " << number << ": "
                    << SettingsText(effects[effect], before) << " and "
                    << SettingsText(effects[effect], settings);
            }
        }
    }
}

// The mean difference of two pictures in levels.
double Difference(const Animation& a, const Animation& b) {
    double sum = 0;
    size_t count = 0;
    for (size_t f = 0; f < a.frames.size(); ++f) {
        for (size_t i = 0; i < a.frames[f].pixels.size(); ++i, ++count)
            sum += std::abs(a.frames[f].pixels[i] - b.frames[f].pixels[i]);
    }
    return sum / static_cast<double>(count);
}

// The variance of a picture's values.
double Spread(const Animation& animation) {
    double sum = 0, squares = 0;
    const std::vector<uint8_t>& pixels = animation.frames[0].pixels;
    size_t count = 0;
    for (size_t i = 0; i < pixels.size(); ++i) {
        if (i % 4 == 3) continue;
        sum += pixels[i];
        squares += static_cast<double>(pixels[i]) * pixels[i];
        ++count;
    }
    const double mean = sum / static_cast<double>(count);
    return squares / static_cast<double>(count) - mean * mean;
}

struct SampleThumbnails {
    Animation animation;

    SampleThumbnails() {
        const auto source = WallSourceOf(test::SampleSource(1));
        const ThumbnailPlan plan = PlanThumbnails(*source, 160, 120, 1, UINT64_MAX);
        animation.width = plan.width;
        animation.height = plan.height;
        animation.frames.resize(plan.count);
        for (size_t i = 0; i < plan.count; ++i)
            EXPECT_TRUE(MakeThumbnail(*source, plan, i, &animation.frames[i]));
    }
};

Animation Apply(const std::vector<EffectDescription>& effects, const EffectSettings& settings,
                Animation animation) {
    const std::atomic<bool> stop = false;
    std::atomic<uint64_t> frames = 0;
    commands::Failure failure;
    EXPECT_TRUE(ApplyEffect(effects[settings.effect], settings, stop, &frames, &animation, &failure));
    return animation;
}

TEST(Variation, No_variation_leaves_the_sample_unchanged_or_empty) {
    const test::HeldClock clock(1700000000);
    const std::vector<EffectDescription> effects = DescribeEffects();
    const Animation source = SampleThumbnails().animation;
    const double sourceSpread = Spread(source);
    for (size_t effect = 0; effect < effects.size(); ++effect) {
        if (StandsStill(effects[effect])) continue;
        Animation before = Apply(effects, DefaultSettings(effects, effect), source);
        for (uint64_t number = 1; number <= 20; ++number) {
            const EffectSettings settings = VariationAt(effects, effect, 3, number);
            const std::string what = effects[effect].name + ": " + SettingsText(effects[effect], settings);
            Animation made = Apply(effects, settings, source);
            EXPECT_GE(Difference(source, made), 1.5) << what;
            EXPECT_GE(Spread(made), sourceSpread / 3) << what;
            // On frames that are alike, Normalize's two ways give much the same.
            if (effects[effect].name != "Normalize") {
                EXPECT_GE(Difference(before, made), 0.4) << what;
            }
            before = std::move(made);
        }
    }
}

}  // namespace
}  // namespace kfx::stage
