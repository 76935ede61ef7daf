// SPDX-License-Identifier: MIT
// Which palette entry each colour becomes: the nearest entry, or, in fast remapping, the entry that equals
// the colour and else the entry nearest to the colour rounded to 15 bits. Answers are computed once in a
// build, for neighbouring colours when the first of them is asked for: 4 x 4 x 4, or the 8 x 8 x 8 that are
// rounded to one. Nearest entries are kept in a table of all 2^24 colours, of which only the pages in use get
// memory; those of rounded colours in a table of 2^15, which stays in the processor's cache.
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

constexpr uint32_t kRoundedColors = 1u << 15;
constexpr uint32_t kCellColors = 512;  // that are rounded to one

// The tables that are asked for each pixel; see PlaceOf and CellOf. Their bytes are read and written by the
// functions below.
struct ColorAnswers {
    uint64_t answers[kColorCubes * kCubeColors / 8];  // a byte each, written eight at a time
    uint8_t known[kColorCubes];
    BlockCandidates candidates[kColorBlocks];
    uint32_t cells[kRoundedColors];               // see CellAnswer
    uint64_t sharedCells[256 * kCellColors / 8];  // a byte each; see FindCell
};

// What stands in a cell: the answer in the lowest byte, an entry in the next one, and these marks. A cell is
// written at once.
constexpr uint32_t kCellKnown = 1u << 16;
constexpr uint32_t kCellShared = 1u << 17;  // entries of several colours lie in it

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
    uint32_t colors[256] = {};  // 0x00RRGGBB
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

// A byte that says whether others have been written, or a cell, which may say so.
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

// Computes the answers of the cube that holds the place. Called by AnswerAt.
void FindAnswers(ColorIndex* index, uint32_t place);

// The nearest palette entry of the colour at a place.
inline uint8_t AnswerAt(ColorIndex* index, uint32_t place) {
    if (!ReadMark(&index->tables->known[place / kCubeColors])) FindAnswers(index, place);
    return ReadShared(reinterpret_cast<uint8_t*>(index->tables->answers) + place);
}

// The number of the rounded colour of 0x00RRGGBB.
constexpr uint32_t CellOf(uint32_t color) {
    return (color >> 9 & 0x7C00) | (color >> 6 & 0x03E0) | (color >> 3 & 0x001F);
}

// A colour's place among those that are rounded to one.
constexpr uint32_t PlaceInCell(uint32_t color) {
    return (color >> 10 & 0x01C0) | (color >> 5 & 0x0038) | (color & 0x0007);
}

// Computes a cell and returns it. Colours that are no entry's have the answer in its lowest byte. The next
// byte has the only entry in the cell, or, where there is none, the answer again. In a shared cell it is the
// first entry's number, and with it that of 512 bytes of `sharedCells` with all answers. Called by
// CellAnswer.
uint32_t FindCell(ColorIndex* index, uint32_t color);

// The palette entry for 0x00RRGGBB in fast remapping.
inline uint8_t CellAnswer(ColorIndex* index, uint32_t color) {
    ColorAnswers* tables = index->tables;
    uint32_t cell = ReadMark(&tables->cells[CellOf(color)]);
    if (!(cell & kCellKnown)) cell = FindCell(index, color);
    const uint32_t entry = cell >> 8 & 255;
    if (cell & kCellShared)
        return ReadShared(reinterpret_cast<uint8_t*>(tables->sharedCells) + entry * kCellColors +
                          PlaceInCell(color));
    return static_cast<uint8_t>(index->colors[entry] == color ? entry : cell);
}

// The palette entry for a colour, channels from 0 to 255, by the rule for which the index was prepared.
inline uint8_t LookUpColor(ColorIndex* index, uint32_t red, uint32_t green, uint32_t blue) {
    return index->fast ? CellAnswer(index, red << 16 | green << 8 | blue)
                       : AnswerAt(index, PlaceOf(red, green, blue));
}

}  // namespace kfx
