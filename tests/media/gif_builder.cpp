// SPDX-License-Identifier: MIT
#include "tests/media/gif_builder.h"

#include <algorithm>
#include <random>

namespace kfx::test {
namespace {

const std::string kLetters = "KRGBYMCW";
constexpr int kTransparentIndex = 7;
constexpr int kCodeSize = 3;  // eight colours

RgbColor ColorOf(char letter) { return TextPalette()[kLetters.find(letter)]; }

std::vector<std::string> RowsOf(const std::string& picture) {
    std::vector<std::string> rows(1);
    for (const char letter : picture)
        if (letter == '/')
            rows.emplace_back();
        else
            rows.back() += letter;
    return rows;
}

void PutU16(Bytes* file, int value) {
    file->push_back(static_cast<uint8_t>(value & 255));
    file->push_back(static_cast<uint8_t>(value >> 8));
}

void PutText(Bytes* file, const std::string& text) { file->insert(file->end(), text.begin(), text.end()); }

void PutPalette(Bytes* file, const std::string& letters) {
    for (size_t i = 0; i < 8; ++i) {
        const RgbColor color = i < letters.size() ? ColorOf(letters[i]) : RgbColor();
        file->insert(file->end(), {color.red, color.green, color.blue});
    }
}

// Codes of four bits, least significant first; a clear code before every few pixels keeps them at that width.
void PutPixels(Bytes* file, const Bytes& indices) {
    constexpr int kClear = 1 << kCodeSize;
    std::vector<int> codes;
    for (size_t i = 0; i < indices.size(); ++i) {
        if (i % 4 == 0) codes.push_back(kClear);
        codes.push_back(indices[i]);
    }
    codes.push_back(kClear + 1);
    if (codes.size() % 2 != 0) codes.push_back(0);
    Bytes packed;
    for (size_t i = 0; i < codes.size(); i += 2)
        packed.push_back(static_cast<uint8_t>(codes[i] | codes[i + 1] << 4));
    file->push_back(kCodeSize);
    for (size_t at = 0; at < packed.size(); at += 255) {
        const size_t length = std::min<size_t>(255, packed.size() - at);
        file->push_back(static_cast<uint8_t>(length));
        file->insert(file->end(), packed.begin() + static_cast<ptrdiff_t>(at),
                     packed.begin() + static_cast<ptrdiff_t>(at + length));
    }
    file->push_back(0);
}

void PutControl(Bytes* file, const TestImage& image) {
    const bool transparent = image.picture.find('.') != std::string::npos;
    file->insert(file->end(),
                 {0x21, 0xF9, 4, static_cast<uint8_t>(image.disposal << 2 | (transparent ? 1 : 0))});
    PutU16(file, image.delay);
    file->insert(file->end(), {kTransparentIndex, 0});
}

void PutImage(Bytes* file, const TestImage& image) {
    const std::vector<std::string> rows = RowsOf(image.picture);
    if (image.hasControl) PutControl(file, image);
    file->push_back(0x2C);
    PutU16(file, image.left);
    PutU16(file, image.top);
    PutU16(file, image.width >= 0 ? image.width : static_cast<int>(rows[0].size()));
    PutU16(file, image.height >= 0 ? image.height : static_cast<int>(rows.size()));
    const bool local = !image.localPalette.empty();
    file->push_back(
        static_cast<uint8_t>((local ? 0x80 | (kCodeSize - 1) : 0) | (image.interlaced ? 0x40 : 0)));
    if (local) PutPalette(file, image.localPalette);
    if (!image.hasData) {
        file->insert(file->end(), {kCodeSize, 0});
        return;
    }

    std::vector<size_t> order;
    for (size_t y = 0; y < rows.size(); ++y) order.push_back(y);
    if (image.interlaced) {
        // Every eighth row, the rows halfway between, then every fourth and every second row that is left.
        const auto pass = [](size_t y) { return y % 8 == 0 ? 0 : y % 8 == 4 ? 1 : y % 4 == 2 ? 2 : 3; };
        std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return pass(a) < pass(b); });
    }
    const std::string& letters = local ? image.localPalette : kLetters;
    Bytes indices;
    for (const size_t y : order)
        for (const char letter : rows[y])
            indices.push_back(letter == '.' ? kTransparentIndex : static_cast<uint8_t>(letters.find(letter)));
    PutPixels(file, indices);
}

}  // namespace

std::vector<RgbColor> TextPalette() {
    return {{0, 0, 0},     {255, 0, 0},   {0, 255, 0},   {0, 0, 255},
            {255, 255, 0}, {255, 0, 255}, {0, 255, 255}, {255, 255, 255}};
}

TestImage Part(const std::string& picture, int left, int top, int disposal) {
    TestImage image;
    image.picture = picture;
    image.left = left;
    image.top = top;
    image.disposal = disposal;
    return image;
}

TestGif Gif(int width, int height, const std::vector<TestImage>& images) {
    TestGif gif;
    gif.width = width;
    gif.height = height;
    gif.images = images;
    return gif;
}

Bytes BuildGif(const TestGif& gif) {
    Bytes file;
    PutText(&file, "GIF89a");
    PutU16(&file, gif.width);
    PutU16(&file, gif.height);
    const int flags = gif.hasGlobalPalette ? 0x80 | (kCodeSize - 1) : 0;
    file.insert(file.end(), {static_cast<uint8_t>(flags), static_cast<uint8_t>(gif.backgroundIndex), 0});
    if (gif.hasGlobalPalette) PutPalette(&file, kLetters);
    if (gif.loopCount >= 0) {
        file.insert(file.end(), {0x21, 0xFF, 11});
        PutText(&file, "NETSCAPE2.0");
        file.insert(file.end(), {3, 1});
        PutU16(&file, gif.loopCount);
        file.push_back(0);
    }
    for (const std::string& comment : gif.comments) {
        file.insert(file.end(), {0x21, 0xFE, static_cast<uint8_t>(comment.size())});
        PutText(&file, comment);
        file.push_back(0);
    }
    for (const TestImage& image : gif.images) PutImage(&file, image);
    if (gif.hasTrailer) file.push_back(0x3B);
    return file;
}

std::string ShowFrame(const Animation& animation, size_t frame) {
    const std::vector<RgbColor> palette = TextPalette();
    const Bytes& pixels = animation.frames.at(frame).pixels;
    std::string text;
    for (size_t i = 0; i < pixels.size(); i += 4) {
        if (i > 0 && i / 4 % static_cast<size_t>(animation.width) == 0) text += '/';
        const RgbColor color = {pixels[i], pixels[i + 1], pixels[i + 2]};
        const auto found = std::find(palette.begin(), palette.end(), color);
        const bool opaque = pixels[i + 3] == 255;
        if (pixels[i + 3] == 0) {
            text += '.';
        } else {
            text += opaque && found != palette.end() ? kLetters[static_cast<size_t>(found - palette.begin())]
                                                     : '?';
        }
    }
    return text;
}

Animation RandomAnimation(int width, int height, int frames, unsigned seed, bool transparent) {
    std::mt19937 random(seed);
    Animation animation;
    animation.width = width;
    animation.height = height;
    animation.loopCount = kLoopForever;
    for (int i = 0; i < frames; ++i) {
        Frame frame;
        frame.delay = 3 + i;
        frame.transparent = transparent;
        for (int pixel = 0; pixel < width * height; ++pixel) {
            const auto bits = random();
            if (transparent && bits >> 24 < 85) {
                frame.pixels.insert(frame.pixels.end(), {0, 0, 0, 0});
                continue;
            }
            frame.pixels.insert(frame.pixels.end(),
                                {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                                 static_cast<uint8_t>(bits >> 16), 255});
        }
        animation.frames.push_back(frame);
    }
    return animation;
}

}  // namespace kfx::test
