// SPDX-License-Identifier: MIT
// How much two pictures of one size differ, in numbers.
#pragma once

#include <cstdint>
#include <vector>

#include "media/animation.h"

namespace kfx::commands {

// What two pictures are compared with where they are transparent: each is laid over black and over white, and
// the worse of both figures counts. Opaque pictures are compared as they are.
struct PictureQuality {
    // Peak signal-to-noise ratio in decibels: 10 log10(255^2 / MSE), with the mean of the squared differences
    // of red, green and blue over all pixels. Infinite for equal pictures.
    double psnr = 0;
    // Structural similarity of the luma Y = 0.299 R + 0.587 G + 0.114 B, rounded, by Wang, Bovik, Sheikh and
    // Simoncelli, "Image quality assessment: from error visibility to structural similarity", IEEE TIP 13,
    // 2004: the mean over windows of 8 x 8 pixels with equal weights, K1 = 0.01, K2 = 0.03. The windows stand
    // 4 pixels apart, the last ones at the right and lower edge; in smaller pictures a window is the
    // picture's side. 1 for equal pictures.
    double ssim = 0;
};

PictureQuality ComparePictures(const Frame& a, const Frame& b, int width, int height);

}  // namespace kfx::commands
