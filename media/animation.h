// SPDX-License-Identifier: MIT
// Animations in memory, and reading them from GIF, WebP, PNG, JPEG, BMP and Y4M files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kfx {

struct RgbColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};

inline bool operator==(RgbColor a, RgbColor b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

// How a viewer treats the canvas after a frame's time is over; the values are those of the GIF format.
enum Disposal {
    kDisposalUnspecified = 0,
    kDisposalKeep = 1,
    kDisposalBackground = 2,
    kDisposalPrevious = 3,
};

constexpr int kNoMilliseconds = -1;

// One moment of an animation, composited to the full canvas as a viewer shows it.
struct Frame {
    // Red, green, blue, alpha (straight, not premultiplied), top row first: 4 * width * height bytes.
    std::vector<uint8_t> pixels;
    // When `indexed`: width * height indices into the animation's global palette, else empty. Set exactly
    // when the composited frame is opaque and each of its pixels is a global palette entry.
    std::vector<uint8_t> indices;
    bool indexed = false;
    // At least one pixel has an alpha below 255.
    bool transparent = false;
    // From the file: the part of the canvas that the frame draws, what happens to the canvas after it, and
    // its time. Without a part's size it is the whole canvas.
    int left = 0;
    int top = 0;
    int partWidth = 0;
    int partHeight = 0;
    int disposal = kDisposalUnspecified;
    int delay = 0;  // hundredths of a second
    // The same time exactly, when the file says it in milliseconds; kNoMilliseconds otherwise.
    int milliseconds = kNoMilliseconds;
};

// The frame's time in milliseconds.
inline int MillisecondsOf(const Frame& frame) {
    return frame.milliseconds == kNoMilliseconds ? 10 * frame.delay : frame.milliseconds;
}

constexpr int kLoopForever = 0;
constexpr int kLoopNone = -1;

// What a file says about its pictures, as it stands there; empty where it says nothing.
struct Metadata {
    std::vector<uint8_t> colorProfile;  // ICC
    std::vector<uint8_t> exif;          // TIFF, without "Exif" before it
    std::vector<uint8_t> xmp;           // XML
};

struct Animation {
    int width = 0;
    int height = 0;
    // How often the animation is repeated after it was shown once: kLoopForever, kLoopNone or a count.
    int loopCount = kLoopNone;
    bool hasGlobalPalette = false;
    std::vector<RgbColor> globalPalette;  // 1 to 256 entries when there is one
    bool hasBackground = false;
    RgbColor background;
    std::string comment;  // the file's bytes; several comments are joined by a line feed
    std::string recipe;   // how the file was made; see media/recipe_note.h
    Metadata metadata;
    // EXIF's number for the way in which a picture is stored that was turned upright when it was read; 0: it
    // was not turned.
    int turnedFrom = 0;
    std::vector<Frame> frames;
    // Not empty when the file is damaged and only its complete frames were read: one clause for the user.
    std::string warning;
};

// A clause for the user when frames have times that viewers do not keep: most show a frame of less than 20 ms
// for a tenth of a second. Empty when there is none.
std::string ShortDelayNote(const Animation& animation);

// The largest animation that is read; checked against the headers of all frames before memory is allocated.
struct ReadLimits {
    int maxSide = 65535;                       // pixels, width and height
    uint64_t maxPixels = uint64_t{512} << 20;  // summed over all frames
    uint64_t pixelsBefore = 0;                 // of files read before this one, which count as well
    // The option that takes maxPixels in millions, for the message of a refusal; null: there is none.
    const char* raisedBy = nullptr;
    uint64_t raisedUpTo = UINT64_MAX;  // the most that the option takes
};

// Reads the file at `path` (UTF-8); the content, not the name, decides the format. Returns false with one
// sentence in *error, path first, when the file cannot be read, is none of the formats, is damaged before
// its first complete frame or goes beyond the limits; *animation is then empty.
bool ReadAnimation(const std::string& path, Animation* animation, std::string* error,
                   const ReadLimits& limits = ReadLimits());

// The same from a whole file in memory; the error is then a clause without path and full stop.
bool ReadAnimationFromMemory(const uint8_t* data, size_t size, Animation* animation, std::string* error,
                             const ReadLimits& limits = ReadLimits());

// The format of a whole file in memory, by its first bytes, as "GIF"; "PNG" for animated ones, too. Empty: it
// is none that is read.
std::string FormatNameOf(const uint8_t* data, size_t size);

}  // namespace kfx
