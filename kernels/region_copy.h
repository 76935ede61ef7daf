// SPDX-License-Identifier: MIT
// Copies between pictures of different sizes, coordinates as the picture is seen: (0, 0) is the top left
// pixel.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Copies the pixels (x, y) with x < width and y < height that lie inside both locked images, as pixel values:
// if the depths differ, the caller makes sure that the values have a meaning there.
void CopyPixels(WorkingImage* destination, const WorkingImage* source, int32_t width, int32_t height);

// A new picture of the given size filled with the pixel value `fill`, the source standing in it at (left,
// top). What falls outside is cut off. Null: memory ran out or a side is below 1.
ImageHandle FrameImage(ImageHandle source, int32_t newWidth, int32_t newHeight, int32_t left, int32_t top,
                       uint32_t fill);

// Sets every pixel of the image to one value.
void FillImage(WorkingImage* image, uint32_t value);

}  // namespace kfx
