// SPDX-License-Identifier: MIT
// Writes the sample and the tests' scenes as GIF files in two forms, for bench/compare-gif-sizes: every frame
// whole ("plain"), and as the writer makes them. Prints name, plain bytes, bytes and seconds of processor
// time.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/lzw.h"
#include "media/sample_animation.h"
#include "tests/media/gif_scenes.h"

namespace kfx::bench {
namespace {

using Bytes = std::vector<uint8_t>;

void PutU16(Bytes* file, size_t value) {
    file->push_back(static_cast<uint8_t>(value));
    file->push_back(static_cast<uint8_t>(value >> 8));
}

void PutPalette(Bytes* file, const std::vector<RgbColor>& palette) {
    for (size_t i = 0; i < 256; ++i) {
        const RgbColor color = i < palette.size() ? palette[i] : RgbColor();
        file->insert(file->end(), {color.red, color.green, color.blue});
    }
}

// The frames as they are given: whole pictures with palettes of 256 entries.
Bytes PlainGif(const GifAnimation& gif) {
    Bytes file = {'G', 'I', 'F', '8', '9', 'a'};
    PutU16(&file, static_cast<size_t>(gif.width));
    PutU16(&file, static_cast<size_t>(gif.height));
    file.insert(file.end(), {static_cast<uint8_t>(gif.globalPalette.empty() ? 0x70 : 0xF7), 0, 0});
    if (!gif.globalPalette.empty()) PutPalette(&file, gif.globalPalette);
    file.insert(file.end(),
                {0x21, 0xFF, 11, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0', 3, 1, 0, 0, 0});
    uint8_t same[256];
    for (size_t i = 0; i < 256; ++i) same[i] = static_cast<uint8_t>(i);
    const LzwMemoryOwner memory = MakeLzwMemory();
    for (const GifFrame& frame : gif.frames) {
        const bool transparent = frame.transparentIndex >= 0;
        file.insert(file.end(),
                    {0x21, 0xF9, 4, static_cast<uint8_t>(frame.disposal << 2 | (transparent ? 1 : 0))});
        PutU16(&file, static_cast<size_t>(frame.delay));
        file.insert(file.end(),
                    {static_cast<uint8_t>(transparent ? frame.transparentIndex : 0), 0, 0x2C, 0, 0, 0, 0});
        PutU16(&file, static_cast<size_t>(gif.width));
        PutU16(&file, static_cast<size_t>(gif.height));
        file.push_back(frame.palette.empty() ? 0 : 0x87);
        if (!frame.palette.empty()) PutPalette(&file, frame.palette);
        LzwPixels pixels;
        pixels.symbols = frame.indices;
        pixels.open.resize(frame.indices.size());
        pixels.symbolCount = 256;
        WriteLzw(CompressLzw(memory.get(), pixels, 8, nullptr), 8, same, &file);
    }
    file.push_back(0x3B);
    return file;
}

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

bool Measure(const std::string& folder, const std::string& name, const GifAnimation& gif) {
    const Bytes plain = PlainGif(gif);
    std::string error;
    Bytes file;
    double least = 1e9;
    for (int round = 0; round < 3; ++round) {
        const double start = ProcessorSeconds();
        if (!EncodeGif(gif, &file, &error)) return false;
        least = std::min(least, ProcessorSeconds() - start);
    }
    if (!WriteWholeFile(folder + "/" + name + "-plain.gif", plain, &error) ||
        !WriteWholeFile(folder + "/" + name + ".gif", file, &error))
        return false;
    std::printf("%s %zu %zu %.3f\n", name.c_str(), plain.size(), file.size(), least);
    std::fflush(stdout);
    return true;
}

int Run(const std::string& folder, int width, int frames) {
    if (!Measure(folder, "sample", DrawSampleAnimation())) return 1;
    for (const test::GifScene& scene : test::kGifScenes)
        if (!Measure(folder, scene.name, scene.make(width, 3 * width / 4, frames))) return 1;
    return 0;
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    if (argc == 2) return kfx::bench::Run(argv[1], 320, 24);
    if (argc == 4) return kfx::bench::Run(argv[1], std::atoi(argv[2]), std::atoi(argv[3]));
    std::fputs("usage: gif_sizes FOLDER [WIDTH FRAMES], of the scenes\n", stderr);
    return 2;
}
