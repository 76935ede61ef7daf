// SPDX-License-Identifier: MIT
#include "tests/media/gif_decoder.h"

#include <algorithm>
#include <cstddef>

namespace kfx::test {
namespace {

using Bytes = std::vector<uint8_t>;

// Bytes beyond the end are 0.
int ByteAt(const Bytes& file, size_t at) { return at < file.size() ? file[at] : 0; }

int WordAt(const Bytes& file, size_t at) { return ByteAt(file, at) | ByteAt(file, at + 1) << 8; }

size_t BehindBlocks(const Bytes& file, size_t at) {
    while (ByteAt(file, at) != 0) at += 1 + static_cast<size_t>(ByteAt(file, at));
    return at + 1;
}

struct Control {
    int disposal = 0;
    int delay = 0;
    int transparentIndex = -1;
};

struct Decoder {
    const Bytes* file;
    DecodedGif result;
    size_t at = 0;
    int width = 0;
    int height = 0;
    Bytes canvas;
    Bytes globalPalette;
    Control control;
};

Bytes TakePalette(Decoder* decoder, int flags) {
    if (!(flags & 0x80)) return {};
    Bytes palette;
    for (int i = 0; i < 3 * (2 << (flags & 7)); ++i)
        palette.push_back(static_cast<uint8_t>(ByteAt(*decoder->file, decoder->at++)));
    return palette;
}

void TakeExtension(Decoder* decoder) {
    const Bytes& file = *decoder->file;
    const size_t block = decoder->at + 2;
    const int label = ByteAt(file, decoder->at + 1);
    if (label == 0xF9) {
        const int flags = ByteAt(file, block + 1);
        decoder->control = {.disposal = flags >> 2 & 7,
                            .delay = WordAt(file, block + 2),
                            .transparentIndex = flags & 1 ? ByteAt(file, block + 4) : -1};
    }
    if (label == 0xFF && ByteAt(file, block + 12) == 3) decoder->result.loopCount = WordAt(file, block + 14);
    decoder->at = BehindBlocks(file, block);
}

// False: the image is damaged.
bool TakeImage(Decoder* decoder) {
    const Bytes& file = *decoder->file;
    const size_t at = decoder->at + 1;
    const int left = WordAt(file, at);
    const int top = WordAt(file, at + 2);
    const int width = WordAt(file, at + 4);
    const int height = WordAt(file, at + 6);
    decoder->at = at + 9;
    const Bytes local = TakePalette(decoder, ByteAt(file, at + 8));
    const Bytes& palette = local.empty() ? decoder->globalPalette : local;
    const Bytes indices = DecodeLzw(file, decoder->at, &decoder->at);
    if (indices.size() != static_cast<size_t>(width) * static_cast<size_t>(height)) return false;
    if (left + width > decoder->width || top + height > decoder->height) return false;
    const Bytes before = decoder->canvas;
    for (int i = 0; i < width * height; ++i) {
        const int index = indices[static_cast<size_t>(i)];
        if (index == decoder->control.transparentIndex) continue;
        if (3 * static_cast<size_t>(index) >= palette.size()) return false;
        uint8_t* pixel = decoder->canvas.data() + 4 * ((top + i / width) * decoder->width + left + i % width);
        for (int channel = 0; channel < 3; ++channel)
            pixel[channel] = palette[3 * static_cast<size_t>(index) + static_cast<size_t>(channel)];
        pixel[3] = 255;
    }
    decoder->result.frames.push_back({.pixels = decoder->canvas, .delay = decoder->control.delay});
    if (decoder->control.disposal == 3) decoder->canvas = before;
    if (decoder->control.disposal == 2) {
        for (int y = top; y < top + height; ++y) {
            const auto row = decoder->canvas.begin() + ptrdiff_t{4} * (y * decoder->width + left);
            std::fill(row, row + ptrdiff_t{4} * width, uint8_t{0});
        }
    }
    decoder->control = {};
    return true;
}

}  // namespace

Bytes DecodeLzw(const Bytes& file, size_t at, size_t* end) {
    const int minimum = ByteAt(file, at++);
    *end = BehindBlocks(file, at);
    Bytes data;
    for (; ByteAt(file, at) != 0; at += 1 + static_cast<size_t>(ByteAt(file, at)))
        for (int i = 1; i <= ByteAt(file, at); ++i)
            data.push_back(static_cast<uint8_t>(ByteAt(file, at + static_cast<size_t>(i))));
    const size_t clear = size_t{1} << minimum;
    std::vector<Bytes> strings;
    int width = minimum + 1;
    bool hasLast = false;
    size_t last = 0;
    Bytes indices;
    for (size_t bit = 0; bit + static_cast<size_t>(width) <= 8 * data.size();) {
        size_t code = 0;
        for (int i = 0; i < width; ++i, ++bit) code |= static_cast<size_t>(data[bit / 8] >> bit % 8 & 1) << i;
        if (code == clear) {
            strings.clear();
            for (size_t i = 0; i < clear + 2; ++i) strings.push_back({static_cast<uint8_t>(i)});
            width = minimum + 1;
            hasLast = false;
            continue;
        }
        if (code == clear + 1) return indices;
        if (strings.empty() || code > strings.size() || (code == strings.size() && !hasLast)) return {};
        if (hasLast && strings.size() < 4096) {
            Bytes made = strings[last];
            made.push_back(code == strings.size() ? made[0] : strings[code][0]);
            strings.push_back(made);
        }
        if (code >= strings.size()) return {};
        indices.insert(indices.end(), strings[code].begin(), strings[code].end());
        hasLast = true;
        last = code;
        if (strings.size() == size_t{1} << width && width < 12) ++width;
    }
    return {};  // without an end
}

DecodedGif DecodeGif(const Bytes& file) {
    Decoder decoder = {.file = &file, .result = {}, .canvas = {}, .globalPalette = {}, .control = {}};
    decoder.width = WordAt(file, 6);
    decoder.height = WordAt(file, 8);
    decoder.canvas.resize(4 * static_cast<size_t>(decoder.width) * static_cast<size_t>(decoder.height));
    decoder.at = 13;
    decoder.globalPalette = TakePalette(&decoder, ByteAt(file, 10));
    for (;;) {
        const int kind = ByteAt(file, decoder.at);
        if (kind == 0x3B) return decoder.result;
        if (kind == 0x21) {
            TakeExtension(&decoder);
        } else if (kind != 0x2C || !TakeImage(&decoder)) {
            decoder.result.fault = "damaged at byte " + std::to_string(decoder.at);
            return decoder.result;
        }
    }
}

}  // namespace kfx::test
