// SPDX-License-Identifier: MIT
#include "commands/fingerprint.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace kfx::commands {
namespace {

// What is hashed must not depend on the order of bytes in a number.
void AddNumber(XXH3_state_t* state, int64_t number) {
    uint8_t bytes[8];
    for (int i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(static_cast<uint64_t>(number) >> 8 * i);
    XXH3_128bits_update(state, bytes, sizeof bytes);
}

XXH128_canonical_t HashOf(const XXH3_state_t& state) {
    XXH128_canonical_t hash;
    XXH128_canonicalFromHash(&hash, XXH3_128bits_digest(&state));
    return hash;
}

// The pixels, the fully transparent ones without a colour.
XXH128_canonical_t HashPicture(const Frame& frame) {
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    const std::vector<uint8_t>& pixels = frame.pixels;
    if (!frame.transparent) {
        XXH3_128bits_update(&state, pixels.data(), pixels.size());
        return HashOf(state);
    }
    uint8_t part[4096];
    for (size_t start = 0; start < pixels.size(); start += sizeof part) {
        const size_t size = std::min(sizeof part, pixels.size() - start);
        std::memcpy(part, pixels.data() + start, size);
        for (size_t i = 0; i < size; i += 4) {
            if (part[i + 3] == 0) std::memset(part + i, 0, 4);
        }
        XXH3_128bits_update(&state, part, size);
    }
    return HashOf(state);
}

std::string HexOf(const XXH128_canonical_t& hash) {
    std::string text;
    for (const uint8_t byte : hash.digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

// With its length, so that no two lists of blocks are the same bytes.
template <typename Bytes>
void AddBlock(XXH3_state_t* state, const Bytes& bytes) {
    AddNumber(state, static_cast<int64_t>(bytes.size()));
    XXH3_128bits_update(state, bytes.data(), bytes.size());
}

void AddColor(XXH3_state_t* state, RgbColor color) {
    AddNumber(state, color.red << 16 | color.green << 8 | color.blue);
}

bool IsSame(const XXH128_canonical_t& a, const XXH128_canonical_t& b) {
    return std::memcmp(a.digest, b.digest, sizeof a.digest) == 0;
}

}  // namespace

std::string FingerprintOf(const ShownAnimation& animation, const ShowFrame& show) {
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    AddNumber(&state, animation.width);
    AddNumber(&state, animation.height);
    XXH128_canonical_t picture = {};
    int64_t milliseconds = 0;
    size_t pictures = 0;
    for (size_t i = 0; i < animation.frames; ++i) {
        const ShownFrame shown = show(i);
        const XXH128_canonical_t next = HashPicture(*shown.frame);
        if (i > 0 && !IsSame(next, picture)) {
            XXH3_128bits_update(&state, picture.digest, sizeof picture.digest);
            AddNumber(&state, milliseconds);
            milliseconds = 0;
            ++pictures;
        }
        picture = next;
        milliseconds += shown.milliseconds;
    }
    // A still has no time, and nothing of it is repeated.
    const bool isStill = pictures == 0;
    XXH3_128bits_update(&state, picture.digest, sizeof picture.digest);
    AddNumber(&state, isStill ? 0 : milliseconds);
    AddNumber(&state, isStill ? kLoopNone : animation.loopCount);
    return HexOf(HashOf(state));
}

std::string FingerprintOf(const Animation& animation) {
    const auto show = [&](size_t i) -> ShownFrame {
        const Frame& frame = animation.frames[i];
        return {.frame = &frame, .milliseconds = MillisecondsOf(frame)};
    };
    return FingerprintOf({.width = animation.width,
                          .height = animation.height,
                          .loopCount = animation.loopCount,
                          .frames = animation.frames.size()},
                         show);
}

std::string ExactHashOf(const Animation& animation) {
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    for (const int number : {animation.width, animation.height, animation.loopCount,
                             int{animation.hasGlobalPalette}, int{animation.hasBackground}})
        AddNumber(&state, number);
    AddNumber(&state, static_cast<int64_t>(animation.globalPalette.size()));
    for (const RgbColor color : animation.globalPalette) AddColor(&state, color);
    AddColor(&state, animation.background);
    AddBlock(&state, animation.comment);
    AddBlock(&state, animation.metadata.colorProfile);
    AddBlock(&state, animation.metadata.exif);
    AddBlock(&state, animation.metadata.xmp);
    AddNumber(&state, static_cast<int64_t>(animation.frames.size()));
    for (const Frame& frame : animation.frames) {
        for (const int number :
             {int{frame.indexed}, int{frame.transparent}, frame.left, frame.top, frame.partWidth,
              frame.partHeight, frame.disposal, frame.delay, frame.milliseconds})
            AddNumber(&state, number);
        AddBlock(&state, frame.pixels);
        AddBlock(&state, frame.indices);
    }
    return HexOf(HashOf(state));
}

std::string HashOfBytes(const uint8_t* data, size_t size) {
    XXH128_canonical_t hash;
    XXH128_canonicalFromHash(&hash, XXH3_128bits(data, size));
    return HexOf(hash);
}

std::string HashOfText(const std::string& text) {
    return HashOfBytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

}  // namespace kfx::commands
