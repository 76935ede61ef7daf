// SPDX-License-Identifier: MIT
// What is done to the pixels of transparent frames before and behind an effect, which knows no alpha.
// Pixels are red, green, blue, alpha (straight), top row first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/animation.h"

namespace kfx::commands {

using Pixels = std::vector<uint8_t>;

// Takes the alpha out; the pixels are opaque behind it.
std::vector<uint8_t> TakeAlphaOut(Pixels* pixels);
// Puts it back. False: it belongs to a picture of another size, and nothing has changed.
bool PutAlphaBack(const std::vector<uint8_t>& alpha, Pixels* pixels);

// The picture over a ground of one grey level, opaque.
void PutOver(uint8_t level, Pixels* pixels);

// The picture that an effect made over black and over white, as one with alpha, in the place of the first.
// What differs between the two shows how much of the ground is seen. Of the channels' alphas the largest is
// taken, so that no channel of the colour would have to be above 255, and the picture over black comes back.
// An alpha of 1 is what is left of effects that truncate; it becomes 0.
void SolveAlpha(const Pixels& overWhite, Pixels* overBlack);

// The picture that an effect made over black, with the alpha that it had before. With `light`, alpha rises to
// the brightest channel, so that light round the outline is seen. Pixels of another size stay opaque.
void CutOut(const std::vector<uint8_t>& alpha, bool light, Pixels* overBlack);

// A picture whose colours say where each pixel stands, for effects that copy pixels from elsewhere: the low
// twelve bits of column and row.
Pixels DrawPlaces(int width, int height);
// The source's pixels at the places that the effect has copied from. The twelve bits are taken for the place
// nearest to the pixel's own; what lies beyond the picture is the pixel's own place.
Pixels FetchPlaces(const Pixels& places, const Pixels& source, int width, int height);

// Gives the hidden pixels (alpha 0) of a picture colours that the visible ones have; grey when none is
// visible. Alpha stays.
void FillFromNearest(int width, int height, Pixels* pixels);
// So that each colour keeps its share of the picture.
void FillInProportion(Pixels* pixels);
// With one colour.
void FillWith(RgbColor color, Pixels* pixels);
// A colour that is frequent among the visible pixels of all frames.
RgbColor FrequentColor(const std::vector<Frame>& frames);

// Whether a pixel is neither hidden nor opaque.
bool HasHalfTransparency(const Pixels& pixels);
// Mixes half-transparent pixels onto a colour; they are opaque then.
void MixOnto(RgbColor color, Pixels* pixels);
// Pixels below half of the full alpha are hidden, the others are opaque. Returns whether a pixel was neither.
bool ApplyThreshold(Pixels* pixels);

// Whether a frame is transparent.
bool HasAlpha(const Animation& animation);

}  // namespace kfx::commands
