// SPDX-License-Identifier: MIT
#include "media/animation.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "media/file_io.h"
#include "media/readers.h"

namespace kfx {
namespace {

struct Signature {
    size_t offset;
    const char* bytes;
};

struct Format {
    const char* name;
    Signature signatures[2];  // a file of the format has both; an empty one matches any file
    bool (*read)(const uint8_t* data, size_t size, PixelBudget* budget, Animation* animation,
                 std::string* error);
};

constexpr Signature kAnyFile = {.offset = 0, .bytes = ""};

constexpr Format kFormats[] = {
    {.name = "GIF", .signatures = {{.offset = 0, .bytes = "GIF8"}, kAnyFile}, .read = ReadGif},
    {.name = "WebP",
     .signatures = {{.offset = 0, .bytes = "RIFF"}, {.offset = 8, .bytes = "WEBP"}},
     .read = ReadWebp},
    {.name = "PNG", .signatures = {{.offset = 0, .bytes = "\x89PNG\r\n\x1a\n"}, kAnyFile}, .read = ReadPng},
    {.name = "JPEG", .signatures = {{.offset = 0, .bytes = "\xFF\xD8\xFF"}, kAnyFile}, .read = ReadJpeg},
    {.name = "BMP", .signatures = {{.offset = 0, .bytes = "BM"}, kAnyFile}, .read = ReadBmp},
    {.name = "Y4M", .signatures = {{.offset = 0, .bytes = "YUV4MPEG2 "}, kAnyFile}, .read = ReadY4m},
};

bool Matches(const Signature& signature, const uint8_t* data, size_t size) {
    const size_t length = std::strlen(signature.bytes);
    return size >= signature.offset + length &&
           std::memcmp(data + signature.offset, signature.bytes, length) == 0;
}

const Format* FormatOf(const uint8_t* data, size_t size) {
    for (const Format& format : kFormats)
        if (Matches(format.signatures[0], data, size) && Matches(format.signatures[1], data, size))
            return &format;
    return nullptr;
}

bool ReadFormat(const uint8_t* data, size_t size, const ReadLimits& limits, Animation* animation,
                std::string* error) {
    if (size == 0) {
        *error = "the file is empty";
        return false;
    }
    const Format* format = FormatOf(data, size);
    // So begin MP4, MOV and their kin; then Matroska and WebM.
    constexpr Signature kVideos[] = {{4, "ftyp"}, {0, "\x1A\x45\xDF\xA3"}};
    if (!format && std::any_of(std::begin(kVideos), std::end(kVideos),
                               [&](const Signature& signature) { return Matches(signature, data, size); })) {
        *error = "this kind of video is not read; make Y4M video of it, as with ffmpeg -i IN.mp4 OUT.y4m";
        return false;
    }
    if (!format) {
        *error = "the file is not a GIF, WebP, PNG, JPEG or BMP picture, nor Y4M video";
        return false;
    }
    PixelBudget budget = {.limits = limits, .spent = limits.pixelsBefore};
    return format->read(data, size, &budget, animation, error);
}

// Counts the pixels; `what` begins the clause of a refusal.
bool SpendSum(PixelBudget* budget, uint64_t pixels, const std::string& what, std::string* error) {
    constexpr uint64_t kMillion = 1000000;
    const ReadLimits& limits = budget->limits;
    if (pixels <= limits.maxPixels - budget->spent) {
        budget->spent += pixels;
        return true;
    }
    const uint64_t total = pixels > UINT64_MAX - budget->spent ? UINT64_MAX : budget->spent + pixels;
    const std::string whole = budget->spent == 0 ? what : "the pictures together have at least";
    *error =
        whole + " " + std::to_string(total) + " pixels; the limit is " + std::to_string(limits.maxPixels);
    const uint64_t millions = (total - 1) / kMillion + 1;
    if (limits.raisedBy && millions <= limits.raisedUpTo)
        *error += std::string(" (") + limits.raisedBy + " " + std::to_string(millions) + " raises it)";
    else if (limits.raisedBy)
        *error += std::string(" (") + limits.raisedBy + " raises it to " + std::to_string(limits.raisedUpTo) +
                  " million at most, which is still too few)";
    return false;
}

}  // namespace

bool SpendPixels(PixelBudget* budget, uint64_t width, uint64_t height, std::string* error) {
    return SpendFrames(budget, width, height, 1, error);
}

bool SpendFrames(PixelBudget* budget, uint64_t width, uint64_t height, uint64_t frames, std::string* error) {
    const auto maxSide = static_cast<uint64_t>(budget->limits.maxSide);
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width > maxSide || height > maxSide) {
        *error =
            "the picture of " + size + " pixels is too large: a side may have " + std::to_string(maxSide);
        return false;
    }
    const uint64_t area = width * height;
    const uint64_t sum = area != 0 && frames > UINT64_MAX / area ? UINT64_MAX : area * frames;
    const std::string one = "the picture of " + size + " has";
    const std::string many = "the " + std::to_string(frames) + " frames of " + size + " together have";
    return SpendSum(budget, sum, frames == 1 ? one : many, error);
}

bool SpendHiddenPixels(PixelBudget* budget, uint64_t pixels, std::string* error) {
    return SpendSum(budget, pixels, "the parts beyond the border together have", error);
}

int HundredthsOf(int milliseconds, int* carry) {
    const int due = milliseconds + *carry;
    int hundredths = std::max(0, (due + 5) / 10);
    if (milliseconds >= 15) hundredths = std::max(hundredths, 2);
    *carry = std::clamp(due - 10 * hundredths, -10, 10);
    return hundredths;
}

void NoteTransparency(Frame* frame) {
    // Whole pixels, so that the compiler takes several at a time. Alpha is the byte behind the others.
    uint32_t allPixels = UINT32_MAX;
    for (size_t i = 0; i < frame->pixels.size(); i += 4) {
        uint32_t pixel;
        std::memcpy(&pixel, frame->pixels.data() + i, sizeof pixel);
        allPixels &= pixel;
    }
    static_assert(std::endian::native == std::endian::little);
    frame->transparent = allPixels >> 24 != 255;
}

std::string ShortDelayNote(const Animation& animation) {
    constexpr int kShortestKept = 20;
    size_t count = 0;
    for (const Frame& frame : animation.frames) count += MillisecondsOf(frame) < kShortestKept;
    if (count == 0 || animation.frames.size() == 1) return "";
    return (count == 1 ? "1 frame is" : std::to_string(count) + " frames are") +
           " to be shown for less than 20 ms, which most viewers make a tenth of a second";
}

std::string DamageWarning(size_t frames) {
    if (frames == 1) return "the file is damaged or cut after its first frame; only that frame is used";
    return "the file is damaged or cut after " + std::to_string(frames) +
           " frames; "
           "only the frames up to there are used";
}

std::string FormatNameOf(const uint8_t* data, size_t size) {
    const Format* const format = FormatOf(data, size);
    return format ? format->name : "";
}

bool ReadAnimationFromMemory(const uint8_t* data, size_t size, Animation* animation, std::string* error,
                             const ReadLimits& limits) {
    *animation = Animation();
    bool success = false;
    try {
        success = ReadFormat(data, size, limits, animation, error);
    } catch (const std::bad_alloc&) {
        *error = "there is not enough memory for the picture";
    }
    if (!success) *animation = Animation();
    return success;
}

bool ReadAnimation(const std::string& path, Animation* animation, std::string* error,
                   const ReadLimits& limits) {
    *animation = Animation();
    std::vector<uint8_t> file;
    if (!ReadWholeFile(path, &file, error)) return false;
    if (ReadAnimationFromMemory(file.data(), file.size(), animation, error, limits)) return true;
    *error = path + ": " + *error + ".";
    return false;
}

}  // namespace kfx
