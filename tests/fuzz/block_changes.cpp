// SPDX-License-Identifier: MIT
#include "tests/fuzz/block_changes.h"

#include <algorithm>
#include <cstring>

#include "host/animation_layout.h"
#include "tests/support/field_values.h"

namespace kfx::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kTagBytes = 4;
constexpr char kImageTag[] = "eMNA";
constexpr char kEndTag[] = "xMNA";

// Offsets in the block's header.
constexpr size_t kFlagsAt = 12;
constexpr size_t kColorCountAt = 36;

struct Changes {
    const Bytes& block;
    std::vector<BlockChange> list;

    void Replace(size_t offset, size_t removed, Bytes bytes, std::string what) {
        if (offset > block.size() || removed > block.size() - offset) return;
        list.push_back({offset, removed, std::move(bytes), std::move(what)});
    }

    // A number of `width` bytes takes each of the values.
    void Numbers(size_t offset, size_t width, const std::string& name, FieldValues values) {
        for (const uint64_t value : values) {
            Bytes bytes(width);
            for (size_t i = 0; i < width; ++i) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
            Replace(offset, width, bytes, name + " = " + std::to_string(value));
        }
    }

    void TagBytes(size_t offset, const std::string& name) {
        for (size_t i = 0; i < kTagBytes && offset + i < block.size(); ++i) {
            const auto other = static_cast<uint8_t>(block[offset + i] ^ 0x20);
            Replace(offset + i, 1, {other}, name + ": byte " + std::to_string(i) + " of the tag");
        }
    }

    uint64_t Number(size_t offset) const {
        return offset + 4 <= block.size() ? Word32(block.data() + offset) : 0;
    }
};

Bytes TagOf(const char* tag) { return {tag, tag + kTagBytes}; }

std::vector<size_t> FindTags(const Bytes& block, const char* tag) {
    std::vector<size_t> places;
    const Bytes wanted = TagOf(tag);
    auto at = block.begin();
    while ((at = std::search(at, block.end(), wanted.begin(), wanted.end())) != block.end())
        places.push_back(static_cast<size_t>(at++ - block.begin()));
    return places;
}

void ChangeHeader(Changes* changes) {
    const uint64_t size = changes->block.size(), count = changes->Number(16);
    changes->TagBytes(0, "header");
    changes->Numbers(4, 4, "header: size",
                     {0, 37, 38, 39, 40, 41, size - 1, size, size + 1, 1u << 31, UINT32_MAX});
    changes->Numbers(kFlagsAt, 1, "header: flags", {0, 1, 2, 4, 8, 16, 20, 32, 64, 128, 255});
    changes->Numbers(16, 4, "header: images", {0, count - 1, count + 1, 1 << 16, UINT32_MAX});
    changes->Numbers(20, 4, "header: background", {0, 0xFFFFFF, UINT32_MAX});
    for (const size_t side : {size_t{24}, size_t{28}}) {
        changes->Numbers(side, 4, "header: side", kPossibleBlockSides);
        changes->Numbers(side, 4, "header: side", kWrongBlockSides);
    }
}

void ChangePalette(Changes* changes) {
    const Bytes& block = changes->block;
    if (block.size() < kAnimationHeaderBytes) return;
    for (const bool flagged : {false, true}) {
        for (const uint64_t count : kPaletteCounts) {
            Bytes fields(block.begin() + kFlagsAt, block.begin() + kAnimationHeaderBytes);
            fields[0] =
                static_cast<uint8_t>((fields[0] & ~kFlagGlobalPalette) | (flagged ? kFlagGlobalPalette : 0));
            fields[kColorCountAt - kFlagsAt] = static_cast<uint8_t>(count);
            fields[kColorCountAt - kFlagsAt + 1] = static_cast<uint8_t>(count >> 8);
            changes->Replace(kFlagsAt, fields.size(), fields,
                             std::string("header: ") + (flagged ? "flagged" : "unflagged") + " palette of " +
                                 std::to_string(count));
        }
    }
    const size_t inside = kAnimationHeaderBytes + 3u * Word16(block.data() + kColorCountAt) / 2;
    if (inside < block.size())
        changes->Replace(inside, block.size() - inside, {}, "header: cut inside the palette");
}

void ChangeBitmap(Changes* changes, size_t at, const std::string& image) {
    changes->Numbers(at, 4, image + "bitmap header", kWrongHeaderSizes);
    for (const size_t side : {size_t{4}, size_t{8}}) {
        const uint64_t now = changes->Number(at + side);
        const std::string name = image + (side == 4 ? "width" : "height");
        changes->Numbers(at + side, 4, name, kWrongSides);
        changes->Numbers(at + side, 4, name, {1, now - 1, now + 1, 0 - now});
    }
    changes->Numbers(at + 12, 2, image + "planes", kPlanes);
    changes->Numbers(at + 14, 2, image + "depth", kDepths);
    changes->Numbers(at + 14, 2, image + "depth", kWrongDepths);
    changes->Numbers(at + 16, 4, image + "compression", kWrongCompressions);
    changes->Numbers(at + 20, 4, image + "image size", kImageSizes);
    changes->Numbers(at + 32, 4, image + "colours used", kColorsUsed);
}

void ChangeImage(Changes* changes, size_t at, const std::string& image) {
    const uint64_t rest = changes->block.size() - at;
    const uint64_t offset = changes->Number(at + 4), size = changes->Number(at + 16);
    changes->TagBytes(at, image);
    changes->Numbers(
        at + 4, 4, image + "offset",
        {0, 27, 28, 39, 40, 41, rest, rest + 1, 1u << 31, 0 - size, UINT32_MAX - 39, UINT32_MAX});
    changes->Numbers(at + 16, 4, image + "size",
                     {0, 1, 39, 40, size - 1, size + 1, rest - offset, rest - offset + 1, 0 - offset,
                      1 - offset, UINT32_MAX});
    for (size_t field = 24; field < kImageBlockBytes; field += 4)
        changes->Numbers(at + field, 4, image + "field", {0, 1u << 31, UINT32_MAX});
    if (offset < rest) ChangeBitmap(changes, at + offset, image);
    const size_t whole = std::min<uint64_t>(rest, offset + size);
    const auto begin = changes->block.begin() + static_cast<ptrdiff_t>(at);
    changes->Replace(at, 0, Bytes(begin, begin + static_cast<ptrdiff_t>(whole)), image + "twice");
    changes->Replace(at, whole, {}, image + "left out");
    changes->Replace(at, 0, TagOf(kEndTag), image + "behind the end");
}

}  // namespace

std::vector<BlockChange> BlockChanges(const Bytes& block) {
    Changes changes = {block, {}};
    ChangeHeader(&changes);
    ChangePalette(&changes);
    const std::vector<size_t> images = FindTags(block, kImageTag);
    for (size_t i = 0; i < images.size(); ++i)
        ChangeImage(&changes, images[i], "image " + std::to_string(i) + ": ");
    for (const size_t end : FindTags(block, kEndTag)) {
        changes.TagBytes(end, "end");
        changes.Replace(end, kTagBytes, {}, "end: missing");
        changes.Replace(end, 0, TagOf(kEndTag), "end: twice");
        changes.Replace(end, 0, TagOf(kImageTag), "end: an image without a bitmap before it");
    }
    changes.Replace(block.size(), 0, Bytes(4096), "block: much larger than what it holds");
    return std::move(changes.list);
}

Bytes ChangedBlock(const Bytes& block, const BlockChange& change) {
    const auto at = block.begin() + static_cast<ptrdiff_t>(change.offset);
    Bytes changed(block.begin(), at);
    changed.insert(changed.end(), change.bytes.begin(), change.bytes.end());
    changed.insert(changed.end(), at + static_cast<ptrdiff_t>(change.removed), block.end());
    return changed;
}

}  // namespace kfx::test
