// SPDX-License-Identifier: MIT
// How a camera was held, and the pixels as they are to be seen.
#pragma once

#include "media/animation.h"

namespace kfx {

// Where stored pixels belong. Rows and columns change places first; then the picture is mirrored.
struct Orientation {
    bool swapsSides = false;
    bool mirrorsX = false;
    bool mirrorsY = false;
};

// The number by which EXIF says how the picture is to be turned, 1 to 8 when it is one of the standard's; 0:
// it says nothing.
int OrientationNumber(const std::vector<uint8_t>& exif);

// What EXIF says of the orientation: the picture as it is stored where it says nothing. It then stands in
// EXIF and XMP that the picture is upright, so that nobody turns it again.
Orientation TakeOrientation(Metadata* metadata);

}  // namespace kfx
