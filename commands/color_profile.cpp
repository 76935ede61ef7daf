// SPDX-License-Identifier: MIT
#include "commands/color_profile.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace kfx::commands {
namespace {

constexpr size_t kHeaderSize = 128;
constexpr size_t kTagSize = 12;
constexpr size_t kMostTags = 1000;
constexpr size_t kLongestName = 200;  // bytes

// A part of the profile; numbers in it have their highest byte first.
struct Part {
    const uint8_t* data = nullptr;
    size_t size = 0;
};

// Without data when it goes beyond the whole.
Part PartOf(const Part& whole, size_t start, size_t size) {
    if (start > whole.size || size > whole.size - start) return {};
    return {whole.data + start, size};
}

size_t WordAt(const Part& part, size_t at) {
    if (at + 4 > part.size) return 0;
    const uint8_t* bytes = part.data + at;
    return size_t{bytes[0]} << 24 | size_t{bytes[1]} << 16 | size_t{bytes[2]} << 8 | bytes[3];
}

bool BeginsWith(const Part& part, const char* mark) {
    return part.size >= 4 && std::memcmp(part.data, mark, 4) == 0;
}

Part FindDescription(const Part& profile) {
    const size_t count = std::min(WordAt(profile, kHeaderSize), kMostTags);
    for (size_t i = 0; i < count; ++i) {
        const Part tag = PartOf(profile, kHeaderSize + 4 + i * kTagSize, kTagSize);
        if (BeginsWith(tag, "desc")) return PartOf(profile, WordAt(tag, 4), WordAt(tag, 8));
    }
    return {};
}

void AppendUtf8(uint32_t code, std::string* text) {
    if (code < 0x80) {
        *text += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr uint32_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
    *text += static_cast<char>(kFirst[more] | code >> 6 * more);
    for (int i = more - 1; i >= 0; --i) *text += static_cast<char>(0x80 | (code >> 6 * i & 0x3F));
}

std::string TextOfUtf16(const Part& part) {
    std::string text;
    const auto unitAt = [&](size_t i) { return static_cast<uint32_t>(part.data[i] << 8 | part.data[i + 1]); };
    for (size_t i = 0; i + 1 < part.size && text.size() < kLongestName; i += 2) {
        uint32_t code = unitAt(i);
        if (code >= 0xD800 && code < 0xE000) {
            // The two halves of a character beyond 16 bits; a lone half is damage.
            const uint32_t low = i + 3 < part.size ? unitAt(i + 2) : 0;
            if (code >= 0xDC00 || low < 0xDC00 || low >= 0xE000) continue;
            code = 0x10000 + ((code - 0xD800) << 10 | (low - 0xDC00));
            i += 2;
        }
        if (code >= 0x20 && (code < 0x7F || code >= 0xA0)) AppendUtf8(code, &text);
    }
    return text;
}

std::string TextOfAscii(const Part& part) {
    std::string text;
    for (size_t i = 0; i < std::min(part.size, kLongestName); ++i) {
        if (part.data[i] >= 0x20 && part.data[i] < 0x7F) text += static_cast<char>(part.data[i]);
    }
    return text;
}

}  // namespace

std::string ProfileName(const std::vector<uint8_t>& profile) {
    const Part description = FindDescription({profile.data(), profile.size()});
    if (BeginsWith(description, "desc")) return TextOfAscii(PartOf(description, 12, WordAt(description, 8)));
    if (!BeginsWith(description, "mluc") || WordAt(description, 8) == 0) return "";
    return TextOfUtf16(PartOf(description, WordAt(description, 24), WordAt(description, 20)));
}

}  // namespace kfx::commands
