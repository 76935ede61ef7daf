// SPDX-License-Identifier: MIT
// Each string of the dictionary stands somewhere among the pixels that are decoded already: it is the string
// of the code before, which was written there, and the pixel behind it. So an entry is a place and a length,
// and decoding a code is copying.
#include "media/lzw_decoder.h"

#include <algorithm>
#include <cstring>

#include "media/little_endian.h"

namespace kfx {
namespace {

constexpr unsigned kMostCodeBits = 12;
constexpr unsigned kMostEntries = 1u << kMostCodeBits;
constexpr unsigned kLargestCodeSize = 8;
constexpr size_t kShortString = 16;

struct Entry {
    uint32_t start;
    uint32_t length;
};

// Takes codes out of blocks.
struct CodeReader {
    const uint8_t* at;
    const uint8_t* end;  // of the file
    size_t left;         // bytes of the current block
    uint64_t window;
    unsigned count;  // bits in the window
};

// False when the data have ended.
bool FillWindow(CodeReader* reader, unsigned bits) {
    while (reader->count < bits) {
        if (reader->left == 0) {
            if (reader->at == reader->end || *reader->at == 0) return false;
            reader->left = std::min(size_t{*reader->at}, static_cast<size_t>(reader->end - reader->at) - 1);
            ++reader->at;
            if (reader->left == 0) return false;
        }
        const size_t taken = reader->left >= 4 ? 4 : 1;
        const uint64_t value = taken == 4 ? LittleWord32(reader->at) : *reader->at;
        reader->window |= value << reader->count;
        reader->count += static_cast<unsigned>(8 * taken);
        reader->at += taken;
        reader->left -= taken;
    }
    return true;
}

// Copies a string to behind the decoded pixels. Only the newest one reaches beyond them, by its last pixel,
// which is its first one once more. `room` is what may be written from `target` on.
void CopyString(const uint8_t* source, size_t length, uint8_t* target, size_t room) {
    const auto distance = static_cast<size_t>(target - source);
    if (length <= kShortString && distance >= kShortString && room >= kShortString) {
        std::memcpy(target, source, kShortString);
        return;
    }
    std::memcpy(target, source, std::min(length, distance));
    if (length > distance) target[distance] = target[0];
}

}  // namespace

size_t MostLzwPixels(size_t bytes) {
    // A code has two bits at least; each string is at most one pixel longer than all before it, and there are
    // no more strings than entries.
    const size_t codes = 4 * bytes;
    return codes * std::min(codes, size_t{kMostEntries});
}

size_t DecodeLzw(const uint8_t* data, size_t size, uint8_t* pixels, size_t count) {
    if (size == 0 || data[0] > kLargestCodeSize) return 0;
    const unsigned clear = 1u << data[0];
    const unsigned firstEntry = clear + 2;
    const unsigned firstBits = data[0] + 1u;
    CodeReader reader = {.at = data + 1, .end = data + size, .left = 0, .window = 0, .count = 0};
    Entry entries[kMostEntries];
    unsigned entryCount = firstEntry;
    unsigned bits = firstBits;
    unsigned widensAt = 1u << bits;  // the number of entries from which codes have one bit more
    Entry last = {.start = 0, .length = 0};
    size_t done = 0;
    while (done < count && FillWindow(&reader, bits)) {
        const auto code = static_cast<unsigned>(reader.window & ((1u << bits) - 1));
        reader.window >>= bits;
        reader.count -= bits;
        if (code == clear) {
            entryCount = firstEntry;
            bits = firstBits;
            widensAt = 1u << bits;
            last.length = 0;
            continue;
        }
        if (code == clear + 1) break;
        if (last.length > 0 && entryCount < kMostEntries)
            entries[entryCount++] = {.start = last.start, .length = last.length + 1};
        last.start = static_cast<uint32_t>(done);
        last.length = 1;
        if (code < clear) {
            pixels[done++] = static_cast<uint8_t>(code);
        } else if (code < entryCount) {
            last.length = entries[code].length;
            const size_t length = std::min(size_t{last.length}, count - done);
            CopyString(pixels + entries[code].start, length, pixels + done, count - done);
            done += length;
        } else {
            break;
        }
        if (entryCount >= widensAt && bits < kMostCodeBits) {
            ++bits;
            widensAt *= 2;
        }
    }
    return done;
}

}  // namespace kfx
