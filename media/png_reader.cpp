// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <unordered_map>

#include <lodepng.h>

#include "media/apng.h"
#include "media/readers.h"

namespace kfx {
namespace {

struct DecoderState {
    LodePNGState png;
    DecoderState() { lodepng_state_init(&png); }
    ~DecoderState() { lodepng_state_cleanup(&png); }
    DecoderState(const DecoderState&) = delete;
    DecoderState& operator=(const DecoderState&) = delete;
};

struct FreeDeleter {
    void operator()(unsigned char* memory) const { std::free(memory); }
};

uint32_t PackColor(const uint8_t* rgb) { return static_cast<uint32_t>(rgb[0] << 16 | rgb[1] << 8 | rgb[2]); }

// The file's palette becomes the global one, and opaque pictures get their indices back from it.
void TakePalette(const LodePNGColorMode& color, Animation* animation) {
    if (color.colortype != LCT_PALETTE || color.palettesize == 0) return;
    animation->hasGlobalPalette = true;
    for (size_t i = 0; i < color.palettesize; ++i) {
        const unsigned char* entry = color.palette + 4 * i;
        animation->globalPalette.push_back({entry[0], entry[1], entry[2]});
    }
    Frame& frame = animation->frames[0];
    if (frame.transparent) return;
    std::unordered_map<uint32_t, uint8_t> indexOfColor;
    for (size_t i = 0; i < color.palettesize; ++i)
        indexOfColor.emplace(PackColor(color.palette + 4 * i), static_cast<uint8_t>(i));
    frame.indices.resize(frame.pixels.size() / 4);
    for (size_t i = 0; i < frame.indices.size(); ++i) {
        const auto found = indexOfColor.find(PackColor(frame.pixels.data() + 4 * i));
        // Indices beyond the palette are shown as black, which the palette may not have.
        if (found == indexOfColor.end()) {
            frame.indices.clear();
            return;
        }
        frame.indices[i] = found->second;
    }
    frame.indexed = true;
}

// Samples of 16 bits to the nearest ones of 8 bits; the library would cut them.
void RoundSamples(const unsigned char* decoded, std::vector<uint8_t>* rgba) {
    for (size_t i = 0; i < rgba->size(); ++i) {
        const unsigned sample = static_cast<unsigned>(decoded[2 * i] << 8 | decoded[2 * i + 1]);
        (*rgba)[i] = static_cast<uint8_t>((sample * 255 + 32767) / 65535);
    }
}

// The pixels of a picture whose header is in `png`. Returns the library's code, 0 for none.
unsigned DecodePixels(LodePNGState* png, unsigned width, unsigned height, const uint8_t* data, size_t size,
                      std::vector<uint8_t>* rgba) {
    // A pixel has at most eight bytes and a row one filter byte; interlacing at most doubles the rows. Data
    // that unpack to more than that are not those of this picture.
    png->decoder.zlibsettings.max_output_size = size_t{8} * width * height + size_t{4} * height + 64;
    const bool isDeep = png->info_png.color.bitdepth == 16;
    if (isDeep) png->info_raw.bitdepth = 16;
    unsigned char* decoded = nullptr;
    const unsigned code = lodepng_decode(&decoded, &width, &height, png, data, size);
    const std::unique_ptr<unsigned char, FreeDeleter> owner(decoded);
    if (code != 0) return code;
    rgba->resize(size_t{4} * width * height);
    if (isDeep)
        RoundSamples(decoded, rgba);
    else
        std::copy_n(decoded, rgba->size(), rgba->begin());
    return 0;
}

}  // namespace

bool DecodePngPixels(const uint8_t* data, size_t size, std::vector<uint8_t>* rgba) {
    DecoderState state;
    unsigned width = 0;
    unsigned height = 0;
    return lodepng_inspect(&width, &height, &state.png, data, size) == 0 &&
           DecodePixels(&state.png, width, height, data, size, rgba) == 0;
}

bool ReadPng(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    DecoderState state;
    unsigned width = 0;
    unsigned height = 0;
    unsigned code = lodepng_inspect(&width, &height, &state.png, data, size);
    if (code == 0 && !SpendPixels(budget, width, height, error)) return false;
    if (code == 0 && IsAnimatedPng(data, size)) {
        budget->spent -= uint64_t{width} * height;  // counted again with the other frames
        return ReadAnimatedPng(data, size, static_cast<int>(width), static_cast<int>(height), budget,
                               animation, error);
    }
    Frame frame;
    if (code == 0) code = DecodePixels(&state.png, width, height, data, size, &frame.pixels);
    if (code != 0) {
        *error = code == 83 ? "there is not enough memory for the picture"
                            : std::string("the PNG file is damaged (") + lodepng_error_text(code) + ")";
        return false;
    }
    animation->width = static_cast<int>(width);
    animation->height = static_cast<int>(height);
    NoteTransparency(&frame);
    animation->frames.push_back(std::move(frame));
    TakePalette(state.png.info_png.color, animation);
    return true;
}

}  // namespace kfx
