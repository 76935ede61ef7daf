// SPDX-License-Identifier: MIT
#include "media/png_compress.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "media/png_deflate.h"
#include "media/png_filter.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

// What a row is expected to cost with a filter, from its differences; smaller is better.
using RowCost = uint64_t (*)(const uint8_t* row, size_t size);

// The sum of the differences' magnitudes.
uint64_t SumOfMagnitudes(const uint8_t* row, size_t size) {
    uint64_t sum = 0;
    for (size_t i = 0; i < size; ++i) sum += std::min<unsigned>(row[i], 256u - row[i]);
    return sum;
}

// How many pairs of neighbouring bytes differ from all others.
uint64_t CountOfPairs(const uint8_t* row, size_t size) {
    constexpr size_t kWords = 65536 / 64;
    uint64_t seen[kWords] = {};
    uint64_t count = 0;
    for (size_t i = 1; i < size; ++i) {
        const size_t pair = size_t{row[i - 1]} << 8 | row[i];
        uint64_t& word = seen[pair / 64];
        // Counting the bits of all words at the end would take longer than the rest.
        count += ~word >> pair % 64 & 1;
        word |= uint64_t{1} << pair % 64;
    }
    return count;
}

// The bits that an ideal code of the row's bytes takes.
uint64_t Entropy(const uint8_t* row, size_t size) {
    uint32_t counts[256] = {};
    for (size_t i = 0; i < size; ++i) ++counts[row[i]];
    double bits = 0;
    for (const uint32_t count : counts)
        if (count != 0) bits += count * std::log2(static_cast<double>(size) / count);
    return static_cast<uint64_t>(16 * bits);
}

// The picture with a filter before each row: the same one, or the one of the least cost.
Bytes FilterRows(const PngRows& rows, int filter, RowCost cost) {
    const size_t size = rows.rowBytes;
    const Bytes zeros(size);
    Bytes trial(size);
    Bytes result;
    result.reserve(rows.bytes.size() + rows.bytes.size() / size);
    const uint8_t* above = zeros.data();
    const uint8_t* end = rows.bytes.data() + rows.bytes.size();
    for (const uint8_t* row = rows.bytes.data(); row != end; above = row, row += size) {
        const size_t start = result.size();
        result.resize(start + 1 + size);
        uint8_t* out = result.data() + start;
        if (!cost) {
            out[0] = static_cast<uint8_t>(filter);
            ApplyPngFilter(filter, row, above, size, rows.step, out + 1);
            continue;
        }
        uint64_t least = UINT64_MAX;
        for (int i = 0; i < kPngFilterCount; ++i) {
            ApplyPngFilter(i, row, above, size, rows.step, trial.data());
            const uint64_t price = cost(trial.data(), size);
            if (price >= least) continue;
            least = price;
            out[0] = static_cast<uint8_t>(i);
            std::copy(trial.begin(), trial.end(), out + 1);
        }
    }
    return result;
}

struct Way {
    int filter = kFilterNone;
    RowCost cost = nullptr;  // null: the filter for all rows
    bool isCommon = false;   // the best of many pictures
};

constexpr Way kWays[] = {
    {.filter = kFilterNone, .isCommon = true},
    {.filter = kFilterSub},
    {.filter = kFilterUp},
    {.filter = kFilterPaeth},
    {.cost = SumOfMagnitudes, .isCommon = true},
    {.cost = CountOfPairs, .isCommon = true},
    {.cost = Entropy},
};

// The highest levels of packing take most of the time: on a picture of 640 x 480, level 12 takes ten times as
// long as 8.
struct Effort {
    bool allWays;      // are tried, else the common ones
    size_t finalists;  // ways that are packed in full
    int packing;
};
constexpr Effort kEfforts[] = {
    {false, 1, kFastestPacking},
    {false, 1, 3},
    {false, 1, 5},
    {false, 1, 6},
    {false, 1, 8},
    {true, 1, 8},
    {true, 1, 9},
    {true, 1, 10},
    {true, 1, kSmallestPacking},
    {true, 2, kSmallestPacking},
};

constexpr int kTrialPacking = 6;
constexpr size_t kFinalistRatio = 2;  // a way that is larger than the best one by this factor is none
constexpr size_t kLargePicture = size_t{1} << 19;  // bytes from which ways are tried on a part
constexpr size_t kBands = 8;                       // of which the part consists
constexpr size_t kPart = 4;                        // that part of the rows

size_t PackedSize(const PngRows& rows, const Way& way, int level) {
    const Bytes filtered = FilterRows(rows, way.filter, way.cost);
    return Pack(filtered.data(), filtered.size(), level).size();
}

// Some bands of a large picture; all rows of a small one.
PngRows SampleOf(const PngRows& rows) {
    const size_t count = rows.bytes.size() / rows.rowBytes;
    if (rows.bytes.size() < kLargePicture || count < kBands * kPart) return rows;
    PngRows sample = {.bytes = {}, .rowBytes = rows.rowBytes, .step = rows.step};
    for (size_t band = 0; band < kBands; ++band) {
        const size_t start = (band * kPart + kPart / 2) * count / (kBands * kPart);
        const uint8_t* from = rows.bytes.data() + start * rows.rowBytes;
        sample.bytes.insert(sample.bytes.end(), from, from + count / (kBands * kPart) * rows.rowBytes);
    }
    return sample;
}

}  // namespace

Bytes CompressPngRows(const PngRows& rows, int effort) {
    const Effort& taken = kEfforts[std::clamp(effort, 0, static_cast<int>(std::size(kEfforts)) - 1)];
    const PngRows sample = SampleOf(rows);
    std::vector<std::pair<size_t, const Way*>> trials;  // bytes
    for (const Way& way : kWays) {
        if (!taken.allWays && !way.isCommon) continue;
        trials.emplace_back(PackedSize(sample, way, std::min(taken.packing, kTrialPacking)), &way);
    }
    std::sort(trials.begin(), trials.end());
    Bytes best;
    // The quick compression is no sure judge.
    for (size_t i = 0; i < taken.finalists; ++i) {
        if (trials[i].first > kFinalistRatio * trials[0].first) break;
        const Way& way = *trials[i].second;
        const Bytes filtered = FilterRows(rows, way.filter, way.cost);
        Bytes packed = Pack(filtered.data(), filtered.size(), taken.packing);
        if (best.empty() || packed.size() < best.size()) best = std::move(packed);
    }
    return best;
}

size_t EstimatePngRows(const PngRows& rows) {
    const PngRows sample = SampleOf(rows);
    size_t least = SIZE_MAX;
    for (const Way& way : kWays)
        if (way.isCommon) least = std::min(least, PackedSize(sample, way, kTrialPacking));
    return least;
}

}  // namespace kfx
