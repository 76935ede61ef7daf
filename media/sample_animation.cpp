// SPDX-License-Identifier: MIT
#include "media/sample_animation.h"

#include <algorithm>
#include <cstddef>

#include "media/quantize.h"
#include "media/sample_scene.h"

namespace kfx {
namespace {

// Samples a pixel side: edges come out smooth.
constexpr int kSamples = 2;
constexpr int kFineWidth = kSampleWidth * kSamples;
constexpr int kPaletteSize = 256;

// Everything above the water, which does not move: a colour for each sample.
struct Scenery {
    std::vector<Light> samples;
    int rows = 0;
};

double CenterOf(int sample) { return (sample + 0.5) / kSamples; }

Scenery MakeScenery() {
    Scenery scenery;
    scenery.rows = static_cast<int>(kWaterLine) * kSamples;
    for (int row = 0; row < scenery.rows; ++row)
        for (int column = 0; column < kFineWidth; ++column)
            scenery.samples.push_back(DrawScenery(CenterOf(column), CenterOf(row)));
    return scenery;
}

Light SceneryAt(const Scenery& scenery, double x, double y) {
    const int column = std::clamp(static_cast<int>(std::floor(x * kSamples)), 0, kFineWidth - 1);
    const int row = std::clamp(static_cast<int>(std::floor(y * kSamples)), 0, scenery.rows - 1);
    return scenery.samples[static_cast<size_t>(row) * kFineWidth + static_cast<size_t>(column)];
}

// The lake: the scenery upside down, displaced by waves, darker towards the viewer, with the sun's path on
// it.
Light WaterAt(const Scenery& scenery, double x, double y, double time) {
    const double depth = (y - kWaterLine) / (kSampleHeight - kWaterLine);
    const double shift = WaterShift(x, y, time);
    const double mirroredTop = kWaterLine - (y - kWaterLine) * 1.35 - 1 + 0.5 * shift;
    Light color = SceneryAt(scenery, x + 0.8 * shift, mirroredTop);
    color = Mix(color, Light{0.07, 0.11, 0.24}, 0.22 + 0.42 * depth);
    const double pathWidth = 7 + 26 * depth;
    const double offPath = std::fabs(x - kSunLeft + 0.5 * shift) / pathWidth;
    const double crest = WaterShift(1.7 * x, y, time) / (0.8 + 6.5 * depth);
    color = color + Light{1.0, 0.72, 0.36} * (0.75 * SmoothStep(1, 0, offPath) * SmoothStep(0.1, 1.0, crest));
    return color * (1 + 0.05 * crest);
}

Light Lay(Light ground, const Touch& touch) { return Mix(ground, touch.color, touch.cover); }

Light SampleAt(const Scenery& scenery, int column, int row, double time) {
    const double x = CenterOf(column);
    const double y = CenterOf(row);
    Light color = y < kWaterLine ? SceneryAt(scenery, x, y) : WaterAt(scenery, x, y, time);
    color = Lay(color, DrawBoat(x, y, time));
    color = Lay(color, DrawBall(x, y, time));
    color = Lay(color, DrawReeds(x, y, time));
    color = Lay(color, DrawKestrel(x, y, time));
    return Lay(color, DrawTitle(x, y, time));
}

// A little grain, the same in every frame, hides the steps of the palette in the sky.
uint8_t LevelOf(double light, double grain) {
    return static_cast<uint8_t>(std::clamp(255 * light + 3.2 * (grain - 0.5) + 0.5, 0.0, 255.0));
}

Picture DrawFrame(const Scenery& scenery, int frameIndex) {
    const double time = static_cast<double>(frameIndex) / kSampleFrameCount;
    Picture picture;
    picture.width = kSampleWidth;
    picture.height = kSampleHeight;
    for (int y = 0; y < kSampleHeight; ++y) {
        for (int x = 0; x < kSampleWidth; ++x) {
            Light sum;
            for (int sample = 0; sample < kSamples * kSamples; ++sample) {
                const Light color = SampleAt(scenery, x * kSamples + sample % kSamples,
                                             y * kSamples + sample / kSamples, time);
                // Light beyond white does not spill into the samples beside it.
                sum = sum + Light{Clamp01(color.red), Clamp01(color.green), Clamp01(color.blue)};
            }
            const Light mean = sum * (1.0 / (kSamples * kSamples));
            const double grain = HashNoise(x, y);
            picture.pixels.insert(picture.pixels.end(), {LevelOf(mean.red, grain), LevelOf(mean.green, grain),
                                                         LevelOf(mean.blue, grain), 255});
        }
    }
    return picture;
}

}  // namespace

Picture DrawSampleFrame(int frameIndex) { return DrawFrame(MakeScenery(), frameIndex); }

GifAnimation DrawSampleAnimation() {
    const Scenery scenery = MakeScenery();
    GifAnimation gif;
    gif.width = kSampleWidth;
    gif.height = kSampleHeight;
    gif.loopCount = kLoopForever;
    gif.comment = "A kestrel over a lake: the sample animation of Kestrel FX";
    for (int i = 0; i < kSampleFrameCount; ++i) {
        const Picture picture = DrawFrame(scenery, i);
        GifFrame frame;
        QuantizeFrame(picture.pixels.data(), picture.width, picture.height, kPaletteSize, &frame);
        frame.delay = kSampleDelay;
        gif.frames.push_back(std::move(frame));
    }
    return gif;
}

}  // namespace kfx
