// SPDX-License-Identifier: MIT
// Repeated edge pixels instead of a background colour.
#include "commands/edges.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "commands/direct_engine.h"
#include "commands/pipeline.h"
#include "commands/stages.h"
#include "effects/effect_table.h"

namespace kfx::commands {
namespace {

constexpr int kWidth = 40;
constexpr int kHeight = 30;

Animation Filled(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
    Animation animation;
    animation.width = kWidth;
    animation.height = kHeight;
    Frame frame;
    for (int i = 0; i < kWidth * kHeight; ++i)
        frame.pixels.insert(frame.pixels.end(), {red, green, blue, alpha});
    frame.transparent = alpha != 255;
    animation.frames.push_back(frame);
    return animation;
}

Animation Built(Animation source, const EffectChoice& effect, bool extend, bool trueColor = true) {
    HostSession session;
    session.source = &source;
    EngineStart start;
    start.session = &session;
    Failure failure;
    CommandLine line;
    line.inputs = {"in"};
    line.effects = {effect};
    line.trueColor = trueColor;
    line.palette = "custom";
    PipelineOptions options;
    options.extendEdges = extend;
    PipelineNotes notes;
    const OpenEngine engine(kDirectEngine, start, &failure);
    std::vector<Job> jobs;
    EXPECT_TRUE(ResolveJobs(line, false, kDirectEngine, engine.opened, &jobs, &failure)) << failure.error;
    EXPECT_TRUE(RunJobs(engine, &session, jobs, options, &notes, &failure)) << failure.error;
    return PlayBuilt(session.built, session.record);
}

// The largest difference of a channel, where both pictures have a pixel that is `inside` pixels from the
// edge.
int Worst(const Animation& a, const Animation& b, int inside) {
    int worst = 0;
    for (int y = inside; y < kHeight - inside; ++y) {
        for (int i = 4 * inside; i < 4 * (kWidth - inside); ++i) {
            const auto at = 4 * static_cast<size_t>(y) * static_cast<size_t>(kWidth) + static_cast<size_t>(i);
            worst = std::max(worst, std::abs(a.frames[0].pixels[at] - b.frames[0].pixels[at]));
        }
    }
    return worst;
}

const std::vector<EffectChoice> kEffects = {
    {"Oil Painting", {}},
    {"Oil Painting", {{"Radius", "400"}}},
    {"Motion Blur", {}},
    {"Motion Blur", {{"Radius", "300"}, {"Depth", "50"}, {"Angle", "200"}}},
    {"Motion Blur", {{"Radius", "40"}, {"Depth", "5"}, {"Angle", "90"}}},
    {"Radial Blur", {}},
    {"Radial Blur", {{"Angle", "45"}}},
};

std::string NameOf(const EffectChoice& effect) {
    std::string name = effect.name;
    for (const Setting& setting : effect.settings) name += " " + setting.value;
    return name;
}

TEST(Edges, One_colour_stays_one_colour_up_to_the_edge) {
    const Animation source = Filled(200, 30, 90, 255);
    for (const EffectChoice& effect : kEffects) {
        EXPECT_GT(Worst(source, Built(source, effect, false), 0), 20)
            << NameOf(effect) << ": no rim to avoid";
        EXPECT_LE(Worst(source, Built(source, effect, true), 0), 1) << NameOf(effect);
        EXPECT_LE(Worst(source, Built(source, effect, true, false), 0), 1) << NameOf(effect);
    }
}

TEST(Edges, Transparent_edges_are_repeated_with_their_alpha) {
    const Animation source = Filled(200, 30, 90, 100);
    // The effects truncate colours that are multiplied by alpha: 1 there is 255 / 100 behind the division.
    for (const EffectChoice& effect : kEffects)
        EXPECT_LE(Worst(source, Built(source, effect, true), 0), 5) << NameOf(effect);
}

TEST(Edges, The_middle_is_as_it_would_be_without) {
    Animation source = Filled(0, 0, 0, 255);
    for (size_t i = 0; i < source.frames[0].pixels.size(); ++i) {
        if (i % 4 != 3) source.frames[0].pixels[i] = static_cast<uint8_t>(i * i / 89);
    }
    for (const EffectChoice& effect : {kEffects[0], kEffects[2]})
        EXPECT_EQ(Worst(Built(source, effect, false), Built(source, effect, true), 13), 0) << NameOf(effect);
}

TEST(Edges, Effects_without_a_background_are_built_as_they_are) {
    Animation source = Filled(0, 0, 0, 255);
    for (size_t i = 0; i < source.frames[0].pixels.size(); ++i) {
        if (i % 4 != 3) source.frames[0].pixels[i] = static_cast<uint8_t>(i * i / 89);
    }
    for (const char* effect : {"Swirl", "Emboss", "Ripple"})
        EXPECT_EQ(Worst(Built(source, {effect, {}}, false), Built(source, {effect, {}}, true), 0), 0)
            << effect;
}

// The picture that an effect makes of the source in front of a background, with every parameter at one end.
Animation BuiltBefore(uint32_t background, size_t effect, bool largest) {
    Animation source = Filled(200, 30, 90, 255);
    HostSession session;
    session.source = &source;
    EngineStart start;
    start.session = &session;
    Failure failure;
    const OpenEngine engine(kDirectEngine, start, &failure);
    Job job;
    EXPECT_TRUE(ResolveEffectJob({EffectAt(effect)->name, {}}, kDirectEngine, engine.opened, &job, &failure));
    for (const Parameter& parameter : job.parameters)
        job.values.push_back({parameter, largest ? parameter.maximum : parameter.minimum});
    job.background = Background::Color;
    job.backgroundColor = background;
    Animation result = source;
    EXPECT_TRUE(RunStage(engine, &session, job, &result, &failure)) << failure.error;
    return result;
}

TEST(Edges, The_table_names_the_effects_that_show_a_background) {
    const std::vector<std::string> shown = EffectsWithBackground();
    for (size_t effect = 0; effect < EffectCount(); ++effect) {
        const std::string name = EffectAt(effect)->name;
        int worst = 0;
        for (const bool largest : {false, true})
            worst = std::max(worst, Worst(BuiltBefore(0x0000FF, effect, largest),
                                          BuiltBefore(0xFF0000, effect, largest), 0));
        // Water Drops takes other places each time, of equal pixels here.
        EXPECT_EQ(worst > 0, std::find(shown.begin(), shown.end(), name) != shown.end()) << name;
    }
}

TEST(Edges, Widened_frames_repeat_the_nearest_pixel_and_are_cropped_again) {
    Animation animation;
    animation.width = 2;
    animation.height = 1;
    Frame frame;
    frame.pixels = {1, 2, 3, 255, 4, 5, 6, 255};
    frame.indexed = true;
    frame.indices = {0, 1};
    animation.frames.push_back(frame);
    WidenFrames({2, 1}, &animation);
    EXPECT_EQ(animation.width, 6);
    EXPECT_EQ(animation.height, 3);
    EXPECT_FALSE(animation.frames[0].indexed);
    const std::vector<uint8_t>& wide = animation.frames[0].pixels;
    ASSERT_EQ(wide.size(), 72u);
    for (size_t y = 0; y < 3; ++y) {
        for (size_t x = 0; x < 6; ++x) EXPECT_EQ(wide[4 * (6 * y + x)], x < 3 ? 1 : 4);
    }
    CropFrames({2, 1}, &animation);
    EXPECT_EQ(animation.frames[0].pixels, frame.pixels);
}

}  // namespace
}  // namespace kfx::commands
