// SPDX-License-Identifier: MIT
// What the library for WebP allocates, freed at the end of a scope.
#pragma once

#include <webp/encode.h>

namespace kfx {

struct WebpPicture {
    WebPPicture picture;
    bool usable;
    WebpPicture() : usable(WebPPictureInit(&picture) != 0) {}
    ~WebpPicture() { WebPPictureFree(&picture); }
    WebpPicture(const WebpPicture&) = delete;
    WebpPicture& operator=(const WebpPicture&) = delete;
};

}  // namespace kfx
