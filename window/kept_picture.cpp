// SPDX-License-Identifier: MIT
#include "window/kept_picture.h"

#include <cstring>

namespace kfx {
namespace {

// A bitmap of the system's, so that movable memory holds nothing from one drawing to the next.
struct KeptPicture {
    HBITMAP bitmap;
    BITMAPINFO info;
    const void* pixels;
    PreviewInput input;
    bool upToDate;
};

KeptPicture kept = {};

bool AreEqual(const PreviewInput& a, const PreviewInput& b) {
    return a.effect == b.effect && a.source == b.source && a.width == b.width && a.height == b.height &&
           a.kernel.background == b.kernel.background &&
           std::memcmp(a.kernel.values, b.kernel.values, sizeof a.kernel.values) == 0;
}

ShownPicture Kept() { return {.info = &kept.info, .pixels = kept.pixels}; }

}  // namespace

void KeepPicture(const PreviewInput& input, const WorkingImage* picture) {
    FreeKeptPicture();
    if (!input.effect || picture->bitCount != 24) return;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = picture->width;
    info.bmiHeader.biHeight = picture->height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* pixels = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (!bitmap) return;
    std::memcpy(pixels, PixelsOf(picture), StrideOf(picture) * static_cast<size_t>(picture->height));
    kept = {.bitmap = bitmap,
            .info = info,
            .pixels = pixels,
            .input = input,
            // Effects that take the frames in order depend on the clock: the next picture is another one.
            .upToDate = !input.effect->framesInOrder};
}

ShownPicture PictureFor(const PreviewInput& input) {
    return kept.upToDate && AreEqual(kept.input, input) ? Kept() : ShownPicture{};
}

ShownPicture LastPicture(int32_t width, int32_t height) {
    return kept.input.width == width && kept.input.height == height ? Kept() : ShownPicture{};
}

void AskForNewPicture() { kept.upToDate = false; }

void FreeKeptPicture() {
    if (kept.bitmap) DeleteObject(kept.bitmap);
    kept = {};
}

}  // namespace kfx
