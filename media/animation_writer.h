// SPDX-License-Identifier: MIT
// Writing animations: GIF from palette indices, lossless WebP and PNG files from RGBA.
//
// Every Write function writes to a temporary name in the folder of `path` (UTF-8) and renames at the end.
// On failure it returns false with one sentence in *error, path first, and leaves neither a partial file
// nor a changed one under the final name.
//
// `jobs` may give threads of the program's own for the work on single frames; the bytes are the same with any
// number of them. Each thread beyond the first takes memory for the frame that it works on: of a GIF, 10
// bytes a pixel and 2 MiB, of PNG files at most 30 bytes a pixel, and the compressed data of two pictures, of
// a WebP file about 40 bytes a pixel.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "media/animation.h"
#include "media/job_runner.h"

namespace kfx {

// A frame to draw on the canvas. Indices cover the whole canvas, top row first: width * height bytes.
struct GifFrame {
    std::vector<uint8_t> indices;
    std::vector<RgbColor> palette;  // the frame's own, at most 256; empty: the global one
    int transparentIndex = -1;      // pixels with this index leave the canvas as it is; -1: none
    int delay = 0;                  // hundredths of a second, 0 to 65535
    int disposal = kDisposalUnspecified;
};

struct GifAnimation {
    int width = 0;   // 1 to 65535
    int height = 0;  // 1 to 65535
    int loopCount = kLoopNone;
    std::vector<RgbColor> globalPalette;  // may be empty when each frame has its own
    std::string comment;                  // empty: no comment block
    std::string recipe;                   // a comment block of its own, behind the other; empty: none
    bool hasBackground = false;
    RgbColor background;  // kept when the global palette has it or a free entry; viewers do not show it
    Metadata metadata;    // the format holds colour profile and XMP
    std::vector<GifFrame> frames;
};

constexpr int kMaxLossy = 200;

struct GifOptions {
    // 0: every pixel is shown exactly. Up to kMaxLossy: where the file becomes smaller, a pixel may be shown
    // in another colour of the palette, whose distance (the square root of the sum of the squared differences
    // of red, green and blue) is at most a quarter of this number. Transparency stays.
    int lossy = 0;
    JobRunner jobs = {};  // for several frames
};

// Makes a small file that plays as the frames do: each frame shows the same picture for the same time. Parts,
// disposals, transparent pixels and palettes are chosen anew; only the first frame always has the animation's
// size.
//
// With GifOptions::lossy, a frame builds on what the one before shows at last, and the work stays on one
// thread.
bool WriteGif(const std::string& path, const GifAnimation& gif, std::string* error,
              const GifOptions& options = GifOptions());
bool EncodeGif(const GifAnimation& gif, std::vector<uint8_t>* file, std::string* error,
               const GifOptions& options = GifOptions());

enum class WebpKind {
    Lossless,
    NearLossless,  // lossless after small changes of the pixels
    Lossy,
};

struct WebpOptions {
    WebpKind kind = WebpKind::Lossless;
    int quality = 75;  // 0 to 100, for NearLossless and Lossy: 100 is the best one
    int effort = 6;    // 0 to 9: more takes longer and makes smaller files
    // For several frames, unless lossy: there, one frame is compressed after another.
    JobRunner jobs = {};
};

// Uses the size, loop count, background, metadata, recipe and each frame's pixels and time, to the
// millisecond. Sides are limited to 16383. A frame that equals its predecessor is stored as a longer time.
// Colours of fully transparent pixels are not kept.
bool WriteWebp(const std::string& path, const Animation& animation, std::string* error,
               const WebpOptions& options = WebpOptions());
bool EncodeWebp(const Animation& animation, std::vector<uint8_t>* file, std::string* error,
                const WebpOptions& options = WebpOptions());

struct PngOptions {
    int effort = 9;       // 0 to 9: more takes longer and makes smaller files
    JobRunner jobs = {};  // for several frames
};

// An animated PNG file: uses the size, the loop count, comment, recipe, background, metadata and each frame's
// pixels and time, to the millisecond. Every frame but the first is stored as the part that changes. Colours
// of fully transparent pixels are not kept.
bool WriteApng(const std::string& path, const Animation& animation, std::string* error,
               const PngOptions& options = PngOptions());
bool EncodeApng(const Animation& animation, std::vector<uint8_t>* file, std::string* error,
                const PngOptions& options = PngOptions());

// A single RGBA picture, top row first: 4 * width * height bytes.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;
};

bool WritePng(const std::string& path, const Picture& picture, std::string* error);
// Takes the smallest of the formats that hold every pixel exactly: palette, grey, RGB, alpha. The file gets
// the comment, the recipe, the background and the metadata of `notes`.
bool EncodePng(int width, int height, const uint8_t* rgba, std::vector<uint8_t>* file, std::string* error,
               const Animation& notes = Animation(), const PngOptions& options = PngOptions());

// The names that WritePngFrames uses: `path` itself for one frame, else "NAME-000.png", "NAME-001.png", ...
// beside it, with as many digits as the last number needs, but at least three. A file name with a number's
// place (number_pattern.h) has the numbers there, whatever the count.
std::vector<std::string> PngFramePaths(const std::string& path, size_t frameCount);

// Each file has the animation's comment, background and metadata, and the recipe of its own that `recipeOf`
// says (null: none; it is called on the calling thread). All frames or none: when one cannot be written,
// those before it are removed again.
using RecipeOfFrame = std::function<std::string(size_t frame)>;
bool WritePngFrames(const std::string& path, const Animation& animation, std::string* error,
                    const RecipeOfFrame& recipeOf = nullptr, const PngOptions& options = PngOptions());

}  // namespace kfx
