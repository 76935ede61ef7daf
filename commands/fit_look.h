// SPDX-License-Identifier: MIT
// How near an animation comes to another one for the eye.
//
// The eye takes neighbouring pixels together, so pictures are compared by weighted means over 7 x 7 pixels
// (binomial weights, a standard deviation of 1.2 pixels), as S-CIELAB does it: Zhang and Wandell, "A spatial
// extension of CIELAB for digital color image reproduction", SID 1996. A dither pattern thus counts as the
// colour that it mixes. In luma (Y) and colour differences (Cb, Cr, of BT.601), with D for the difference of
// two means, the error of a place is
//
//     D(Y)^2 + (D(Cb)^2 + D(Cr)^2) / 2 + lost^2 + gained^2 / 8
//
// `lost` and `gained` say by how much the standard deviation of Y under the same weights is smaller or larger
// than it was: detail that has been smoothed away, and grain that has come. Wang, Bovik, Sheikh and
// Simoncelli compare contrasts so ("Image quality assessment: from error visibility to structural
// similarity", IEEE TIP 13, 2004), but in both directions alike.
//
// What differs over a wide area is seen more clearly than what differs in detail, and its colour as clearly
// as its brightness. The means over blocks of 16 x 16 pixels have the error D(Y)^2 + D(Cb)^2 + D(Cr)^2, with
// three times the weight of the small neighbourhoods. The look is 10 log10(255^2 / mean error) in decibels,
// over all places and over the time that each picture is shown: like PSNR, 20 log10(255 / n) for pictures
// that are evenly brighter by n.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/animation.h"

namespace kfx::commands {

constexpr double kExactLook = 100;  // decibels, for equal pictures and the most for others

// The mean error of a picture (RGBA, width * height pixels) against the one that it should be. Where either
// is transparent both are laid over black and over white, and the larger error counts. Negative: memory ran
// out.
double PictureError(const std::vector<uint8_t>& wanted, const std::vector<uint8_t>& shown, int width,
                    int height);

// In decibels, 0 to kExactLook.
double LookOf(double meanError);

// The look of an animation against the one that it should be. It may be smaller, and is then scaled up by the
// plug-in's scaler; and it may have fewer frames: `shownFrames` has, for each wanted frame, the number of the
// frame that is shown in its time. Negative: memory ran out.
double CompareLooks(const Animation& wanted, const Animation& shown, const std::vector<size_t>& shownFrames);

// Which frame of `shown` is on the screen while each wanted one should be. Each frame stays for the time of
// the wanted frames that it stands for, as writers join equal frames.
std::vector<size_t> MatchFrames(const Animation& wanted, const Animation& shown);

}  // namespace kfx::commands
