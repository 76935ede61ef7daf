// SPDX-License-Identifier: MIT
#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "bench/effect_work.h"
#include "bench/job.h"
#include "tests/reference/reference_table.h"

namespace kfx::bench {
namespace {

// The names under which timing programs know the effects, and heavy settings that other libraries can be
// given as well; an effect without any has no heavy variant.
struct EffectName {
    const char* job;
    const char* effect;
    std::vector<int32_t> heavy;  // in the order of the effect's controls
};

const EffectName kNames[] = {
    {.job = "emboss", .effect = "Emboss", .heavy = {45, 50}},
    {.job = "lens-flare", .effect = "Lens Flare", .heavy = {25, 30, 300}},
    {.job = "glass-block", .effect = "Glass Block", .heavy = {64}},
    {.job = "radial-blur", .effect = "Radial Blur", .heavy = {45}},
    {.job = "gaussian-blur", .effect = "Gaussian Blur", .heavy = {45, 50}},
    {.job = "obscure", .effect = "Obscure", .heavy = {64}},
    {.job = "oil-painting", .effect = "Oil Painting", .heavy = {400}},
    {.job = "zoom-blur", .effect = "Zoom Blur", .heavy = {240, 40}},
    {.job = "water-drops", .effect = "Water Drops", .heavy = {12}},
    {.job = "ripple", .effect = "Ripple", .heavy = {100, 100, 8000, 400, 180, 15, 0}},
    {.job = "hsb-channels", .effect = "HSB and Channels", .heavy = {200, 140, 120, 1, 3, 1, 1}},
    {.job = "raster", .effect = "Raster", .heavy = {255, 8}},
    {.job = "solarize", .effect = "Solarize", .heavy = {255}},
    {.job = "bump", .effect = "Bump", .heavy = {}},
    {.job = "motion-blur", .effect = "Motion Blur", .heavy = {50, 300, 45}},
    {.job = "swirl", .effect = "Swirl", .heavy = {2880}},
    {.job = "neon", .effect = "Neon", .heavy = {}},
    {.job = "implode", .effect = "Implode", .heavy = {100, 50, 50}},
    {.job = "explode", .effect = "Explode", .heavy = {100, 50, 50}},
    {.job = "normalize", .effect = "Normalize", .heavy = {}},
};

const EffectName* NameOf(const std::string& effect) {
    const auto* name = std::find_if(std::begin(kNames), std::end(kNames),
                                    [&](const EffectName& row) { return effect == row.effect; });
    return name == std::end(kNames) ? nullptr : name;
}

std::string TextOf(const Effect& effect, const KernelInput& input) {
    std::string text = effect.name;
    for (size_t i = 0; i < effect.controls.count; ++i)
        text += (i ? ", " : " ") + std::to_string(input.values[i]);
    return text;
}

// A kernel that gives no picture leaves the source as it is, which is a result, too.
Job MakeFirstFrame(const char* name, const char* variant, const Effect& effect, EffectKernel kernel,
                   const KernelInput& input) {
    const auto prepare = [kernel, input](const Shot& shot) -> Run {
        return [kernel, input, picture = FrameAt(shot, 0)] {
            KernelCache cache;
            KernelInput given = input;
            given.cache = &cache;
            FreeMemory(kernel(picture, given));
            return true;
        };
    };
    return {.name = name,
            .variant = variant,
            .operation = TextOf(effect, input),
            .allFrames = false,
            .prepare = prepare};
}

Job MakeLaterFrame(const char* name, const Effect& effect, EffectKernel kernel, const KernelInput& input) {
    const auto prepare = [kernel, input](const Shot& shot) -> Run {
        const auto cache = std::make_shared<KernelCache>();
        KernelInput given = input;
        given.cache = cache.get();
        FreeMemory(kernel(FrameAt(shot, 0), given));
        return [kernel, given, cache, picture = FrameAt(shot, 0)] {
            FreeMemory(kernel(picture, given));
            return true;
        };
    };
    return {.name = name,
            .variant = "later",
            .operation = TextOf(effect, input) + ", a later frame",
            .allFrames = false,
            .prepare = prepare};
}

}  // namespace

std::vector<Job> ListEffectJobs(bool reference) {
    std::vector<Job> jobs;
    for (const Work& work : ListWork()) {
        if (work.greatest) continue;
        const Effect& effect = *work.effect;
        const EffectName* name = NameOf(effect.name);
        const EffectKernel kernel = reference ? test::ReferenceOf(effect.name) : effect.apply;
        if (!name || !kernel) continue;
        jobs.push_back(MakeFirstFrame(name->job, "default", effect, kernel, work.input));
        if (!reference && KeepsTables(work))
            jobs.push_back(MakeLaterFrame(name->job, effect, kernel, work.input));
        if (name->heavy.empty()) continue;
        KernelInput input = work.input;
        std::copy(name->heavy.begin(), name->heavy.end(), input.values);
        jobs.push_back(MakeFirstFrame(name->job, "heavy", effect, kernel, input));
    }
    return jobs;
}

}  // namespace kfx::bench
