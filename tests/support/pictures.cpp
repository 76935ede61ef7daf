// SPDX-License-Identifier: MIT
#include "tests/support/pictures.h"

#include <cmath>
#include <cstring>
#include <random>
#include <utility>

namespace kfx::test {

Picture& Picture::operator=(Picture&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
}

Picture RandomPicture(int32_t width, int32_t height, uint32_t seed, int32_t bitCount) {
    std::mt19937 random(seed);
    uint8_t palette[kPaletteBytes];
    for (uint8_t& byte : palette) byte = static_cast<uint8_t>(random());
    Picture picture(CreateDib(width, height, palette, bitCount == 32 ? 0 : bitCount));
    const ImageLock lock(picture.handle);
    for (int32_t r = 0; r < height; ++r) {
        uint8_t* row = StoredRow(lock.image, r);
        const size_t used = (static_cast<size_t>(width) * static_cast<size_t>(bitCount) + 7) / 8;
        for (size_t i = 0; i < used; ++i) row[i] = static_cast<uint8_t>(random());
        if (bitCount == 24) std::memset(row + used, kPaddingMarker, StrideOf(lock.image) - used);
    }
    return picture;
}

Picture ShadedPicture(int32_t width, int32_t height, uint32_t seed) {
    std::mt19937 random(seed);
    const double phase = static_cast<double>(random() % 628) / 100;
    Picture picture(CreateDib(width, height, nullptr, 24));
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const auto red = static_cast<uint32_t>(127.5 + 127.5 * std::sin(x * 0.11 + phase));
            const auto green = static_cast<uint32_t>(127.5 + 127.5 * std::sin(y * 0.07 + x * 0.02));
            const auto blue = static_cast<uint32_t>(255 * x / width);
            const bool bar = x / 9 % 5 == 0 && y / 7 % 3 == 0;
            SetDibPixel(lock.image, x, y, bar ? Rgb(255 - red, 20, green) : Rgb(red, green, blue));
        }
    }
    return picture;
}

Picture FlatPicture(int32_t width, int32_t height, uint32_t color) {
    Picture picture(CreateDib(width, height, nullptr, 24));
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) SetDibPixel(lock.image, x, y, color);
    return picture;
}

Picture CoordinatePicture(int32_t width, int32_t height, int32_t scale) {
    Picture picture(CreateDib(width, height, nullptr, 24));
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            SetDibPixel(
                lock.image, x, y,
                Rgb(static_cast<uint32_t>(scale * x), static_cast<uint32_t>(scale * y), kCoordinateBlue));
    return picture;
}

uint32_t PixelOf(ImageHandle image, int32_t x, int32_t y) {
    const ImageLock lock(image);
    return lock.image ? GetDibPixel(lock.image, x, y) : kNoPixel;
}

std::vector<uint8_t> BytesOf(ImageHandle image) {
    const ImageLock lock(image);
    if (!lock.image) return {};
    const auto* bytes = reinterpret_cast<const uint8_t*>(lock.image);
    const size_t rows = StrideOf(lock.image) * static_cast<size_t>(lock.image->height);
    return std::vector<uint8_t>(bytes, bytes + sizeof(WorkingImage) + ColorTableBytes(lock.image) + rows);
}

::testing::AssertionResult SamePicture(ImageHandle expected, ImageHandle actual) {
    if (!expected && !actual) return ::testing::AssertionSuccess();
    if (!expected) return ::testing::AssertionFailure() << "a picture came back where none was expected";
    if (!actual) return ::testing::AssertionFailure() << "no picture came back";
    const ImageLock a(expected);
    const ImageLock b(actual);
    if (std::memcmp(a.image, b.image, sizeof(WorkingImage)) != 0)
        return ::testing::AssertionFailure()
               << "headers differ: " << a.image->width << "x" << a.image->height << "x" << a.image->bitCount
               << " and " << b.image->width << "x" << b.image->height << "x" << b.image->bitCount;
    if (std::memcmp(ColorTableOf(a.image), ColorTableOf(b.image), ColorTableBytes(a.image)) != 0)
        return ::testing::AssertionFailure() << "colour tables differ";
    int64_t differing = 0;
    ::testing::AssertionResult first = ::testing::AssertionFailure();
    for (int32_t y = 0; y < a.image->height; ++y) {
        for (int32_t x = 0; x < a.image->width; ++x) {
            const uint32_t left = GetDibPixel(a.image, x, y);
            const uint32_t right = GetDibPixel(b.image, x, y);
            if (left != right && differing++ == 0)
                first << "first difference at (" << x << ", " << y << "): expected 0x" << std::hex << left
                      << ", got 0x" << right << std::dec;
        }
    }
    if (differing == 0) return ::testing::AssertionSuccess();
    return first << "; " << differing << " pixels differ";
}

const std::vector<Size>& TrickySizes() {
    static const std::vector<Size> sizes = {{1, 1},  {2, 1},  {1, 2},   {1, 9},   {3, 3},
                                            {4, 5},  {5, 4},  {17, 1},  {1, 64},  {17, 23},
                                            {64, 5}, {5, 64}, {64, 48}, {199, 31}};
    return sizes;
}

}  // namespace kfx::test
