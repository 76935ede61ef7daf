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

// What EXIF says of the orientation: the picture as it is stored where it says nothing. It then stands in
// EXIF and XMP that the picture is upright, so that nobody turns it again.
Orientation TakeOrientation(Metadata* metadata);

}  // namespace kfx
