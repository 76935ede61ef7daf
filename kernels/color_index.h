// SPDX-License-Identifier: MIT
// Which palette entry each colour becomes: the nearest entry, or, in fast remapping, the entry that equals
// the colour and else the entry nearest to the colour rounded to 15 bits. Answers are computed once in a
// build, for 4 x 4 x 4 neighbouring colours when the first of them is asked for. They are kept in a table of
// all 2^24 colours, of which only the pages in use get memory.
//
// Several threads may ask a prepared index at the same time. Two that need the same answers at once compute
// them twice and write the same bytes, so nobody waits. What says that answers are there is written after
// them and read before them.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "framework/movable_memory.h"

namespace kfx {

constexpr uint32_t kCubeColors = 64;  // neighbouring colours answered together
constexpr uint32_t kColorCubes = (1u << 24) / kCubeColors;
constexpr uint32_t kColorBlocks = 1u << 12;  // of 16 x 16 x 16 colours: a page of answers
constexpr uint32_t kMostCandidates = 63;

// The entries that can be the nearest one to some colour of a block, in index order.
struct BlockCandidates {
    uint8_t count;  // 0: not looked for yet; above kMostCandidates: too many to be listed
    uint8_t entries[kMostCandidates];
};

// The tables that are asked for each pixel; see PlaceOf. Their bytes are read and written by the functions
// below.
struct ColorAnswers {
    uint64_t answers[kColorCubes * kCubeColors / 8];  // a byte each, written eight at a time
    uint8_t known[kColorCubes];
    BlockCandidates candidates[kColorBlocks];
};

struct ColorIndex {
    ColorIndex() = default;
    ~ColorIndex();
    ColorIndex(const ColorIndex&) = delete;
    ColorIndex& operator=(const ColorIndex&) = delete;

    MemoryHandle memory = nullptr;  // of the tables, locked; made when first needed
    ColorAnswers* tables = nullptr;
    // The palette, an array per channel.
    int32_t red[256] = {};
    int32_t green[256] = {};
    int32_t blue[256] = {};
    int32_t count = 0;
    bool fast = false;
};

// Prepares the index for the first `count` (at most 256) entries of a palette, and for fast remapping if
// `fast`. Answers that are still right are kept, so preparing it again for the same costs nothing. False: no
// memory for the tables.
bool PrepareColorIndex(ColorIndex* index, const uint8_t* palette, int32_t count, bool fast);

// A byte or word of the tables that another thread may be writing.
template <typename T>
T ReadShared(T* place) {
    return std::atomic_ref<T>(*place).load(std::memory_order_relaxed);
}
template <typename T>
void WriteShared(T* place, T value) {
    std::atomic_ref<T>(*place).store(value, std::memory_order_relaxed);
}

// A byte that says whether others have been written.
template <typename T>
T ReadMark(T* mark) {
    return std::atomic_ref<T>(*mark).load(std::memory_order_acquire);
}
template <typename T>
void WriteMark(T* mark, std::type_identity_t<T> value) {
    std::atomic_ref<T>(*mark).store(value, std::memory_order_release);
}

// A colour's place in the table of answers: the three channels' bits in turn, two at a time with red highest,
// so that neighbouring colours share cache lines and pages. This is the place of a blue level; a green one's
// is shifted by 2 and a red one's by 4.
constexpr uint32_t SpreadLevel(uint32_t level) {
    return (level & 3) | (level & 0x0C) << 4 | (level & 0x30) << 8 | (level & 0xC0) << 12;
}

struct SpreadLevels {
    constexpr SpreadLevels() : places() {
        for (uint32_t level = 0; level < 256; ++level) places[level] = SpreadLevel(level);
    }
    uint32_t places[256];
};
inline constexpr SpreadLevels kSpread;

inline uint32_t PlaceOf(uint32_t red, uint32_t green, uint32_t blue) {
    return kSpread.places[red] << 4 | kSpread.places[green] << 2 | kSpread.places[blue];
}

// Computes the answers of the cube that holds the place, and possibly of others. Called by AnswerAt.
void FindAnswers(ColorIndex* index, uint32_t place);

// The palette entry for the colour at a place.
inline uint8_t AnswerAt(ColorIndex* index, uint32_t place) {
    if (!ReadMark(&index->tables->known[place / kCubeColors])) FindAnswers(index, place);
    return ReadShared(reinterpret_cast<uint8_t*>(index->tables->answers) + place);
}

inline uint8_t LookUpColor(ColorIndex* index, uint32_t red, uint32_t green, uint32_t blue) {
    return AnswerAt(index, PlaceOf(red, green, blue));
}

}  // namespace kfx
