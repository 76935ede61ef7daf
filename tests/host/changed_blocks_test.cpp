// SPDX-License-Identifier: MIT
// Animation blocks with one or two things changed in any field, against the layout's rules in another walk:
// what the rules forbid is refused, the rest is decoded within bounds.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "framework/memory_guards.h"
#include "framework/movable_memory_native.h"
#include "framework/source_animation.h"
#include "host/animation_block.h"
#include "tests/fuzz/block_changes.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using Bytes = std::vector<uint8_t>;

// A pixel of 1 bit becomes 24 bits; a picture is there twice while it is converted. What does not depend on
// the block: the list of frames, and small records.
constexpr size_t kMostGrowth = 2 * 24;
constexpr size_t kMostBesides = 64 * 1024;

BlockFrame FrameOf(int32_t width, int32_t height, uint32_t seed, int32_t depth) {
    return {BytesOf(RandomPicture(width, height, seed, depth).handle), {1, 2, 3, 4}};
}

std::array<Bytes, 4> SoundBlocks() {
    BlockOptions withPalette;
    withPalette.globalPalette.assign(3 * 20, 7);
    withPalette.hasBackground = true;
    return {MakeAnimationBlock({FrameOf(5, 3, 1, 24)}),
            MakeAnimationBlock({FrameOf(17, 4, 2, 1), FrameOf(3, 3, 3, 4), FrameOf(2, 5, 4, 8)}, withPalette),
            MakeAnimationBlock({FrameOf(4, 4, 5, 32), FrameOf(1, 1, 6, 24)}),
            MakeAnimationBlock({}, withPalette)};
}

size_t DecodedBytes(const FrameList& frames) {
    size_t bytes = 0;
    for (int32_t i = 0; i < frames.count; ++i) {
        FrameEntry entry;
        EXPECT_TRUE(GetFrame(frames, i, &entry));
        bytes += MemorySize(entry.image);
    }
    return bytes;
}

uint64_t Number(const Bytes& block, uint64_t at, size_t bytes = 4) {
    uint64_t number = 0;
    for (size_t i = 0; i < bytes; ++i) number |= uint64_t{block.at(at + i)} << (8 * i);
    return number;
}

bool HasTag(const Bytes& block, uint64_t at, const char* tag) {
    return at + 4 <= block.size() && std::equal(tag, tag + 4, block.begin() + static_cast<ptrdiff_t>(at));
}

// A bitmap that begins at `at` and has `bytes` bytes, all inside the block.
bool IsBitmap(const Bytes& block, uint64_t at, uint64_t bytes) {
    if (bytes < 40 || Number(block, at) != 40 || Number(block, at + 16) != 0) return false;
    const uint64_t width = Number(block, at + 4), height = Number(block, at + 8);
    const uint64_t depth = Number(block, at + 14, 2);
    if (width < 1 || width > INT32_MAX || height < 1 || height > INT32_MAX) return false;
    if (depth != 1 && depth != 4 && depth != 8 && depth != 24 && depth != 32) return false;
    const uint64_t table = depth <= 8 ? uint64_t{4} << depth : 0;
    const uint64_t row = (width * depth + 31) / 32 * 4;
    return table <= bytes - 40 && row <= (bytes - 40 - table) / height;
}

// The layout's rules, step by step in 64-bit numbers.
bool FollowsTheRules(const Bytes& block) {
    const uint64_t size = block.size();
    if (size < 38 || !HasTag(block, 0, "oMNA")) return false;
    if (Number(block, 24) > INT32_MAX || Number(block, 28) > INT32_MAX) return false;
    const uint64_t colors = std::min<uint64_t>(Number(block, 36, 2), 256);
    if ((Number(block, 12, 1) & 4) != 0 && 38 + 3 * colors > size) return false;
    uint64_t at = Number(block, 4);
    if (at < 38) return false;
    for (uint64_t left = Number(block, 16); left > 0 && !HasTag(block, at, "xMNA"); --left) {
        if (!HasTag(block, at, "eMNA") || at + 40 > size) return false;
        const uint64_t offset = Number(block, at + 4), bytes = Number(block, at + 16);
        if (offset < 40 || at + offset + bytes > size || !IsBitmap(block, at + offset, bytes)) return false;
        at += offset + bytes;
    }
    return HasTag(block, at, "xMNA");
}

// Everything that is done with a block, sound or not; nothing may be left over, and memory is bounded.
void TryBlock(const Bytes& block, const std::string& what) {
    const MemoryCounts before = CountMemory();
    ResetMemoryCounts();
    {
        const MemoryOwner source(MakeMemory(block));
        const bool sound = IsSoundAnimation(source.memory);
        EXPECT_EQ(sound, FollowsTheRules(block)) << what;
        FreeMemory(FetchFirstFrame(source.memory));
        FrameList frames = {};
        const DecodeResult decoded = DecodeAllFrames(source.memory, &frames);
        if (sound) {
            EXPECT_EQ(decoded, DecodeResult::Whole) << what;
        }
        EXPECT_LE(DecodedBytes(frames), kMostGrowth * block.size() + kMostBesides) << what;
        FreeFrames(&frames);
        EXPECT_LE(CountMemory().peakBytes - before.liveBytes, kMostGrowth * block.size() + kMostBesides)
            << what;
    }
    EXPECT_EQ(CountMemory().liveBlocks, before.liveBlocks) << what;
    EXPECT_EQ(CountMemory().lockedBlocks, 0u) << what;
}

bool StartsWith(const std::string& text, const std::string& start) { return text.rfind(start, 0) == 0; }

// Changes of the only image of a block of one that no reader may take for a picture.
bool MustBeRefused(const std::string& what) {
    for (const char* start : {"header: byte", "image 0: byte", "image 0: bitmap header", "image 0: twice",
                              "header: images = 0", "end: missing"})
        if (StartsWith(what, start)) return true;
    for (const char* whole :
         {"image 0: depth = 0",          "image 0: depth = 2",           "image 0: depth = 3",
          "image 0: depth = 15",         "image 0: depth = 16",          "image 0: depth = 32",
          "image 0: depth = 48",         "image 0: depth = 255",         "image 0: depth = 65535",
          "image 0: compression = 1",    "image 0: compression = 2",     "image 0: compression = 3",
          "image 0: width = 0",          "image 0: height = 0",          "image 0: width = 65536",
          "image 0: height = 65536",     "image 0: width = 2147483648",  "image 0: height = 2147483648",
          "image 0: width = 4294967295", "image 0: height = 4294967295", "image 0: offset = 0",
          "image 0: offset = 39",        "image 0: offset = 4294967295", "image 0: size = 0",
          "image 0: size = 39"})
        if (what == whole) return true;
    return false;
}

TEST(ChangedBlocks, Any_field_at_any_value_is_refused_or_decoded_within_bounds) {
    size_t tried = 0;
    for (const Bytes& block : SoundBlocks()) {
        TryBlock(block, "unchanged");
        for (const BlockChange& change : BlockChanges(block)) {
            TryBlock(ChangedBlock(block, change), change.what);
            ++tried;
        }
    }
    EXPECT_GT(tried, 800u);
    AddTried("blocks with one change", tried);
}

TEST(ChangedBlocks, Any_two_fields_of_a_picture_may_be_wrong_at_once) {
    const Bytes block = SoundBlocks()[0];
    size_t tried = 0;
    for (const BlockChange& first : BlockChanges(block)) {
        const Bytes changed = ChangedBlock(block, first);
        for (const BlockChange& second : BlockChanges(changed)) {
            if (!StartsWith(second.what, "image 0: ")) continue;
            TryBlock(ChangedBlock(changed, second), first.what + ", " + second.what);
            ++tried;
        }
    }
    EXPECT_GT(tried, 10000u);
    AddTried("blocks with two changes", tried);
}

TEST(ChangedBlocks, Cut_at_any_length_it_is_refused_and_decoded_within_bounds) {
    for (const Bytes& block : SoundBlocks()) {
        for (size_t length = 1; length < block.size(); ++length) {
            const Bytes cut(block.begin(), block.begin() + static_cast<ptrdiff_t>(length));
            EXPECT_FALSE(IsAnimation(cut.data(), cut.size())) << "cut at " << length;
            TryBlock(cut, "cut at " + std::to_string(length));
            AddTried("cut blocks");
        }
    }
}

TEST(ChangedBlocks, A_picture_that_cannot_be_one_is_refused) {
    const Bytes block = SoundBlocks()[0];
    size_t refused = 0;
    for (const BlockChange& change : BlockChanges(block)) {
        if (!MustBeRefused(change.what)) continue;
        const Bytes changed = ChangedBlock(block, change);
        EXPECT_FALSE(IsAnimation(changed.data(), changed.size())) << change.what;
        ++refused;
    }
    EXPECT_GT(refused, 30u);
}

TEST(ChangedBlocks, Room_behind_the_end_and_numbers_that_nobody_reads_do_no_harm) {
    const Bytes block = SoundBlocks()[0];
    size_t accepted = 0;
    for (const BlockChange& change : BlockChanges(block)) {
        for (const char* start :
             {"block: much larger", "end: twice", "image 0: planes", "image 0: image size",
              "image 0: colours used", "image 0: field", "image 0: behind the end", "header: side = 1",
              "header: unflagged palette"}) {
            if (!StartsWith(change.what, start)) continue;
            const Bytes changed = ChangedBlock(block, change);
            EXPECT_TRUE(IsAnimation(changed.data(), changed.size())) << change.what;
            ++accepted;
        }
    }
    EXPECT_GT(accepted, 20u);
}

}  // namespace
}  // namespace kfx::test
