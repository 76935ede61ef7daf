// SPDX-License-Identifier: MIT
// Where the pixels of a picture are sampled is the same in every frame of one size. A kernel that samples
// eight pixels a turn keeps what it needs of them, row by row. The rows are filled in the second frame with
// the same settings: a preview, and an animation of one frame, would only pay for them.
#pragma once

#include <cstdint>

#include "framework/kernel_cache.h"

namespace kfx {

constexpr int32_t kPointsAGroup = 8;
constexpr size_t kGroupBytes = 64;      // for a group of eight pixels
constexpr size_t kGroupAlignment = 32;  // bytes

struct KeptPoints {
    uint8_t* rowFilled;  // for each row of the picture; null: nothing is kept
    uint8_t* groups;
    size_t rowBytes;
};

// One row's groups; null where nothing is kept.
struct KeptRow {
    void* groups;
    uint8_t* filled;  // 1: the groups are an earlier frame's; to be set by who fills them
};

// The points of a picture of this size, for a key as CachedTable() takes it. Nothing is kept without AVX2,
// without memory, or beyond kLargestKeptTable.
KeptPoints KeepPoints(KeptTable* table, const void* key, size_t keyBytes, int32_t width, int32_t height);

KeptRow KeptRowAt(const KeptPoints& points, int32_t y);

inline bool IsFilled(const KeptRow& row) { return row.groups && *row.filled; }

}  // namespace kfx
