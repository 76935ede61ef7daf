// SPDX-License-Identifier: MIT
#include "tests/support/hostile_blocks.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/support/animation_blocks.h"
#include "tests/support/field_values.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr uint32_t kHeader = 44;  // the fields and a palette of two colours
constexpr uint32_t kImage = 40;
constexpr uint32_t kMost = 0xFFFFFFFF;
constexpr uint32_t kHalf = 0x80000000;

// The base, with where its parts stand.
struct Base {
    std::vector<uint8_t> bytes;
    std::vector<size_t> images;  // each with its bitmap right behind it
    size_t end = 0;
};

Base MakeBase() {
    std::vector<BlockFrame> frames;
    for (const int32_t bitCount : {8, 24, 1})
        frames.push_back({BytesOf(RandomPicture(5, 3, 1, bitCount).handle), {1, 2, 3, 4}});
    BlockOptions options;
    options.globalPalette = {1, 2, 3, 4, 5, 6};
    Base base;
    base.bytes = MakeAnimationBlock(frames, options);
    // Without the room that is left for a palette: few bytes that nobody looks at.
    constexpr ptrdiff_t kRoom = 808;
    base.bytes.erase(base.bytes.begin() + kHeader, base.bytes.begin() + kRoom);
    std::memcpy(base.bytes.data() + 4, &kHeader, sizeof kHeader);
    size_t at = kHeader;
    for (const BlockFrame& frame : frames) {
        base.images.push_back(at);
        at += kImage + frame.bitmap.size();
    }
    base.end = at;
    return base;
}

uint32_t WordAt(const std::vector<uint8_t>& bytes, size_t at) {
    uint32_t word;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

struct Mutator {
    const Base base = MakeBase();
    std::vector<HostileBlock> blocks;

    void Add(const std::string& name, const std::vector<uint8_t>& bytes, Verdict verdict) {
        blocks.push_back({name, bytes, verdict});
    }
    void Put(const std::string& name, size_t at, size_t width, uint32_t value, Verdict verdict) {
        std::vector<uint8_t> bytes = base.bytes;
        std::memcpy(bytes.data() + at, &value, width);
        Add(name + " = " + std::to_string(value), bytes, verdict);
    }
    void PutAll(const std::string& name, size_t at, size_t width, FieldValues values, Verdict verdict) {
        for (const uint64_t value : values) Put(name, at, width, static_cast<uint32_t>(value), verdict);
    }
};

void MutateHeader(Mutator* mutator) {
    const auto size = static_cast<uint32_t>(mutator->base.bytes.size());
    for (size_t i = 0; i < 4; ++i) mutator->Put("tag byte", i, 1, 'x' + 1, Verdict::Refused);
    mutator->PutAll("header size", 4, 4,
                    {0, 1, 27, 37, 38, 39, 40, 41, 43, 45, size - 3, size, size + 1, kHalf - 1, kHalf, kMost,
                     kMost - 3, 0u - kHeader},
                    Verdict::Refused);
    for (uint32_t flags = 0; flags < 256; ++flags) mutator->Put("flags", 12, 1, flags, Verdict::Accepted);
    mutator->PutAll("image count", 16, 4, {0, 1, 2}, Verdict::Refused);
    mutator->PutAll("image count", 16, 4, {4, 65536, kHalf - 1, kHalf, kMost}, Verdict::Accepted);
    for (const size_t side : {size_t{24}, size_t{28}}) {
        mutator->PutAll("side", side, 4, kPossibleBlockSides, Verdict::Accepted);
        mutator->PutAll("side", side, 4, kWrongBlockSides, Verdict::Refused);
    }
    // The palette leaves the block before it reaches 768 bytes: the base is shorter.
    mutator->PutAll("palette count", 36, 2, {0, 1, 2, 3}, Verdict::Accepted);
}

void MutatePalettes(Mutator* mutator) {
    for (const bool flag : {false, true})
        for (const uint64_t count : kPaletteCounts) {
            const std::string name = "palette count " + std::to_string(count) + (flag ? "" : ", no flag");
            std::vector<uint8_t> bytes = MakeAnimationBlock({{BytesOf(FlatPicture(2, 2, 7).handle)}});
            bytes[12] = flag ? 4 : 0;
            bytes[36] = static_cast<uint8_t>(count);
            bytes[37] = static_cast<uint8_t>(count >> 8);
            mutator->Add(name, bytes, Verdict::Accepted);
            // Cut inside the palette: the chain begins before it ends.
            std::vector<uint8_t> cut = bytes;
            cut.erase(cut.begin() + 100, cut.begin() + 808);
            const uint32_t header = 100;
            std::memcpy(cut.data() + 4, &header, sizeof header);
            const bool fits = 38 + 3 * std::min<uint64_t>(count, 256) <= cut.size();
            mutator->Add(name + ", cut", cut, flag && !fits ? Verdict::Refused : Verdict::Accepted);
        }
}

void MutateImage(Mutator* mutator, size_t image) {
    const std::vector<uint8_t>& bytes = mutator->base.bytes;
    const auto rest = static_cast<uint32_t>(bytes.size() - image);
    const uint32_t exact = WordAt(bytes, image + 16);
    const std::string name = "image at " + std::to_string(image) + ": ";
    for (size_t i = 0; i < 4; ++i) mutator->Put(name + "tag byte", image + i, 1, 'x' + 1, Verdict::Refused);
    mutator->PutAll(name + "offset", image + 4, 4,
                    {0, 1, 27, 28, 39, 41, rest - 1, rest, rest + 1, kHalf - 1, kHalf, kMost, kMost - 39,
                     0u - static_cast<uint32_t>(image)},
                    Verdict::Refused);
    mutator->PutAll(name + "size", image + 16, 4,
                    {0, 1, 39, 40, exact - 1, exact + 1, rest, kHalf - 1, kHalf, kMost, 0u - kImage,
                     0u - kImage + 1, 0u - static_cast<uint32_t>(image) - kImage},
                    Verdict::Refused);
    // Both together add up to nothing, or to a step back: the chain would never end.
    for (const uint32_t offset : {0u, kImage, kHalf, kMost}) {
        std::vector<uint8_t> loop = bytes;
        const uint32_t size = 0u - offset;
        std::memcpy(loop.data() + image + 4, &offset, 4);
        std::memcpy(loop.data() + image + 16, &size, 4);
        mutator->Add(name + "a loop by " + std::to_string(offset), loop, Verdict::Refused);
    }
}

void MutateBitmap(Mutator* mutator, size_t bitmap) {
    const std::string name = "bitmap at " + std::to_string(bitmap) + ": ";
    mutator->PutAll(name + "header size", bitmap, 4, kWrongHeaderSizes, Verdict::Refused);
    for (const size_t side : {size_t{4}, size_t{8}}) {
        mutator->PutAll(name + "side", bitmap + side, 4, kWrongSides, Verdict::Refused);
        mutator->PutAll(name + "side", bitmap + side, 4, {1, 2, 3, 4}, Verdict::Either);
    }
    for (const auto& [width, height] : {std::pair<uint32_t, uint32_t>{65536, 65536},
                                        {0x7FFFFFFF, 0x7FFFFFFF},
                                        {0x55555556, 4},
                                        {0x15555556, 12},
                                        {4, 0x40000000},
                                        {kHalf, kHalf},
                                        {kMost, kMost}}) {
        std::vector<uint8_t> bytes = mutator->base.bytes;
        std::memcpy(bytes.data() + bitmap + 4, &width, 4);
        std::memcpy(bytes.data() + bitmap + 8, &height, 4);
        mutator->Add(name + std::to_string(width) + "x" + std::to_string(height), bytes, Verdict::Refused);
    }
    mutator->PutAll(name + "depth", bitmap + 14, 2, kWrongDepths, Verdict::Refused);
    mutator->PutAll(name + "depth", bitmap + 14, 2, kDepths, Verdict::Either);
    mutator->PutAll(name + "planes", bitmap + 12, 2, kPlanes, Verdict::Either);
    mutator->PutAll(name + "compression", bitmap + 16, 4, kWrongCompressions, Verdict::Refused);
    mutator->PutAll(name + "image size", bitmap + 20, 4, kImageSizes, Verdict::Accepted);
    mutator->PutAll(name + "colours used", bitmap + 32, 4, kColorsUsed, Verdict::Accepted);
    mutator->PutAll(name + "colours important", bitmap + 36, 4, {1, 257, kHalf, kMost}, Verdict::Accepted);
}

void MutateEnd(Mutator* mutator) {
    const Base& base = mutator->base;
    for (size_t i = 0; i < 4; ++i) mutator->Put("end tag byte", base.end + i, 1, '?', Verdict::Refused);
    std::vector<uint8_t> bytes = base.bytes;
    bytes.insert(bytes.end(), {'x', 'M', 'N', 'A'});
    mutator->Add("end tag doubled", bytes, Verdict::Accepted);
    bytes.insert(bytes.end(), 5000, 0xFF);
    mutator->Add("rubbish behind the end", bytes, Verdict::Accepted);
    for (const size_t image : base.images) {
        bytes = base.bytes;
        std::memcpy(bytes.data() + image, "xMNA", 4);
        mutator->Add("end tag at " + std::to_string(image), bytes, Verdict::Accepted);
        bytes.resize(image + 4);
        mutator->Add("nothing behind the end tag at " + std::to_string(image), bytes, Verdict::Accepted);
    }
}

}  // namespace

std::vector<HostileBlock> MutatedBlocks() {
    Mutator mutator;
    mutator.Add("the base", mutator.base.bytes, Verdict::Accepted);
    MutateHeader(&mutator);
    MutatePalettes(&mutator);
    for (const size_t image : mutator.base.images) {
        MutateImage(&mutator, image);
        MutateBitmap(&mutator, image + kImage);
    }
    MutateEnd(&mutator);
    return mutator.blocks;
}

std::vector<HostileBlock> HostileBlocks() {
    std::vector<HostileBlock> blocks = MutatedBlocks();
    const Base base = MakeBase();
    for (size_t size = 1; size < base.bytes.size(); ++size)
        blocks.push_back({"cut at " + std::to_string(size),
                          {base.bytes.begin(), base.bytes.begin() + static_cast<ptrdiff_t>(size)},
                          Verdict::Refused});
    return blocks;
}

}  // namespace kfx::test
