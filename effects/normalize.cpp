// SPDX-License-Identifier: MIT
// Normalize: the range of luminance between the darkest and the brightest percent of the pixels is stretched
// over all levels, each channel through the same table. The stretched range ends at 254 and only what lies
// above it becomes 255: intended. "Distributed" takes one histogram of all frames, so that an animation does
// not flicker.
#include "effects/normalize.h"

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

void CountLuminance(const WorkingImage* image, Luminance* luminance) {
    for (int32_t r = 0; r < image->height; ++r) {
        const uint8_t* pixel = StoredRow(image, r);
        for (int32_t x = 0; x < image->width; ++x, pixel += 3) {
            const int32_t level = pixel[2] * 77 / 255 + pixel[1] * 150 / 255 + pixel[0] * 28 / 255;
            ++luminance->counts[level & 255];
        }
    }
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

// False: one level holds everything, and there is nothing to stretch.
bool FillMapping(const Luminance& luminance, uint8_t mapping[kLevels]) {
    int32_t low, high;
    FindRange(luminance, luminance.pixels / 100, &low, &high);
    if (low == high) FindRange(luminance, 0, &low, &high);
    if (low == high) return false;
    for (int32_t v = 0; v < kLevels; ++v)
        mapping[v] = static_cast<uint8_t>(v < low ? 0 : v > high ? 255 : (v - low) * 254 / (high - low));
    return true;
}

ImageHandle MapChannels(const WorkingImage* from, const uint8_t mapping[kLevels]) {
    MemoryOwner owner(CreateLike(from));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const size_t rowBytes = 3 * static_cast<size_t>(from->width);
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* in = StoredRow(from, r);
        uint8_t* out = StoredRow(to.image, r);
        for (size_t i = 0; i < rowBytes; ++i) out[i] = mapping[in[i]];
    }
    return owner.Release();
}

ImageHandle Stretch(ImageHandle source, const Luminance& luminance) {
    const ImageLock from(source);
    uint8_t mapping[kLevels];
    if (!from.image || from.image->bitCount != 24 || !FillMapping(luminance, mapping)) return nullptr;
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
    if (!from.image || from.image->bitCount != 24) return;
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
