// SPDX-License-Identifier: MIT
#include "commands/resize_frame.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/floating_point_state.h"
#include "kernels/scaler.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr int32_t kBitsPerPixel = 32;

// How the colours and alpha of a picture are multiplied. The filter's negative lobes can bring an alpha, and
// the colours with it, above 255, where they are cut; a second picture of two thirds keeps their true ratio.
enum class Values { AsTheyAre, Premultiplied, TwoThirds };
constexpr int kTwoThirdsOfOpaque = 170;

void Premultiply(uint8_t* row, size_t width, Values values) {
    const int opaque = values == Values::TwoThirds ? kTwoThirdsOfOpaque : 255;
    for (uint8_t* pixel = row; pixel != row + 4 * width; pixel += 4) {
        const int alpha = pixel[3] * opaque;
        for (int c = 0; c < 3; ++c) pixel[c] = static_cast<uint8_t>((pixel[c] * alpha + 32512) / 65025);
        pixel[3] = static_cast<uint8_t>((alpha + 127) / 255);
    }
}

// A picture for the scaler, which treats all four bytes of a pixel alike, so that their order does not
// matter. Null: memory ran out.
ImageHandle MakeImage(const uint8_t* rgba, int width, int height, Values values) {
    NewImage image(CreateDib(width, height, nullptr, kBitsPerPixel));
    if (!image) return nullptr;
    const auto columns = static_cast<size_t>(width);
    for (int y = 0; y < height; ++y, rgba += 4 * columns) {
        uint8_t* row = PictureRow(image.image, y);
        std::memcpy(row, rgba, 4 * columns);
        if (values != Values::AsTheyAre) Premultiply(row, columns, values);
    }
    return image.Release();
}

uint8_t Divided(int color, int alpha) {
    return static_cast<uint8_t>(std::min(255, (color * 255 + alpha / 2) / alpha));
}

// A pixel of the result from its premultiplied values and from two thirds of them, which say its colour
// unless the pixel lies in the midst of opaque ones.
void TakePixel(const uint8_t* whole, const uint8_t* twoThirds, uint8_t* pixel) {
    const bool isOpaque = whole[3] == 255 && twoThirds[3] == kTwoThirdsOfOpaque;
    const uint8_t* from = isOpaque ? whole : twoThirds;
    for (int c = 0; c < 3; ++c) pixel[c] = from[3] == 0 ? 0 : Divided(from[c], from[3]);
    pixel[3] = whole[3];
}

// The scaled pictures back in the frame; `twoThirds` is null for an opaque one.
void TakePixels(const WorkingImage* whole, const WorkingImage* twoThirds, std::vector<uint8_t>* pixels) {
    const auto columns = static_cast<size_t>(whole->width);
    pixels->resize(4 * columns * static_cast<size_t>(whole->height));
    uint8_t* out = pixels->data();
    for (int y = 0; y < whole->height; ++y, out += 4 * columns) {
        const uint8_t* row = PictureRow(whole, y);
        if (!twoThirds) {
            std::memcpy(out, row, 4 * columns);
            continue;
        }
        const uint8_t* reducedRow = PictureRow(twoThirds, y);
        for (size_t x = 0; x < columns; ++x) TakePixel(row + 4 * x, reducedRow + 4 * x, out + 4 * x);
    }
}

}  // namespace

bool ResizeFrame(int width, int height, int newWidth, int newHeight, Frame* frame) {
    const OwnFloatingPoint core;
    const bool transparent = frame->transparent;
    MemoryOwner source(MakeImage(frame->pixels.data(), width, height,
                                 transparent ? Values::Premultiplied : Values::AsTheyAre));
    MemoryOwner reduced(transparent ? MakeImage(frame->pixels.data(), width, height, Values::TwoThirds)
                                    : nullptr);
    if (!source.memory || (transparent && !reduced.memory)) return false;
    // Its memory is for the new picture.
    std::vector<uint8_t>().swap(frame->pixels);
    std::vector<uint8_t>().swap(frame->indices);
    frame->indexed = false;
    const MemoryOwner result(Resample(source.memory, newWidth, newHeight, 1.0));
    FreeMemory(source.Release());
    const MemoryOwner reducedResult(transparent ? Resample(reduced.memory, newWidth, newHeight, 1.0)
                                                : nullptr);
    FreeMemory(reduced.Release());
    const ImageLock whole(result.memory), twoThirds(reducedResult.memory);
    if (!whole || (transparent && !twoThirds)) return false;
    TakePixels(whole.image, twoThirds.image, &frame->pixels);
    NoteTransparency(frame);
    frame->left = 0;
    frame->top = 0;
    return true;
}

}  // namespace kfx::commands
