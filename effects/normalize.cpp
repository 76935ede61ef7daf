// SPDX-License-Identifier: MIT
// Normalize: the range of luminance between the darkest and the brightest percent of the pixels is stretched
// over all levels, each channel through the same table. The stretched range ends at 254 and only what lies
// above it becomes 255: intended. "Distributed" takes one histogram of all frames, so that an animation does
// not flicker.
#include "effects/normalize.h"

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kLevels = 256;

// The gathered histogram and its pixel count, in movable memory: an animation may have more pixels than 32
// bits count.
struct Luminance {
    uint64_t counts[kLevels];
    uint64_t pixels;
};

// What a record's second word says once memory was refused.
constexpr uint64_t kRefused = 1;

MemoryHandle HandleOf(const uint64_t record[2]) { return reinterpret_cast<MemoryHandle>(record[0]); }

// Bytes that are handled at a time: whole pixels, whole registers.
constexpr size_t kChunk = 96 * 16;

// The luminance of the pixel that starts at each byte, as if one started everywhere: every third of the
// results means something, and all are computed in lanes. `shares` are each channel's weight, repeated.
// Dividing by 255 is exact as (n + 1 + n / 256) / 256 for every product n of two bytes.
KFX_INLINE void FindLevels(const uint8_t* from, size_t count, const uint8_t shares[96],
                           uint8_t* __restrict levels) {
    uint8_t parts[kChunk + 2];
    const auto divide = [](uint8_t c, uint8_t share) {
        const auto product = static_cast<uint16_t>(c * share);
        return static_cast<uint8_t>(static_cast<uint16_t>(product + 1 + (product >> 8)) >> 8);
    };
    size_t i = 0;
    for (; i + 96 <= count; i += 96)
        for (size_t k = 0; k < 96; ++k) parts[i + k] = divide(from[i + k], shares[k]);
    for (size_t k = 0; i + k < count; ++k) parts[i + k] = divide(from[i + k], shares[k]);
    parts[count] = parts[count + 1] = 0;
    for (i = 0; i < count; ++i) levels[i] = static_cast<uint8_t>(parts[i] + parts[i + 1] + parts[i + 2]);
}

KFX_AVX2 void FindLevelsAvx2(const uint8_t* from, size_t count, const uint8_t shares[96], uint8_t* levels) {
    FindLevels(from, count, shares, levels);
}

void CountLuminance(const WorkingImage* image, Luminance* luminance) {
    // Four histograms in turn: neighbours are often alike, and a counter is not ready again at once.
    uint32_t counts[4][kLevels] = {};
    uint8_t shares[96], levels[kChunk];
    for (size_t k = 0; k < 96; k += 3) {
        shares[k] = 28;  // blue
        shares[k + 1] = 150;
        shares[k + 2] = 77;
    }
    const size_t rowBytes = 3 * static_cast<size_t>(image->width);
    for (int32_t r = 0; r < image->height; ++r) {
        const uint8_t* row = StoredRow(image, r);
        for (size_t start = 0; start < rowBytes; start += kChunk) {
            const size_t count = rowBytes - start < kChunk ? rowBytes - start : kChunk;
            UseAvx2() ? FindLevelsAvx2(row + start, count, shares, levels)
                      : FindLevels(row + start, count, shares, levels);
            size_t i = 0;
            for (; i + 12 <= count; i += 12)
                for (size_t k = 0; k < 4; ++k) ++counts[k][levels[i + 3 * k]];
            for (; i < count; i += 3) ++counts[0][levels[i]];
        }
    }
    for (int32_t level = 0; level < kLevels; ++level)
        for (const auto& part : counts) luminance->counts[level] += part[level];
    luminance->pixels += static_cast<uint64_t>(image->width) * static_cast<uint64_t>(image->height);
}

// The first levels from below and from above at which more than `threshold` pixels have been met.
void FindRange(const Luminance& luminance, uint64_t threshold, int32_t* low, int32_t* high) {
    uint64_t sum = 0;
    for (*low = 0; *low < kLevels - 1; ++*low) {
        sum += luminance.counts[*low];
        if (sum > threshold) break;
    }
    sum = 0;
    for (*high = kLevels - 1; *high > 0; --*high) {
        sum += luminance.counts[*high];
        if (sum > threshold) break;
    }
}

// How channels are mapped: by a table, and by the arithmetic that made it where that divides exactly.
struct Mapping {
    uint8_t table[kLevels];
    bool computed;
    uint8_t low;
    uint8_t high;
    uint16_t added;  // 0 or 1: together with `factor` and `shift` the division by high - low
    uint16_t factor;
    uint16_t shift;
};

KFX_INLINE uint8_t MapLevel(uint8_t v, const Mapping& mapping) {
    const auto above = static_cast<uint8_t>(v > mapping.low ? v - mapping.low : 0);
    const auto product = static_cast<uint16_t>(above * 254 + mapping.added);
    const auto upper = static_cast<uint16_t>(static_cast<uint32_t>(product) * mapping.factor >> 16);
    return static_cast<uint8_t>(v > mapping.high ? 255 : upper >> mapping.shift);
}

// Finds the multiplication that divides 16-bit numbers by `range`: with a factor of 16 bits either rounding
// the factor up is exact, or rounding it down and adding 1 to the number (A. D. Robison, "N-bit unsigned
// division via N-bit multiply-add", 2005). Which one, and that powers of two fit in no way, the table tells.
void FindDivision(uint32_t range, Mapping* mapping) {
    mapping->shift = 0;
    while (range >> (mapping->shift + 1)) ++mapping->shift;
    const uint64_t power = uint64_t{1} << (16 + mapping->shift);
    for (mapping->added = 0; mapping->added < 2; ++mapping->added) {
        const uint64_t factor = mapping->added ? power / range : (power + range - 1) / range;
        mapping->factor = static_cast<uint16_t>(factor);
        mapping->computed = factor < 65536;
        for (int32_t v = 0; v < kLevels; ++v)
            mapping->computed &= MapLevel(static_cast<uint8_t>(v), *mapping) == mapping->table[v];
        if (mapping->computed) return;
    }
}

// False: one level holds everything, and there is nothing to stretch.
bool MakeMapping(const Luminance& luminance, Mapping* mapping) {
    int32_t low, high;
    FindRange(luminance, luminance.pixels / 100, &low, &high);
    if (low == high) FindRange(luminance, 0, &low, &high);
    if (low == high) return false;
    for (int32_t v = 0; v < kLevels; ++v)
        mapping->table[v] = static_cast<uint8_t>(v < low    ? 0
                                                 : v > high ? 255
                                                            : (v - low) * 254 / (high - low));
    mapping->low = static_cast<uint8_t>(low);
    mapping->high = static_cast<uint8_t>(high);
    FindDivision(static_cast<uint32_t>(high - low), mapping);
    return true;
}

KFX_INLINE void MapBytes(const uint8_t* from, size_t count, const Mapping& mapping, uint8_t* __restrict to) {
    const Mapping constant = mapping;
    for (size_t i = 0; i < count; ++i) to[i] = MapLevel(from[i], constant);
}

KFX_AVX2 void MapBytesAvx2(const uint8_t* from, size_t count, const Mapping& mapping, uint8_t* to) {
    MapBytes(from, count, mapping, to);
}

ImageHandle MapChannels(const WorkingImage* from, const Mapping& mapping) {
    MemoryOwner owner(CreateLike(from));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const size_t rowBytes = 3 * static_cast<size_t>(from->width);
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* in = StoredRow(from, r);
        uint8_t* out = StoredRow(to.image, r);
        if (!mapping.computed)
            for (size_t i = 0; i < rowBytes; ++i) out[i] = mapping.table[in[i]];
        else if (UseAvx2())
            MapBytesAvx2(in, rowBytes, mapping, out);
        else
            MapBytes(in, rowBytes, mapping, out);
    }
    return owner.Release();
}

ImageHandle Stretch(ImageHandle source, const Luminance& luminance) {
    const ImageLock from(source);
    Mapping mapping;
    if (!from.image || from.image->bitCount != 24 || !MakeMapping(luminance, &mapping)) return nullptr;
    return MapChannels(from.image, mapping);
}

}  // namespace

ImageHandle ApplyNormalize(ImageHandle source) {
    uint64_t record[2] = {0, 0};
    GatherLuminance(source, record);
    const ImageHandle result = ApplyGatheredLuminance(source, record);
    ReleaseLuminance(record);
    return result;
}

void GatherLuminance(ImageHandle source, uint64_t record[2]) {
    if (record[1] == kRefused) return;
    const ImageLock from(source);
    if (!from.image) {
        // Without this frame the others would be stretched differently.
        record[1] = kRefused;
        return;
    }
    if (from.image->bitCount != 24) return;
    if (!HandleOf(record)) record[0] = reinterpret_cast<uint64_t>(AllocateMemory(sizeof(Luminance)));
    const MemoryLock lock(HandleOf(record));
    if (lock.address)
        CountLuminance(from.image, static_cast<Luminance*>(lock.address));
    else
        record[1] = kRefused;
}

ImageHandle ApplyGatheredLuminance(ImageHandle source, const uint64_t record[2]) {
    const MemoryLock lock(HandleOf(record));
    if (!lock.address || record[1] == kRefused) return nullptr;
    return Stretch(source, *static_cast<const Luminance*>(lock.address));
}

void ReleaseLuminance(uint64_t record[2]) {
    FreeMemory(HandleOf(record));
    record[0] = 0;
    record[1] = 0;
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput&) { return ApplyNormalize(source); }

bool Distributed(const KernelInput& input) { return input.values[0] != 0; }

constexpr GatheringPasses kPasses = {Distributed, GatherLuminance, ApplyGatheredLuminance, ReleaseLuminance};
constexpr EffectControl kControls[] = {
    {ControlKind::CheckBox, IDC_NORMALIZE_DISTRIBUTED, &settings.style019Distributed,
     NORMALIZE_DISTRIBUTED_TEXT},
};
constexpr uint32_t kControlIds[] = {IDC_NORMALIZE_DISTRIBUTED, 0};

}  // namespace

const EffectRecord kNormalizeEffect = {"Normalize", IDD_PANEL_NORMALIZE, kControlIds, kControls, 1, Kernel,
                                       &kPasses};

}  // namespace kfx
