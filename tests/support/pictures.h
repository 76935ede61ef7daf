// SPDX-License-Identifier: MIT
// Pictures for tests: made from a seed, compared byte for byte.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "framework/working_image.h"

namespace kfx::test {

// Frees its image at the end of a test.
struct Picture {
    explicit Picture(ImageHandle image = nullptr) : handle(image) {}
    Picture(Picture&& other) noexcept : handle(other.handle) { other.handle = nullptr; }
    Picture& operator=(Picture&& other) noexcept;
    ~Picture() { FreeMemory(handle); }

    ImageHandle handle;
};

constexpr uint8_t kPaddingMarker = 0xA5;

// Every pixel random; the padding bytes of 24-bit rows carry kPaddingMarker, so that reading them shows.
Picture RandomPicture(int32_t width, int32_t height, uint32_t seed, int32_t bitCount = 24);

// Smooth shading with a few hard edges: what photographs make kernels do.
Picture ShadedPicture(int32_t width, int32_t height, uint32_t seed);

Picture FlatPicture(int32_t width, int32_t height, uint32_t color);

// Says where a pixel comes from: red is `scale` times the column, green `scale` times the row, blue
// kCoordinateBlue.
Picture CoordinatePicture(int32_t width, int32_t height, int32_t scale = 1);
constexpr uint32_t kCoordinateBlue = 7;

// The pixel at picture coordinates, row 0 at the top.
uint32_t PixelOf(ImageHandle image, int32_t x, int32_t y);

// The whole block's bytes: header, colour table, rows.
std::vector<uint8_t> BytesOf(ImageHandle image);

// Equal headers, colour tables and pixels; otherwise names the first differing pixel with both values. Two
// null handles are equal.
::testing::AssertionResult SamePicture(ImageHandle expected, ImageHandle actual);

// Sizes that find edge faults: tiny, odd, tall, flat.
struct Size {
    int32_t width;
    int32_t height;
};
const std::vector<Size>& TrickySizes();

}  // namespace kfx::test
