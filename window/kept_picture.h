// SPDX-License-Identifier: MIT
// The picture that the preview rendered last. It is shown again while nothing that it was rendered from has
// changed, so that a window that was merely covered does not render anew.
#pragma once

#include <windows.h>

#include <cstdint>

#include "framework/effect_operations.h"

namespace kfx {

// Everything that a preview is rendered from.
struct PreviewInput {
    const Effect* effect;  // null: nothing can be said about the picture
    MemoryHandle source;
    int32_t width;  // of the area for the picture, pixels
    int32_t height;
    KernelInput kernel;  // without the cache
};

// A picture to draw: the kept one, or one that could not be kept. `pixels` null: there is none.
struct ShownPicture {
    const BITMAPINFO* info;
    const void* pixels;
};

// Keeps a copy of a 24-bit picture in the place of the one before. Where the system has no memory for it,
// nothing is kept.
void KeepPicture(const PreviewInput& input, const WorkingImage* picture);

// The kept picture if it was rendered from this input and nobody has asked for another since.
ShownPicture PictureFor(const PreviewInput& input);

// The kept picture if it fits an area of this size, out of date or not.
ShownPicture LastPicture(int32_t width, int32_t height);

// The picture has to be rendered anew when it is needed next.
void AskForNewPicture();

void FreeKeptPicture();

}  // namespace kfx
