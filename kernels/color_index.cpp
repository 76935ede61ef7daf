// SPDX-License-Identifier: MIT
#include "kernels/color_index.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"

namespace kfx {
namespace {

constexpr int32_t kCubeSide = 4;
constexpr int32_t kBlockSide = 16;
constexpr int32_t kTooManyCandidates = int32_t{kMostCandidates} + 1;

struct Color {
    int32_t red;
    int32_t green;
    int32_t blue;
};

// The least red, green and blue of the block or cube that begins at a place.
Color CornerAt(uint32_t place) {
    const auto level = [place](uint32_t shift) {
        const uint32_t spread = place >> shift;
        return static_cast<int32_t>((spread & 3) | (spread >> 4 & 0x0C) | (spread >> 8 & 0x30) |
                                    (spread >> 12 & 0xC0));
    };
    return {level(4), level(2), level(0)};
}

constexpr int32_t Distance(int32_t red, int32_t green, int32_t blue) {
    return 3 * red * red + 4 * green * green + 2 * blue * blue;
}

// Some palette entries, an array per channel.
struct Entries {
    int32_t red[256];
    int32_t green[256];
    int32_t blue[256];
    uint8_t number[256];  // in the palette
    int32_t count = 0;
};

void AddEntry(const ColorIndex& index, int32_t number, Entries* entries) {
    entries->red[entries->count] = index.red[number];
    entries->green[entries->count] = index.green[number];
    entries->blue[entries->count] = index.blue[number];
    entries->number[entries->count++] = static_cast<uint8_t>(number);
}

// Finds those of the given entries that can be the nearest one to some colour of a cube with this corner and
// side, and keeps their order. Each entry has a least and a greatest distance to the cube's colours. It can
// be nearest only if its least distance is not above the smallest greatest distance of all entries.
KFX_INLINE int32_t FindCandidates(const Entries& given, const Color& corner, int32_t side,
                                  uint8_t candidates[256]) {
    int32_t least[256];
    int32_t bound = INT32_MAX;
    const int32_t last = side - 1;
    for (int32_t i = 0; i < given.count; ++i) {
        const int32_t red = given.red[i] - corner.red;
        const int32_t green = given.green[i] - corner.green;
        const int32_t blue = given.blue[i] - corner.blue;
        least[i] =
            Distance(red - std::min(std::max(red, 0), last), green - std::min(std::max(green, 0), last),
                     blue - std::min(std::max(blue, 0), last));
        const int32_t greatest =
            Distance(std::max(red, last - red), std::max(green, last - green), std::max(blue, last - blue));
        bound = std::min(bound, greatest);
    }
    int32_t found = 0;
    for (int32_t i = 0; i < given.count; ++i) {
        candidates[found] = static_cast<uint8_t>(i);
        found += least[i] <= bound;
    }
    return found;
}

// Gives every colour of a cube its nearest entry. Distance and number form one key, so that the smallest key
// has the least distance and, among equals, the lowest number.
KFX_INLINE void AnswerNearest(const Entries& given, const Color& corner, uint8_t answers[kCubeColors]) {
    uint8_t candidates[256];
    const int32_t found = FindCandidates(given, corner, kCubeSide, candidates);
    if (found == 1) {
        std::memset(answers, given.number[candidates[0]], kCubeColors);
        return;
    }
    int32_t best[kCubeColors];
    std::fill(best, best + kCubeColors, INT32_MAX);
    for (int32_t k = 0; k < found; ++k) {
        const int32_t entry = candidates[k];
        int32_t plane[16];  // green and blue
        for (int32_t i = 0; i < 16; ++i) {
            const int32_t green = corner.green + (i >> 2) - given.green[entry];
            const int32_t blue = corner.blue + (i & 3) - given.blue[entry];
            plane[i] = (4 * green * green + 2 * blue * blue) * 256 + given.number[entry];
        }
        for (int32_t r = 0; r < kCubeSide; ++r) {
            const int32_t red = corner.red + r - given.red[entry];
            const int32_t line = 3 * red * red * 256;
            for (int32_t i = 0; i < 16; ++i) best[16 * r + i] = std::min(best[16 * r + i], plane[i] + line);
        }
    }
    for (size_t i = 0; i < kCubeColors; ++i) answers[i] = static_cast<uint8_t>(best[i]);
}

// Collects the block's candidates, which are determined when they are asked for the first time.
KFX_INLINE void GatherCandidates(ColorIndex* index, uint32_t place, Entries* entries) {
    constexpr uint32_t kBlockPlaces = 12;  // bits
    BlockCandidates* block = &index->tables->candidates[place >> kBlockPlaces];
    int32_t count = ReadMark(&block->count);
    if (count == 0) {
        Entries all;
        for (int32_t i = 0; i < index->count; ++i) AddEntry(*index, i, &all);
        uint8_t candidates[256];
        const int32_t found =
            FindCandidates(all, CornerAt(place >> kBlockPlaces << kBlockPlaces), kBlockSide, candidates);
        count = std::min(found, kTooManyCandidates);
        for (int32_t i = 0; count < kTooManyCandidates && i < count; ++i)
            WriteShared(&block->entries[i], candidates[i]);
        WriteMark(&block->count, static_cast<uint8_t>(count));
    }
    if (count == kTooManyCandidates) {
        for (int32_t i = 0; i < index->count; ++i) AddEntry(*index, i, entries);
    } else {
        for (int32_t i = 0; i < count; ++i) AddEntry(*index, ReadShared(&block->entries[i]), entries);
    }
}

// Puts `count` answers, a multiple of eight, into one of the tables.
void WriteAnswers(const uint8_t* answers, size_t count, uint64_t* to) {
    for (; count > 0; count -= 8, answers += 8) {
        uint64_t word;
        std::memcpy(&word, answers, sizeof word);
        WriteShared(to++, word);
    }
}

// The cube's answers when every colour becomes its nearest entry.
KFX_INLINE void FindNearest(ColorIndex* index, uint32_t place) {
    Entries entries;
    GatherCandidates(index, place, &entries);
    const uint32_t cube = place / kCubeColors;
    uint8_t answers[kCubeColors];
    AnswerNearest(entries, CornerAt(cube * kCubeColors), answers);
    WriteAnswers(answers, kCubeColors, &index->tables->answers[cube * (kCubeColors / 8)]);
    WriteMark(&index->tables->known[cube], 1);
}

// Answers for fast remapping: a colour of the palette becomes the first entry that equals it, any other
// colour the entry nearest to the colour rounded to 15 bits. The rounded colour lies in the block of those
// that are rounded to it, so the block's candidates are sufficient.
KFX_INLINE uint32_t FindRounded(ColorIndex* index, uint32_t color) {
    const uint32_t corner = color & 0xF8F8F8;
    const auto red = static_cast<int32_t>(corner >> 16);
    const auto green = static_cast<int32_t>(corner >> 8 & 255);
    const auto blue = static_cast<int32_t>(corner & 255);
    Entries entries;
    GatherCandidates(index, PlaceOf(corner >> 16, corner >> 8 & 255, corner & 255), &entries);
    int32_t best = INT32_MAX;
    for (int32_t i = 0; i < entries.count; ++i) {
        const int32_t distance =
            Distance(red - entries.red[i], green - entries.green[i], blue - entries.blue[i]);
        best = std::min(best, distance * 256 + entries.number[i]);
    }
    uint8_t inside[256];  // entries that are rounded to the same colour
    int32_t count = 0;
    bool shared = false;
    for (int32_t i = 0; i < entries.count; ++i) {
        const uint8_t number = entries.number[i];
        if ((index->colors[number] & 0xF8F8F8) != corner) continue;
        inside[count++] = number;
        shared = shared || index->colors[number] != index->colors[inside[0]];
    }
    const uint32_t answer = static_cast<uint32_t>(best) & 255;
    const uint32_t entry = count > 0 ? inside[0] : answer;
    const uint32_t cell = answer | entry << 8 | kCellKnown;
    if (!shared) return cell;
    uint8_t answers[kCellColors];
    std::memset(answers, static_cast<int>(answer), sizeof answers);
    // The last one first: the first of equal entries is the answer.
    for (int32_t i = count - 1; i >= 0; --i) answers[PlaceInCell(index->colors[inside[i]])] = inside[i];
    WriteAnswers(answers, kCellColors, &index->tables->sharedCells[entry * (kCellColors / 8)]);
    return cell | kCellShared;
}

bool SamePalette(const ColorIndex& index, const uint8_t* palette, int32_t count) {
    if (index.count != count) return false;
    for (int32_t i = 0; i < count; ++i, palette += 3)
        if (index.red[i] != palette[0] || index.green[i] != palette[1] || index.blue[i] != palette[2])
            return false;
    return true;
}

}  // namespace

ColorIndex::~ColorIndex() {
    if (tables) UnlockMemory(memory);
    FreeMemory(memory);
}

bool PrepareColorIndex(ColorIndex* index, const uint8_t* palette, int32_t count, bool fast) {
    // With an empty palette every answer is 0, as if black were its only entry.
    const uint8_t black[3] = {0, 0, 0};
    if (count < 1) {
        palette = black;
        count = 1;
    }
    if (!index->memory) index->memory = AllocateMemory(sizeof(ColorAnswers));
    if (!index->tables) index->tables = static_cast<ColorAnswers*>(LockMemory(index->memory));
    if (!index->tables) return false;
    if (index->fast == fast && SamePalette(*index, palette, count)) return true;
    const bool used = index->count != 0;
    index->count = count;
    index->fast = fast;
    for (int32_t i = 0; i < count; ++i, palette += 3) {
        index->red[i] = palette[0];
        index->green[i] = palette[1];
        index->blue[i] = palette[2];
        index->colors[i] = static_cast<uint32_t>(palette[0] << 16 | palette[1] << 8 | palette[2]);
    }
    if (!used) return true;  // the tables are zeroed already, and their pages untouched
    std::memset(index->tables->known, 0, sizeof index->tables->known);
    std::memset(index->tables->candidates, 0, sizeof index->tables->candidates);
    std::memset(index->tables->cells, 0, sizeof index->tables->cells);
    return true;
}

void FindAnswers(ColorIndex* index, uint32_t place) { Fastest<FindNearest>()(index, place); }

uint32_t FindCell(ColorIndex* index, uint32_t color) {
    const uint32_t cell = Fastest<FindRounded>()(index, color);
    WriteMark(&index->tables->cells[CellOf(color)], cell);
    return cell;
}

}  // namespace kfx
