// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <memory>
#include <unordered_map>

#include <lodepng.h>

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

}  // namespace

bool ReadPng(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
             std::string* error) {
    DecoderState state;
    unsigned width = 0;
    unsigned height = 0;
    unsigned code = lodepng_inspect(&width, &height, &state.png, data, size);
    if (code == 0 && !SpendPixels(budget, width, height, error)) return false;
    unsigned char* decoded = nullptr;
    if (code == 0) {
        // A pixel has at most eight bytes and a row one filter byte; interlacing at most doubles the rows.
        // Data that unpack to more than that are not those of this picture.
        state.png.decoder.zlibsettings.max_output_size = size_t{8} * width * height + size_t{4} * height + 64;
        code = lodepng_decode(&decoded, &width, &height, &state.png, data, size);
    }
    const std::unique_ptr<unsigned char, FreeDeleter> pixels(decoded);
    if (code != 0) {
        *error = code == 83 ? "there is not enough memory for the picture"
                            : std::string("the PNG file is damaged (") + lodepng_error_text(code) + ")";
        return false;
    }
    animation->width = static_cast<int>(width);
    animation->height = static_cast<int>(height);
    Frame frame;
    frame.pixels.assign(decoded, decoded + size_t{4} * width * height);
    NoteTransparency(&frame);
    animation->frames.push_back(std::move(frame));
    TakePalette(state.png.info_png.color, animation);
    return true;
}

}  // namespace kfx
