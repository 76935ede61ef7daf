// SPDX-License-Identifier: MIT
// Values that have broken readers of animation blocks and bitmaps, by field. A name says what a block with
// such a value is; what depends on the block itself is made beside these lists.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace kfx::test {

using FieldValues = std::initializer_list<uint64_t>;

// Of the block: its two sides, which nobody needs, and how many colours its palette says that it has.
constexpr FieldValues kPossibleBlockSides = {0, 1, 32768, 0x7FFFFFFF};
constexpr FieldValues kWrongBlockSides = {0x80000000, 0x80000001, 0xFFFFFFFF};
constexpr FieldValues kPaletteCounts = {0, 1, 255, 256, 257, 32768, 65535};

// Of a bitmap of a few pixels. Numbers from 0x80000000 on are negative: a picture that stands top down.
constexpr FieldValues kWrongHeaderSizes = {0, 12, 39, 41, 64, 108, 124, 40 + 65536, 0x80000000, 0xFFFFFFFF};
constexpr FieldValues kWrongSides = {0,          0xFFFFFFFF, 0xFFFFFFFD, 0x80000000, 0x80000001,
                                     0x7FFFFFFF, 32768,      65536,      0x40000000, 0x20000001};
constexpr FieldValues kDepths = {1, 4, 8, 24, 32};
constexpr FieldValues kWrongDepths = {0, 2, 3, 5, 7, 9, 12, 15, 16, 31, 33, 48, 64, 255, 65535};
constexpr FieldValues kWrongCompressions = {1, 2, 3, 4, 5, 0x80000000, 0xFFFFFFFF};

// Fields of a bitmap that may hold anything.
constexpr FieldValues kPlanes = {0, 2, 65535};
constexpr FieldValues kImageSizes = {0, 1, 0x80000000, 0xFFFFFFFF};
constexpr FieldValues kColorsUsed = {0, 1, 17, 256, 257, 65535, 0x80000000, 0xFFFFFFFF};

}  // namespace kfx::test
