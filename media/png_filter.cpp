// SPDX-License-Identifier: MIT
#include "media/png_filter.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace kfx {
namespace {

inline uint8_t PaethOf(int left, int above, int aboveLeft) {
    const int fromLeft = std::abs(above - aboveLeft);
    const int fromAbove = std::abs(left - aboveLeft);
    const int fromBoth = std::abs(left + above - 2 * aboveLeft);
    const int nearer = fromAbove < fromLeft ? above : left;
    return static_cast<uint8_t>(fromBoth < std::min(fromLeft, fromAbove) ? aboveLeft : nearer);
}

inline uint8_t Sum(unsigned a, unsigned b) { return static_cast<uint8_t>(a + b); }

// The samples of a pixel of three or four bytes side by side. One byte beyond a pixel of three is read along.
template <size_t Step>
void UndoPaeth(const uint8_t* above, size_t size, uint8_t* row) {
    using Samples = int16_t __attribute__((vector_size(16)));
    using Bytes = uint8_t __attribute__((vector_size(8)));
    const auto load = [](const uint8_t* from) {
        uint32_t word;
        std::memcpy(&word, from, sizeof(word));
        return __builtin_convertvector(std::bit_cast<Bytes>(uint64_t{word}), Samples);
    };
    const auto magnitude = [](Samples value) { return value < 0 ? -value : value; };
    Samples left = {};
    Samples aboveLeft = {};
    for (size_t i = 0; i < size; i += Step) {
        const Samples up = load(above + i);
        const Samples fromLeft = magnitude(up - aboveLeft);
        const Samples fromAbove = magnitude(left - aboveLeft);
        const Samples fromBoth = magnitude(up + left - aboveLeft - aboveLeft);
        const Samples least = fromLeft < fromAbove ? fromLeft : fromAbove;
        const Samples nearer = fromLeft <= fromAbove ? left : up;
        left = (load(row + i) + (fromBoth < least ? aboveLeft : nearer)) & 255;
        aboveLeft = up;
        const auto word =
            static_cast<uint32_t>(std::bit_cast<uint64_t>(__builtin_convertvector(left, Bytes)));
        std::memcpy(row + i, &word, Step);
    }
}

// The pixel on the left is kept in variables: the processor then need not wait for it to come back from
// memory.
template <int Step>
void UndoFromLeft(int filter, const uint8_t* above, size_t size, uint8_t* row) {
    uint8_t left[Step] = {};
    if (filter == kFilterSub) {
        for (size_t i = 0; i < size; i += Step)
            for (size_t k = 0; k < Step; ++k) row[i + k] = left[k] = Sum(row[i + k], left[k]);
        return;
    }
    if (filter == kFilterMean) {
        for (size_t i = 0; i < size; i += Step)
            for (size_t k = 0; k < Step; ++k)
                row[i + k] = left[k] = Sum(row[i + k], (unsigned{left[k]} + above[i + k]) >> 1);
        return;
    }
    if constexpr (Step == 3 || Step == 4) {
        UndoPaeth<Step>(above, size, row);
    } else {
        uint8_t aboveLeft[Step] = {};
        for (size_t i = 0; i < size; i += Step) {
            for (size_t k = 0; k < Step; ++k) {
                left[k] = Sum(row[i + k], PaethOf(left[k], above[i + k], aboveLeft[k]));
                aboveLeft[k] = above[i + k];
                row[i + k] = left[k];
            }
        }
    }
}

// The first pixel has nothing on its left.
template <typename Predict>
void Apply(const uint8_t* row, const uint8_t* above, size_t size, size_t step, uint8_t* filtered,
           const Predict& predict) {
    const size_t first = std::min(size, step);
    for (size_t i = 0; i < first; ++i) filtered[i] = Sum(row[i], 0u - predict(0, above[i], 0));
    for (size_t i = first; i < size; ++i)
        filtered[i] = Sum(row[i], 0u - predict(row[i - step], above[i], above[i - step]));
}

}  // namespace

bool UndoPngFilter(int filter, const uint8_t* above, size_t size, int step, uint8_t* row) {
    if (filter < 0 || filter >= kPngFilterCount) return false;
    if (filter == kFilterNone) return true;
    if (filter == kFilterUp) {
        for (size_t i = 0; i < size; ++i) row[i] = Sum(row[i], above[i]);
        return true;
    }
    switch (step) {
        case 1:
            UndoFromLeft<1>(filter, above, size, row);
            return true;
        case 2:
            UndoFromLeft<2>(filter, above, size, row);
            return true;
        case 3:
            UndoFromLeft<3>(filter, above, size, row);
            return true;
        case 4:
            UndoFromLeft<4>(filter, above, size, row);
            return true;
        case 6:
            UndoFromLeft<6>(filter, above, size, row);
            return true;
        case 8:
            UndoFromLeft<8>(filter, above, size, row);
            return true;
        default:
            return false;
    }
}

void ApplyPngFilter(int filter, const uint8_t* row, const uint8_t* above, size_t size, int step,
                    uint8_t* filtered) {
    const auto distance = static_cast<size_t>(step);
    switch (filter) {
        case kFilterSub:
            Apply(row, above, size, distance, filtered,
                  [](unsigned left, unsigned, unsigned) { return left; });
            break;
        case kFilterUp:
            Apply(row, above, size, distance, filtered, [](unsigned, unsigned up, unsigned) { return up; });
            break;
        case kFilterMean:
            Apply(row, above, size, distance, filtered,
                  [](unsigned left, unsigned up, unsigned) { return (left + up) >> 1; });
            break;
        case kFilterPaeth:
            Apply(row, above, size, distance, filtered, [](uint8_t left, uint8_t up, uint8_t upLeft) {
                return unsigned{PaethOf(left, up, upLeft)};
            });
            break;
        default:
            std::copy_n(row, size, filtered);
            break;
    }
}

}  // namespace kfx
